#include "platform/graphics/Recording.h"

#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/raster/ConvexPolygon.h"
#include "platform/graphics/raster/Sampler.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>

namespace quillomat {

namespace {

constexpr int deepestNesting = 32;

/// Rasterised at the first question for pixels, and shared as long as somebody holds them.
class RecordingSource final : public ImageSource {
public:
    explicit RecordingSource(Recording recording) : recording_(std::move(recording)) {}

    [[nodiscard]] PixelSize pixelSize() const override { return recording_.size(); }
    [[nodiscard]] const Recording* recording() const override { return &recording_; }

    [[nodiscard]] bool isKnownOpaque() const override {
        std::call_once(opacityProved_, [this] { opaque_ = recording_.provesOpaque(); });
        return opaque_;
    }

    [[nodiscard]] SharedBitmap bitmap() const override {
        const std::scoped_lock lock(mutex_);
        SharedBitmap pixels = pixels_.lock();
        if (!pixels) {
            pixels = std::make_shared<const Bitmap>(rasterize(recording_));
            pixels_ = pixels;
        }
        return pixels;
    }

private:
    Recording recording_;
    mutable std::once_flag opacityProved_;
    mutable bool opaque_ = false;
    mutable std::mutex mutex_;
    mutable std::weak_ptr<const Bitmap> pixels_;
};

bool contains(const Rect& outer, const Rect& inner) {
    return outer.minX() <= inner.minX() && outer.minY() <= inner.minY() && outer.maxX() >= inner.maxX() &&
           outer.maxY() >= inner.maxY();
}

bool hidesCanvas(const LayerDraw& draw, PixelSize canvas) {
    const bool fillHides = draw.fill && draw.fill->alpha >= 1;
    const bool pictureHides =
        draw.picture && draw.picture.source()->isKnownOpaque() && contains(draw.pictureRect, draw.shape.rect);
    if (!(draw.opacity >= 1) || !(fillHides || pictureHides)) {
        return false;
    }
    const auto covers = [canvas](const Homography& map, const RoundedRect& shape) {
        return raster::coversCanvas(raster::visibleOutline(map, shape, canvas), canvas);
    };
    return covers(draw.map, draw.shape) &&
           std::all_of(draw.clips.begin(), draw.clips.end(),
                       [&](const ClipShape& clip) { return covers(clip.map, clip.shape); });
}

bool isWhole(double value) {
    return std::abs(value - std::round(value)) < 1e-3;
}

/// Whether the shape's edges fall on pixel edges.
bool liesOnPixels(const Homography& map, const RoundedRect& shape) {
    const auto along = raster::axisMap(map);
    if (!along || shape.radius > 0) {
        return false;
    }
    const Rect& rect = shape.rect;
    return isWhole(along->originX + along->scaleX * rect.minX()) &&
           isWhole(along->originX + along->scaleX * rect.maxX()) &&
           isWhole(along->originY + along->scaleY * rect.minY()) &&
           isWhole(along->originY + along->scaleY * rect.maxY());
}

/// The whole-pixel shift under which the layer's recording may be drawn in its place.
std::optional<Homography> shiftOfPlainNesting(const LayerDraw& draw) {
    const Recording* inner = draw.picture ? draw.picture.source()->recording() : nullptr;
    if (!inner || inner->size().isEmpty() || draw.fill || !(draw.borderWidth <= 0) || !(draw.opacity >= 1)) {
        return std::nullopt;
    }
    const bool cutOnPixels = liesOnPixels(draw.map, draw.shape) &&
                             std::all_of(draw.clips.begin(), draw.clips.end(),
                                         [](const ClipShape& clip) { return liesOnPixels(clip.map, clip.shape); });
    const auto along = raster::axisMap(raster::pictureToCanvas(draw, inner->size()));
    if (!cutOnPixels || !along || !along->isWholePixelShift(inner->size())) {
        return std::nullopt;
    }
    return Homography::fromAffine(AffineTransform::translation(std::round(along->originX), std::round(along->originY)));
}

void addFlattened(const Recording& recording, const Homography& map, const std::vector<ClipShape>& clips, int depth,
                  Recording& out) {
    for (LayerDraw draw : recording.draws()) {
        draw.map = draw.map.then(map);
        for (ClipShape& clip : draw.clips) {
            clip.map = clip.map.then(map);
        }
        draw.clips.insert(draw.clips.end(), clips.begin(), clips.end());
        const auto shift = depth < deepestNesting ? shiftOfPlainNesting(draw) : std::nullopt;
        if (!shift) {
            out.add(std::move(draw));
            continue;
        }
        const Recording& inner = *draw.picture.source()->recording();
        const Rect canvas = makeRect(0, 0, inner.size().width, inner.size().height);
        std::vector<ClipShape> innerClips = draw.clips;
        innerClips.push_back({draw.map, draw.shape});
        innerClips.push_back({*shift, {canvas, 0}});
        addFlattened(inner, *shift, innerClips, depth + 1, out);
    }
}

} // namespace

bool Recording::provesOpaque() const {
    if (size_.isEmpty()) {
        return false;
    }
    const Recording plain = flattened(*this);
    return std::any_of(plain.draws().begin(), plain.draws().end(),
                       [this](const LayerDraw& draw) { return hidesCanvas(draw, size_); });
}

Recording flattened(const Recording& recording) {
    Recording out(recording.size());
    addFlattened(recording, Homography{}, {}, 0, out);
    return out;
}

Image imageOfRecording(Recording recording, double scale) {
    if (recording.size().isEmpty()) {
        return {};
    }
    return Image(std::make_shared<const RecordingSource>(std::move(recording)), scale);
}

} // namespace quillomat
