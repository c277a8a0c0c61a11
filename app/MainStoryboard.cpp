#include "app/MainStoryboard.h"

#include "catalogue/ScrollerViewController.h"
#include "catalogue/SelectionTableViewController.h"
#include "editor/EditingViewController.h"

#include <cstdio>
#include <cstdlib>

namespace quillomat {

MainStoryboard::MainStoryboard(Platform& platform, EditorState& editorState) : platform_(platform) {
    screens_["scrollerViewController"] = [this] { return std::make_shared<ScrollerViewController>(platform_, *this); };
    screens_["editingViewController"] = [this, &editorState] {
        return std::make_shared<EditingViewController>(platform_, *this, editorState);
    };
}

std::shared_ptr<ViewController> MainStoryboard::instantiate(const std::string& identifier) {
    const auto screen = screens_.find(identifier);
    if (screen == screens_.end()) {
        std::fprintf(stderr, "storyboard: no screen is called %s\n", identifier.c_str());
        std::abort();
    }
    return report(screen->second());
}

std::shared_ptr<NavigationController> MainStoryboard::instantiateInitialViewController() {
    return std::make_shared<NavigationController>(
        report(std::make_shared<SelectionTableViewController>(platform_, *this)));
}

std::shared_ptr<ViewController> MainStoryboard::report(std::shared_ptr<ViewController> screen) const {
    if (screenMade)
        screenMade(screen);
    return screen;
}

} // namespace quillomat
