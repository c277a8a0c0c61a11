#include "platform/graphics/Rasterizer.h"

#include "platform/graphics/DrawnPictures.h"
#include "platform/graphics/raster/Layer.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cstring>
#include <thread>
#include <vector>

namespace quillomat {

namespace {

constexpr int bandRows = 32;

} // namespace

struct Rasterizer::Plan {
    PixelSize size;
    std::vector<raster::Layer> layers;
};

Rasterizer::Rasterizer(const Recording& recording) : plan_(std::make_unique<Plan>()) {
    plan_->size = recording.size();
    const Recording plain = withDecodedPictures(flattened(recording));
    for (const LayerDraw& draw : plain.draws()) {
        if (auto layer = raster::Layer::make(draw, plan_->size, raster::bestKernels())) {
            plan_->layers.push_back(std::move(*layer));
        }
    }
}

Rasterizer::~Rasterizer() = default;

void Rasterizer::rows(int first, int count, std::span<std::uint8_t> out) const {
    const std::size_t stride = static_cast<std::size_t>(plan_->size.width) * 4;
    assert(first >= 0 && count >= 0 && first + count <= plan_->size.height);
    assert(out.size() >= stride * static_cast<std::size_t>(count));
    raster::LayerScratch scratch(plan_->size.width);
    std::vector<raster::Span> hidden(plan_->layers.size());
    for (int y = first; y < first + count; ++y) {
        // From the top down: the widest run of pixels that a layer above replaces.
        raster::Span widest;
        for (std::size_t i = hidden.size(); i-- > 0;) {
            hidden[i] = widest;
            const raster::Span here = plan_->layers[i].hiddenBelow(y, scratch);
            widest = here.length() > widest.length() ? here : widest;
        }
        std::uint8_t* const row = out.data() + stride * static_cast<std::size_t>(y - first);
        if (widest.length() < plan_->size.width) {
            std::memset(row, 0, stride);
        }
        for (std::size_t i = 0; i < hidden.size(); ++i) {
            plan_->layers[i].drawRow(y, hidden[i], row, scratch);
        }
    }
}

Bitmap rasterize(const Recording& recording, int threads) {
    Bitmap bitmap(recording.size());
    if (bitmap.size().isEmpty()) {
        return bitmap;
    }
    const Rasterizer rasterizer(recording);
    const int bands = (bitmap.height() + bandRows - 1) / bandRows;
    std::atomic<int> next{0};
    const auto work = [&] {
        for (int band = next++; band < bands; band = next++) {
            const int first = band * bandRows;
            const int count = std::min(bandRows, bitmap.height() - first);
            rasterizer.rows(first, count,
                            bitmap.bytes().subspan(bitmap.stride() * static_cast<std::size_t>(first),
                                                   bitmap.stride() * static_cast<std::size_t>(count)));
        }
    };
    const int cores = threads > 0 ? threads : static_cast<int>(std::thread::hardware_concurrency());
    std::vector<std::jthread> helpers;
    for (int i = 1; i < std::min(cores, bands); ++i) {
        helpers.emplace_back(work);
    }
    work();
    helpers.clear(); // joins
    return bitmap;
}

} // namespace quillomat
