// The "Options" sheet and its one real action: deleting a mockup that the user imported.
#include "editor/EditingViewController.h"

#include "platform/foundation/Conversions.h"
#include "platform/views/NavigationController.h"
#include "platform/views/Platform.h"

#include <utility>

namespace quillomat {

void EditingViewController::optionsButtonClicked() {
    createActionSheet();
}

void EditingViewController::createActionSheet() {
    auto sheet = std::make_shared<AlertController>("Options", "", AlertStyle::actionSheet);
    const bool canDelete = definition().hasCreator();
    sheet->addAction("Delete Mockup", ActionStyle::normal,
                     unlessGone([canDelete](EditingViewController& editor) { editor.deleteMockup(canDelete); }));
    sheet->addAction("Dismiss", ActionStyle::cancel, {});
    present(std::move(sheet));
}

void EditingViewController::deleteMockup(bool canDelete) {
    if (!canDelete) {
        showDeleteAlert("Nothing removed. You can only delete mockups you added.");
        return;
    }
    // Whether it may be deleted was read under the full name; the files are those of the name without "-large".
    const std::string picture = state_.frameImageName;
    const std::string definitionFile = replaceAll(picture, ".png", ".cfg");
    // One result for both: the second removal's replaces the first's, a success included.
    const Status result = removeDocument(definitionFile, removeDocument(picture, Status()));
    showDeleteAlert(result ? "Deleted mockup named " + picture
                           : "There was an issue removing this mockup " + result.reason());
}

/// The removal's own result, or the earlier one when there was nothing to remove. A name that would leave the documents
/// directory (or is the directory itself) names nothing.
Status EditingViewController::removeDocument(const std::string& name, Status earlier) {
    const std::string path = mainDirectory() + "/" + name;
    if (!isPlainFileName(name) || !platform().files.fileExists(path))
        return earlier;
    return platform().files.remove(path);
}

void EditingViewController::showDeleteAlert(const std::string& message) {
    auto alert = std::make_shared<AlertController>("Completed", message, AlertStyle::alert);
    alert->addAction("Ok", ActionStyle::normal, unlessGone([](EditingViewController& editor) {
                         editor.dismiss();
                         if (NavigationController* navigation = editor.navigationController())
                             navigation->popToRoot();
                     }));
    present(std::move(alert));
}

} // namespace quillomat
