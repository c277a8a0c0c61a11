// Footprints of projected pictures in wide registers; they give the bits of the scalar twin.
#include "platform/graphics/raster/Kernels.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/raster/FootprintKernels.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include "platform/graphics/raster/FootprintOffsets-inl.h"
#include "platform/graphics/raster/PairSums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

#if HWY_TARGET == HWY_AVX3_DL
// What the sums of pairs ask for, which become part of the functions here.
HWY_POP_ATTRIBUTES
HWY_PUSH_ATTRIBUTES(HWY_TARGET_STR ",avx512vnni")
#endif

// The compiler takes a closure for a function that may stay one, which would pass registers through memory.
#define ALWAYS_INLINED __attribute__((always_inline))

// Four taps of a row are a block of 16 bytes; a footprint is 1, 2 or 4 blocks wide. A register holds that many blocks
// of one pixel, or the blocks of several pixels beside each other. In a block the four taps of each channel are brought
// together; their products with the weights are added in pairs of 16 bits, then with the row's weight in 32 bits, where
// nothing is ever rounded.

template <class D8> constexpr int blocksIn = static_cast<int>(hn::MaxLanes(D8()) / 16);
template <int kBlocks, class D8> constexpr int pixelsIn = std::max(1, blocksIn<D8> / kBlocks);

/// A register of one part for each of `kPixels` pixels from i on; `part(d, i)` gives a pixel's.
template <int kPixels, class D, class F> HWY_INLINE hn::Vec<D> fromPixels(D d, int i, const F& part) {
    if constexpr (kPixels == 1) {
        return part(d, i);
    } else {
        const hn::Half<D> half;
        return hn::Combine(d, fromPixels<kPixels / 2>(half, i + kPixels / 2, part),
                           fromPixels<kPixels / 2>(half, i, part));
    }
}

/// The packed weights of as many blocks as d holds, over and over.
template <class D8> HWY_INLINE hn::Vec<D8> packedWeights(D8 d8, const std::uint8_t* packed) {
    if constexpr (blocksIn<D8> == 1) {
        std::uint32_t four = 0;
        std::memcpy(&four, packed, sizeof four);
        return hn::BitCast(d8, hn::Set(hn::Repartition<std::uint32_t, D8>(), four));
    } else if constexpr (blocksIn<D8> == 2) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, packed, sizeof eight);
        return hn::BitCast(d8, hn::Set(hn::Repartition<std::uint64_t, D8>(), eight));
    } else {
        return hn::LoadDup128(d8, packed);
    }
}

/// In each block the weights of its four taps, once for each channel, where `kInTurn` blocks' weights were packed.
template <int kInTurn, class D8> HWY_INLINE hn::Vec<D8> blockWeights(D8 d8, hn::Vec<D8> packed) {
    if constexpr (kInTurn == 1) {
        return packed;
    } else {
        alignas(64) static constexpr std::uint8_t ofTwo[64] = {
            0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 4, 5, 6, 7, 4, 5, 6, 7, 4, 5, 6, 7, 4, 5, 6, 7,
            0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 4, 5, 6, 7, 4, 5, 6, 7, 4, 5, 6, 7, 4, 5, 6, 7};
        return hn::TableLookupBytes(packed, hn::Load(d8, kInTurn == 2 ? ofTwo : numbersInBlocks));
    }
}

/// Four signed taps of each channel side by side.
template <class D8> HWY_INLINE hn::Vec<D8> tapsByChannel(D8 d8, hn::Vec<D8> pixels) {
    alignas(16) static constexpr std::uint8_t byChannel[16] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};
    return hn::Xor(hn::TableLookupBytes(pixels, hn::LoadDup128(d8, byChannel)), hn::Set(d8, std::uint8_t{0x80}));
}

/// The weight of one of eight rows in every place.
template <class D8> HWY_INLINE hn::Vec<hn::Repartition<std::int16_t, D8>> rowWeight(hn::Vec<D8> eightRows, int row) {
    alignas(16) static constexpr std::uint8_t places[8][16] = {
        {0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1},
        {2, 3, 2, 3, 2, 3, 2, 3, 2, 3, 2, 3, 2, 3, 2, 3},
        {4, 5, 4, 5, 4, 5, 4, 5, 4, 5, 4, 5, 4, 5, 4, 5},
        {6, 7, 6, 7, 6, 7, 6, 7, 6, 7, 6, 7, 6, 7, 6, 7},
        {8, 9, 8, 9, 8, 9, 8, 9, 8, 9, 8, 9, 8, 9, 8, 9},
        {10, 11, 10, 11, 10, 11, 10, 11, 10, 11, 10, 11, 10, 11, 10, 11},
        {12, 13, 12, 13, 12, 13, 12, 13, 12, 13, 12, 13, 12, 13, 12, 13},
        {14, 15, 14, 15, 14, 15, 14, 15, 14, 15, 14, 15, 14, 15, 14, 15}};
    const D8 d8;
    return hn::BitCast(hn::Repartition<std::int16_t, D8>(),
                       hn::TableLookupBytes(eightRows, hn::LoadDup128(d8, places[row])));
}

/// Sums of the blocks of each pixel of d, for the pixels from i on. `taps` tells where they lie.
template <int kBlocks, int kRowTaps, class D8, class Taps>
HWY_INLINE hn::Vec<hn::Repartition<std::int32_t, D8>> blockSums(D8 d8, const Taps& taps, int i) {
    const hn::Repartition<std::int16_t, D8> d16;
    constexpr int pixels = pixelsIn<kBlocks, D8>;
    constexpr int registersInRow = std::max(1, kBlocks / blocksIn<D8>);
    PairSums<hn::Repartition<std::int32_t, D8>> sums;
    const auto eightRows = [&](int first) ALWAYS_INLINED {
        return fromPixels<pixels>(d8, i, [&](auto d, int k) ALWAYS_INLINED {
            return hn::BitCast(d, hn::LoadDup128(hn::Repartition<std::int16_t, decltype(d)>(), taps.rows(k) + first));
        });
    };
    const auto addRow = [&](int row, hn::Vec<D8> rows) ALWAYS_INLINED {
        auto inRow = hn::Zero(d16);
        for (int part = 0; part < registersInRow; ++part) {
            const std::ptrdiff_t block = part * blocksIn<D8>;
            const auto bytes = fromPixels<pixels>(
                d8, i, [&](auto d, int k) ALWAYS_INLINED { return hn::LoadU(d, taps.pixels(k, row) + block * 16); });
            const auto packed = fromPixels<pixels>(d8, i, [&](auto d, int k) ALWAYS_INLINED {
                return packedWeights(d, taps.columns(k, row) + block * 4);
            });
            const auto weights = blockWeights<std::min(kBlocks, blocksIn<D8>)>(d8, packed);
            inRow = hn::Add(inRow, addedProducts(d16, weights, tapsByChannel(d8, bytes)));
        }
        sums.add(inRow, rowWeight<D8>(rows, row % 8));
    };
    if constexpr (kRowTaps > 0) {
        const auto rows = eightRows(0);
        const auto more = kRowTaps > 8 ? eightRows(8) : rows;
#pragma GCC unroll 16
        for (int row = 0; row < kRowTaps; ++row) {
            addRow(row, row < 8 ? rows : more);
        }
    } else {
        for (int first = 0; first < taps.rowTaps(); first += 8) {
            const auto rows = eightRows(first);
            for (int row = first; row < std::min(taps.rowTaps(), first + 8); ++row) {
                addRow(row, rows);
            }
        }
    }
    return sums.total();
}

/// The same of footprints of four rows of four columns whose weights lie together.
template <class D8, class Taps>
HWY_INLINE hn::Vec<hn::Repartition<std::int32_t, D8>> smallSums(D8 d8, const Taps& taps, int i) {
    const hn::Repartition<std::int16_t, D8> d16;
    const hn::Repartition<std::uint32_t, D8> d32;
    constexpr int pixels = blocksIn<D8>;
    const auto columns = hn::BitCast(d32, fromPixels<pixels>(d8, i, [&](auto d, int k) ALWAYS_INLINED {
                                         return hn::LoadU(d, taps.smallColumns(k));
                                     }));
    const auto rows = fromPixels<pixels>(d8, i, [&](auto d, int k) ALWAYS_INLINED {
        return hn::BitCast(d, hn::LoadU(hn::Repartition<std::int16_t, decltype(d)>(), taps.rows(k)));
    });
    PairSums<hn::Repartition<std::int32_t, D8>> sums;
    const auto addRow = [&](int row, auto weights) ALWAYS_INLINED {
        const auto bytes =
            fromPixels<pixels>(d8, i, [&](auto d, int k) ALWAYS_INLINED { return hn::LoadU(d, taps.pixels(k, row)); });
        sums.add(addedProducts(d16, hn::BitCast(d8, weights), tapsByChannel(d8, bytes)), rowWeight<D8>(rows, row));
    };
    addRow(0, hn::Broadcast<0>(columns));
    addRow(1, hn::Broadcast<1>(columns));
    addRow(2, hn::Broadcast<2>(columns));
    addRow(3, hn::Broadcast<3>(columns));
    return sums.total();
}

/// The blocks of each of `kPixels` pixels added up.
template <int kPixels, class D32> HWY_INLINE auto foldedBlocks(D32 d32, hn::Vec<D32> sums) {
    constexpr int blocks = static_cast<int>(hn::MaxLanes(D32()) / 4);
    if constexpr (blocks == kPixels) {
        return sums;
    } else if constexpr (kPixels == 1) {
        return addedBlocks(d32, sums);
    } else {
        const hn::Half<D32> half;
        const hn::Repartition<std::int32_t, hn::FixedTag<std::uint8_t, kPixels * 16>> dFolded;
        return hn::Combine(dFolded, foldedBlocks<kPixels / 2>(half, hn::UpperHalf(half, sums)),
                           foldedBlocks<kPixels / 2>(half, hn::LowerHalf(half, sums)));
    }
}

using WideBytes = hn::CappedTag<std::uint8_t, 64>;

/// The sums of `kPixels` pixels from i on, a block of each, as many at once as d holds.
template <int kBlocks, int kRowTaps, int kPixels, class D8, class Taps>
HWY_INLINE auto pixelSums(D8 d8, const Taps& taps, int i) {
    constexpr int atOnce = pixelsIn<kBlocks, D8>;
    if constexpr (kPixels > atOnce) {
        const hn::FixedTag<std::int32_t, std::size_t{kPixels} * 4> d;
        const auto first = pixelSums<kBlocks, kRowTaps, kPixels / 2>(d8, taps, i);
        return hn::Combine(d, pixelSums<kBlocks, kRowTaps, kPixels / 2>(d8, taps, i + kPixels / 2), first);
    } else {
        const hn::Repartition<std::int32_t, D8> d32;
        if constexpr (kBlocks == 1 && kRowTaps == 4) {
            if (taps.isSmall()) {
                return foldedBlocks<kPixels>(d32, smallSums(d8, taps, i));
            }
        }
        return foldedBlocks<kPixels>(d32, blockSums<kBlocks, kRowTaps>(d8, taps, i));
    }
}

/// Where pixels go.
class PixelsOut {
public:
    explicit HWY_INLINE PixelsOut(std::uint8_t* out) : out_(out) {}

    [[nodiscard]] HWY_INLINE PixelsOut from(int i) const { return PixelsOut(out_ + std::ptrdiff_t{4} * i); }
    template <class D32> HWY_INLINE void store(D32 d32, int i, hn::Vec<D32> sums) const {
        const hn::Rebind<std::uint8_t, D32> dBytes;
        const auto raised = hn::Add(sums, hn::Set(d32, sumOfHalf));
        hn::StoreU(asBytes(d32, hn::ShiftRight<sumBits>(raised)), dBytes, out_ + std::ptrdiff_t{4} * i);
    }

private:
    std::uint8_t* out_;
};

/// Where the sums of parts of pixels go.
class SumsOut {
public:
    explicit HWY_INLINE SumsOut(std::int32_t* sums) : sums_(sums) {}

    [[nodiscard]] HWY_INLINE SumsOut from(int i) const { return SumsOut(sums_ + std::ptrdiff_t{4} * i); }
    template <class D32> HWY_INLINE void store(D32 d32, int i, hn::Vec<D32> sums) const {
        hn::StoreU(sums, d32, sums_ + std::ptrdiff_t{4} * i);
    }

private:
    std::int32_t* sums_;
};

/// `kPixels` pixels from i on.
template <int kBlocks, int kRowTaps, int kPixels, class D8, class Taps, class Out>
HWY_INLINE void filterPixels(D8 d8, const Taps& taps, int i, const Out& out) {
    const hn::FixedTag<std::int32_t, std::size_t{kPixels} * 4> d32;
    out.store(d32, i, pixelSums<kBlocks, kRowTaps, kPixels>(d8, taps, i));
}

/// Pixels [from, to), whose footprints lie within the picture. `kRowTaps` is their number, or 0 where it varies.
template <int kBlocks, int kRowTaps, bool kSteady, class Out>
HWY_INLINE void filterInside(const Footprint& footprint, const Offsets<kSteady>& offsets, int from, int to,
                             const Out& out) {
    const WideBytes wide;
    constexpr int together = blocksIn<WideBytes>;
    const TapsInside<kSteady> taps(footprint, offsets);
    prefetchBelow(footprint, offsets, from, to);
    int i = from;
    for (; i + together <= to; i += together) {
        filterPixels<kBlocks, kRowTaps, together>(wide, taps, i, out);
    }
    if (i < to && to - from >= together) {
        // The last ones together with some that are there already.
        return filterPixels<kBlocks, kRowTaps, together>(wide, taps, to - together, out);
    }
    const hn::CappedTag<std::uint8_t, kBlocks * 16> narrow;
    for (; i < to; ++i) {
        filterPixels<kBlocks, 0, 1>(narrow, taps, i, out);
    }
}

/// One pixel whose footprint leaves the picture: its taps are put together first.
template <int kBlocks, bool kSteady, class Out>
HWY_INLINE void filterAtEdge(const Footprint& footprint, const Offsets<kSteady>& offsets, int i, const Out& out) {
    const hn::CappedTag<std::uint8_t, kBlocks * 16> d8;
    const TapsAtEdge<kBlocks, kSteady> taps(footprint, offsets, i);
    filterPixels<kBlocks, 0, 1>(d8, taps, i, out);
}

template <int kBlocks, bool kIsCommon, bool kSteady, class Out>
HWY_INLINE void filterRunInside(const Footprint& footprint, const Offsets<kSteady>& offsets, int from, int to,
                                const Out& out) {
    // The commonest numbers of rows have loops of their own, where they are common: each takes compilers seconds.
    if constexpr (kIsCommon && kBlocks <= 2) {
        switch (footprint.rows->taps) {
        case 4:
            return filterInside<kBlocks, 4>(footprint, offsets, from, to, out);
        case 6:
            return filterInside<kBlocks, 6>(footprint, offsets, from, to, out);
        case 8:
            return filterInside<kBlocks, 8>(footprint, offsets, from, to, out);
        case 10:
            return filterInside<kBlocks, 10>(footprint, offsets, from, to, out);
        default:
            break;
        }
    }
    filterInside<kBlocks, 0>(footprint, offsets, from, to, out);
}

template <int kBlocks, bool kSteady, class Positions, class Out>
HWY_INLINE void filterBlocks(const Footprint& footprint, const Positions& positions, int count, const Out& out) {
    constexpr bool isCommon = kSteady && std::is_same_v<Positions, CurvePositions>;
    Offsets<kSteady> offsets;
    findOffsets(footprint, positions, count, offsets);
    for (int from = 0; from < count;) {
        const bool isInside = offsets.allInside || liesInside(footprint, offsets, from);
        int to = offsets.allInside ? count : from + 1;
        while (to < count && liesInside(footprint, offsets, to) == isInside) {
            ++to;
        }
        if (isInside) {
            filterRunInside<kBlocks, isCommon>(footprint, offsets, from, to, out);
        } else {
            for (int i = from; i < to; ++i) {
                filterAtEdge<kBlocks>(footprint, offsets, i, out);
            }
        }
        from = to;
    }
}

/// A segment at the positions that `positionsFrom` gives for its first pixel, each `longestSegment` of it.
template <int kBlocks, bool kSteady, class F, class Out>
void filterSegments(const Footprint& footprint, const F& positionsFrom, int count, const Out& out) {
    for (int first = 0; first < count; first += longestSegment) {
        filterBlocks<kBlocks, kSteady>(footprint, positionsFrom(first), std::min(count - first, longestSegment),
                                       out.from(first));
    }
}

template <bool kSteady, class F, class Out>
HWY_INLINE void filterByTaps(const Footprint& footprint, const F& positionsFrom, int count, const Out& out) {
    switch (footprint.columns->taps) {
    case 4:
        return filterSegments<1, kSteady>(footprint, positionsFrom, count, out);
    case 8:
        return filterSegments<2, kSteady>(footprint, positionsFrom, count, out);
    default:
        return filterSegments<4, kSteady>(footprint, positionsFrom, count, out);
    }
}

template <class F, class Out>
HWY_INLINE void filterFrom(const Footprint& footprint, const F& positionsFrom, int count, const Out& out) {
    return footprint.isSteady ? filterByTaps<true>(footprint, positionsFrom, count, out)
                              : filterByTaps<false>(footprint, positionsFrom, count, out);
}

void filterFootprint(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                     std::uint8_t* out) {
    filterFrom(
        footprint, [=](int first) { return StoredPositions(u + first, v + first); }, count, PixelsOut(out));
}

void sumFootprint(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                  std::int32_t* sums) {
    filterFrom(
        footprint, [=](int first) { return StoredPositions(u + first, v + first); }, count, SumsOut(sums));
}

void filterAlongCurve(const Footprint& footprint, const CurvedRow& row, int first, int count, std::uint8_t* out) {
    filterFrom(
        footprint, [&row, first](int more) { return CurvePositions(row, first + more); }, count, PixelsOut(out));
}

void sumAlongCurve(const Footprint& footprint, const CurvedRow& row, int first, int count, std::int32_t* sums) {
    filterFrom(
        footprint, [&row, first](int more) { return CurvePositions(row, first + more); }, count, SumsOut(sums));
}

/// Pixels of kAcross x kDown parts.
template <int kAcross, int kDown> void averageEach(const std::int32_t* sums, int count, std::uint8_t* out) {
    const hn::FixedTag<std::int32_t, 4> d32;
    constexpr int shift = PixelParts{kAcross, kDown}.shift();
    const PixelsOut pixels(out);
    for (int i = 0; i < count; ++i) {
        auto sum = hn::Zero(d32);
        for (int down = 0; down < kDown; ++down) {
            const std::int32_t* part = sums + std::ptrdiff_t{4} * kAcross * (down * count + i);
            for (int across = 0; across < kAcross; ++across, part += 4) {
                sum = hn::Add(sum, hn::ShiftRight<shift>(hn::LoadU(d32, part)));
            }
        }
        pixels.store(d32, i, sum);
    }
}

template <int kAcross> void averageColumns(const std::int32_t* sums, int partsDown, int count, std::uint8_t* out) {
    static_assert(mostPartsAcross == 4 && mostPartsDown == 4);
    switch (partsDown) {
    case 1:
        return averageEach<kAcross, 1>(sums, count, out);
    case 2:
        return averageEach<kAcross, 2>(sums, count, out);
    default:
        return averageEach<kAcross, 4>(sums, count, out);
    }
}

void averageParts(const std::int32_t* sums, PixelParts parts, int count, std::uint8_t* out) {
    switch (parts.across) {
    case 1:
        return averageColumns<1>(sums, parts.down, count, out);
    case 2:
        return averageColumns<2>(sums, parts.down, count, out);
    default:
        return averageColumns<4>(sums, parts.down, count, out);
    }
}

#undef ALWAYS_INLINED

#if HWY_TARGET == HWY_AVX3_DL
HWY_POP_ATTRIBUTES
HWY_PUSH_ATTRIBUTES(HWY_TARGET_STR)
#endif

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();
