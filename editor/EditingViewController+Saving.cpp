// Hands the picture to the photo library and confirms it, whatever became of it there.
#include "editor/EditingViewController.h"

#include "platform/foundation/Conversions.h"
#include "platform/graphics/PngWriter.h"
#include "platform/views/NavigationController.h"
#include "platform/views/Platform.h"

#include <utility>

namespace quillomat {

void EditingViewController::save() {
    log("SSTest 1");
    if (state_.pendingImage) {
        // Whichever mockup it was composed for, it is this editor that credits it. Shown before it is cleared.
        writeToPhotos(state_.pendingImage);
        showSavedAlert();
        state_.pendingImage = {};
        return;
    }
    const MockupDefinition current = definition();
    const Image picture = composePicture();
    if (state_.designMode) {
        showInDesignScrollView(picture, current);
    } else {
        writeToPhotos(picture);
        showSavedAlert();
    }
    if (state_.previewComposite)
        addPreviewOfComposite(picture);
    overlay_->setImage({}); // the glare switch stays as it is
    background_->setImage({});
}

/// What is handed over is the encoded document, so that the library can keep exactly these bytes. Whether it does is
/// not looked at. A picture that waited is such a document already. Without a picture nothing is written.
void EditingViewController::writeToPhotos(const Image& picture) {
    if (!picture)
        return;
    const auto document = asPngDocument(picture, platform().savedEffort, platform().savedDraft);
    if (!document) {
        noteProblem(document.reason());
        return;
    }
    platform().photos.writeToSavedPhotosAlbum(*document);
}

void EditingViewController::showInDesignScrollView(const Image& picture, const MockupDefinition& definition) {
    const auto composed = std::make_shared<ImageView>(picture);
    composed->setFrame({{0, 0}, definition.canvasSize()});
    composed->alpha = 0.9;
    composed->userInteractionEnabled = false;
    for (const std::shared_ptr<View>& layer : {contentView_, contentView2_, std::shared_ptr<View>(composed)}) {
        if (layer)
            state_.designScrollView->addSubview(layer);
    }
}

void EditingViewController::showSavedAlert() {
    const Value creator = definition().record()["creator"];
    const std::string credit = creator.isPresent() ? describe(creator) : "";
    auto alert =
        std::make_shared<AlertController>("Screenshot", "Image saved to camera roll \n\n" + credit, AlertStyle::alert);
    alert->addAction("Thanks!", ActionStyle::normal, unlessGone([](EditingViewController& editor) {
                         editor.dismiss();
                         if (NavigationController* navigation = editor.navigationController())
                             navigation->popToRoot();
                     }));
    present(std::move(alert));
}

} // namespace quillomat
