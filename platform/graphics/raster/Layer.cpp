#include "platform/graphics/raster/Layer.h"

#include "platform/graphics/raster/PlanarStretch.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace quillomat::raster {

namespace {

double unit(double value) {
    return value > 0 ? std::min(value, 1.0) : 0;
}

Pixel over(const Pixel& above, const Pixel& below) {
    Pixel result{};
    for (std::size_t i = 0; i < 4; ++i) {
        const std::uint32_t sum = above[i] + dividedBy255(below[i] * (255U - above[3]));
        result[i] = static_cast<std::uint8_t>(std::min(sum, 255U));
    }
    return result;
}

Polygon clippedOutline(const LayerDraw& draw, PixelSize canvas) {
    Polygon outline = visibleOutline(draw.map, draw.shape, canvas);
    for (const ClipShape& clip : draw.clips) {
        if (outline.size() < 3) {
            return {};
        }
        outline = intersection(outline, visibleOutline(clip.map, clip.shape, canvas));
    }
    return outline;
}

bool pictureFillsShape(const LayerDraw& draw) {
    // A rounding error of the layout is no gap.
    const Rect& shape = draw.shape.rect;
    const Rect& picture = draw.pictureRect;
    const double slackX = 1e-9 * std::abs(shape.size.width);
    const double slackY = 1e-9 * std::abs(shape.size.height);
    return picture.minX() <= shape.minX() + slackX && picture.minY() <= shape.minY() + slackY &&
           picture.maxX() >= shape.maxX() - slackX && picture.maxY() >= shape.maxY() - slackY;
}

std::uint8_t* roomFor(std::size_t bytes, std::vector<std::uint8_t>& memory) {
    if (memory.size() < bytes) {
        memory.resize(bytes);
    }
    return memory.data();
}

SampledArea boundsOf(const Polygon& polygon) {
    double left = 1e9, top = 1e9, right = 0, bottom = 0;
    for (const Point& p : polygon) {
        left = std::min(left, p.x), right = std::max(right, p.x);
        top = std::min(top, p.y), bottom = std::max(bottom, p.y);
    }
    return {static_cast<int>(std::floor(left)), static_cast<int>(std::floor(top)), static_cast<int>(std::ceil(right)),
            static_cast<int>(std::ceil(bottom))};
}

} // namespace

Pixel premultiplied(const Color& color) {
    const double alpha = unit(color.alpha);
    const auto byte = [](double value) { return static_cast<std::uint8_t>(value * 255 + 0.5); };
    return {byte(unit(color.red) * alpha), byte(unit(color.green) * alpha), byte(unit(color.blue) * alpha),
            byte(alpha)};
}

std::optional<Layer> Layer::make(const LayerDraw& draw, PixelSize canvas, const Kernels& kernels, Pyramids& pyramids,
                                 const StreamedPicture* stream) {
    Layer layer;
    layer.kernels_ = &kernels;
    const Polygon outline = clippedOutline(draw, canvas);
    layer.shape_ = Coverage(outline, canvas, draw.opacity);
    if (layer.shape_.isEmpty()) {
        return std::nullopt;
    }
    layer.area_ = boundsOf(outline);
    if (draw.fill && premultiplied(*draw.fill)[3] > 0) {
        layer.fill_ = premultiplied(*draw.fill);
    }
    Polygon innerOutline = outline;
    if (draw.borderWidth > 0 && premultiplied(draw.borderColor)[3] > 0) {
        layer.border_ = premultiplied(draw.borderColor);
        innerOutline = intersection(outline, visibleOutline(draw.map, insetBy(draw.shape, draw.borderWidth), canvas));
        layer.inner_ = Coverage(innerOutline, canvas, draw.opacity);
    }
    layer.makePicture(draw, outline, canvas, pyramids, stream);
    if (layer.inner_ && layer.picture_) {
        layer.pictureInner_ = Coverage(
            intersection(innerOutline, visibleOutline(draw.map, {draw.pictureRect, 0}, canvas)), canvas, draw.opacity);
    }
    if (!layer.fill_ && !layer.sampler_ && !layer.inner_) {
        return std::nullopt;
    }
    if (layer.sampler_ && !layer.fill_ && !layer.inner_ && !layer.picture_) {
        layer.sparse_ = layer.sampler_->sparse();
    }
    return layer;
}

void Layer::makePicture(const LayerDraw& draw, const Polygon& outline, PixelSize canvas, Pyramids& pyramids,
                        const StreamedPicture* stream) {
    if (!draw.picture || draw.pictureRect.isEmpty()) {
        return;
    }
    const bool fills = pictureFillsShape(draw);
    const Polygon visible =
        fills ? outline : intersection(outline, visibleOutline(draw.map, {draw.pictureRect, 0}, canvas));
    if (visible.size() < 3) {
        return;
    }
    sampled_ = boundsOf(visible);
    const ImageSource& source = *draw.picture.source();
    auto runs = liesOnPixels(draw, source.pixelSize()) ? source.sparsePixels() : nullptr;
    if (stream != nullptr) {
        sampler_ = stream->makeSampler(sampled_);
    } else if (runs) {
        sampler_ = makeSparseSampler(std::move(runs), draw);
    } else if (auto planes = source.planes()) {
        sampler_ = std::make_unique<PlanarSampler>(planes, draw, sampled_, *kernels_);
    } else {
        sampler_ = makeSampler(source.bitmap(), draw, sampled_, *kernels_, pyramids);
    }
    pictureIsOpaque_ =
        sampler_ && (source.isKnownOpaque() || (sampler_->sparse() != nullptr && sampler_->sparse()->isOpaque()));
    if (sampler_ && !fills) {
        picture_ = Coverage(visible, canvas, draw.opacity);
    }
}

void Layer::keepPixels() {
    const bool isCopied = sampler_ && (sampler_->sparse() != nullptr ||
                                       sampler_->direct(sampled_.top, sampled_.left, sampled_.right) != nullptr);
    if (sampler_ && !keepsPixels_ && !isCopied) {
        sampler_ = makeKeepingSampler(std::move(sampler_), sampled_);
        keepsPixels_ = true;
    }
}

const std::uint8_t* Layer::pixelsOfRow(int y, int left, int right, LayerScratch& scratch) const {
    const std::size_t bytes = static_cast<std::size_t>(right - left) * 4;
    if (sampler_) {
        if (const std::uint8_t* inPlace = sampler_->direct(y, left, right); inPlace && (!fill_ || pictureIsOpaque_)) {
            return inPlace;
        }
    }
    std::uint8_t* const pixels = roomFor(bytes, scratch.pixels);
    if (!sampler_) {
        for (std::size_t i = 0; i < bytes; i += 4) {
            std::memcpy(pixels + i, fill_->data(), 4);
        }
        return pixels;
    }
    sampler_->row(y, left, right, pixels, scratch.sampler);
    if (!fill_ || pictureIsOpaque_) {
        return pixels;
    }
    std::uint8_t* const mixed = roomFor(bytes, scratch.mixed);
    for (std::size_t i = 0; i < bytes; i += 4) {
        std::memcpy(mixed + i, fill_->data(), 4);
    }
    kernels_->compositeUniform(mixed, pixels, 255, right - left);
    return mixed;
}

bool Layer::isOpaqueInside() const {
    return !inner_ && !picture_ && (sampler_ ? pictureIsOpaque_ : (*fill_)[3] == 255);
}

Span Layer::hiddenBelow(int y, LayerScratch& scratch) const {
    const bool isOpaque = isOpaqueInside();
    if (!(isOpaque || sparse_ != nullptr) || y < shape_.top() || y >= shape_.bottom()) {
        return {};
    }
    const Span opaque = isOpaque ? Span{0, std::numeric_limits<int>::max()} : sparse_->widestOpaque(y);
    if (opaque.isEmpty()) {
        return {};
    }
    const CoverageRow row = shape_.row(y, scratch.shape);
    const Span hidden{std::max(row.runLeft, opaque.left), std::min(row.runRight, opaque.right)};
    return row.run == 255 && !hidden.isEmpty() ? hidden : Span{};
}

void Layer::drawRow(int y, const Span& window, const Span& hidden, std::uint8_t* canvasRow,
                    LayerScratch& scratch) const {
    if (y < shape_.top() || y >= shape_.bottom()) {
        return;
    }
    if (inner_ || picture_) {
        const CoverageRow row = shape_.wholeRow(y, scratch.shape);
        const Span part{std::max(row.left, window.left), std::min(row.right, window.right)};
        if (!part.isEmpty()) {
            drawMixedRow(y, row, part, canvasRow, scratch);
        }
        return;
    }
    const CoverageRow row = shape_.row(y, scratch.shape);
    const Span part{std::max(row.left, window.left), std::min(row.right, window.right)};
    if (hidden.isEmpty()) {
        drawPlainRow(y, row, part, canvasRow, scratch);
        return;
    }
    drawPlainRow(y, row, {part.left, std::min(part.right, hidden.left)}, canvasRow, scratch);
    drawPlainRow(y, row, {std::max(part.left, hidden.right), part.right}, canvasRow, scratch);
}

void Layer::drawPlainRow(int y, const CoverageRow& row, const Span& part, std::uint8_t* canvasRow,
                         LayerScratch& scratch) const {
    if (part.isEmpty()) {
        return;
    }
    if (sparse_ != nullptr) {
        drawSparseRow(y, row, part, canvasRow, scratch);
        return;
    }
    const auto draw = [&](int from, int to, bool isRun) {
        const int left = std::max(from, part.left);
        const int right = std::min(to, part.right);
        if (left >= right) {
            return;
        }
        std::uint8_t* const canvas = canvasRow + static_cast<std::ptrdiff_t>(left) * 4;
        const bool replaces = isRun && row.run == 255 && isOpaqueInside();
        if (replaces && sampler_ && sampler_->direct(y, left, right) == nullptr) {
            sampler_->row(y, left, right, canvas, scratch.sampler);
            return;
        }
        const std::uint8_t* const pixels = pixelsOfRow(y, left, right, scratch);
        if (replaces) {
            std::memcpy(canvas, pixels, static_cast<std::size_t>(right - left) * 4);
        } else if (isRun) {
            kernels_->compositeUniform(canvas, pixels, row.run, right - left);
        } else {
            kernels_->compositeCovered(canvas, pixels, scratch.shape.values.data() + left, right - left);
        }
    };
    draw(row.left, row.runLeft, /*isRun=*/false);
    draw(row.runLeft, row.runRight, /*isRun=*/true);
    draw(row.runRight, row.right, /*isRun=*/false);
}

/// As `drawPlainRow`, but what is empty is not looked at and what is opaque goes straight to the canvas.
void Layer::drawSparseRow(int y, const CoverageRow& row, const Span& part, std::uint8_t* canvasRow,
                          LayerScratch& scratch) const {
    std::uint8_t* const pixels = roomFor(static_cast<std::size_t>(part.length()) * 4, scratch.pixels);
    const auto drawEdge = [&](int left, int right) {
        left = std::max(left, part.left);
        right = std::min(right, part.right);
        if (left < right) {
            sampler_->row(y, left, right, pixels, scratch.sampler);
            kernels_->compositeCovered(canvasRow + static_cast<std::ptrdiff_t>(left) * 4, pixels,
                                       scratch.shape.values.data() + left, right - left);
        }
    };
    drawEdge(row.left, row.runLeft);
    const int end = std::min(row.runRight, part.right);
    for (int x = std::max(row.runLeft, part.left); x < end;) {
        const SparsePicture::Stretch stretch = sparse_->stretchAt(y, x, end);
        std::uint8_t* const to = canvasRow + static_cast<std::ptrdiff_t>(x) * 4;
        if (stretch.content == SparsePicture::Content::opaque && row.run == 255) {
            sampler_->row(y, x, stretch.right, to, scratch.sampler);
        } else if (stretch.content != SparsePicture::Content::empty) {
            const std::uint8_t* from = stretch.pixels;
            if (from == nullptr) {
                sampler_->row(y, x, stretch.right, pixels, scratch.sampler);
                from = pixels;
            }
            kernels_->compositeUniform(to, from, row.run, stretch.right - x);
        }
        x = stretch.right;
    }
    drawEdge(row.runRight, row.right);
}

void Layer::drawMixedRow(int y, const CoverageRow& row, const Span& part, std::uint8_t* canvasRow,
                         LayerScratch& scratch) const {
    CoverageRow pictured = sampler_ ? row : CoverageRow{};
    const auto values = [&](const std::optional<Coverage>& plane, CoverageScratch& planeScratch) {
        planeScratch.prepareFor(row.right);
        // What the plane does not reach is 0.
        std::fill(planeScratch.values.begin() + row.left, planeScratch.values.begin() + row.right, std::uint8_t{0});
        return plane->wholeRow(y, planeScratch);
    };
    const std::uint8_t* const shape = scratch.shape.values.data();
    const std::uint8_t* inner = shape;
    const std::uint8_t* picture = shape;
    if (inner_) {
        (void)values(inner_, scratch.inner);
        inner = scratch.inner.values.data();
    }
    if (picture_) {
        pictured = values(picture_, scratch.picture);
        picture = scratch.picture.values.data();
    }
    const std::uint8_t* both = inner_ ? inner : picture;
    if (pictureInner_) {
        (void)values(pictureInner_, scratch.pictureInner);
        both = scratch.pictureInner.values.data();
    }
    pictured.left = std::max(pictured.left, part.left);
    pictured.right = std::min(pictured.right, part.right);
    if (!pictured.isEmpty()) {
        const auto bytes = static_cast<std::size_t>(pictured.right - pictured.left) * 4;
        sampler_->row(y, pictured.left, pictured.right, roomFor(bytes, scratch.pixels), scratch.sampler);
    }
    const Pixel fill = fill_.value_or(Pixel{});
    const Pixel borderedFill = over(border_, fill);
    for (int x = part.left; x < part.right; ++x) {
        // The pixel's square in four parts: picture or not, within the border or under it.
        const int whole = shape[x];
        const int under = std::max(0, whole - inner[x]);
        const bool hasPicture = x >= pictured.left && x < pictured.right;
        const int pictureInside = hasPicture ? std::min<int>(both[x], whole - under) : 0;
        const int pictureUnder = hasPicture ? std::clamp(picture[x] - both[x], 0, under) : 0;
        const int fillInside = whole - under - pictureInside;
        const int fillUnder = under - pictureUnder;
        Pixel content = fill;
        if (hasPicture) {
            Pixel sampled;
            std::memcpy(sampled.data(), scratch.pixels.data() + static_cast<std::ptrdiff_t>(x - pictured.left) * 4, 4);
            content = over(sampled, fill);
        }
        const Pixel borderedContent = over(border_, content);
        std::uint8_t* const to = canvasRow + static_cast<std::ptrdiff_t>(x) * 4;
        int sums[4];
        for (std::size_t i = 0; i < 4; ++i) {
            sums[i] = content[i] * pictureInside + fill[i] * fillInside + borderedContent[i] * pictureUnder +
                      borderedFill[i] * fillUnder;
        }
        const std::uint32_t rest = 255 - dividedBy255(static_cast<std::uint32_t>(sums[3]));
        for (std::size_t i = 0; i < 4; ++i) {
            const std::uint32_t sum = static_cast<std::uint32_t>(sums[i]) + to[i] * rest;
            to[i] = static_cast<std::uint8_t>(dividedBy255(std::min(sum, 65152U)));
        }
    }
}

} // namespace quillomat::raster
