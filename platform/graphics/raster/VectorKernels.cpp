// The kernels for wide registers, one source for every kind of processor; each gives the bits of the scalar twin.
#include "platform/graphics/raster/Kernels.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/raster/VectorKernels.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET == HWY_SCALAR

const Kernels& kernelsOfTarget() {
    return scalarKernels();
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes16 = hn::FixedTag<std::uint8_t, 16>;
using Shorts8 = hn::FixedTag<std::int16_t, 8>;
// Two rows of a footprint at once where registers hold them.
using RowBytes = hn::CappedTag<std::uint8_t, 32>;
using RowShorts = hn::CappedTag<std::int16_t, 16>;

/// Of each two neighbouring bytes the sum of their products with two weights: the bytes are signed, the weights are not
/// and sum to at most 256, so that nothing overflows.
template <class D16, class V8> HWY_INLINE hn::Vec<D16> multipliedPairs(D16 d16, V8 pixels, V8 weights) {
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    (void)d16;
    return hn::Vec<D16>{_mm256_maddubs_epi16(weights.raw, pixels.raw)};
#elif HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_SSSE3
    (void)d16;
    return hn::Vec<D16>{_mm_maddubs_epi16(weights.raw, pixels.raw)};
#else
    // Both bytes of a pair as 16-bit numbers.
    const hn::RebindToUnsigned<D16> u16;
    const auto p = hn::BitCast(d16, pixels);
    const auto w = hn::BitCast(u16, weights);
    const auto even = hn::Mul(hn::ShiftRight<8>(hn::ShiftLeft<8>(p)),
                              hn::BitCast(d16, hn::And(w, hn::Set(u16, std::uint16_t{0xFF}))));
    const auto odd = hn::Mul(hn::ShiftRight<8>(p), hn::BitCast(d16, hn::ShiftRight<8>(w)));
    return hn::Add(even, odd);
#endif
}

void projectPositions(const ProjectedRow& row, int left, int count, std::int32_t* u, std::int32_t* v) {
    const hn::ScalableTag<double> d;
    const hn::Rebind<std::int32_t, decltype(d)> d32;
    const auto lanes = static_cast<int>(hn::Lanes(d));
    const auto lowest = hn::Set(d, lowestPosition);
    const auto half = hn::Set(d, 0.5);
    const auto whole = hn::Set(d32, static_cast<std::int32_t>(lowestPosition));
    const auto position = [&](auto x, auto inverse, double step, double start, double highest) {
        const auto at = hn::Mul(hn::Add(hn::Mul(x, hn::Set(d, step)), hn::Set(d, start)), inverse);
        const auto most = hn::Set(d, highest);
        const auto raised = hn::IfThenElse(hn::Gt(at, lowest), at, lowest);
        const auto bounded = hn::IfThenElse(hn::Lt(raised, most), raised, most);
        return hn::Add(hn::DemoteTo(d32, hn::Add(hn::Sub(bounded, lowest), half)), whole);
    };
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        // Small whole numbers and halves: exact, in whatever order they are added.
        const auto x = hn::Iota(d, left + 0.5 + i);
        const auto inverse = hn::Div(hn::Set(d, 1.0), hn::Add(hn::Mul(x, hn::Set(d, row.wStep)), hn::Set(d, row.w0)));
        hn::StoreU(position(x, inverse, row.uStep, row.u0, row.highestU), d32, u + i);
        hn::StoreU(position(x, inverse, row.vStep, row.v0, row.highestV), d32, v + i);
    }
    scalarKernels().projectPositions(row, left + i, count - i, u + i, v + i);
}

HWY_INLINE hn::Vec<hn::CappedTag<std::int32_t, 16>> followedAxis(const CurvedRow::Axis& axis,
                                                                 hn::Vec<hn::CappedTag<float, 16>> at) {
    const hn::CappedTag<float, 16> d;
    const hn::RebindToSigned<decltype(d)> d32;
    const auto bent = hn::Mul(hn::Set(d, axis.bend), at);
    const auto along = hn::Mul(hn::Add(bent, hn::Set(d, axis.step)), at);
    const auto raised = hn::Add(hn::Add(along, hn::Set(d, axis.start)), hn::Set(d, farthestFromOrigin + 0.5F));
    const auto origin = hn::Set(d32, axis.origin - static_cast<std::int32_t>(farthestFromOrigin));
    return hn::Add(hn::ConvertTo(d32, raised), origin);
}

void followCurve(const CurvedRow& row, int first, int count, std::int32_t* u, std::int32_t* v) {
    const hn::CappedTag<float, 16> d;
    const hn::RebindToSigned<decltype(d)> d32;
    const auto lanes = static_cast<int>(hn::Lanes(d));
    for (int i = 0; i < count; i += lanes) {
        const auto at = hn::Iota(d, static_cast<float>(first + i));
        hn::StoreU(followedAxis(row.u, at), d32, u + i);
        hn::StoreU(followedAxis(row.v, at), d32, v + i);
    }
}

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

template <bool kSteady>
HWY_INLINE void findOffsets(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                            Offsets<kSteady>& offsets) {
    const int rowTaps = footprint.rows->taps;
    const hn::CappedTag<std::int32_t, 16> d;
    const auto lanes = static_cast<int>(hn::Lanes(d));
    // Whole vectors: what lies beyond `count` may be anything, and makes the check of the edges stricter at most.
    const auto shear = hn::Set(d, footprint.shear);
    const auto start = hn::Set(d, 1 - footprint.columns->taps / 2);
    const auto line = hn::Set(d, static_cast<std::int32_t>(footprint.columns->line()));
    const auto phaseMask = hn::Set(d, phases - 1);
    const auto fromMiddle = hn::Set(d, (1 - rowTaps / 2) * phases);
    const auto toMiddle = hn::Set(d, (rowTaps - 1) * (footprint.shear / steadyShear) >> 1);
    offsets.baseRow = v[0] >> phaseBits;
    const auto baseRow = hn::Set(d, offsets.baseRow);
    const auto stride = hn::Set(d, static_cast<std::int32_t>(footprint.picture.stride));
    auto lowest = hn::Zero(d);
    auto highest = hn::Zero(d);
    auto lowestRow = hn::Zero(d);
    auto highestRow = hn::Zero(d);
    for (int i = 0; i < count; i += lanes) {
        const auto position = hn::LoadU(d, u + i);
        const auto at = hn::LoadU(d, v + i);
        const auto phase = hn::And(at, phaseMask);
        const auto firstRow = hn::Add(hn::ShiftRight<phaseBits>(at), hn::Set(d, 1 - rowTaps / 2));
        lowestRow = hn::Min(lowestRow, firstRow);
        highestRow = hn::Max(highestRow, firstRow);
        hn::Store(firstRow, d, offsets.firstRows + i);
        hn::Store(hn::Mul(phase, hn::Set(d, rowTaps)), d, offsets.rowWeights + i);
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

/// Sixteen bytes of one row, or of two rows one above the other.
template <class D> HWY_INLINE hn::Vec<D> loadedRows(D d, const std::uint8_t* first, const std::uint8_t* second) {
    const Bytes16 half;
    if constexpr (hn::MaxLanes(D()) == 32) {
        return hn::Combine(d, hn::LoadU(half, second), hn::LoadU(half, first));
    } else {
        (void)second;
        return hn::LoadU(d, first);
    }
}

template <class D> HWY_INLINE hn::Vec<Shorts8> foldedRows(D, hn::Vec<D> sums) {
    const Shorts8 half;
    if constexpr (hn::MaxLanes(D()) == 16) {
        return hn::SaturatedAdd(hn::LowerHalf(half, sums), hn::UpperHalf(half, sums));
    } else {
        return sums;
    }
}

/// Each row's weight as often as its sixteen bytes have sums.
template <class D> HWY_INLINE hn::Vec<D> spreadRowWeights(D d, const std::int16_t* weights) {
    if constexpr (hn::MaxLanes(D()) == 16) {
        alignas(32) static constexpr std::uint8_t spread[32] = {0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1,
                                                                2, 3, 2, 3, 2, 3, 2, 3, 2, 3, 2, 3, 2, 3, 2, 3};
        const hn::Repartition<std::int32_t, D> d32;
        const hn::Repartition<std::uint8_t, D> d8;
        std::int32_t both = 0;
        std::memcpy(&both, weights, sizeof both);
        return hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(d8, hn::Set(d32, both)), hn::Load(d8, spread)));
    } else {
        return hn::Set(d, *weights);
    }
}

/// What the loop over pixels reads again and again, held where a store of bytes cannot be thought to change it.
struct FilterLoop {
    const std::uint8_t* picture;
    std::ptrdiff_t stride;
    const std::uint8_t* columnWeights;
    std::ptrdiff_t steadyStep;
    const std::int16_t* rowWeights;
    int rowTaps;

    explicit FilterLoop(const Footprint& footprint)
        : picture(footprint.picture.pixels)
        , stride(static_cast<std::ptrdiff_t>(footprint.picture.stride))
        , columnWeights(footprint.columns->lines)
        , steadyStep(footprint.shear / steadyShear * footprint.columns->line())
        , rowWeights(footprint.rows->lines)
        , rowTaps(footprint.rows->taps) {}
};

/// The products of the pixels of one row, or of two, with their weights, pair by pair.
template <int kGroups>
HWY_INLINE hn::Vec<RowShorts> weightedColumns(const std::uint8_t* pixelsA, const std::uint8_t* pixelsB,
                                              const std::uint8_t* weightsA, const std::uint8_t* weightsB) {
    const RowBytes dRows;
    const RowShorts dShorts;
    // Of each two pixels, both values of a channel side by side.
    alignas(32) static constexpr std::uint8_t pairing[32] = {0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15,
                                                             0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15};
    const auto pairs = hn::Load(dRows, pairing);
    const auto signs = hn::Set(dRows, std::uint8_t{0x80});
    auto inRow = hn::Zero(dShorts);
    for (std::ptrdiff_t at = 0; at < kGroups * 16; at += 16) {
        const auto pixels = loadedRows(dRows, pixelsA + at, pixelsB + at);
        const auto weights = loadedRows(dRows, weightsA + at, weightsB + at);
        const auto ordered = hn::Xor(hn::TableLookupBytes(pixels, pairs), signs);
        inRow = hn::Add(inRow, multipliedPairs(dShorts, ordered, weights));
    }
    return inRow;
}

template <int kGroups>
HWY_INLINE hn::Vec<Shorts8> filteredSums(const FilterLoop& loop, const Offsets<true>& offsets, int i) {
    const RowShorts dShorts;
    constexpr int rowsAtOnce = static_cast<int>(hn::MaxLanes(RowBytes())) / 16;
    const std::uint8_t* pixels = loop.picture + offsets.starts[i];
    const std::uint8_t* weights = loop.columnWeights + offsets.weights[0][i];
    const std::int16_t* const rowWeights = loop.rowWeights + offsets.rowWeights[i];
    auto sum = hn::Zero(dShorts);
    for (int r = 0; r < loop.rowTaps; r += rowsAtOnce) {
        const auto inRow = weightedColumns<kGroups>(pixels, pixels + loop.stride, weights, weights + loop.steadyStep);
        sum = hn::Add(sum, hn::MulFixedPoint15(inRow, spreadRowWeights(dShorts, rowWeights + r)));
        pixels += loop.stride * rowsAtOnce;
        weights += loop.steadyStep * rowsAtOnce;
    }
    return foldedRows(dShorts, sum);
}

template <int kGroups>
HWY_INLINE hn::Vec<Shorts8> filteredSums(const FilterLoop& loop, const Offsets<false>& offsets, int i) {
    const RowShorts dShorts;
    constexpr int rowsAtOnce = static_cast<int>(hn::MaxLanes(RowBytes())) / 16;
    const std::uint8_t* row = loop.picture + offsets.firstRows[i] * loop.stride;
    const std::int16_t* const rowWeights = loop.rowWeights + offsets.rowWeights[i];
    auto sum = hn::Zero(dShorts);
    for (int r = 0; r < loop.rowTaps; r += rowsAtOnce) {
        const int second = r + rowsAtOnce - 1;
        const auto inRow = weightedColumns<kGroups>(
            row + offsets.pixels[r][i], row + loop.stride * (rowsAtOnce - 1) + offsets.pixels[second][i],
            loop.columnWeights + offsets.weights[r][i], loop.columnWeights + offsets.weights[second][i]);
        sum = hn::Add(sum, hn::MulFixedPoint15(inRow, spreadRowWeights(dShorts, rowWeights + r)));
        row += loop.stride * rowsAtOnce;
    }
    return foldedRows(dShorts, sum);
}

/// The sums of two pixels, even and odd pairs added, as bytes.
template <class V> HWY_INLINE hn::Vec<hn::FixedTag<std::uint8_t, 8>> roundedPixels(V a, V b) {
    const Shorts8 d16;
    const hn::FixedTag<std::uint8_t, 8> d8;
    const auto sums = hn::SaturatedAdd(hn::ConcatLowerLower(d16, b, a), hn::ConcatUpperUpper(d16, b, a));
    const auto rounded = hn::ShiftRight<8>(hn::SaturatedAdd(sums, hn::Set(d16, std::int16_t{128})));
    return hn::DemoteTo(d8, hn::Add(rounded, hn::Set(d16, std::int16_t{128})));
}

constexpr int rowsAhead = 8;

/// Pixels [from, to), whose footprints lie within the picture. `kRowTaps` is their number, or 0 where it varies.
template <int kGroups, int kRowTaps, bool kSteady>
HWY_INLINE void filterInside(const Footprint& footprint, const Offsets<kSteady>& offsets, int from, int to,
                             std::uint8_t* out) {
    const hn::FixedTag<std::uint8_t, 8> d8;
    FilterLoop loop(footprint);
    if constexpr (kRowTaps > 0) {
        loop.rowTaps = kRowTaps;
    }
    // The lines that canvas rows further down will read, one for about each 16 of the picture's pixels.
    for (int i = from; i < to; i += 8) {
        const int row = std::min(offsets.firstRows[i] + rowsAhead, footprint.picture.height - 1);
        __builtin_prefetch(loop.picture + row * loop.stride + offsets.pixels[0][i]);
    }
    if constexpr (kSteady) {
        loop.picture += offsets.baseRow * loop.stride;
    }
    int i = from;
    for (; i + 2 <= to; i += 2) {
        hn::StoreU(roundedPixels(filteredSums<kGroups>(loop, offsets, i), filteredSums<kGroups>(loop, offsets, i + 1)),
                   d8, out + static_cast<std::ptrdiff_t>(i) * 4);
    }
    if (i < to) {
        const auto sums = filteredSums<kGroups>(loop, offsets, i);
        HWY_ALIGN std::uint8_t both[8];
        hn::Store(roundedPixels(sums, sums), d8, both);
        std::memcpy(out + static_cast<std::ptrdiff_t>(i) * 4, both, 4);
    }
}

/// One pixel whose footprint leaves the picture: its taps are put together first.
template <int kGroups, bool kSteady>
HWY_INLINE void filterAtEdge(const Footprint& footprint, const Offsets<kSteady>& offsets, int i, std::uint8_t* out) {
    const PixelView& picture = footprint.picture;
    constexpr int rowsAtOnce = static_cast<int>(hn::MaxLanes(RowBytes())) / 16;
    const RowShorts dShorts;
    const FilterLoop loop(footprint);
    HWY_ALIGN std::uint8_t taps[2][kGroups * 16];
    auto sum = hn::Zero(dShorts);
    const auto weightsOf = [&](int row) {
        return loop.columnWeights +
               (kSteady ? offsets.weights[0][i] + row * loop.steadyStep : offsets.weights[kSteady ? 0 : row][i]);
    };
    for (int r = 0; r < loop.rowTaps; r += rowsAtOnce) {
        for (int k = 0; k < rowsAtOnce; ++k) {
            const int y = std::clamp(offsets.firstRows[i] + r + k, 0, picture.height - 1);
            const int column = offsets.pixels[kSteady ? 0 : r + k][i] / 4;
            for (int tap = 0; tap < kGroups * 4; ++tap) {
                const int x = std::clamp(column + tap, 0, picture.width - 1);
                std::memcpy(taps[k] + static_cast<std::ptrdiff_t>(tap) * 4,
                            picture.pixels + y * loop.stride + static_cast<std::ptrdiff_t>(x) * 4, 4);
            }
        }
        const auto inRow =
            weightedColumns<kGroups>(taps[0], taps[rowsAtOnce - 1], weightsOf(r), weightsOf(r + rowsAtOnce - 1));
        const std::int16_t* const rowWeights = loop.rowWeights + offsets.rowWeights[i] + r;
        sum = hn::Add(sum, hn::MulFixedPoint15(inRow, spreadRowWeights(dShorts, rowWeights)));
    }
    const auto folded = foldedRows(dShorts, sum);
    HWY_ALIGN std::uint8_t both[8];
    hn::Store(roundedPixels(folded, folded), hn::FixedTag<std::uint8_t, 8>(), both);
    std::memcpy(out + static_cast<std::ptrdiff_t>(i) * 4, both, 4);
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

template <int kGroups, bool kSteady>
void filterGroups(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                  std::uint8_t* out) {
    Offsets<kSteady> offsets;
    findOffsets(footprint, u, v, count, offsets);
    if (offsets.allInside && footprint.rows->taps == 4) {
        return filterInside<kGroups, 4>(footprint, offsets, 0, count, out);
    }
    for (int from = 0; from < count;) {
        const bool inside = offsets.allInside || liesInside(footprint, offsets, from);
        int to = offsets.allInside ? count : from + 1;
        while (to < count && liesInside(footprint, offsets, to) == inside) {
            ++to;
        }
        if (inside) {
            filterInside<kGroups, 0>(footprint, offsets, from, to, out);
        } else {
            for (int i = from; i < to; ++i) {
                filterAtEdge<kGroups>(footprint, offsets, i, out);
            }
        }
        from = to;
    }
}

template <bool kSteady>
void filterByTaps(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                  std::uint8_t* out) {
    switch (footprint.columns->taps) {
    case 4:
        return filterGroups<1, kSteady>(footprint, u, v, count, out);
    case 8:
        return filterGroups<2, kSteady>(footprint, u, v, count, out);
    case 12:
        return filterGroups<3, kSteady>(footprint, u, v, count, out);
    default:
        return filterGroups<4, kSteady>(footprint, u, v, count, out);
    }
}

void filterFootprint(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                     std::uint8_t* out) {
    return footprint.isSteady ? filterByTaps<true>(footprint, u, v, count, out)
                              : filterByTaps<false>(footprint, u, v, count, out);
}

void combineRows(const std::uint8_t* const* rows, const std::int16_t* weights, int taps, int count, std::int16_t* out) {
    const Bytes16 d8;
    const hn::Half<Bytes16> dHalf;
    const Shorts8 d16;
    const hn::FixedTag<std::int32_t, 4> d32;
    const auto wide = [&](auto bytes, bool upper) {
        return hn::PromoteTo(d16, upper ? hn::UpperHalf(dHalf, bytes) : hn::LowerHalf(dHalf, bytes));
    };
    int i = 0;
    if (taps == 1 && weights[0] == 16384) {
        for (; i + 16 <= count; i += 16) {
            const auto bytes = hn::LoadU(d8, rows[0] + i);
            hn::StoreU(hn::ShiftLeft<6>(wide(bytes, false)), d16, out + i);
            hn::StoreU(hn::ShiftLeft<6>(wide(bytes, true)), d16, out + i + 8);
        }
    }
    const auto round = hn::Set(d32, 128);
    for (; i + 8 <= count; i += 8) {
        auto low = hn::Zero(d32); // half a step is added at the end: processors order what they accumulate differently
        auto high = hn::Zero(d32);
        auto lowRest = hn::Zero(d32);
        auto highRest = hn::Zero(d32);
        for (int tap = 0; tap < taps; tap += 2) {
            const bool paired = tap + 1 < taps;
            const auto a = hn::PromoteTo(d16, hn::LoadU(dHalf, rows[tap] + i));
            const auto b = paired ? hn::PromoteTo(d16, hn::LoadU(dHalf, rows[tap + 1] + i)) : hn::Zero(d16);
            const std::int16_t second = paired ? weights[tap + 1] : std::int16_t{0};
            const auto pair = hn::InterleaveLower(d16, hn::Set(d16, weights[tap]), hn::Set(d16, second));
            low = hn::ReorderWidenMulAccumulate(d32, hn::InterleaveLower(d16, a, b), pair, low, lowRest);
            high = hn::ReorderWidenMulAccumulate(d32, hn::InterleaveUpper(d16, a, b), pair, high, highRest);
        }
        hn::StoreU(hn::ReorderDemote2To(d16,
                                        hn::ShiftRight<8>(hn::Add(round, hn::RearrangeToOddPlusEven(low, lowRest))),
                                        hn::ShiftRight<8>(hn::Add(round, hn::RearrangeToOddPlusEven(high, highRest)))),
                   d16, out + i);
    }
    for (; i < count; ++i) {
        int sum = 128;
        for (int tap = 0; tap < taps; ++tap) {
            sum += rows[tap][i] * weights[tap];
        }
        out[i] = static_cast<std::int16_t>(sum >> 8);
    }
}

void combineColumns(const std::int16_t* row, const std::int32_t* first, const std::int16_t* weights, int taps,
                    int count, std::uint8_t* out) {
    const Bytes16 d8;
    const Shorts8 d16;
    const hn::FixedTag<std::int32_t, 4> d32;
    alignas(16) static constexpr std::uint8_t pairing[16] = {0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15};
    alignas(16) static constexpr std::uint8_t alphas[16] = {3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15};
    const auto pairs = hn::Load(d8, pairing);
    const auto round = hn::Set(d32, 1 << 19);
    const auto sumOf = [&](int i) {
        auto sum = hn::Zero(d32);
        auto rest = hn::Zero(d32);
        const std::int16_t* pixels = row + static_cast<std::ptrdiff_t>(first[i]) * 4;
        const std::int16_t* line = weights + static_cast<std::ptrdiff_t>(i) * taps;
        for (int tap = 0; tap < taps; tap += 2) {
            std::int32_t pair = 0;
            std::memcpy(&pair, line + tap, sizeof pair);
            const auto both = hn::TableLookupBytes(hn::BitCast(d8, hn::LoadU(d16, pixels + tap * 4)), pairs);
            sum = hn::ReorderWidenMulAccumulate(d32, hn::BitCast(d16, both), hn::BitCast(d16, hn::Set(d32, pair)), sum,
                                                rest);
        }
        return hn::ShiftRight<20>(hn::Add(round, hn::RearrangeToOddPlusEven(sum, rest)));
    };
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        const auto a = hn::ReorderDemote2To(d16, sumOf(i), sumOf(i + 1));
        const auto b = hn::ReorderDemote2To(d16, sumOf(i + 2), sumOf(i + 3));
        const hn::FixedTag<std::uint8_t, 8> dHalf;
        const auto bytes = hn::Combine(d8, hn::DemoteTo(dHalf, b), hn::DemoteTo(dHalf, a));
        hn::StoreU(hn::Min(bytes, hn::TableLookupBytes(bytes, hn::Load(d8, alphas))), d8,
                   out + static_cast<std::ptrdiff_t>(i) * 4);
    }
    scalarKernels().combineColumns(row, first + i, weights + static_cast<std::ptrdiff_t>(i) * taps, taps, count - i,
                                   out + static_cast<std::ptrdiff_t>(i) * 4);
}

/// Of each two neighbouring bytes the saturated sum of their products with two signed weights.
template <class D16, class V8> HWY_INLINE hn::Vec<D16> mixedPairs(D16 d16, V8 pixels, V8 weights) {
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    (void)d16;
    if constexpr (hn::MaxLanes(D16()) == 16) {
        return hn::Vec<D16>{_mm256_maddubs_epi16(pixels.raw, weights.raw)};
    } else {
        return hn::Vec<D16>{_mm_maddubs_epi16(pixels.raw, weights.raw)};
    }
#elif HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_SSSE3
    (void)d16;
    return hn::Vec<D16>{_mm_maddubs_epi16(pixels.raw, weights.raw)};
#else
    const hn::RebindToUnsigned<D16> u16;
    const auto p = hn::BitCast(u16, pixels);
    const auto w = hn::BitCast(d16, weights);
    const auto even = hn::Mul(hn::BitCast(d16, hn::And(p, hn::Set(u16, std::uint16_t{0xFF}))),
                              hn::ShiftRight<8>(hn::ShiftLeft<8>(w)));
    const auto odd = hn::Mul(hn::BitCast(d16, hn::ShiftRight<8>(p)), hn::ShiftRight<8>(w));
    return hn::SaturatedAdd(even, odd);
#endif
}

/// Sums of weights' products as means, still in 16 bits.
template <class D16> HWY_INLINE hn::Vec<D16> meansOf(D16 d16, hn::Vec<D16> sums) {
    const auto raised = hn::SaturatedAdd(sums, hn::Set(d16, std::int16_t{mixedWhole / 2}));
    return hn::MulHigh(raised, hn::Set(d16, std::int16_t{mixedInverse}));
}

/// Two vectors of numbers cut to bytes, block by block: of each block of 16 bytes first those of `lower`.
template <class D8, class V16> HWY_INLINE hn::Vec<D8> packedInBlocks(D8 d8, V16 lower, V16 upper) {
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    (void)d8;
    if constexpr (hn::MaxLanes(D8()) == 32) {
        return hn::Vec<D8>{_mm256_packus_epi16(lower.raw, upper.raw)};
    } else {
        return hn::Vec<D8>{_mm_packus_epi16(lower.raw, upper.raw)};
    }
#else
    const hn::Half<D8> dHalf;
    return hn::Combine(d8, hn::DemoteTo(dHalf, upper), hn::DemoteTo(dHalf, lower));
#endif
}

/// Two rows' bytes side by side.
template <class D8, class D16>
HWY_INLINE void addMixedRows(D8 d8, D16 d16, const std::uint8_t* a, const std::uint8_t* b, std::uint16_t weights,
                             hn::Vec<D16>& low, hn::Vec<D16>& high) {
    const auto above = hn::LoadU(d8, a);
    const auto below = hn::LoadU(d8, b);
    const auto pair = hn::BitCast(d8, hn::Set(hn::RebindToUnsigned<D16>(), weights));
    low = hn::SaturatedAdd(low, mixedPairs(d16, hn::InterleaveLower(d8, above, below), pair));
    high = hn::SaturatedAdd(high, mixedPairs(d16, hn::InterleaveUpper(d8, above, below), pair));
}

void mixRows(const std::uint8_t* const* rows, const std::int8_t* weights, int taps, int count, std::uint8_t* out) {
    const RowBytes d8;
    const RowShorts d16;
    constexpr auto lanes = static_cast<int>(hn::MaxLanes(RowBytes()));
    const std::uint8_t* ends[mostTaps * 4];
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        auto low = hn::Zero(d16);
        auto high = hn::Zero(d16);
        for (int tap = 0; tap < taps; tap += 2) {
            const bool isPaired = tap + 1 < taps;
            const auto second = static_cast<std::uint8_t>(isPaired ? weights[tap + 1] : 0);
            const auto both = static_cast<std::uint16_t>(static_cast<std::uint8_t>(weights[tap]) | second << 8);
            addMixedRows(d8, d16, rows[tap] + i, rows[isPaired ? tap + 1 : tap] + i, both, low, high);
        }
        hn::StoreU(packedInBlocks(d8, meansOf(d16, low), meansOf(d16, high)), d8, out + i);
    }
    if (i < count) {
        for (int tap = 0; tap < taps; ++tap) {
            ends[tap] = rows[tap] + i;
        }
        scalarKernels().mixRows(ends, weights, taps, count - i, out + i);
    }
}

/// Of each four pixels their eight weighted sums: of four even taps pairs', of four odd ones, in each group of four
/// taps.
template <class D8>
HWY_INLINE hn::Vec<hn::Repartition<std::int16_t, D8>> mixedGroup(D8 d8, const std::uint8_t* pixels,
                                                                 const std::int8_t* weights) {
    alignas(32) static constexpr std::uint8_t pairing[32] = {0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15,
                                                             0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15};
    const hn::RebindToSigned<D8> dSigned;
    return mixedPairs(hn::Repartition<std::int16_t, D8>(),
                      hn::TableLookupBytes(hn::LoadU(d8, pixels), hn::Load(d8, pairing)),
                      hn::BitCast(d8, hn::LoadU(dSigned, weights)));
}

/// Even and odd pairs of two pixels added, in each block.
template <class D16> HWY_INLINE hn::Vec<D16> addedPairs(D16 d16, hn::Vec<D16> a, hn::Vec<D16> b) {
    const hn::Repartition<std::int64_t, D16> d64;
    const auto a64 = hn::BitCast(d64, a);
    const auto b64 = hn::BitCast(d64, b);
    return hn::SaturatedAdd(hn::BitCast(d16, hn::InterleaveLower(d64, a64, b64)),
                            hn::BitCast(d16, hn::InterleaveUpper(d64, a64, b64)));
}

/// Where one pixel's taps and weights lie.
struct MixedPixel {
    const std::uint8_t* pixels;
    const std::int8_t* weights;
};

/// The sums of two pixels over the groups of four taps from `first` on, every other one.
HWY_INLINE hn::Vec<Shorts8> everyOtherGroup(const MixedPixel& a, const MixedPixel& b, int first, int taps) {
    const Bytes16 d8;
    const Shorts8 d16;
    auto sumA = hn::Zero(d16);
    auto sumB = hn::Zero(d16);
    for (int tap = first; tap < taps; tap += 8) {
        sumA = hn::SaturatedAdd(sumA, mixedGroup(d8, a.pixels + tap * 4, a.weights + tap * 4));
        sumB = hn::SaturatedAdd(sumB, mixedGroup(d8, b.pixels + tap * 4, b.weights + tap * 4));
    }
    return addedPairs(d16, sumA, sumB);
}

template <class At> HWY_INLINE hn::Vec<Shorts8> mixedTwo(const At& at, int i, int taps) {
    const MixedPixel a = at(i);
    const MixedPixel b = at(i + 1);
    if (taps == 4) {
        return everyOtherGroup(a, b, 0, taps);
    }
    if constexpr (hn::MaxLanes(RowBytes()) == 32) {
        const RowBytes d8;
        const RowShorts d16;
        auto sumA = mixedGroup(d8, a.pixels, a.weights);
        auto sumB = mixedGroup(d8, b.pixels, b.weights);
        for (int tap = 8; tap < taps; tap += 8) {
            sumA = hn::SaturatedAdd(sumA, mixedGroup(d8, a.pixels + tap * 4, a.weights + tap * 4));
            sumB = hn::SaturatedAdd(sumB, mixedGroup(d8, b.pixels + tap * 4, b.weights + tap * 4));
        }
        return foldedRows(d16, addedPairs(d16, sumA, sumB));
    } else {
        return hn::SaturatedAdd(everyOtherGroup(a, b, 0, taps), everyOtherGroup(a, b, 4, taps));
    }
}

template <int kTaps>
HWY_INLINE int mixColumnsOf(const std::uint8_t* row, const std::int32_t* first, const std::int8_t* weights, int taps,
                            int count, std::uint8_t* out) {
    const Bytes16 d8;
    const Shorts8 d16;
    alignas(16) static constexpr std::uint8_t alphas[16] = {3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15};
    const int known = kTaps > 0 ? kTaps : taps;
    const auto at = [=](int i) {
        return MixedPixel{row + static_cast<std::ptrdiff_t>(first[i]) * 4,
                          weights + static_cast<std::ptrdiff_t>(i) * known * 4};
    };
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        const auto bytes =
            packedInBlocks(d8, meansOf(d16, mixedTwo(at, i, known)), meansOf(d16, mixedTwo(at, i + 2, known)));
        hn::StoreU(hn::Min(bytes, hn::TableLookupBytes(bytes, hn::Load(d8, alphas))), d8,
                   out + static_cast<std::ptrdiff_t>(i) * 4);
    }
    return i;
}

void mixColumns(const std::uint8_t* row, const std::int32_t* first, const std::int8_t* weights, int taps, int count,
                std::uint8_t* out) {
    const int done = taps == 8   ? mixColumnsOf<8>(row, first, weights, taps, count, out)
                     : taps == 4 ? mixColumnsOf<4>(row, first, weights, taps, count, out)
                                 : mixColumnsOf<0>(row, first, weights, taps, count, out);
    scalarKernels().mixColumns(row, first + done, weights + static_cast<std::ptrdiff_t>(done) * taps * 4, taps,
                               count - done, out + static_cast<std::ptrdiff_t>(done) * 4);
}

/// Four pixels, each byte widened; eight numbers at a time.
struct Composite {
    const hn::FixedTag<std::uint16_t, 8> d16{};

    template <class V> HWY_INLINE V divided(V a) const {
        const auto raised = hn::SaturatedAdd(a, hn::Set(d16, std::uint16_t{128}));
        return hn::ShiftRight<8>(hn::Add(raised, hn::ShiftRight<8>(raised)));
    }

    template <class V> HWY_INLINE V over(V canvas, V pixels, V coverage) const {
        const auto weighted = hn::Mul(pixels, coverage);
        alignas(16) static constexpr std::uint8_t spread[16] = {6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15};
        const Bytes16 d8;
        const auto alpha = hn::BitCast(d16, hn::TableLookupBytes(hn::BitCast(d8, weighted), hn::Load(d8, spread)));
        const auto rest = hn::Sub(hn::Set(d16, std::uint16_t{255}), divided(alpha));
        const auto sum = hn::SaturatedAdd(weighted, hn::Mul(canvas, rest));
        return divided(hn::Min(sum, hn::Set(d16, std::uint16_t{65152})));
    }
};

void compositeUniform(std::uint8_t* canvas, const std::uint8_t* pixels, std::uint8_t coverage, int count) {
    const Composite composite;
    const Bytes16 d8;
    const hn::Half<Bytes16> dHalf;
    const hn::FixedTag<std::uint16_t, 8> d16;
    const hn::FixedTag<std::int16_t, 8> dSigned;
    const hn::FixedTag<std::uint32_t, 4> d32;
    const auto alphas = hn::BitCast(d8, hn::Set(d32, 0xFF000000U));
    const auto factor = hn::Set(d16, std::uint16_t{coverage});
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * 4;
        const auto source = hn::LoadU(d8, pixels + at);
        // Most of a picture with alpha is all there or not there at all.
        if (hn::AllTrue(d8, hn::Eq(source, hn::Zero(d8)))) {
            continue;
        }
        if (coverage == 255 && hn::AllTrue(d8, hn::Eq(hn::And(source, alphas), alphas))) {
            hn::StoreU(source, d8, canvas + at);
            continue;
        }
        const auto under = hn::LoadU(d8, canvas + at);
        const auto low = composite.over(hn::PromoteTo(d16, hn::LowerHalf(dHalf, under)),
                                        hn::PromoteTo(d16, hn::LowerHalf(dHalf, source)), factor);
        const auto high = composite.over(hn::PromoteTo(d16, hn::UpperHalf(dHalf, under)),
                                         hn::PromoteTo(d16, hn::UpperHalf(dHalf, source)), factor);
        hn::StoreU(hn::Combine(d8, hn::DemoteTo(dHalf, hn::BitCast(dSigned, high)),
                               hn::DemoteTo(dHalf, hn::BitCast(dSigned, low))),
                   d8, canvas + at);
    }
    const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * 4;
    scalarKernels().compositeUniform(canvas + at, pixels + at, coverage, count - i);
}

void compositeCovered(std::uint8_t* canvas, const std::uint8_t* pixels, const std::uint8_t* coverage, int count) {
    const Composite composite;
    const Bytes16 d8;
    const hn::Half<Bytes16> dHalf;
    const hn::FixedTag<std::uint16_t, 8> d16;
    const hn::FixedTag<std::int16_t, 8> dSigned;
    const hn::FixedTag<std::uint32_t, 4> d32;
    alignas(16) static constexpr std::uint8_t spread[16] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * 4;
        std::uint32_t four = 0;
        std::memcpy(&four, coverage + i, sizeof four);
        const auto factors = hn::TableLookupBytes(hn::BitCast(d8, hn::Set(d32, four)), hn::Load(d8, spread));
        const auto source = hn::LoadU(d8, pixels + at);
        const auto under = hn::LoadU(d8, canvas + at);
        const auto low = composite.over(hn::PromoteTo(d16, hn::LowerHalf(dHalf, under)),
                                        hn::PromoteTo(d16, hn::LowerHalf(dHalf, source)),
                                        hn::PromoteTo(d16, hn::LowerHalf(dHalf, factors)));
        const auto high = composite.over(hn::PromoteTo(d16, hn::UpperHalf(dHalf, under)),
                                         hn::PromoteTo(d16, hn::UpperHalf(dHalf, source)),
                                         hn::PromoteTo(d16, hn::UpperHalf(dHalf, factors)));
        hn::StoreU(hn::Combine(d8, hn::DemoteTo(dHalf, hn::BitCast(dSigned, high)),
                               hn::DemoteTo(dHalf, hn::BitCast(dSigned, low))),
                   d8, canvas + at);
    }
    const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * 4;
    scalarKernels().compositeCovered(canvas + at, pixels + at, coverage + i, count - i);
}

const Kernels& kernelsOfTarget() {
    static constexpr Kernels kernels{"vector",       projectPositions, followCurve, filterFootprint,  combineRows,
                                     combineColumns, mixRows,          mixColumns,  compositeCovered, compositeUniform};
    return kernels;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillomat::raster {

HWY_EXPORT(kernelsOfTarget);

const Kernels& bestKernels() {
    return HWY_DYNAMIC_DISPATCH(kernelsOfTarget)();
}

} // namespace quillomat::raster
#endif
