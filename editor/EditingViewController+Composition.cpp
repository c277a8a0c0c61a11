// Composes the mockup once more at full resolution: background, screen 1, screen 2, frame and glare, bottom to top.
#include "editor/EditingViewController.h"

#include "platform/foundation/Trace.h"
#include "platform/graphics/PngWriter.h"
#include "platform/graphics/Recording.h"
#include "platform/views/Drawing.h"
#include "platform/views/Platform.h"

#include <algorithm>
#include <utility>

namespace quillomat {

namespace {

constexpr Rect compositePreview = makeRect(0, 0, 1080, 1080);

std::string extentText(Size size) {
    return std::to_string(truncatedInteger(size.width)) + " x " + std::to_string(truncatedInteger(size.height)) +
           " pixels";
}

double turn(Point a, Point b, Point c) {
    return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

// A crossed quad, one with a corner inside or three in a line, or none at all: the map onto it meets its own horizon.
bool isStrictlyConvex(const Quad& quad) {
    const double turns[] = {
        turn(quad.topLeft, quad.topRight, quad.bottomRight), turn(quad.topRight, quad.bottomRight, quad.bottomLeft),
        turn(quad.bottomRight, quad.bottomLeft, quad.topLeft), turn(quad.bottomLeft, quad.topLeft, quad.topRight)};
    const auto [least, greatest] = std::minmax_element(std::begin(turns), std::end(turns));
    return *least > 0 || *greatest < 0;
}

} // namespace

/// What waits is encoded now: the pixels of this moment, whatever becomes of the files and pictures they came from, and
/// none of those kept for its sake.
void EditingViewController::generateImage() {
    Image picture = composePicture();
    if (picture) {
        const auto document = asPngDocument(picture, platform().savedEffort);
        if (document)
            picture = *document;
        else
            noteProblem(document.reason());
    }
    if (state_.previewComposite)
        addPreviewOfComposite(picture);
    state_.pendingImage = picture;
    phone_->setImage(picture);
}

/// The road of every full-resolution picture, whether it is kept for later or written at once. No picture where the
/// canvas cannot be.
Image EditingViewController::composePicture() {
    const trace::Span span("record composition");
    report_ = {};
    const MockupDefinition current = definition();
    const Size canvasSize = current.canvasSize();
    const Rect canvas = makeRect(0, 0, canvasSize.width, canvasSize.height);
    const std::string frameName = lookupNameOfMockup(imageInfo_);
    const Image frame = pictureNamed(frameName);
    const Image backdrop = background_->image();
    checkDefinition(current);
    if (!frame)
        noteProblem("frame picture " + frameName + " is missing or is no picture");

    placeScreens(current, fullResolutionContainer(current));

    contexts_.begin(canvasSize, /*scale=*/1);
    if (contexts_.current().pixelSize().isEmpty())
        noteProblem("a canvas of " + extentText(canvasSize) + " cannot be made");
    drawPicture("background", backdrop, canvas);
    if (!state_.designMode) {
        drawFirstScreen();
        if (current.hasSecondScreen())
            drawSecondScreen(canvas);
    }
    drawPicture("frame picture " + frameName, frame, current.frameRect());
    if (state_.glareOn) {
        const std::string glareName = current.text("overlay");
        const Image glare = pictureNamed(glareName);
        if (!glare && !glareName.empty())
            noteProblem("glare picture " + glareName + " is missing or is no picture");
        drawPicture("glare picture " + glareName, glare, current.glareRect());
    }
    Image picture = contexts_.imageFromCurrent();
    contexts_.end();
    if (picture.pixelSize().isEmpty())
        return {};
    if (platform().composed)
        platform().composed(picture);
    return picture;
}

/// Where the screens are placed: the root view, or in design mode a scroll view of their own on top of it.
std::shared_ptr<View> EditingViewController::fullResolutionContainer(const MockupDefinition& definition) {
    if (!state_.designMode)
        return view();
    const Size canvas = definition.canvasSize();
    const auto scrollView = std::make_shared<ScrollView>();
    scrollView->setFrame(makeRect(0, 0, canvas.width, canvas.height));
    scrollView->contentSize = canvas.height >= 1081 ? Size{8000, 8000} : Size{2000, 2000};
    scrollView->canCancelContentTouches = false;
    scrollView->backgroundColor = Color::pureRed();
    state_.designScrollView = scrollView;
    view()->addSubview(scrollView);
    createEdits();
    return scrollView;
}

/// Both screens go through the first content slot on purpose: the first screen is last and stays there, and the second
/// slot still holds what the preview put into it, placed anew by the second screen's markers.
void EditingViewController::placeScreens(const MockupDefinition& definition, const std::shared_ptr<View>& container) {
    const bool square = definition.keepsSquareCorners();
    const double radius = definition.renderCornerRadius();
    if (definition.hasSecondScreen()) {
        performTransformForView(inside2_, "", container, "2", "F", /*isLarge=*/true);
        for (const auto& screen : {inside1_, inside2_}) {
            screen->masksToBounds = !square;
            if (!square)
                screen->cornerRadius = radius;
        }
    }
    performTransformForView(inside1_, "", container, "", "F", /*isLarge=*/true);
    // The first screen's radius, but the second screen's clipping, with one screen too: whether the first screen is cut
    // is as the layout or the edit panel left it. Design mode cuts the first.
    ImageView& clipped = state_.designMode ? *inside1_ : *inside2_;
    clipped.masksToBounds = !square;
    if (!square)
        inside1_->cornerRadius = radius;
}

void EditingViewController::drawFirstScreen() {
    notePicture("screenshot 1", inside1_->image());
    const Rect box = contentView_->frame();
    const std::int32_t x = truncatedInteger(box.origin.x);
    const std::int32_t y = truncatedInteger(box.origin.y);
    const std::int32_t width = truncatedInteger(box.size.width);
    const std::int32_t height = truncatedInteger(box.size.height);
    // Contexts know one interpolation quality, the highest.
    resetTransformedImageView();
    drawerNewScreenImage(x, y, width, height);
}

/// Drawn as it stands in perspective, straight into the canvas, without the first screen's flattening.
void EditingViewController::drawSecondScreen(const Rect& canvas) {
    if (!contentView2_)
        return;
    notePicture("screenshot 2", inside2_->image());
    const auto holder = std::make_shared<View>(canvas);
    holder->addSubview(contentView2_);
    drawViewHierarchy(*holder, canvas, contexts_.current());
}

void EditingViewController::drawPicture(const std::string& role, const Image& picture, const Rect& rect) {
    if (!picture)
        return;
    notePicture(role, picture);
    contexts_.current().drawImage(picture, rect);
}

void EditingViewController::addPreviewOfComposite(const Image& picture) {
    const auto preview = std::make_shared<ImageView>(picture);
    preview->setFrame(compositePreview);
    preview->userInteractionEnabled = false;
    view()->addSubview(preview);
}

void EditingViewController::checkDefinition(const MockupDefinition& definition) {
    if (!definition.record().isObject())
        noteProblem("there is no definition of " + imageInfo_);
    if (!isStrictlyConvex(definition.storedCorners("F", "")))
        noteProblem("the corners of screen 1 do not enclose a convex area");
    if (definition.hasSecondScreen() && !isStrictlyConvex(definition.storedCorners("F", "2")))
        noteProblem("the corners of screen 2 do not enclose a convex area");
    if (definition.frameRect().isEmpty())
        noteProblem("a frame picture drawn at " + extentText(definition.frameRect().size) + " cannot be seen");
}

void EditingViewController::notePicture(std::string role, const Image& picture) {
    if (picture)
        report_.pictures.push_back({std::move(role), picture});
}

std::string EditingViewController::compositionProblem() const {
    if (!report_.problems.empty())
        return report_.problems.front();
    for (const ComposedPicture& composed : report_.pictures) {
        if (const std::string failure = composed.picture.source()->failure(); !failure.empty())
            return composed.role + ": " + failure;
    }
    return {};
}

} // namespace quillomat
