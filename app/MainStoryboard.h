// The registry of screens: which class stands behind which identifier, and which screen comes first.
#pragma once

#include "platform/views/NavigationController.h"
#include "platform/views/ViewController.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace quillomat {

struct EditorState;

class MainStoryboard final : public Storyboard {
public:
    /// Both must outlive the storyboard and every screen it makes.
    MainStoryboard(Platform& platform, EditorState& editorState);

    /// A new screen at every call.
    [[nodiscard]] std::shared_ptr<ViewController> instantiate(const std::string& identifier) override;
    /// A navigation controller with the catalogue list at its root, loaded.
    [[nodiscard]] std::shared_ptr<NavigationController> instantiateInitialViewController();

    /// Told of every screen as soon as it is made, before its view loads: a host can show what stands while it loads.
    std::function<void(const std::shared_ptr<ViewController>&)> screenMade;

private:
    [[nodiscard]] std::shared_ptr<ViewController> report(std::shared_ptr<ViewController> screen) const;

    Platform& platform_;
    std::map<std::string, std::function<std::shared_ptr<ViewController>()>> screens_;
};

} // namespace quillomat
