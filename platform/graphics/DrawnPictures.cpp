#include "platform/graphics/DrawnPictures.h"

#include "platform/graphics/raster/Sampler.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace quillomat {
namespace {

/// Pixels that are there already; what is known of the picture stays known.
class DecodedSource final : public ImageSource {
public:
    DecodedSource(std::shared_ptr<const ImageSource> origin, SharedBitmap bitmap,
                  std::shared_ptr<const SparsePicture> sparse)
        : origin_(std::move(origin)), bitmap_(std::move(bitmap)), sparse_(std::move(sparse)) {}

    [[nodiscard]] PixelSize pixelSize() const override { return bitmap_ ? bitmap_->size() : origin_->pixelSize(); }
    [[nodiscard]] bool isKnownOpaque() const override { return origin_->isKnownOpaque(); }
    [[nodiscard]] SharedBitmap bitmap() const override { return bitmap_; }
    [[nodiscard]] std::shared_ptr<const SparsePicture> sparsePixels() const override { return sparse_; }
    [[nodiscard]] std::string failure() const override { return origin_->failure(); }

private:
    std::shared_ptr<const ImageSource> origin_;
    SharedBitmap bitmap_;
    std::shared_ptr<const SparsePicture> sparse_;
};

/// So many more pixels than are drawn must remain, each way, for a reduction to leave no trace.
constexpr double remaining = 2;

/// The fewest pixels of the picture that this draw can do with.
PixelSize pixelsNeeded(const LayerDraw& draw) {
    const PixelSize whole = draw.picture.pixelSize();
    if (!draw.map.isAffine() || !draw.map.isFinite()) {
        return whole;
    }
    const auto& m = draw.map.m;
    const auto needed = [](double length, int side) {
        const double pixels = std::ceil(length * remaining);
        return pixels < side ? std::max(static_cast<int>(pixels), 1) : side; // a NaN asks for all
    };
    return {needed(std::hypot(m[0], m[1]) * std::abs(draw.pictureRect.size.width), whole.width),
            needed(std::hypot(m[3], m[4]) * std::abs(draw.pictureRect.size.height), whole.height)};
}

struct Wanted {
    std::shared_ptr<const ImageSource> source;
    PixelSize size;
    bool isUnscaled = false; // wherever it is drawn
    SharedBitmap bitmap;
    std::shared_ptr<const SparsePicture> sparse;

    void decode() {
        sparse = isUnscaled ? source->sparsePixels() : nullptr;
        bitmap = sparse ? nullptr : source->bitmapOfAtLeast(size);
    }
};

void decode(std::vector<Wanted>& pictures, int threads) {
    // The longest documents first, so that the threads end together.
    std::vector<Wanted*> order;
    for (Wanted& picture : pictures) {
        order.push_back(&picture);
    }
    std::stable_sort(order.begin(), order.end(), [](const Wanted* a, const Wanted* b) {
        return a->source->encodedLength() > b->source->encodedLength();
    });
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t i = next++; i < order.size(); i = next++) {
            order[i]->decode();
        }
    };
    std::vector<std::jthread> helpers;
    for (int i = 1; i < std::min(threads, static_cast<int>(pictures.size())); ++i) {
        try {
            helpers.emplace_back(work);
        } catch (const std::system_error&) {
            break;
        }
    }
    work();
}

} // namespace

Recording withDecodedPictures(const Recording& recording, int threads) {
    std::vector<Wanted> pictures;
    std::map<const ImageSource*, std::size_t> places;
    for (const LayerDraw& draw : recording.draws()) {
        if (!draw.picture || draw.picture.source()->encodedLength() == 0) {
            continue;
        }
        const PixelSize size = pixelsNeeded(draw);
        const bool isUnscaled = raster::liesOnPixels(draw, draw.picture.pixelSize());
        const auto [place, isNew] = places.try_emplace(draw.picture.source().get(), pictures.size());
        if (isNew) {
            pictures.push_back({draw.picture.source(), size, isUnscaled, nullptr, nullptr});
        } else {
            pictures[place->second].isUnscaled = pictures[place->second].isUnscaled && isUnscaled;
            PixelSize& largest = pictures[place->second].size;
            largest = {std::max(largest.width, size.width), std::max(largest.height, size.height)};
        }
    }
    const int cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    decode(pictures, threads > 0 ? threads : cores);

    Recording decoded(recording.size());
    for (LayerDraw draw : recording.draws()) {
        if (const auto place = places.find(draw.picture.source().get()); place != places.end()) {
            const Wanted& picture = pictures[place->second];
            draw.picture = Image(std::make_shared<const DecodedSource>(picture.source, picture.bitmap, picture.sparse));
        }
        decoded.add(std::move(draw));
    }
    return decoded;
}

} // namespace quillomat
