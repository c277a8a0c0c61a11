// Planes stretched in wide registers; each gives the bits of the scalar twin.
#include "platform/graphics/raster/Kernels.h"

#include <hwy/cache_control.h>

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/raster/PlanarKernels.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include "platform/graphics/raster/RowMixing-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

void mixPlaneRows(const PlaneRows& rows, int from, int to, std::uint8_t* out) {
    constexpr int lineOfCache = 64;
    const RowPairs pairs(rows.rows, rows.weights, rows.taps);
    const auto askFor = [&](int begin, int end) {
        for (int row = 0; row < rows.nextCount; ++row) {
            for (int at = begin; rows.next[row] != nullptr && at < end; at += lineOfCache) {
                hwy::Prefetch(rows.next[row] + at);
            }
        }
    };
    for (int i = from; i < to; i += 2 * lineOfCache) {
        const int end = std::min(i + 2 * lineOfCache, to);
        askFor(i, end);
        int at = i;
        for (; at + 2 * wideLanes <= end; at += 2 * wideLanes) {
            mixStretch<2, /*kIsCut=*/false>(pairs, at, out);
        }
        if (at < end) {
            mixStretch<1, /*kIsCut=*/false>(pairs, at, out);
        }
    }
}

/// Of eight neighbouring columns the sums of their taps' products.
HWY_INLINE hn::Vec<Shorts8> eightSums(const PlaneColumns& columns, const std::uint8_t* row, int column) {
    const Bytes16 d8;
    const Shorts8 d16;
    const Longs4 d32;
    const hn::FixedTag<std::int64_t, 2> d64;
    const auto products = [&](int i) {
        const std::uint8_t* samples = row + columns.first[column + i];
        const auto* weights = reinterpret_cast<const std::uint8_t*>(columns.weights) +
                              static_cast<std::ptrdiff_t>(column + i) * columns.taps;
        auto sum = addedProducts(d16, hn::LoadU(d8, samples), hn::LoadU(d8, weights));
        for (int tap = planeTapsTogether; tap < columns.taps; tap += planeTapsTogether) {
            sum = hn::Add(sum, addedProducts(d16, hn::LoadU(d8, samples + tap), hn::LoadU(d8, weights + tap)));
        }
        return sum;
    };
    // Each step adds halves of two registers' numbers and leaves half as many of each column.
    const auto two = [&](int i) {
        const auto a = products(i);
        const auto b = products(i + 1);
        return hn::Add(hn::InterleaveLower(d16, a, b), hn::InterleaveUpper(d16, a, b));
    };
    const auto four = [&](int i) {
        const auto a = hn::BitCast(d32, two(i));
        const auto b = hn::BitCast(d32, two(i + 2));
        return hn::Add(hn::BitCast(d16, hn::InterleaveLower(d32, a, b)),
                       hn::BitCast(d16, hn::InterleaveUpper(d32, a, b)));
    };
    const auto a = hn::BitCast(d64, four(0));
    const auto b = hn::BitCast(d64, four(4));
    return hn::Add(hn::BitCast(d16, hn::InterleaveLower(d64, a, b)), hn::BitCast(d16, hn::InterleaveUpper(d64, a, b)));
}

/// a x byA + b x byB of eight numbers each.
struct Colors {
    hn::Vec<Longs4> low;
    hn::Vec<Longs4> high;

    HWY_INLINE Colors(hn::Vec<Shorts8> a, std::int16_t byA, hn::Vec<Shorts8> b, std::int16_t byB) {
        const Shorts8 d16;
        const Longs4 d32;
        const auto by = hn::InterleaveLower(d16, hn::Set(d16, byA), hn::Set(d16, byB));
        low = pairSums(d32, hn::InterleaveLower(d16, a, b), by);
        high = pairSums(d32, hn::InterleaveUpper(d16, a, b), by);
    }
    HWY_INLINE void add(const Colors& other) {
        low = hn::Add(low, other.low);
        high = hn::Add(high, other.high);
    }
    [[nodiscard]] HWY_INLINE hn::Vec<Shorts8> rounded() const {
        const Shorts8 d16;
        const Longs4 d32;
        const auto half = hn::Set(d32, 1 << (planar::colorBits - 1));
        const auto whole = hn::ReorderDemote2To(d16, hn::ShiftRight<planar::colorBits>(hn::Add(low, half)),
                                                hn::ShiftRight<planar::colorBits>(hn::Add(high, half)));
        return hn::Min(hn::Max(whole, hn::Zero(d16)), hn::Set(d16, std::int16_t{255}));
    }
};

HWY_INLINE void mixEightColumns(const PlaneColumns& luma, const PlaneColumns& chroma, const PlanarRow& row, int column,
                                std::uint8_t* out) {
    const Bytes16 d8;
    const Shorts8 d16;
    const auto none = hn::Set(d16, planar::noChroma);
    const auto gray = eightSums(luma, row.luma, column);
    const auto blue = hn::Sub(eightSums(chroma, row.blueChroma, column), none);
    const auto red = hn::Sub(eightSums(chroma, row.redChroma, column), none);
    const Colors reds(gray, planar::luma, red, planar::redOfRed);
    const Colors blues(gray, planar::luma, blue, planar::blueOfBlue);
    Colors greens(gray, planar::luma, red, planar::greenOfRed);
    greens.add(Colors(gray, 0, blue, planar::greenOfBlue));
    const auto redGreen = hn::Or(reds.rounded(), hn::ShiftLeft<8>(greens.rounded()));
    const auto blueAlpha = hn::Or(blues.rounded(), hn::Set(d16, static_cast<std::int16_t>(0xFF00)));
    hn::StoreU(hn::BitCast(d8, hn::InterleaveLower(d16, redGreen, blueAlpha)), d8, out);
    hn::StoreU(hn::BitCast(d8, hn::InterleaveUpper(d16, redGreen, blueAlpha)), d8, out + 16);
}

void mixEachPlaneColumn(const PlaneColumns& luma, const PlaneColumns& chroma, const PlanarRow& row, int from, int count,
                        std::uint8_t* out) {
    if (count < 8) {
        scalarKernels().mixPlaneColumns(luma, chroma, row, from, count, out);
        return;
    }
    for (int i = 0; i < count; i += 8) {
        // The last ones together with some that are there already.
        const int at = std::min(i, count - 8);
        mixEightColumns(luma, chroma, row, from + at, out + static_cast<std::ptrdiff_t>(at) * 4);
    }
}

#if HWY_TARGET == HWY_AVX3_DL

// These processors have the sums of four products, which the library does not ask the compiler for. Clang would not add
// that to what is asked for around it, so all of it is asked for anew.
HWY_POP_ATTRIBUTES
HWY_PUSH_ATTRIBUTES(HWY_TARGET_STR ",avx512vnni")

/// Which of a window's samples a group's columns take first, four of each.
HWY_INLINE __m512i tapPlaces(const PlaneGroup& group) {
    const auto offsets = _mm512_cvtepu8_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(group.offsets)));
    const auto spread = _mm512_shuffle_epi8(offsets, _mm512_set4_epi32(0x0c0c0c0c, 0x08080808, 0x04040404, 0));
    return _mm512_add_epi8(spread, _mm512_set1_epi32(0x03020100));
}

/// Four taps more of sixteen columns.
HWY_INLINE __m512i withTaps(__m512i sums, const std::uint8_t* window, __m512i places, __m512i weights) {
    return _mm512_dpbusd_epi32(sums, _mm512_permutexvar_epi8(places, _mm512_loadu_si512(window)), weights);
}

HWY_INLINE __m512i weightsOf(const PlaneColumns& columns, std::ptrdiff_t group, int step) {
    constexpr std::ptrdiff_t bytes = planeGroupColumns * planeGroupTaps;
    return _mm512_loadu_si512(columns.groupWeights + (group * columns.steps + step) * bytes);
}

/// Of sums that fit 16 bits, pairs for multiplying.
HWY_INLINE __m512i paired(__m512i lower, __m512i upper) {
    return _mm512_mask_blend_epi16(0xAAAAAAAA, lower, _mm512_slli_epi32(upper, 16));
}

HWY_INLINE __m512i products(__m512i pairs, std::int16_t byLower, std::int16_t byUpper) {
    const auto by = static_cast<std::uint32_t>(static_cast<std::uint16_t>(byLower)) |
                    static_cast<std::uint32_t>(static_cast<std::uint16_t>(byUpper)) << 16;
    return _mm512_madd_epi16(pairs, _mm512_set1_epi32(static_cast<int>(by)));
}

HWY_INLINE __m512i roundedColors(__m512i sums) {
    const auto half = _mm512_set1_epi32(1 << (planar::colorBits - 1));
    const auto whole = _mm512_srai_epi32(_mm512_add_epi32(sums, half), planar::colorBits);
    return _mm512_min_epi32(_mm512_max_epi32(whole, _mm512_setzero_si512()), _mm512_set1_epi32(255));
}

HWY_INLINE __m512i colorsOf(__m512i gray, __m512i blue, __m512i red) {
    const auto withRed = paired(gray, red);
    const auto withBlue = paired(gray, blue);
    const auto reds = roundedColors(products(withRed, planar::luma, planar::redOfRed));
    const auto greens = roundedColors(_mm512_add_epi32(products(withRed, planar::luma, planar::greenOfRed),
                                                       products(withBlue, 0, planar::greenOfBlue)));
    const auto blues = roundedColors(products(withBlue, planar::luma, planar::blueOfBlue));
    const auto opaque = _mm512_set1_epi32(static_cast<int>(0xFF000000U));
    return _mm512_or_si512(_mm512_or_si512(reds, _mm512_slli_epi32(greens, 8)),
                           _mm512_or_si512(_mm512_slli_epi32(blues, 16), opaque));
}

HWY_INLINE __m512i sixteenColumns(const PlaneColumns& luma, const PlaneColumns& chroma, const PlanarRow& row,
                                  std::ptrdiff_t group) {
    auto gray = _mm512_setzero_si512();
    const auto grayPlaces = tapPlaces(luma.groups[group]);
    const std::uint8_t* grays = row.luma + luma.groups[group].base;
    for (int step = 0; step < luma.steps; ++step) {
        gray = withTaps(gray, grays + static_cast<std::ptrdiff_t>(step) * planeGroupTaps, grayPlaces,
                        weightsOf(luma, group, step));
    }
    auto blue = _mm512_set1_epi32(-planar::noChroma);
    auto red = blue;
    const auto places = tapPlaces(chroma.groups[group]);
    const std::ptrdiff_t base = chroma.groups[group].base;
    for (int step = 0; step < chroma.steps; ++step) {
        const std::ptrdiff_t window = base + static_cast<std::ptrdiff_t>(step) * planeGroupTaps;
        const auto weights = weightsOf(chroma, group, step);
        blue = withTaps(blue, row.blueChroma + window, places, weights);
        red = withTaps(red, row.redChroma + window, places, weights);
    }
    return colorsOf(gray, blue, red);
}

void mixPlaneGroups(const PlaneColumns& luma, const PlaneColumns& chroma, const PlanarRow& row, int from, int count,
                    std::uint8_t* out) {
    constexpr int together = planeGroupColumns;
    const int end = from + count;
    for (int left = from / together * together; left < end; left += together) {
        const auto pixels = sixteenColumns(luma, chroma, row, left / together);
        const int before = std::max(from - left, 0);
        const int behind = std::max(left + together - end, 0);
        const auto wanted = static_cast<__mmask16>((0xFFFF << before) & (0xFFFF >> behind));
        _mm512_mask_storeu_epi32(out + static_cast<std::ptrdiff_t>(left - from) * 4, wanted, pixels);
    }
}

HWY_POP_ATTRIBUTES
HWY_PUSH_ATTRIBUTES(HWY_TARGET_STR)

#endif

void mixPlaneColumns(const PlaneColumns& luma, const PlaneColumns& chroma, const PlanarRow& row, int from, int count,
                     std::uint8_t* out) {
#if HWY_TARGET == HWY_AVX3_DL
    if (luma.groups != nullptr && chroma.groups != nullptr) {
        mixPlaneGroups(luma, chroma, row, from, count, out);
        return;
    }
#endif
    mixEachPlaneColumn(luma, chroma, row, from, count, out);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();
