// Where the pictures come from: three buttons open the picker, one delivery routes the picked picture to its view.
#include "editor/EditingViewController.h"

#include "platform/views/Platform.h"

#include <chrono>
#include <utility>

namespace quillomat {

void EditingViewController::addLeft() {
    pick(state_.pickingLeft, /*allowsEditing=*/false);
}

void EditingViewController::addRight() {
    pick(state_.pickingRight, /*allowsEditing=*/false);
}

void EditingViewController::addBG() {
    pick(state_.pickingBackground, /*allowsEditing=*/true);
}

void EditingViewController::pick(bool& flag, bool allowsEditing) {
    flag = true;
    auto picker = std::make_shared<ImagePickerController>();
    picker->delegate = std::shared_ptr<ImagePickerDelegate>(self());
    picker->allowsEditing = allowsEditing;
    picker->sourceType = ImagePickerSource::photoLibrary;
    present(std::move(picker));
}

void EditingViewController::imagePickerControllerDidFinishPickingMediaWithInfo(ImagePickerController& /*picker*/,
                                                                               const PickedMedia& info) {
    // A fixed order of precedence: the flag of a pick that was turned away is still set and takes a later pick. The
    // second screen is where a pick goes that nobody asked for.
    if (state_.pickingBackground) {
        deliverBackground(info);
        state_.pickingBackground = false;
    } else if (state_.pickingLeft) {
        inside1_->setImage(info.originalImage);
        state_.pickingLeft = false;
    } else {
        inside2_->setImage(info.originalImage);
        state_.pickingRight = false;
    }
    dismiss();

    // An imported mockup takes one pick: whichever view that went to, it is composed now and saved later.
    if (definition().hasCreator()) {
        generateImage();
        addLeftButton_->enabled = false;
    }
}

/// The question comes after the picker has begun to leave, and it comes even when there is no cropped picture to show.
void EditingViewController::deliverBackground(const PickedMedia& info) {
    auto question = std::make_shared<AlertController>("Option", "Blur background Image?", AlertStyle::alert);
    question->addAction("No", ActionStyle::normal, {});
    question->addAction("Yes", ActionStyle::normal,
                        unlessGone([](EditingViewController& editor) { editor.blurBackground(); }));
    platform().mainQueue.after(
        std::chrono::milliseconds(100),
        unlessGone([question = std::move(question)](EditingViewController& editor) { editor.present(question); }));
    background_->setImage(info.editedImage);
}

} // namespace quillomat
