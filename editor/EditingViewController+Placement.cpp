// Places the screenshot views in perspective: on the preview's square and, with other corners, on the full canvas.
#include "editor/EditingViewController.h"

#include "platform/views/Platform.h"

namespace quillomat {

namespace {

constexpr Size containerSize{300, 300};

} // namespace

void EditingViewController::setupPreviewTransforms() {
    // The former container stays in its superview if it still has one: only the reference moves on.
    state_.previewContainer = std::make_shared<View>();
    const std::shared_ptr<View> container = state_.previewContainer;
    container->backgroundColor = Color::clear();
    if (state_.designMode) {
        container->backgroundColor = Color::pureBlue();
        createEdits();
    }
    inside1_->cornerRadius = 5; // screen 1 only: screen 2 keeps square corners in the preview
    view()->insertSubviewBelow(container, phone_);

    container->translatesAutoresizingMaskIntoConstraints = false;
    const Point center = background_->center();
    container->setFrame(makeRect(center.x - containerSize.width / 2, center.y - containerSize.height / 2,
                                 containerSize.width, containerSize.height));

    performTransformForView(inside1_, "1", container, "", "", /*isLarge=*/false);
    if (definition().hasSecondScreen())
        performTransformForView(inside2_, "2", container, "2", "", /*isLarge=*/true);
}

void EditingViewController::performTransformForView(const std::shared_ptr<View>& performTransformForView,
                                                    std::string_view contentView,
                                                    const std::shared_ptr<View>& applyToView,
                                                    std::string_view transformSide, std::string_view finalCode,
                                                    bool isLarge) {
    performTransformForView->contentMode = ContentMode::scaleToFill;
    performTransformForView->setAnchorPoint({0, 0});
    (contentView == "2" ? contentView2_ : contentView_) = performTransformForView;
    applyToView->addSubview(performTransformForView);

    const MockupDefinition placed(editInfo_[isLarge ? imageInfo_ : lookupNameOfMockup(imageInfo_)]);
    const Quad corners = placed.storedCorners(finalCode, transformSide);
    // The markers follow the side, not the slot: a second screen placed through the first slot is fitted to the first
    // screen's markers by what follows.
    MarkerSet& markers = transformSide == "2" ? markers2_ : markers_;
    markers.topLeft = addControl(corners.topLeft, applyToView);
    markers.topRight = addControl(corners.topRight, applyToView);
    markers.bottomLeft = addControl(corners.bottomLeft, applyToView);
    markers.bottomRight = addControl(corners.bottomRight, applyToView);
    updateTranform();
}

} // namespace quillomat
