// Turns the warped first screen into a flat picture of its bounding box, and views into pictures.
#include "editor/EditingViewController.h"

#include "editor/HalvingDifferences.h"
#include "platform/views/Drawing.h"
#include "platform/views/Platform.h"

#include <cmath>
#include <cstdio>

namespace quillomat {

namespace {

std::string fixedPoint(double number) {
    char text[400]; // the largest double has 309 digits before the point
    const int length = std::snprintf(text, sizeof text, "%f", number);
    return {text, static_cast<std::size_t>(length)};
}

} // namespace

void EditingViewController::resetTransformedImageView() {
    if (!contentView_)
        return;
    const Rect former = contentView_->frame();
    if (isFlattenedAtHalfSize(former.size)) {
        resetTransformedImageViewOverAmount();
        return;
    }
    contexts_.begin(former.size, platform().screen.scale);
    if (contexts_.current().pixelSize().isEmpty())
        noteProblem("the box of screen 1, " + stringFromSize(former.size) + ", cannot be drawn");
    contentView_->moveBoundingBox({{0, 0}, former.size});
    const Size size = contentView_->frame().size;
    log("Width of screenshotView " + fixedPoint(size.width));
    log("Height of screenshotView " + fixedPoint(size.height));
    const auto holder = std::make_shared<View>(Rect{{0, 0}, size});
    holder->addSubview(contentView_);
    log("Vantrel : drawViewHierarchyInRect");
    const bool drawn = drawViewHierarchy(*holder, holder->bounds(), contexts_.current());
    log(drawn ? "::::Vantrel : drawViewHierarchyInRect finished and it was a success"
              : "::::Vantrel : drawViewHierarchyInRect finished and failed");
    const auto flat = std::make_shared<ImageView>(contexts_.imageFromCurrent());
    contexts_.end();
    flat->setFrame({{std::trunc(former.origin.x), std::trunc(former.origin.y)}, size});
    contentView_ = flat;
}

/// At half size, to be enlarged when drawn; where the warped screen leaves the half-size box uncovered it is black.
void EditingViewController::resetTransformedImageViewOverAmount() {
    log("RESET OVER A BUNCH");
    if (!contentView_)
        return;
    const Rect former = contentView_->frame();
    const auto halfWidth = static_cast<double>(static_cast<float>(former.size.width * 0.5));
    const auto halfHeight = static_cast<double>(static_cast<float>(former.size.height * 0.5));
    const Rect half = makeRect(0, 0, halfWidth, halfHeight);
    contentView_->moveBoundingBox(half);
    log("IMAGE " + stringFromRect(contentView_->frame()));
    const float movedY = static_cast<float>(contentView_->frame().origin.y);
    logHalvingDifferences(former, contentView_->frame());

    const Size size = contentView_->frame().size;
    const auto moveable = std::make_shared<View>(Rect{{0, static_cast<double>(0.0F - movedY)}, size});
    log("moveableview " + stringFromRect(moveable->frame()));
    moveable->backgroundColor = Color::black();
    contentView_->moveBoundingBox(half);
    moveable->addSubview(contentView_);
    const auto holder = std::make_shared<View>(Rect{{0, 0}, contentView_->frame().size});
    holder->addSubview(moveable);

    contexts_.begin(holder->bounds().size, platform().screen.scale);
    if (contexts_.current().pixelSize().isEmpty())
        noteProblem("the box of screen 1, " + stringFromSize(former.size) + ", cannot be drawn");
    drawViewHierarchy(*holder, holder->bounds(), contexts_.current());
    const auto flat = std::make_shared<ImageView>(contexts_.imageFromCurrent());
    contexts_.end();
    flat->setFrame({{std::trunc(former.origin.x), std::trunc(former.origin.y)}, contentView_->frame().size});
    contentView_ = flat;
}

void EditingViewController::logHalvingDifferences(const Rect& former, const Rect& now) const {
    const HalvingDifferences differences = halvingDifferences(former, now);
    log("WIDTH " + std::to_string(differences.width));
    log("Height " + std::to_string(differences.height));
    log("MoveFrameY " + std::to_string(differences.moveFrameY));
    log("MoveFrameX " + std::to_string(differences.moveFrameX));
}

void EditingViewController::drawerNewScreenImage(std::int32_t x, std::int32_t y, std::int32_t width,
                                                 std::int32_t height) {
    if (!contentView_)
        return;
    contentView_->moveBoundingBox({{0, 0}, contentView_->frame().size});
    const Image picture = imageFromView(contentView_);
    if (!picture || contexts_.isEmpty())
        return;
    contexts_.current().drawImage(picture, makeRect(x, y, width, height));
}

/// The view as it stands about its own centre, on a canvas of its bounds' size at the screen's scale.
Image EditingViewController::imageFromView(const std::shared_ptr<View>& view) {
    const Size size = view ? view->bounds().size : Size{};
    log("SIZE " + stringFromSize(size));
    contexts_.begin(size, platform().screen.scale);
    if (view) {
        BitmapContext& context = contexts_.current();
        context.saveGState();
        context.translateCTM(view->center().x, view->center().y);
        context.concatCTM(view->transform());
        context.translateCTM(-size.width * view->anchorPoint().x, -size.height * view->anchorPoint().y);
        renderInContext(*view, context);
        context.restoreGState();
    }
    Image picture = contexts_.imageFromCurrent();
    contexts_.end();
    return picture;
}

/// A developer's aid that nothing in the program calls; the preview goes away with the editor.
void EditingViewController::showTestImage(const Image& picture) {
    const auto preview = std::make_shared<ImageView>(picture);
    preview->setFrame({{-1000, -1000}, definition().canvasSize()});
    preview->setTransform(AffineTransform::scale(0.1, 0.1));
    preview->backgroundColor = Color::pureRed();
    view()->addSubview(preview);
}

} // namespace quillomat
