// Stretches along the axes in wide registers; each gives the bits of the scalar twin.
#include "platform/graphics/raster/Kernels.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/raster/StretchKernels.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include "platform/graphics/raster/Registers-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

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
    const auto four = [&](int i) {
        const auto bytes =
            packedInBlocks(d8, meansOf(d16, mixedTwo(at, i, known)), meansOf(d16, mixedTwo(at, i + 2, known)));
        hn::StoreU(hn::Min(bytes, hn::TableLookupBytes(bytes, hn::Load(d8, alphas))), d8,
                   out + static_cast<std::ptrdiff_t>(i) * 4);
    };
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        four(i);
    }
    if (i < count && count >= 4) {
        // The last ones together with some that are there already.
        four(count - 4);
        return count;
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

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();
