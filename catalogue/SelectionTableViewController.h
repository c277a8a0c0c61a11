// The root screen: the catalogue's rows, the Options sheet, the update from the web and the import of the user's files.
#pragma once

#include "catalogue/CatalogueDocument.h"
#include "catalogue/Revision.h"
#include "catalogue/SelectionTableViewCell.h"
#include "catalogue/TableView.h"
#include "platform/foundation/Value.h"
#include "platform/views/Presentation.h"
#include "platform/views/ViewController.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quillomat {

/// What an update did, for a command's summary. The screen shows none of it.
struct UpdateReport {
    int fetchedPictures = 0; // written into the documents directory
    int skippedPictures = 0; // the application's resources hold them
    int failedPictures = 0;  // did not arrive, could not be written, or have names that are not fetched
    bool catalogueArrived = false;
    bool catalogueStored = false;
};

/// One source file per concern: SelectionTableViewController, +Options, +Update, +Import. Everything runs on the
/// interface's thread, the synchronous fetches of an update included. Nothing is ever reported to the user.
class SelectionTableViewController final : public ViewController, public DocumentPickerDelegate {
public:
    SelectionTableViewController(Platform& platform, Storyboard& storyboard);

    // Loading -------------------------------------------------------------------------------------------------------
    /// Also runs again after an update, which is how the screen refreshes.
    void viewDidLoad() override;
    void showAddButton();
    /// The documents directory with a trailing "/".
    [[nodiscard]] std::string mainDirectory() const;
    [[nodiscard]] Value JSONFromFile() const;
    /// The catalogue's rows as they were when the view last loaded.
    [[nodiscard]] const Value& tableItems() const { return tableItems_; }
    [[nodiscard]] std::shared_ptr<TableView> tableView();

    // Table ---------------------------------------------------------------------------------------------------------
    [[nodiscard]] std::size_t numberOfSectionsInTableView() const;
    [[nodiscard]] std::size_t tableViewNumberOfRowsInSection(std::size_t section) const;
    [[nodiscard]] double tableViewHeightForHeaderInSection(std::size_t section) const;
    [[nodiscard]] double tableViewHeightForRowAtIndexPath(IndexPath indexPath) const;
    [[nodiscard]] std::shared_ptr<SelectionTableViewCell> tableViewCellForRowAtIndexPath(IndexPath indexPath);
    void tableViewDidSelectRowAtIndexPath(IndexPath indexPath);

    // Options sheet -------------------------------------------------------------------------------------------------
    void buttonTrigger();
    void createActionSheet();

    // Update --------------------------------------------------------------------------------------------------------
    /// Compares the published revision with the local one; shows the update button or clears it.
    RevisionCheck checkVersion();
    void showUpdateButton();
    UpdateReport update();

    // Import --------------------------------------------------------------------------------------------------------
    void showFilePicker();
    void documentPickerDidPickDocumentAtURL(DocumentPickerController& picker, const std::string& path) override;
    void fileExistsPopup(const std::string& fileExistsPopup, const std::string& copyItem);
    /// Removes every entry of the documents directory. No screen offers it.
    void deleteDocuments();

protected:
    std::shared_ptr<View> loadView() override;

private:
    [[nodiscard]] std::shared_ptr<SelectionTableViewController> self();
    /// The task as long as the list lives.
    [[nodiscard]] std::function<void()> unlessGone(void (SelectionTableViewController::*task)());

    void showImportLocation();
    void openTutorial();
    void openMockupsPage();
    void openSupportPage();

    std::shared_ptr<View> addProgressBox();
    void fetchPicture(const Value& name, UpdateReport& report);
    void storeCatalogue(std::optional<std::string> error, UpdateReport& report);
    void finishUpdate(const std::shared_ptr<View>& progressBox);

    void importDocument(const std::string& path);

    CatalogueDocument document_;
    Value tableItems_;
};

} // namespace quillomat
