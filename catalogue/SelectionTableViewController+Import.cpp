// The import of the user's files into the documents directory, and its emptying.
#include "catalogue/SelectionTableViewController.h"

#include "platform/views/Platform.h"

#include <filesystem>
#include <system_error>

namespace quillomat {

namespace {

bool nameTheSameFile(const std::string& a, const std::string& b) {
    std::error_code error;
    return std::filesystem::equivalent(a, b, error) && !error;
}

} // namespace

void SelectionTableViewController::showFilePicker() {
    const auto picker = std::make_shared<DocumentPickerController>();
    picker->documentTypes = {"public.text", "public.data"};
    picker->mode = DocumentPickerMode::import;
    picker->delegate = self();
    present(picker);
}

void SelectionTableViewController::documentPickerDidPickDocumentAtURL(DocumentPickerController& /*picker*/,
                                                                      const std::string& path) {
    const bool granted = platform().documents.startAccessing(path);
    platform().documents.coordinateReading(path, [&] {
        importDocument(path);
        // Before the user answers the replace question, so the copy that follows a "Yes" runs without the access.
        if (granted) {
            platform().documents.stopAccessing(path);
        }
    });
}

void SelectionTableViewController::importDocument(const std::string& path) {
    const std::string name = lastPathComponent(path);
    if (!isPlainFileName(name)) {
        return;
    }
    const std::string destination = appendPathComponent(mainDirectory(), name);
    if (platform().files.fileExists(destination)) {
        fileExistsPopup(destination, path);
        return;
    }
    // A copy that fails leaves no import, and nobody is told.
    static_cast<void>(platform().files.copy(path, destination));
}

void SelectionTableViewController::fileExistsPopup(const std::string& fileExistsPopup, const std::string& copyItem) {
    const auto question = std::make_shared<AlertController>("File Already Exists", "Do you wish to replace this file?",
                                                            AlertStyle::alert);
    question->addAction("No", ActionStyle::normal, [weak = weak_from_this()] {
        if (const auto list = weak.lock()) {
            list->dismiss();
        }
    });
    question->addAction("Yes", ActionStyle::normal, [&files = platform().files, fileExistsPopup, copyItem] {
        // A host that hands over the file itself may hand over the stored one: removing it first would lose it.
        if (nameTheSameFile(fileExistsPopup, copyItem)) {
            return;
        }
        static_cast<void>(files.remove(fileExistsPopup));
        static_cast<void>(files.copy(copyItem, fileExistsPopup));
    });
    present(question);
}

void SelectionTableViewController::deleteDocuments() {
    const std::string& directory = document_.mainDirectory();
    if (directory.empty()) {
        return;
    }
    platform().log.write("Directory: " + directory);
    const auto entries = platform().files.contentsOfDirectory(directory);
    if (!entries) {
        return;
    }
    for (const std::string& entry : *entries) {
        const std::string path = appendPathComponent(directory, entry);
        platform().log.write("File : " + path);
        static_cast<void>(platform().files.remove(path));
    }
}

} // namespace quillomat
