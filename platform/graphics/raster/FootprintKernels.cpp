// Positions and footprints of projected pictures in wide registers; each gives the bits of the scalar twin.
#include "platform/graphics/raster/Kernels.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/raster/FootprintKernels.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include "platform/graphics/raster/Registers-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

/// Of each two neighbouring bytes the sum of their products with two weights: the bytes are signed, the weights are not
/// and sum to at most 256, so that nothing overflows.
template <class D16, class V8> HWY_INLINE hn::Vec<D16> multipliedPairs(D16 d16, V8 pixels, V8 weights) {
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    (void)d16;
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    if constexpr (hn::MaxLanes(D16()) == 32) {
        return hn::Vec<D16>{_mm512_maddubs_epi16(weights.raw, pixels.raw)};
    } else
#endif
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
    const std::uint8_t* steadyLines;
    int rowTaps;

    explicit FilterLoop(const Footprint& footprint)
        : picture(footprint.picture.pixels)
        , stride(static_cast<std::ptrdiff_t>(footprint.picture.stride))
        , columnWeights(footprint.columns->lines)
        , steadyStep(footprint.shear / steadyShear * footprint.columns->line())
        , rowWeights(footprint.rows->lines)
        , steadyLines(footprint.steadyLines)
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

// As many pixels side by side as registers hold blocks of 16 bytes.
using BlockBytes = hn::CappedTag<std::uint8_t, 64>;
constexpr int pixelsAside = static_cast<int>(hn::MaxLanes(BlockBytes())) / 16;

/// Of each pixel the block that `blockOf` gives for it: pixels i, i + 2, i + 4, i + 6, as many as there is room for.
template <class D, class F> HWY_INLINE hn::Vec<D> everyOtherBlock(D d, int i, const F& blockOf) {
    if constexpr (hn::MaxLanes(D()) == 16) {
        return blockOf(i);
    } else {
        const hn::Half<D> half;
        constexpr int inHalf = static_cast<int>(hn::MaxLanes(half)) / 16;
        return hn::Combine(d, everyOtherBlock(half, i + 2 * inHalf, blockOf), everyOtherBlock(half, i, blockOf));
    }
}

/// One of 16 bytes, in every block.
template <class D> HWY_INLINE hn::Vec<D> inEveryBlock(D d, const std::uint8_t* bytes) {
    return hn::LoadDup128(d, bytes);
}

/// Every other pixel from i on, four rows of four columns. The weights of all rows are loaded once and spread as they
/// are needed, as loading is what limits this loop.
HWY_INLINE hn::Vec<hn::Repartition<std::int16_t, BlockBytes>> filteredEveryOther(const FilterLoop& loop,
                                                                                 const Offsets<true>& offsets, int i) {
    const BlockBytes d8;
    const hn::Repartition<std::int16_t, BlockBytes> d16;
    alignas(16) static constexpr std::uint8_t pairing[16] = {0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15};
    alignas(16) static constexpr std::uint8_t columnsOfRow[16] = {0, 1, 0, 1, 0, 1, 0, 1, 2, 3, 2, 3, 2, 3, 2, 3};
    alignas(16) static constexpr std::uint8_t weightOfRow[16] = {0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1};
    const auto signs = hn::Set(d8, std::uint8_t{0x80});
    const auto columns =
        everyOtherBlock(d8, i, [&](int k) { return hn::LoadU(Bytes16(), loop.steadyLines + offsets.weights[0][k]); });
    const auto rows = everyOtherBlock(d8, i, [&](int k) {
        std::uint64_t four = 0;
        std::memcpy(&four, loop.rowWeights + offsets.rowWeights[k], sizeof four);
        return hn::BitCast(Bytes16(), hn::Set(hn::FixedTag<std::uint64_t, 2>(), four));
    });
    auto sum = hn::Zero(d16);
    const auto addRow = [&](int row) {
        const std::uint8_t* const rowOfPicture = loop.picture + row * loop.stride;
        const auto pixels =
            everyOtherBlock(d8, i, [&](int k) { return hn::LoadU(Bytes16(), rowOfPicture + offsets.starts[k]); });
        const auto ordered = hn::Xor(hn::TableLookupBytes(pixels, inEveryBlock(d8, pairing)), signs);
        const auto spread = hn::Add(inEveryBlock(d8, columnsOfRow), hn::Set(d8, static_cast<std::uint8_t>(4 * row)));
        const auto once = hn::Add(inEveryBlock(d8, weightOfRow), hn::Set(d8, static_cast<std::uint8_t>(2 * row)));
        const auto inRow = multipliedPairs(d16, ordered, hn::TableLookupBytes(columns, spread));
        sum = hn::Add(sum, hn::MulFixedPoint15(inRow, hn::BitCast(d16, hn::TableLookupBytes(rows, once))));
    };
    addRow(0);
    addRow(1);
    addRow(2);
    addRow(3);
    return sum;
}

/// The pixels from i on, twice `pixelsAside` of them.
HWY_INLINE void filterManyPixels(const FilterLoop& loop, const Offsets<true>& offsets, int i, std::uint8_t* out) {
    const BlockBytes d8;
    const hn::Repartition<std::int16_t, BlockBytes> d16;
    const hn::Repartition<std::uint64_t, BlockBytes> d64;
    const auto even = filteredEveryOther(loop, offsets, i);
    const auto odd = filteredEveryOther(loop, offsets, i + 1);
    const auto offset = hn::Set(d16, std::int16_t{128});
    const auto rounded = hn::ShiftRight<8>(hn::SaturatedAdd(addedPairs(d16, even, odd), offset));
    const auto raised = hn::Add(rounded, offset);
    const auto packed = hn::BitCast(d64, packedInBlocks(d8, raised, raised));
    if constexpr (hn::MaxLanes(BlockBytes()) > 16) {
        const hn::Half<decltype(d64)> half;
        hn::StoreU(hn::BitCast(hn::Half<BlockBytes>(), hn::LowerHalf(half, hn::ConcatEven(d64, packed, packed))),
                   hn::Half<BlockBytes>(), out + static_cast<std::ptrdiff_t>(i) * 4);
    } else {
        hn::StoreU(hn::BitCast(d8, packed), d8, out + static_cast<std::ptrdiff_t>(i) * 4);
    }
}

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
    if constexpr (kSteady && kGroups == 1 && kRowTaps == 4 && pixelsAside > 1) {
        for (; loop.steadyLines != nullptr && i + 2 * pixelsAside <= to; i += 2 * pixelsAside) {
            filterManyPixels(loop, offsets, i, out);
        }
    }
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

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();
