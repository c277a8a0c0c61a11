// Where footprints lie and what they weigh, for the loops that filter them. Compiled once for each kind of processor,
// like those who include it.
#if defined(QUILLOMAT_RASTER_FOOTPRINT_OFFSETS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLOMAT_RASTER_FOOTPRINT_OFFSETS_INL_H
#undef QUILLOMAT_RASTER_FOOTPRINT_OFFSETS_INL_H
#else
#define QUILLOMAT_RASTER_FOOTPRINT_OFFSETS_INL_H
#endif

#include "platform/graphics/raster/Kernels.h"
#include "platform/graphics/raster/Registers-inl.h"

#include <algorithm>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

using PositionTag = hn::CappedTag<std::int32_t, 16>;
using PositionVector = hn::Vec<PositionTag>;

/// Positions that were found before.
class StoredPositions {
public:
    HWY_INLINE StoredPositions(const std::int32_t* u, const std::int32_t* v) : u_(u), v_(v) {}

    [[nodiscard]] HWY_INLINE PositionVector u(int i) const { return hn::LoadU(PositionTag(), u_ + i); }
    [[nodiscard]] HWY_INLINE PositionVector v(int i) const { return hn::LoadU(PositionTag(), v_ + i); }

private:
    const std::int32_t* u_;
    const std::int32_t* v_;
};

/// Positions along a curve from its `first` one on.
HWY_INLINE PositionVector positionsAlong(const CurvedRow::Axis& axis, int first) {
    const hn::RebindToFloat<PositionTag> d;
    const PositionTag d32;
    const auto at = hn::Iota(d, static_cast<float>(first));
    const auto bent = hn::Mul(hn::Set(d, axis.bend), at);
    const auto straight = hn::Mul(hn::Add(bent, hn::Set(d, axis.step)), at);
    const auto rounded = hn::Add(hn::Add(straight, hn::Set(d, axis.start)), hn::Set(d, roundingFloat));
    return hn::Add(hn::BitCast(d32, rounded), hn::Set(d32, axis.origin - bitsOfRoundingFloat));
}

/// Positions along a curve, from its `first` on.
class CurvePositions {
public:
    HWY_INLINE CurvePositions(const CurvedRow& row, int first) : row_(row), first_(first) {}

    [[nodiscard]] HWY_INLINE PositionVector u(int i) const { return positionsAlong(row_.u, first_ + i); }
    [[nodiscard]] HWY_INLINE PositionVector v(int i) const { return positionsAlong(row_.v, first_ + i); }

private:
    const CurvedRow& row_;
    int first_;
};

/// Where every pixel's footprint lies: its first row, its weights, and the columns at which its rows begin. A steady
/// footprint has but one such column and line of weights.
template <bool kSteady> struct Offsets {
    static constexpr int rowsTold = kSteady ? 1 : mostTaps;
    HWY_ALIGN std::int32_t firstRows[longestSegment];
    HWY_ALIGN std::int32_t rowWeights[longestSegment];
    HWY_ALIGN std::int32_t starts[longestSegment];            // of steady footprints, in bytes from row `baseRow`
    HWY_ALIGN std::int32_t pixels[rowsTold][longestSegment];  // in bytes from the row's beginning
    HWY_ALIGN std::int32_t weights[rowsTold][longestSegment]; // in bytes from the line of phase 0
    int baseRow = 0;
    bool allInside = false;
};

template <class Positions, bool kSteady>
HWY_INLINE void findOffsets(const Footprint& footprint, const Positions& positions, int count,
                            Offsets<kSteady>& offsets) {
    const int rowTaps = footprint.rows->taps;
    const PositionTag d;
    const auto lanes = static_cast<int>(hn::Lanes(d));
    // Whole vectors: what lies beyond `count` may be anything, and makes the check of the edges stricter at most.
    const auto shear = hn::Set(d, footprint.shear);
    const auto start = hn::Set(d, 1 - footprint.columns->taps / 2);
    const auto line = hn::Set(d, footprint.columns->taps);
    const auto phaseMask = hn::Set(d, phases - 1);
    const auto fromMiddle = hn::Set(d, (1 - rowTaps / 2) * phases);
    const auto toMiddle = hn::Set(d, (rowTaps - 1) * (footprint.shear / steadyShear) >> 1);
    offsets.baseRow = hn::GetLane(positions.v(0)) >> phaseBits;
    const auto baseRow = hn::Set(d, offsets.baseRow);
    const auto stride = hn::Set(d, static_cast<std::int32_t>(footprint.picture.stride));
    auto lowest = hn::Zero(d);
    auto highest = hn::Zero(d);
    auto lowestRow = hn::Zero(d);
    auto highestRow = hn::Zero(d);
    for (int i = 0; i < count; i += lanes) {
        const auto position = positions.u(i);
        const auto at = positions.v(i);
        const auto phase = hn::And(at, phaseMask);
        const auto firstRow = hn::Add(hn::ShiftRight<phaseBits>(at), hn::Set(d, 1 - rowTaps / 2));
        lowestRow = hn::Min(lowestRow, firstRow);
        highestRow = hn::Max(highestRow, firstRow);
        hn::Store(firstRow, d, offsets.firstRows + i);
        hn::Store(hn::Mul(phase, hn::Set(d, footprint.rows->line())), d, offsets.rowWeights + i);
        auto shift = hn::Add(hn::Mul(shear, hn::Sub(fromMiddle, phase)), hn::Set(d, shearOne / 2));
        for (int row = 0; row < (kSteady ? 1 : rowTaps); ++row) {
            const auto shifted = hn::Add(position, hn::ShiftRight<15>(shift));
            const auto column = hn::ShiftRight<phaseBits>(kSteady ? hn::Add(shifted, toMiddle) : shifted);
            const auto bytes = hn::ShiftLeft<2>(hn::Add(column, start));
            lowest = hn::Min(lowest, bytes);
            highest = hn::Max(highest, bytes);
            hn::Store(bytes, d, offsets.pixels[row] + i);
            if constexpr (kSteady) {
                hn::Store(hn::Add(hn::Mul(hn::Sub(firstRow, baseRow), stride), bytes), d, offsets.starts + i);
            }
            hn::Store(hn::Mul(hn::Sub(shifted, hn::ShiftLeft<phaseBits>(column)), line), d, offsets.weights[row] + i);
            shift = hn::Add(shift, hn::Set(d, footprint.shear * phases));
        }
    }
    const int widthOfTaps = (footprint.picture.width - footprint.columns->taps) * 4;
    const int lastFirstRow = footprint.picture.height - rowTaps;
    offsets.allInside = widthOfTaps >= 0 && lastFirstRow >= 0 && hn::AllFalse(d, hn::Lt(lowest, hn::Zero(d))) &&
                        hn::AllFalse(d, hn::Gt(highest, hn::Set(d, widthOfTaps))) &&
                        hn::AllFalse(d, hn::Lt(lowestRow, hn::Zero(d))) &&
                        hn::AllFalse(d, hn::Gt(highestRow, hn::Set(d, lastFirstRow)));
}

/// Whether one pixel's footprint lies within the picture. The shear moves columns one way from row to row: the first
/// and the last row tell.
template <bool kSteady> HWY_INLINE bool liesInside(const Footprint& footprint, const Offsets<kSteady>& offsets, int i) {
    const int lastRow = footprint.rows->taps - 1;
    const int widthOfTaps = (footprint.picture.width - footprint.columns->taps) * 4;
    const auto [low, high] = std::minmax(offsets.pixels[0][i], offsets.pixels[kSteady ? 0 : lastRow][i]);
    return offsets.firstRows[i] >= 0 && offsets.firstRows[i] + lastRow < footprint.picture.height && low >= 0 &&
           high <= widthOfTaps;
}

/// Weights of pixels, row by row. What a loop reads again and again is held where a store of bytes cannot be thought to
/// change it.
template <bool kSteady> class TapWeights {
public:
    HWY_INLINE TapWeights(const Footprint& footprint, const Offsets<kSteady>& offsets)
        : offsets_(offsets)
        , columnWeights_(footprint.columns->lines)
        , steadyStep_(footprint.shear / steadyShear * footprint.columns->taps)
        , rowWeights_(footprint.rows->lines)
        , steadyLines_(footprint.steadyLines)
        , rowTaps_(footprint.rows->taps) {}

    [[nodiscard]] HWY_INLINE int rowTaps() const { return rowTaps_; }
    [[nodiscard]] HWY_INLINE const std::int16_t* rows(int i) const { return rowWeights_ + offsets_.rowWeights[i]; }
    [[nodiscard]] HWY_INLINE const std::uint8_t* columns(int i, int row) const {
        return columnWeights_ +
               (kSteady ? offsets_.weights[0][i] + row * steadyStep_ : offsets_.weights[kSteady ? 0 : row][i]);
    }
    /// Whether the column weights of all rows lie together.
    [[nodiscard]] HWY_INLINE bool isSmall() const { return kSteady && steadyLines_ != nullptr; }
    [[nodiscard]] HWY_INLINE const std::uint8_t* smallColumns(int i) const {
        return steadyLines_ + std::ptrdiff_t{4} * offsets_.weights[0][i];
    }

protected:
    const Offsets<kSteady>& offsets_;

private:
    const std::uint8_t* columnWeights_;
    std::ptrdiff_t steadyStep_;
    const std::int16_t* rowWeights_;
    const std::uint8_t* steadyLines_;
    int rowTaps_;
};

/// The taps of pixels whose footprints lie within the picture.
template <bool kSteady> class TapsInside : public TapWeights<kSteady> {
public:
    HWY_INLINE TapsInside(const Footprint& footprint, const Offsets<kSteady>& offsets)
        : TapWeights<kSteady>(footprint, offsets)
        , stride_(static_cast<std::ptrdiff_t>(footprint.picture.stride))
        , picture_(footprint.picture.pixels + (kSteady ? offsets.baseRow * stride_ : 0)) {}

    [[nodiscard]] HWY_INLINE const std::uint8_t* pixels(int i, int row) const {
        if constexpr (kSteady) {
            return picture_ + row * stride_ + this->offsets_.starts[i];
        } else {
            return picture_ + (this->offsets_.firstRows[i] + row) * stride_ + this->offsets_.pixels[row][i];
        }
    }

private:
    std::ptrdiff_t stride_;
    const std::uint8_t* picture_;
};

/// The taps of one pixel, those outside the picture being its nearest pixels.
template <int kBlocks, bool kSteady> class TapsAtEdge : public TapWeights<kSteady> {
public:
    HWY_INLINE TapsAtEdge(const Footprint& footprint, const Offsets<kSteady>& offsets, int i)
        : TapWeights<kSteady>(footprint, offsets) {
        const PixelView& picture = footprint.picture;
        for (int row = 0; row < footprint.rows->taps; ++row) {
            const auto y = static_cast<std::size_t>(std::clamp(offsets.firstRows[i] + row, 0, picture.height - 1));
            const std::uint8_t* const line = picture.pixels + y * picture.stride;
            const int column = offsets.pixels[kSteady ? 0 : row][i] / 4;
            if (picture.width >= taps) {
                copyTaps(line, picture.width, column, taps_[row]);
            } else {
                copyEachTap(line, picture.width, column, taps_[row]);
            }
        }
    }

    [[nodiscard]] HWY_INLINE const std::uint8_t* pixels(int, int row) const { return taps_[row] + bytes; }

private:
    static constexpr int taps = kBlocks * 4;
    static constexpr std::ptrdiff_t bytes = taps * 4;

    /// The nearest pixel in every place, and over it those that are there, shifted to theirs.
    static HWY_INLINE void copyTaps(const std::uint8_t* line, int width, int column, std::uint8_t* row) {
        const int inside = std::clamp(column, 0, width - taps);
        const int shift = std::clamp(inside - column, -taps, taps);
        const std::uint8_t* const nearest = line + std::ptrdiff_t{4} * (shift > 0 ? 0 : width - 1);
        for (int tap = 0; tap < taps; ++tap) {
            std::memcpy(row + bytes + std::ptrdiff_t{4} * tap, nearest, 4);
        }
        std::memcpy(row + bytes + std::ptrdiff_t{4} * shift, line + std::ptrdiff_t{4} * inside, bytes);
    }
    static HWY_INLINE void copyEachTap(const std::uint8_t* line, int width, int column, std::uint8_t* row) {
        for (int tap = 0; tap < taps; ++tap) {
            const int x = std::clamp(column + tap, 0, width - 1);
            std::memcpy(row + bytes + std::ptrdiff_t{4} * tap, line + std::ptrdiff_t{4} * x, 4);
        }
    }

    // With room on both sides for what a shift leaves over.
    alignas(64) std::uint8_t taps_[mostTaps][3 * bytes];
};

/// Fetches the lines that canvas rows further down will read.
template <bool kSteady>
HWY_INLINE void prefetchBelow(const Footprint& footprint, const Offsets<kSteady>& offsets, int from, int to) {
    const auto stride = static_cast<std::ptrdiff_t>(footprint.picture.stride);
    const FetchedAhead& ahead = footprint.ahead;
    for (int i = from; i < to; i += ahead.pixelsApart) {
        const int first = offsets.firstRows[i] + ahead.firstRow;
        for (int row = first; row < first + ahead.rows; ++row) {
            const int inside = std::clamp(row, 0, footprint.picture.height - 1);
            __builtin_prefetch(footprint.picture.pixels + inside * stride + offsets.pixels[0][i]);
        }
    }
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();

#endif
