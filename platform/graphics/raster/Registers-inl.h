// The registers that the kernels for wide ones share. Compiled once for each kind of processor, like those who include
// it.
#if defined(QUILLOMAT_RASTER_REGISTERS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLOMAT_RASTER_REGISTERS_INL_H
#undef QUILLOMAT_RASTER_REGISTERS_INL_H
#else
#define QUILLOMAT_RASTER_REGISTERS_INL_H
#endif

#include <hwy/highway.h>

#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

namespace hn = hwy::HWY_NAMESPACE;

using Bytes16 = hn::FixedTag<std::uint8_t, 16>;
using Shorts8 = hn::FixedTag<std::int16_t, 8>;
using Longs4 = hn::FixedTag<std::int32_t, 4>;
// Two rows of a footprint at once where registers hold them.
using RowBytes = hn::CappedTag<std::uint8_t, 32>;
using RowShorts = hn::CappedTag<std::int16_t, 16>;

/// Two blocks' numbers added, where registers hold two.
template <class D> HWY_INLINE hn::Vec<Shorts8> foldedRows(D, hn::Vec<D> sums) {
    const Shorts8 half;
    if constexpr (hn::MaxLanes(D()) == 16) {
        return hn::SaturatedAdd(hn::LowerHalf(half, sums), hn::UpperHalf(half, sums));
    } else {
        return sums;
    }
}

/// Even and odd pairs of two pixels added, in each block.
template <class D16> HWY_INLINE hn::Vec<D16> addedPairs(D16 d16, hn::Vec<D16> a, hn::Vec<D16> b) {
    const hn::Repartition<std::int64_t, D16> d64;
    const auto a64 = hn::BitCast(d64, a);
    const auto b64 = hn::BitCast(d64, b);
    return hn::SaturatedAdd(hn::BitCast(d16, hn::InterleaveLower(d64, a64, b64)),
                            hn::BitCast(d16, hn::InterleaveUpper(d64, a64, b64)));
}

/// Of each two neighbouring bytes the sum of their products with two others, which are signed. For sums that fit 16
/// bits, as those of weights do: what does not fit is cut by some processors and wraps on others.
template <class D16, class V8> HWY_INLINE hn::Vec<D16> addedProducts(D16 d16, V8 bytes, V8 signedBytes) {
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    (void)d16;
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    if constexpr (hn::MaxLanes(D16()) == 32) {
        return hn::Vec<D16>{_mm512_maddubs_epi16(bytes.raw, signedBytes.raw)};
    } else
#endif
        if constexpr (hn::MaxLanes(D16()) == 16) {
        return hn::Vec<D16>{_mm256_maddubs_epi16(bytes.raw, signedBytes.raw)};
    } else {
        return hn::Vec<D16>{_mm_maddubs_epi16(bytes.raw, signedBytes.raw)};
    }
#elif HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_SSSE3
    (void)d16;
    return hn::Vec<D16>{_mm_maddubs_epi16(bytes.raw, signedBytes.raw)};
#else
    // Both bytes of a pair as 16-bit numbers.
    const hn::RebindToUnsigned<D16> u16;
    const auto a = hn::BitCast(u16, bytes);
    const auto b = hn::BitCast(d16, signedBytes);
    const auto even = hn::Mul(hn::BitCast(d16, hn::And(a, hn::Set(u16, std::uint16_t{0xFF}))),
                              hn::ShiftRight<8>(hn::ShiftLeft<8>(b)));
    const auto odd = hn::Mul(hn::BitCast(d16, hn::ShiftRight<8>(a)), hn::ShiftRight<8>(b));
    return hn::Add(even, odd);
#endif
}

/// Of each two neighbouring numbers the sum of their products with two others.
template <class D32, class V16> HWY_INLINE hn::Vec<D32> pairSums(D32 d32, V16 a, V16 b) {
    auto rest = hn::Zero(d32);
    const auto sum = hn::ReorderWidenMulAccumulate(d32, a, b, hn::Zero(d32), rest);
    return hn::RearrangeToOddPlusEven(sum, rest);
}

/// Numbers from 0 to 255 as bytes.
template <class D32> HWY_INLINE auto asBytes(D32, hn::Vec<D32> numbers) {
    const hn::Rebind<std::uint8_t, D32> d8;
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    // The library's own cut of 16 numbers, in the version at hand, picks other bytes on AVX3_DL.
    if constexpr (hn::MaxLanes(D32()) == 16) {
        return hn::Vec<decltype(d8)>{_mm512_cvtepi32_epi8(numbers.raw)};
    } else
#endif
    {
        return hn::DemoteTo(d8, numbers);
    }
}

/// The blocks of a register added up.
template <class D32> HWY_INLINE hn::Vec<Longs4> addedBlocks(D32 d32, hn::Vec<D32> sums) {
    if constexpr (hn::MaxLanes(D32()) == 4) {
        return sums;
    } else {
        const hn::Half<D32> half;
        return addedBlocks(half, hn::Add(hn::LowerHalf(half, sums), hn::UpperHalf(half, sums)));
    }
}

/// Where a block's four numbers of 32 bits stand when each fills a block of its own.
alignas(64) constexpr std::uint8_t numbersInBlocks[64] = {
    0, 1, 2,  3,  0,  1,  2,  3,  0,  1,  2,  3,  0,  1,  2,  3,  4,  5,  6,  7, 4,  5,
    6, 7, 4,  5,  6,  7,  4,  5,  6,  7,  8,  9,  10, 11, 8,  9,  10, 11, 8,  9, 10, 11,
    8, 9, 10, 11, 12, 13, 14, 15, 12, 13, 14, 15, 12, 13, 14, 15, 12, 13, 14, 15};

/// Two vectors of numbers cut to bytes, block by block: of each block of 16 bytes first those of `lower`.
template <class D8, class V16> HWY_INLINE hn::Vec<D8> packedInBlocks(D8 d8, V16 lower, V16 upper) {
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    (void)d8;
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    if constexpr (hn::MaxLanes(D8()) == 64) {
        return hn::Vec<D8>{_mm512_packus_epi16(lower.raw, upper.raw)};
    } else
#endif
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

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();

#endif
