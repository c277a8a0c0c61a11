#include "platform/graphics/Rasterizer.h"

#include "platform/foundation/Trace.h"
#include "platform/graphics/DrawnPictures.h"
#include "platform/graphics/raster/LayerStack.h"

#include <atomic>
#include <cassert>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace quillomat {

namespace {

/// Working memory that threads use in turn, so that what one band found serves the next.
class ScratchPool {
public:
    [[nodiscard]] std::unique_ptr<raster::LayerScratch> take() {
        const std::scoped_lock lock(mutex_);
        if (free_.empty()) {
            return std::make_unique<raster::LayerScratch>();
        }
        auto scratch = std::move(free_.back());
        free_.pop_back();
        return scratch;
    }
    void giveBack(std::unique_ptr<raster::LayerScratch> scratch) {
        const std::scoped_lock lock(mutex_);
        free_.push_back(std::move(scratch));
    }

private:
    std::mutex mutex_;
    std::vector<std::unique_ptr<raster::LayerScratch>> free_;
};

} // namespace

struct Rasterizer::Plan {
    ScratchPool scratches;
    std::vector<std::shared_ptr<raster::StreamedPicture>> streams; // which the layers draw from
    raster::LayerStack layers;
};

Rasterizer::Rasterizer(const Recording& recording, RowUse use, int threads) : plan_(std::make_unique<Plan>()) {
    const trace::Span span("plan");
    const PixelSize canvas = recording.size();
    plan_->layers = raster::LayerStack(canvas);
    raster::Pyramids pyramids;
    const Recording flat = flattened(recording);
    const StreamedRecording plain = use == RowUse::once ? withStreamedPictures(flat, threads)
                                                        : StreamedRecording{withDecodedPictures(flat, threads), {}};
    for (std::size_t i = 0; i < plain.recording.draws().size(); ++i) {
        const auto stream = i < plain.streams.size() ? plain.streams[i] : nullptr;
        if (stream) {
            plan_->streams.push_back(stream);
        }
        const LayerDraw& draw = plain.recording.draws()[i];
        if (auto layer = raster::Layer::make(draw, canvas, raster::bestKernels(), pyramids, stream.get())) {
            plan_->layers.add(std::make_shared<const raster::Layer>(std::move(*layer)));
        }
    }
}

Rasterizer::~Rasterizer() = default;

void Rasterizer::rows(int first, int count, std::span<std::uint8_t> out) const {
    const PixelSize canvas = plan_->layers.canvas();
    assert(first >= 0 && count >= 0 && first + count <= canvas.height);
    assert(out.size() >= static_cast<std::size_t>(canvas.width) * 4 * static_cast<std::size_t>(count));
    if (count == 0) {
        return;
    }
    const raster::ClaimedRows claimed(plan_->streams, first, count);
    auto scratch = plan_->scratches.take();
    plan_->layers.drawRows(first, count, {0, canvas.width}, out.data(), *scratch);
    plan_->scratches.giveBack(std::move(scratch));
}

void Rasterizer::decodeAhead() const {
    const std::atomic<bool> isEnough = false;
    for (const auto& stream : plan_->streams) {
        stream->runAhead(isEnough);
    }
}

bool Rasterizer::finish() const {
    bool isWhole = true;
    for (const auto& stream : plan_->streams) {
        isWhole = stream->finish() && isWhole;
    }
    return isWhole;
}

std::size_t Rasterizer::mostBytesOfStreams() const {
    std::size_t bytes = 0;
    for (const auto& stream : plan_->streams) {
        bytes += stream->mostBytes();
    }
    return bytes;
}

Bitmap rasterize(const Recording& recording, int threads) {
    Bitmap bitmap(recording.size());
    rasterizeOnto(bitmap, recording, threads);
    return bitmap;
}

void rasterizeOnto(Bitmap& canvas, const Recording& recording, int threads) {
    assert(canvas.size() == recording.size());
    if (!canvas.size().isEmpty()) {
        const Rasterizer rasterizer(recording);
        rasterizer.plan_->layers.drawOn(canvas, {0, 0, canvas.width(), canvas.height()}, threads);
    }
}

} // namespace quillomat
