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

/// Where every pixel's footprint lies: its first row, its weights, and the bytes at which its rows begin.
struct Offsets {
    HWY_ALIGN std::int32_t firstRows[longestSegment];
    HWY_ALIGN std::int32_t rowWeights[longestSegment];
    HWY_ALIGN std::int32_t pixels[mostTaps][longestSegment];
    HWY_ALIGN std::int32_t weights[mostTaps][longestSegment];
    bool allInside = false;
};

HWY_INLINE void findOffsets(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                            Offsets& offsets) {
    const PhaseTable& rows = *footprint.rows;
    const hn::CappedTag<std::int32_t, 16> d;
    const auto lanes = static_cast<int>(hn::Lanes(d));
    // Whole vectors: what lies beyond `count` repeats the last pixel and is not looked at.
    HWY_ALIGN std::int32_t columns[longestSegment];
    HWY_ALIGN std::int32_t lines[longestSegment];
    std::memcpy(columns, u, static_cast<std::size_t>(count) * sizeof *u);
    std::memcpy(lines, v, static_cast<std::size_t>(count) * sizeof *v);
    for (int i = count; i % lanes != 0; ++i) {
        columns[i] = u[count - 1];
        lines[i] = v[count - 1];
    }
    const auto shear = hn::Set(d, footprint.shear);
    const auto step = hn::Set(d, footprint.shear * phases);
    const auto start = hn::Set(d, 1 - footprint.columns->columnTaps / 2);
    const auto line = hn::Set(d, static_cast<std::int32_t>(footprint.columns->columnLine()));
    const auto rowLine = hn::Set(d, static_cast<std::int32_t>(rows.rowLine()));
    const auto phaseMask = hn::Set(d, phases - 1);
    auto lowest = hn::Zero(d);
    auto highest = hn::Zero(d);
    auto lowestRow = hn::Zero(d);
    auto highestRow = hn::Zero(d);
    for (int i = 0; i < count; i += lanes) {
        const auto position = hn::Load(d, columns + i);
        const auto at = hn::Load(d, lines + i);
        const auto phase = hn::And(at, phaseMask);
        const auto later = hn::VecFromMask(d, hn::Gt(phase, hn::Set(d, rows.laterRowStartsFrom - 1)));
        const auto rowStart = hn::Sub(hn::Set(d, rows.firstRowStart), later);
        const auto firstRow = hn::Add(hn::ShiftRight<phaseBits>(at), rowStart);
        lowestRow = hn::Min(lowestRow, firstRow);
        highestRow = hn::Max(highestRow, firstRow);
        hn::Store(firstRow, d, offsets.firstRows + i);
        hn::Store(hn::Mul(phase, rowLine), d, offsets.rowWeights + i);
        auto shift = hn::Add(hn::Mul(shear, hn::Sub(hn::ShiftLeft<phaseBits>(rowStart), phase)), hn::Set(d, 0x8000));
        for (int row = 0; row < rows.rowTaps; ++row) {
            const auto shifted = hn::Add(position, hn::ShiftRight<16>(shift));
            const auto bytes = hn::ShiftLeft<2>(hn::Add(hn::ShiftRight<phaseBits>(shifted), start));
            lowest = hn::Min(lowest, bytes);
            highest = hn::Max(highest, bytes);
            hn::Store(bytes, d, offsets.pixels[row] + i);
            hn::Store(hn::Mul(hn::And(shifted, phaseMask), line), d, offsets.weights[row] + i);
            shift = hn::Add(shift, step);
        }
    }
    const int widthOfTaps = (footprint.picture.width - footprint.columns->columnTaps) * 4;
    const int lastFirstRow = footprint.picture.height - rows.rowTaps;
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

template <int kGroups>
HWY_INLINE hn::Vec<Shorts8> filteredSums(const Footprint& footprint, const Offsets& offsets, int rowTaps, int i) {
    const RowBytes dRows;
    const RowShorts dShorts;
    constexpr int rowsAtOnce = static_cast<int>(hn::MaxLanes(dRows)) / 16;
    const std::size_t stride = footprint.picture.stride;
    const std::uint8_t* row = footprint.picture.pixels + static_cast<std::size_t>(offsets.firstRows[i]) * stride;
    const std::int16_t* const rowWeights = footprint.rows->rows + offsets.rowWeights[i];
    const std::uint8_t* const table = footprint.columns->columns;
    // Of each two pixels, both values of a channel side by side.
    alignas(32) static constexpr std::uint8_t pairing[32] = {0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15,
                                                             0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15};
    const auto pairs = hn::Load(dRows, pairing);
    const auto signs = hn::Set(dRows, std::uint8_t{0x80});
    auto sum = hn::Zero(dShorts);
    for (int r = 0; r < rowTaps; r += rowsAtOnce) {
        const int second = r + rowsAtOnce - 1;
        const std::uint8_t* const pixelsA = row + offsets.pixels[r][i];
        const std::uint8_t* const pixelsB = row + stride * (rowsAtOnce - 1) + offsets.pixels[second][i];
        const std::uint8_t* const weightsA = table + offsets.weights[r][i];
        const std::uint8_t* const weightsB = table + offsets.weights[second][i];
        auto inRow = hn::Zero(dShorts);
        for (std::ptrdiff_t at = 0; at < kGroups * 16; at += 16) {
            const auto pixels = loadedRows(dRows, pixelsA + at, pixelsB + at);
            const auto weights = loadedRows(dRows, weightsA + at, weightsB + at);
            const auto ordered = hn::Xor(hn::TableLookupBytes(pixels, pairs), signs);
            inRow = hn::Add(inRow, multipliedPairs(dShorts, ordered, weights));
        }
        sum = hn::Add(sum, hn::MulFixedPoint15(inRow, hn::LoadU(dShorts, rowWeights + r * 8)));
        row += stride * rowsAtOnce;
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

/// Pixels [from, to), whose footprints lie within the picture.
template <int kGroups>
HWY_INLINE void filterInside(const Footprint& footprint, const Offsets& offsets, int rowTaps, int from, int to,
                             std::uint8_t* out) {
    const hn::FixedTag<std::uint8_t, 8> d8;
    int i = from;
    for (; i + 2 <= to; i += 2) {
        // The lines that canvas rows further down will read, one for about each 16 of the picture's pixels.
        if (i % 8 == 0) {
            const int row = std::min(offsets.firstRows[i] + rowsAhead, footprint.picture.height - 1);
            __builtin_prefetch(footprint.picture.pixels + static_cast<std::size_t>(row) * footprint.picture.stride +
                               offsets.pixels[0][i]);
        }
        hn::StoreU(roundedPixels(filteredSums<kGroups>(footprint, offsets, rowTaps, i),
                                 filteredSums<kGroups>(footprint, offsets, rowTaps, i + 1)),
                   d8, out + static_cast<std::ptrdiff_t>(i) * 4);
    }
    if (i < to) {
        const auto sums = filteredSums<kGroups>(footprint, offsets, rowTaps, i);
        HWY_ALIGN std::uint8_t both[8];
        hn::Store(roundedPixels(sums, sums), d8, both);
        std::memcpy(out + static_cast<std::ptrdiff_t>(i) * 4, both, 4);
    }
}

/// Whether one pixel's footprint lies within the picture. The shear moves columns one way from row to row: the first
/// and the last row tell.
HWY_INLINE bool liesInside(const Footprint& footprint, const Offsets& offsets, int i) {
    const int lastRow = footprint.rows->rowTaps - 1;
    const int widthOfTaps = (footprint.picture.width - footprint.columns->columnTaps) * 4;
    const auto [low, high] = std::minmax(offsets.pixels[0][i], offsets.pixels[lastRow][i]);
    return offsets.firstRows[i] >= 0 && offsets.firstRows[i] + lastRow < footprint.picture.height && low >= 0 &&
           high <= widthOfTaps;
}

template <int kGroups>
void filterGroups(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                  std::uint8_t* out) {
    Offsets offsets;
    findOffsets(footprint, u, v, count, offsets);
    const int rowTaps = footprint.rows->rowTaps;
    if (offsets.allInside && rowTaps == 4) {
        return filterInside<kGroups>(footprint, offsets, 4, 0, count, out);
    }
    for (int from = 0; from < count;) {
        const bool inside = offsets.allInside || liesInside(footprint, offsets, from);
        int to = offsets.allInside ? count : from + 1;
        while (to < count && liesInside(footprint, offsets, to) == inside) {
            ++to;
        }
        if (inside) {
            filterInside<kGroups>(footprint, offsets, rowTaps, from, to, out);
        } else {
            scalarKernels().filterFootprint(footprint, u + from, v + from, to - from,
                                            out + static_cast<std::ptrdiff_t>(from) * 4);
        }
        from = to;
    }
}

void filterFootprint(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                     std::uint8_t* out) {
    switch (footprint.columns->columnTaps) {
    case 4:
        return filterGroups<1>(footprint, u, v, count, out);
    case 8:
        return filterGroups<2>(footprint, u, v, count, out);
    case 12:
        return filterGroups<3>(footprint, u, v, count, out);
    default:
        return filterGroups<4>(footprint, u, v, count, out);
    }
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
        auto low = round;
        auto high = round;
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
        hn::StoreU(hn::ReorderDemote2To(d16, hn::ShiftRight<8>(hn::RearrangeToOddPlusEven(low, lowRest)),
                                        hn::ShiftRight<8>(hn::RearrangeToOddPlusEven(high, highRest))),
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
        auto sum = round;
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
        return hn::ShiftRight<20>(hn::RearrangeToOddPlusEven(sum, rest));
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
    static constexpr Kernels kernels{"vector",       projectPositions, filterFootprint, combineRows,
                                     combineColumns, compositeCovered, compositeUniform};
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
