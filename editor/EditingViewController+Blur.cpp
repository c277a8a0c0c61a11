// Blurs the background as the view shows it.
#include "editor/EditingViewController.h"

#include "platform/graphics/Blur.h"
#include "platform/views/Drawing.h"

namespace quillomat {

namespace {

constexpr float blurRadius = 4.0F;

} // namespace

/// One pixel a point whatever the screen's scale, so the cost is the view's and not the photograph's. The loss of
/// resolution is wanted: the composition enlarges the blurred picture like any other background.
void EditingViewController::blurBackground() {
    BitmapContext context(background_->bounds().size, /*scale=*/1);
    renderInContext(*background_, context);
    background_->setImage(gaussianBlurClamped(context.makeImage(), static_cast<double>(blurRadius)));
}

} // namespace quillomat
