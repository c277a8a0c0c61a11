// What happens when the editor opens: definitions, imports, frame picture, access to the photo library, buttons.
#include "editor/EditingViewController.h"

#include "catalogue/CatalogueDocument.h"
#include "platform/graphics/ImageFile.h"
#include "platform/views/Platform.h"

#include <algorithm>
#include <utility>

namespace quillomat {

namespace {

bool haveSameBytes(const Image& a, const Image& b) {
    return a && b && !a.source()->documentKey().isEmpty() && a.source()->documentKey() == b.source()->documentKey();
}

} // namespace

EditingViewController::EditingViewController(Platform& platform, Storyboard& storyboard, EditorState& state)
    : ViewController(platform, storyboard), state_(state), catalogue_(platform) {}

void EditingViewController::viewDidLoad() {
    ViewController::viewDidLoad();
    navigationItem.rightBarButtonItem =
        BarButtonItem{.title = "Options",
                      .style = BarButtonStyle::done,
                      .action = unlessGone([](EditingViewController& editor) { editor.optionsButtonClicked(); })};
    editInfo_ = JSONFromFile()["editInfo"];
    getUserImports();
    layOutFixedViews();
    requestPhotoAuthorization();
    state_.frameImageName = lookupNameOfMockup(imageInfo_);
    phone_->setImage(pictureNamed(state_.frameImageName));
    if (state_.designMode)
        phone_->alpha = 0.9;
    inside1_->backgroundColor = Color::black();
    setupPreviewTransforms();
    applyDefinitionToControls();
}

void EditingViewController::applyDefinitionToControls() {
    const MockupDefinition current = definition();
    addRightButton_->enabled = current.hasSecondScreen();
    if (current.hasSecondScreen())
        inside2_->backgroundColor = Color::black();
    else
        inside2_->removeFromSuperview();
    if (current.hasCreator()) {
        log("CREATOR");
        addBGButton_->enabled = false;
        addGlareButton_->enabled = false;
    }
}

std::string EditingViewController::mainDirectory() const {
    return catalogue_.mainDirectory();
}

Value EditingViewController::JSONFromFile() const {
    return catalogue_.JSONFromFile();
}

Value EditingViewController::ImportedJSONFromFile(const std::string& fileName) const {
    return catalogue_.JSONFromDocument(fileName);
}

void EditingViewController::getUserImports() {
    for (const std::string& name : catalogue_.importedDefinitions())
        addImportData(name);
}

void EditingViewController::addImportData(const std::string& fileName) {
    editInfo_ =
        editInfo_.withMember(pictureNameOfImport(fileName), definitionFromImport(ImportedJSONFromFile(fileName)));
}

/// The answer may come on any thread, and after the editor has gone: it touches the log and nothing else.
void EditingViewController::requestPhotoAuthorization() {
    platform().photos.requestAuthorization([&log = platform().log](PhotoAuthorization status) {
        switch (status) {
        case PhotoAuthorization::notDetermined:
            log.write("AuthTest PHAuthorizationStatusNotDetermined");
            break;
        case PhotoAuthorization::restricted:
            log.write("AuthTest PHAuthorizationStatusRestricted");
            break;
        case PhotoAuthorization::denied:
            log.write("AuthTest PHAuthorizationStatusDenied");
            break;
        case PhotoAuthorization::authorized:
            log.write("AuthTest PHAuthorizationStatusAuthorized");
            break;
        }
    });
}

/// The frame on screen and the frame in the composition are one picture, decoded once: resources do not change while
/// the application runs; a document is read afresh each time, and only counts as new when its bytes are. What the
/// editor shows it keeps, whatever becomes of the file.
Image EditingViewController::pictureNamed(const std::string& name) {
    auto resource = resourcePictures_.find(name);
    if (resource == resourcePictures_.end())
        resource = resourcePictures_.emplace(name, heldInMemory(catalogue_.imageNamed(name))).first;
    if (resource->second)
        return resource->second;
    Image& known = documentPictures_[name];
    const Image fresh = catalogue_.imageFromDocument(name);
    if (!haveSameBytes(known, fresh))
        known = heldInMemory(fresh);
    return known;
}

void EditingViewController::log(const std::string& line) const {
    platform().log.write(line);
}

std::shared_ptr<EditingViewController> EditingViewController::self() {
    return std::static_pointer_cast<EditingViewController>(shared_from_this());
}

} // namespace quillomat
