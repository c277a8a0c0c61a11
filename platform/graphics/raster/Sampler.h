// Where a layer's picture pixels come from: a copy, a stretch along the axes, or a projected footprint.
#pragma once

#include "geometry/Homography.h"
#include "platform/graphics/Recording.h"
#include "platform/graphics/SparsePicture.h"
#include "platform/graphics/raster/FilterTables.h"
#include "platform/graphics/raster/Kernels.h"
#include "platform/graphics/raster/MixedLines.h"
#include "platform/graphics/raster/Pyramid.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace quillomat::raster {

/// The parts of pixels, and the picture that they are read from.
struct PartsOfPixels {
    PixelParts each;
    double scaleU = 1; // of that picture to the whole one
    double scaleV = 1;
};

/// A footprint by which each part of a pixel is filtered.
struct PartsFootprint {
    Footprint footprint;
    PartsOfPixels parts;
};

/// Neighbouring pixels of a row that share a footprint: one along the canvas row's line where rows of the picture and
/// of the canvas go the same way, and the other one once it is needed.
struct FootprintBlock {
    int left = 0;
    int length = 0;
    std::optional<LineFootprint> along;
    std::optional<PartsFootprint> ofParts;
};

/// The blocks that one sampler has found for the rows that go together.
class FootprintBlocks {
public:
    explicit FootprintBlocks(const void* sampler) : sampler_(sampler) {}

    [[nodiscard]] bool isOf(const void* sampler) const { return sampler == sampler_; }
    /// Forgets the blocks of other rows.
    void begin(int rows, std::size_t places) {
        found_ += rows != rows_ ? 1 : 0;
        rows_ = rows;
        if (blocks_.size() < places) {
            blocks_.resize(places);
        }
    }
    /// The block kept at a place, and whether it has been filled in for these rows.
    [[nodiscard]] std::pair<FootprintBlock*, bool> at(std::size_t place) {
        Kept& kept = blocks_[place];
        return {&kept.block, std::exchange(kept.found, found_) == found_};
    }

private:
    struct Kept {
        std::uint32_t found = 0;
        FootprintBlock block;
    };
    const void* sampler_;
    std::unique_ptr<TablesInUse> tables_ = std::make_unique<TablesInUse>(); // what the blocks point to
    int rows_ = -1;
    std::uint32_t found_ = 0;
    std::vector<Kept> blocks_;
};

/// Working memory of one thread, grown as samplers need it.
struct SamplerScratch {
    std::vector<std::int16_t> combined;
    std::vector<const std::uint8_t*> rows;
    std::vector<std::int16_t> weights;
    std::vector<std::uint8_t> widened;
    std::vector<std::uint8_t> mixedPlanes;
    std::vector<std::int8_t> mixWeights;
    std::vector<MixedLines> lines; // of each sampler that has asked
    // Positions of a segment; wide registers are slow to pass what crosses a line of the cache.
    alignas(64) std::array<std::int32_t, longestSegment> u{};
    alignas(64) std::array<std::int32_t, longestSegment> v{};
    alignas(64) std::array<std::int32_t, std::size_t{4} * longestSegment * mostPartsAcross * mostPartsDown> sums{};
    std::vector<FootprintBlocks> footprints; // of each sampler that has asked

    [[nodiscard]] MixedLines& linesOf(const void* asking) {
        for (MixedLines& known : lines) {
            if (known.isOf(asking)) {
                return known;
            }
        }
        return lines.emplace_back(asking);
    }
    [[nodiscard]] FootprintBlocks& footprintsOf(const void* asking) {
        for (FootprintBlocks& blocks : footprints) {
            if (blocks.isOf(asking)) {
                return blocks;
            }
        }
        return footprints.emplace_back(asking);
    }
};

/// Pixels [left, right) of a row.
struct Span {
    int left = 0;
    int right = 0;

    [[nodiscard]] bool isEmpty() const { return left >= right; }
    [[nodiscard]] int length() const { return right - left; }
};

class SparseRows;

/// The rows of a picture: one behind the other, or each wherever it lies.
class PictureRows {
public:
    PictureRows(std::shared_ptr<const void> owner, const PixelView& view)
        : size{view.width, view.height}, owner_(std::move(owner)), first_(view.pixels), stride_(view.stride) {}
    explicit PictureRows(const SharedBitmap& bitmap)
        : size(bitmap->size()), owner_(bitmap), first_(bitmap->row(0)), stride_(bitmap->stride()) {}
    /// Rows that come and go: `each` outlives whoever reads them.
    PictureRows(PixelSize extent, const std::uint8_t* const* each) : size(extent), each_(each) {}

    [[nodiscard]] const std::uint8_t* row(int y) const {
        const auto index = static_cast<std::size_t>(y);
        return each_ != nullptr ? each_[index] : first_ + index * stride_;
    }

    /// The row where it is in memory for as long as the others are; null for rows that come and go, which are in the
    /// cache when they are read.
    [[nodiscard]] const std::uint8_t* rowToFetch(int y) const {
        return each_ == nullptr && y < size.height ? row(y) : nullptr;
    }

    PixelSize size;

private:
    std::shared_ptr<const void> owner_;
    const std::uint8_t* first_ = nullptr;
    std::size_t stride_ = 0;
    const std::uint8_t* const* each_ = nullptr;
};

/// Pixels of canvas rows, premultiplied, as if the picture went on beyond its edges for ever. Thread-safe.
class Sampler {
public:
    virtual ~Sampler() = default;
    /// Writes canvas pixels [left, right) of row y.
    virtual void row(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const = 0;
    /// The pixels in place, where no arithmetic is needed and all of them exist; null otherwise.
    [[nodiscard]] virtual const std::uint8_t* direct(int, int, int) const { return nullptr; }
    /// The runs that they come from, where they do: what is empty need not be drawn, what is opaque need not be mixed.
    [[nodiscard]] virtual const SparseRows* sparse() const { return nullptr; }
};

/// Canvas rows of a picture in runs.
class SparseRows {
public:
    virtual ~SparseRows() = default;
    /// What lies from column x of row y on, as far as it is alike, up to `right`.
    [[nodiscard]] virtual SparsePicture::Stretch stretchAt(int y, int x, int right) const = 0;
    /// The longest opaque stretch of row y.
    [[nodiscard]] virtual Span widestOpaque(int y) const = 0;
    [[nodiscard]] virtual bool isOpaque() const = 0;
};

/// A map along the axes: canvas position = origin + scale x picture position, per axis, in pixels.
struct AxisMap {
    double originX = 0;
    double originY = 0;
    double scaleX = 1;
    double scaleY = 1;

    /// The map is the identity but for a whole-pixel shift, to a thousandth of a pixel over the whole picture.
    [[nodiscard]] bool isWholePixelShift(PixelSize picture) const;
};

/// How picture pixels come to lie on the canvas.
[[nodiscard]] Homography pictureToCanvas(const LayerDraw& draw, PixelSize picture);
/// That map, where it runs along the axes.
[[nodiscard]] std::optional<AxisMap> axisMap(const Homography& pictureToCanvas);

/// The canvas columns and rows that the sampler will be asked for.
struct SampledArea {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

[[nodiscard]] std::unique_ptr<Sampler> makeCopySampler(PictureRows picture, const AxisMap& map);
/// Over a picture that `liesOnPixels`.
[[nodiscard]] std::unique_ptr<Sampler> makeSparseSampler(std::shared_ptr<const SparsePicture> picture,
                                                         const LayerDraw& draw);
/// Whether a picture of that size is drawn without being filtered, under a whole-pixel shift.
[[nodiscard]] bool liesOnPixels(const LayerDraw& draw, PixelSize picture);
[[nodiscard]] std::unique_ptr<Sampler> makeStretchSampler(std::shared_ptr<const Pyramid> picture, const AxisMap& map,
                                                          PictureFilter filter, const SampledArea& area,
                                                          const Kernels& kernels);
/// Filtered as `PictureFilter::smooth` is where nothing is halved beforehand.
[[nodiscard]] std::unique_ptr<Sampler> makeMixSampler(const PictureRows& picture, const AxisMap& map,
                                                      const SampledArea& area, const Kernels& kernels);
[[nodiscard]] std::unique_ptr<Sampler> makeWarpSampler(std::shared_ptr<const Pyramid> picture,
                                                       const Homography& canvasToPicture, const SampledArea& area,
                                                       const Kernels& kernels);
/// The cheapest of them that draws the picture right; null where nothing can be seen of it.
[[nodiscard]] std::unique_ptr<Sampler> makeSampler(const SharedBitmap& picture, const LayerDraw& draw,
                                                   const SampledArea& area, const Kernels& kernels, Pyramids& pyramids);
/// Keeps what `sampler` gave for the area, and gives it again. One row is for one thread at a time.
[[nodiscard]] std::unique_ptr<Sampler> makeKeepingSampler(std::unique_ptr<Sampler> sampler, const SampledArea& area);

} // namespace quillomat::raster
