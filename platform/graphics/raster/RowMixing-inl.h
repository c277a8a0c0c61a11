// Rows of a picture mixed in bytes: what pixels and planes share. Compiled once for each kind of processor, like those
// who include it.
#if defined(QUILLOMAT_RASTER_ROW_MIXING_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLOMAT_RASTER_ROW_MIXING_INL_H
#undef QUILLOMAT_RASTER_ROW_MIXING_INL_H
#else
#define QUILLOMAT_RASTER_ROW_MIXING_INL_H
#endif

#include "platform/graphics/raster/Kernels.h"
#include "platform/graphics/raster/Registers-inl.h"

#include <cstddef>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

/// Where each channel's bound lies in a block of four pixels: at their alphas, or, where nothing is cut, at itself.
template <class D8> HWY_INLINE hn::Vec<D8> boundPlaces(D8 d8, bool isCut) {
    alignas(16) static constexpr std::uint8_t alphas[16] = {3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15};
    alignas(16) static constexpr std::uint8_t own[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    return hn::LoadDup128(d8, isCut ? alphas : own);
}

template <class V8> HWY_INLINE V8 bounded(V8 bytes, V8 places) {
    return hn::Min(bytes, hn::TableLookupBytes(bytes, places));
}

/// Sums of weights' products as means, still in 16 bits.
template <class D16> HWY_INLINE hn::Vec<D16> meansOf(D16 d16, hn::Vec<D16> sums) {
    const auto raised = hn::Add(sums, hn::Set(d16, std::int16_t{mixedWhole / 2}));
    return hn::MulHigh(raised, hn::Set(d16, std::int16_t{mixedInverse}));
}

// Rows are mixed over whole registers, however wide.
using WideBytes = hn::CappedTag<std::uint8_t, 64>;
using WideShorts = hn::Repartition<std::int16_t, WideBytes>;
constexpr auto wideLanes = static_cast<int>(hn::MaxLanes(WideBytes()));

/// The rows two by two, and their weights, each pair as often as a register holds it.
struct RowPairs {
    struct Pair {
        const std::uint8_t* above;
        const std::uint8_t* below;
    };
    alignas(64) std::uint8_t weights[mostTaps * 2][wideLanes];
    Pair rows[mostTaps * 2];
    int count = 0;

    HWY_INLINE RowPairs(const std::uint8_t* const* taken, const std::int8_t* line, int taps) {
        for (int tap = 0; tap < taps; tap += 2, ++count) {
            const bool isPaired = tap + 1 < taps;
            const auto first = static_cast<std::uint8_t>(line[tap]);
            const auto second = static_cast<std::uint8_t>(isPaired ? line[tap + 1] : 0);
            const auto both =
                hn::Set(hn::RebindToUnsigned<WideShorts>(), static_cast<std::uint16_t>(first | second << 8));
            hn::Store(hn::BitCast(WideBytes(), both), WideBytes(), weights[count]);
            rows[count] = {taken[tap], taken[isPaired ? tap + 1 : tap]};
        }
    }
};

/// Bytes of two rows side by side, in all registers of `kTogether`; cut, colours go no higher than their alpha.
template <int kTogether, bool kIsCut>
HWY_INLINE void mixStretch(const RowPairs& pairs, std::ptrdiff_t at, std::uint8_t* out) {
    const WideBytes d8;
    const WideShorts d16;
    hn::Vec<WideShorts> low[kTogether];
    hn::Vec<WideShorts> high[kTogether];
    for (int pair = 0; pair < pairs.count; ++pair) {
        const auto weights = hn::Load(d8, pairs.weights[pair]);
        for (int k = 0; k < kTogether; ++k) {
            const auto above = hn::LoadU(d8, pairs.rows[pair].above + at + k * wideLanes);
            const auto below = hn::LoadU(d8, pairs.rows[pair].below + at + k * wideLanes);
            const auto lower = addedProducts(d16, hn::InterleaveLower(d8, above, below), weights);
            const auto upper = addedProducts(d16, hn::InterleaveUpper(d8, above, below), weights);
            low[k] = pair == 0 ? lower : hn::Add(low[k], lower);
            high[k] = pair == 0 ? upper : hn::Add(high[k], upper);
        }
    }
    for (int k = 0; k < kTogether; ++k) {
        const auto bytes = packedInBlocks(d8, meansOf(d16, low[k]), meansOf(d16, high[k]));
        hn::StoreU(kIsCut ? bounded(bytes, boundPlaces(d8, /*isCut=*/true)) : bytes, d8, out + at + k * wideLanes);
    }
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();

#endif
