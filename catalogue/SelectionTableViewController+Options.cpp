// The Options sheet and what its actions open.
#include "catalogue/SelectionTableViewController.h"

#include "platform/views/Platform.h"

namespace quillomat {

void SelectionTableViewController::buttonTrigger() {
    createActionSheet();
}

void SelectionTableViewController::createActionSheet() {
    using List = SelectionTableViewController;
    const auto sheet = std::make_shared<AlertController>("Options", "", AlertStyle::actionSheet);
    const auto addAction = [&](std::string name, ActionStyle style, std::function<void()> effect) {
        sheet->addAction(std::move(name), style, [weak = weak_from_this(), effect = std::move(effect)] {
            if (const auto list = weak.lock()) {
                list->dismiss(effect);
            }
        });
    };
    addAction("Import Mockup", ActionStyle::normal, unlessGone(&List::showFilePicker));
    addAction("Import Tutorial", ActionStyle::normal, unlessGone(&List::openTutorial));
    addAction("Get Import Location", ActionStyle::normal, unlessGone(&List::showImportLocation));
    addAction("Browse Mockups", ActionStyle::normal, unlessGone(&List::openMockupsPage));
    addAction("Support this free app", ActionStyle::normal, unlessGone(&List::openSupportPage));
    addAction("Dismiss", ActionStyle::cancel, {});
    present(sheet);
}

void SelectionTableViewController::openTutorial() {
    platform().urls.open(platform().server.tutorialUrl);
}

void SelectionTableViewController::openMockupsPage() {
    platform().urls.open(platform().server.shortUrl("/quillomat/mockups/"));
}

void SelectionTableViewController::openSupportPage() {
    platform().urls.open(platform().server.shortUrl("/quillomat/support"));
}

void SelectionTableViewController::showImportLocation() {
    const auto alert = std::make_shared<AlertController>(
        "Importing", "The imported resources are saved in " + document_.mainDirectory(), AlertStyle::alert);
    alert->addAction("Ok", ActionStyle::normal, {});
    present(alert);
}

} // namespace quillomat
