#include "platform/graphics/BitmapContext.h"

#include <cassert>
#include <cmath>

namespace quillomat {

namespace {

constexpr double mostPixels = 256e6;
constexpr double longestSide = 30000;

/// Fractional sizes are rounded up, but not by what a multiplication's rounding adds to a whole number.
double pixelsFor(double points, double scale) {
    const double pixels = points * scale;
    const double whole = std::round(pixels);
    return std::abs(pixels - whole) < 1e-6 ? whole : std::ceil(pixels);
}

PixelSize canvasSize(Size size, double scale) {
    const double width = pixelsFor(size.width, scale);
    const double height = pixelsFor(size.height, scale);
    const bool possible =
        width >= 1 && height >= 1 && width <= longestSide && height <= longestSide && width * height <= mostPixels;
    return possible ? PixelSize{static_cast<int>(width), static_cast<int>(height)} : PixelSize{};
}

} // namespace

BitmapContext::BitmapContext(Size size, double scale)
    : scale_(scale), ctm_(AffineTransform::scale(scale, scale)), recording_(canvasSize(size, scale)) {}

void BitmapContext::saveGState() {
    saved_.push_back(ctm_);
}

void BitmapContext::restoreGState() {
    if (!saved_.empty()) {
        ctm_ = saved_.back();
        saved_.pop_back();
    }
}

void BitmapContext::translateCTM(double x, double y) {
    concatCTM(AffineTransform::translation(x, y));
}

void BitmapContext::concatCTM(const AffineTransform& transform) {
    ctm_ = transform.then(ctm_);
}

Homography BitmapContext::userToPixels() const {
    return Homography::fromAffine(ctm_);
}

void BitmapContext::drawImage(const Image& image, const Rect& rect) {
    if (!image) {
        return;
    }
    LayerDraw draw;
    draw.shape = {rect, 0};
    draw.picture = image;
    draw.pictureRect = rect;
    draw.filter = PictureFilter::smooth;
    drawLayer(std::move(draw));
}

void BitmapContext::drawLayer(LayerDraw draw) {
    if (recording_.size().isEmpty()) {
        return;
    }
    const Homography toPixels = userToPixels();
    draw.map = draw.map.then(toPixels);
    for (ClipShape& clip : draw.clips) {
        clip.map = clip.map.then(toPixels);
    }
    recording_.add(std::move(draw));
}

Image BitmapContext::makeImage() const {
    return imageOfRecording(recording_, scale_);
}

void ContextStack::begin(Size size, double scale) {
    open_.emplace_back(size, scale);
}

BitmapContext& ContextStack::current() {
    assert(!open_.empty());
    return open_.back();
}

Image ContextStack::imageFromCurrent() {
    return open_.empty() ? Image{} : open_.back().makeImage();
}

void ContextStack::end() {
    if (!open_.empty()) {
        open_.pop_back();
    }
}

} // namespace quillomat
