#include "platform/graphics/Rasterizer.h"

#include "platform/foundation/Trace.h"
#include "platform/graphics/DrawnPictures.h"
#include "platform/graphics/raster/LayerStack.h"

#include <cassert>

namespace quillomat {

struct Rasterizer::Plan {
    raster::LayerStack layers;
};

Rasterizer::Rasterizer(const Recording& recording) : plan_(std::make_unique<Plan>()) {
    const trace::Span span("plan");
    const PixelSize canvas = recording.size();
    plan_->layers = raster::LayerStack(canvas);
    raster::Pyramids pyramids;
    const Recording plain = withDecodedPictures(flattened(recording));
    for (const LayerDraw& draw : plain.draws()) {
        if (auto layer = raster::Layer::make(draw, canvas, raster::bestKernels(), pyramids)) {
            plan_->layers.add(std::make_shared<const raster::Layer>(std::move(*layer)));
        }
    }
}

Rasterizer::~Rasterizer() = default;

void Rasterizer::rows(int first, int count, std::span<std::uint8_t> out) const {
    const PixelSize canvas = plan_->layers.canvas();
    assert(first >= 0 && count >= 0 && first + count <= canvas.height);
    assert(out.size() >= static_cast<std::size_t>(canvas.width) * 4 * static_cast<std::size_t>(count));
    raster::LayerScratch scratch;
    plan_->layers.drawRows(first, count, {0, canvas.width}, out.data(), scratch);
}

Bitmap rasterize(const Recording& recording, int threads) {
    Bitmap bitmap(recording.size());
    if (!bitmap.size().isEmpty()) {
        const Rasterizer rasterizer(recording);
        rasterizer.plan_->layers.drawOn(bitmap, {0, 0, bitmap.width(), bitmap.height()}, threads);
    }
    return bitmap;
}

} // namespace quillomat
