#include "platform/graphics/DrawnPictures.h"

#include "platform/foundation/Crew.h"
#include "platform/graphics/RowReader.h"
#include "platform/graphics/raster/PlanarStretch.h"
#include "platform/graphics/raster/Sampler.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <map>
#include <utility>
#include <vector>

namespace quillomat {
namespace {

/// Pixels that are there already; what is known of the picture stays known.
class DecodedSource final : public ImageSource {
public:
    DecodedSource(std::shared_ptr<const ImageSource> origin, SharedBitmap bitmap,
                  std::shared_ptr<const SparsePicture> sparse, std::shared_ptr<const PlanarPicture> planes)
        : origin_(std::move(origin))
        , bitmap_(std::move(bitmap))
        , sparse_(std::move(sparse))
        , planes_(std::move(planes)) {}

    [[nodiscard]] PixelSize pixelSize() const override { return bitmap_ ? bitmap_->size() : origin_->pixelSize(); }
    [[nodiscard]] bool isKnownOpaque() const override { return origin_->isKnownOpaque(); }
    [[nodiscard]] SharedBitmap bitmap() const override { return bitmap_; }
    [[nodiscard]] std::shared_ptr<const SparsePicture> sparsePixels() const override { return sparse_; }
    [[nodiscard]] std::shared_ptr<const PlanarPicture> planes() const override { return planes_; }
    [[nodiscard]] std::string failure() const override { return origin_->failure(); }

private:
    std::shared_ptr<const ImageSource> origin_;
    SharedBitmap bitmap_;
    std::shared_ptr<const SparsePicture> sparse_;
    std::shared_ptr<const PlanarPicture> planes_;
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

/// A picture and all draws that want it in one form.
struct Wanted {
    std::vector<const LayerDraw*> draws;
    PixelSize size;
    bool isUnscaled = false; // wherever it is drawn
    bool mayBePlanar = false;
    bool mayStream = false;
    SharedBitmap bitmap = nullptr;
    std::shared_ptr<const SparsePicture> sparse = nullptr;
    std::shared_ptr<const PlanarPicture> planes = nullptr;
    std::shared_ptr<raster::StreamedPicture> stream = nullptr;

    [[nodiscard]] const std::shared_ptr<const ImageSource>& source() const { return draws.front()->picture.source(); }

    void decode(PixelSize canvas) {
        sparse = isUnscaled ? source()->sparsePixels() : nullptr;
        if (!sparse && mayBePlanar) {
            findPlanes(canvas);
        }
        if (!sparse && !planes && !stream && mayStream) {
            stream = raster::StreamedPicture::make(source()->rowsOfAtLeast(whole(), size), *draws.front(), canvas,
                                                   raster::bestKernels());
        }
        bitmap = sparse || planes || stream ? nullptr : source()->bitmapOfAtLeast(size);
    }

private:
    [[nodiscard]] PixelRect whole() const { return {0, 0, source()->pixelSize().width, source()->pixelSize().height}; }

    void findPlanes(PixelSize canvas) {
        auto reader = source()->planesOfAtLeast(whole(), size);
        const bool isWanted = reader && std::all_of(draws.begin(), draws.end(), [&](const LayerDraw* draw) {
                                  const PixelRect& part = reader->layout().part;
                                  return raster::isStretchedFromPlanes(*draw, {part.width, part.height}, canvas);
                              });
        if (isWanted && mayStream) {
            stream = raster::StreamedPicture::make(std::move(reader), *draws.front(), canvas, raster::bestKernels());
        } else if (isWanted) {
            planes = source()->planarPartOfAtLeast(whole(), size);
        }
    }
};

bool needsDecoding(const ImageSource& source) {
    return source.recording() != nullptr || source.encodedLength() > 0;
}

/// How long a picture keeps a thread before anything is drawn, in pixels to decode: they tell better than the
/// document's length, as frames are large and empty. Of a picture that is decoded while it is drawn it is what has room
/// to be kept until then. Recordings come first: they decode pictures and draw, too.
double workBeforeDrawing(const Wanted& wanted, PixelSize canvas) {
    const ImageSource& source = *wanted.source();
    if (source.recording() != nullptr) {
        return std::numeric_limits<double>::infinity();
    }
    const auto pixels = static_cast<double>(source.pixelSize().area());
    const bool becomesRuns = wanted.isUnscaled && !source.mayBeInPlanes();
    const bool isLeftForLater = wanted.mayStream && !becomesRuns && wanted.draws.front()->map.isAffine();
    const double kept = static_cast<double>(raster::bytesKeptAhead) / 4 / static_cast<double>(canvas.area());
    return isLeftForLater ? pixels * std::min(kept, 1.0) : pixels;
}

/// Every picture that has no pixels yet, once, and which it is by its source; twice, where some draws want its planes
/// and others cannot use them.
struct WantedPictures {
    using Key = std::pair<const ImageSource*, bool>;
    std::vector<Wanted> pictures;
    std::map<Key, std::size_t> places;

    WantedPictures(const Recording& recording, bool mayStream) {
        for (const LayerDraw& draw : recording.draws()) {
            if (draw.picture && needsDecoding(*draw.picture.source())) {
                add(draw, mayStream);
            }
        }
    }

    [[nodiscard]] static Key keyOf(const LayerDraw& draw) {
        const ImageSource* source = draw.picture.source().get();
        return {source, source != nullptr && source->mayBeInPlanes() && raster::mayBeStretchedFromPlanes(draw)};
    }

private:
    void add(const LayerDraw& draw, bool mayStream) {
        const PixelSize size = pixelsNeeded(draw);
        const bool isUnscaled = raster::liesOnPixels(draw, draw.picture.pixelSize());
        const Key key = keyOf(draw);
        const auto [place, isNew] = places.try_emplace(key, pictures.size());
        if (isNew) {
            pictures.push_back({.draws = {&draw},
                                .size = size,
                                .isUnscaled = isUnscaled,
                                .mayBePlanar = key.second,
                                .mayStream = mayStream});
            return;
        }
        Wanted& known = pictures[place->second];
        known.draws.push_back(&draw);
        known.isUnscaled = known.isUnscaled && isUnscaled;
        known.mayStream = false; // its rows would be wanted twice
        known.size = {std::max(known.size.width, size.width), std::max(known.size.height, size.height)};
    }
};

void decode(std::vector<Wanted>& pictures, PixelSize canvas, int threads) {
    // The most work first, so that the threads end together.
    std::vector<Wanted*> order;
    order.reserve(pictures.size());
    for (Wanted& picture : pictures) {
        order.push_back(&picture);
    }
    std::stable_sort(order.begin(), order.end(), [canvas](const Wanted* a, const Wanted* b) {
        return workBeforeDrawing(*a, canvas) > workBeforeDrawing(*b, canvas);
    });
    std::atomic<std::size_t> next = 0;
    std::atomic<std::size_t> decoded = 0;
    std::atomic<bool> areAllDecoded = false;
    const int workers = std::min(threads, static_cast<int>(pictures.size()));
    Crew::shared().run(workers, [&] {
        for (std::size_t i = next++; i < order.size(); i = next++) {
            order[i]->decode(canvas);
            if (++decoded == order.size()) {
                areAllDecoded = true;
            }
            if (order[i]->stream && workers > 1) {
                order[i]->stream->runAhead(areAllDecoded);
            }
        }
    });
}

StreamedRecording decoded(const Recording& recording, int threads, bool mayStream) {
    WantedPictures wanted(recording, mayStream);
    decode(wanted.pictures, recording.size(), threadsFor(threads));

    StreamedRecording result{Recording(recording.size()), {}};
    for (LayerDraw draw : recording.draws()) {
        result.streams.emplace_back();
        if (const auto place = wanted.places.find(WantedPictures::keyOf(draw)); place != wanted.places.end()) {
            const Wanted& picture = wanted.pictures[place->second];
            draw.picture = Image(std::make_shared<const DecodedSource>(picture.source(), picture.bitmap, picture.sparse,
                                                                       picture.planes));
            result.streams.back() = picture.stream;
        }
        result.recording.add(std::move(draw));
    }
    return result;
}

} // namespace

Recording withDecodedPictures(const Recording& recording, int threads) {
    return decoded(recording, threads, /*mayStream=*/false).recording;
}

StreamedRecording withStreamedPictures(const Recording& recording, int threads) {
    return decoded(recording, threads, /*mayStream=*/true);
}

} // namespace quillomat
