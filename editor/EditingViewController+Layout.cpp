// The fixed views on a phone-sized root view. Their bounds never change with a window; a host zooms the whole tree.
#include "editor/EditingViewController.h"

#include "platform/views/Platform.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quillomat {

namespace {

constexpr double previewSide = 300;
constexpr double toolBarHeight = 72;
constexpr Font toolFont{11, false};

// The canvas's shape inside the preview square. Whole points, so that a blur at one pixel a point meets no half-covered
// pixels at the edges; a canvas without an extent gets the whole square.
Size fittedIntoPreview(Size canvas) {
    if (!(canvas.width > 0 && canvas.height > 0))
        return {previewSide, previewSide};
    const double scale = previewSide / std::max(canvas.width, canvas.height);
    return {std::max(1.0, std::round(canvas.width * scale)), std::max(1.0, std::round(canvas.height * scale))};
}

Rect centredAt(Point center, Size size) {
    return makeRect(center.x - size.width / 2, center.y - size.height / 2, size.width, size.height);
}

/// The glare's rectangle of the full canvas, on the preview's.
Rect placedGlare(const MockupDefinition& definition, const Rect& canvas) {
    const Size whole = definition.canvasSize();
    if (!(whole.width > 0 && whole.height > 0))
        return {};
    const Rect glare = definition.glareRect();
    const double x = canvas.size.width / whole.width;
    const double y = canvas.size.height / whole.height;
    return makeRect(canvas.origin.x + glare.origin.x * x, canvas.origin.y + glare.origin.y * y, glare.size.width * x,
                    glare.size.height * y);
}

} // namespace

std::shared_ptr<View> EditingViewController::loadView() {
    const Size screen = platform().screen.size;
    const auto root = std::make_shared<View>(makeRect(0, 0, screen.width, screen.height));
    for (auto* slot : {&background_, &inside1_, &inside2_, &phone_, &overlay_}) {
        *slot = std::make_shared<ImageView>();
        (*slot)->userInteractionEnabled = false; // touches go through to the markers below the frame
        root->addSubview(*slot);
    }

    addLeftButton_ = makeToolButton("Left", &EditingViewController::addLeft);
    addRightButton_ = makeToolButton("Right", &EditingViewController::addRight);
    addBGButton_ = makeToolButton("Background", &EditingViewController::addBG);
    addGlareButton_ = makeToolButton("Glare", &EditingViewController::addGlare);
    saveButton_ = makeToolButton("Save", &EditingViewController::save);
    const std::array tools{addLeftButton_, addRightButton_, addBGButton_, addGlareButton_, saveButton_};
    const double width = screen.width / static_cast<double>(tools.size());
    double x = 0;
    for (const auto& tool : tools) {
        tool->setFrame(makeRect(x, screen.height - toolBarHeight, width, toolBarHeight));
        root->addSubview(tool);
        x += width;
    }
    return root;
}

std::shared_ptr<Button> EditingViewController::makeToolButton(std::string toolTitle,
                                                              void (EditingViewController::*action)()) {
    auto button = std::make_shared<Button>();
    button->setTitle(std::move(toolTitle));
    button->font = toolFont;
    button->setAction(
        [press = unlessGone([action](EditingViewController& editor) { (editor.*action)(); })](Button&) { press(); });
    return button;
}

/// Background and frame take the canvas's shape and share the preview square's centre, and the overlay stands where the
/// composition draws the glare, so that the preview lines up with the saved picture.
void EditingViewController::layOutFixedViews() {
    const Size screen = platform().screen.size;
    const Point center{screen.width / 2, (screen.height - toolBarHeight) / 2};
    const Rect canvas = centredAt(center, fittedIntoPreview(definition().canvasSize()));
    for (const auto& view : {background_, phone_, overlay_}) {
        view->contentMode = ContentMode::scaleToFill;
        view->setFrame(canvas);
    }
    if (const Rect glare = placedGlare(definition(), canvas); glare.size.width > 0 && glare.size.height > 0)
        overlay_->setFrame(glare);
    for (const auto& view : {inside1_, inside2_})
        view->setFrame(centredAt(center, {previewSide, previewSide}));
    // A composition of a one-screen mockup leaves this flag alone, so it decides here whether the radius shows.
    inside1_->masksToBounds = !definition().keepsSquareCorners();
}

} // namespace quillomat
