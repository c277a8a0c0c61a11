// The glare switch: one for the whole process, shown in the overlay and drawn by the composition.
#include "editor/EditingViewController.h"

namespace quillomat {

/// A switch that an earlier editor left on shows nothing here until it was switched off and on again.
void EditingViewController::addGlare() {
    if (state_.glareOn) {
        state_.glareOn = false;
        overlay_->setImage({});
        return;
    }
    state_.glareOn = true;
    overlay_->setImage(pictureNamed(definition().text("overlay")));
}

} // namespace quillomat
