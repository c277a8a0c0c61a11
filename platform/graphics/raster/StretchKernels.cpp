// Stretches along the axes in wide registers; each gives the bits of the scalar twin.
#include "platform/graphics/raster/Kernels.h"

#include <hwy/cache_control.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/raster/StretchKernels.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include "platform/graphics/raster/RowMixing-inl.h"

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

void mixRows(const std::uint8_t* const* rows, const std::int8_t* weights, int taps, int count, std::uint8_t* out) {
    const int bytes = count * 4;
    if (bytes < wideLanes) {
        scalarKernels().mixRows(rows, weights, taps, count, out);
        return;
    }
    const RowPairs pairs(rows, weights, taps);
    // The first ones, as far as rows then lie on whole registers: what crosses a line of the cache is read twice.
    mixStretch<1, /*kIsCut=*/true>(pairs, 0, out);
    auto i = static_cast<int>(wideLanes - reinterpret_cast<std::uintptr_t>(rows[0]) % wideLanes);
    for (; i + 2 * wideLanes <= bytes; i += 2 * wideLanes) {
        mixStretch<2, /*kIsCut=*/true>(pairs, i, out);
    }
    for (; i + wideLanes <= bytes; i += wideLanes) {
        mixStretch<1, /*kIsCut=*/true>(pairs, i, out);
    }
    if (i < bytes) {
        // The last ones together with some that are there already.
        mixStretch<1, /*kIsCut=*/true>(pairs, bytes - wideLanes, out);
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
    return addedProducts(hn::Repartition<std::int16_t, D8>(),
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
        sumA = hn::Add(sumA, mixedGroup(d8, a.pixels + tap * 4, a.weights + tap * 4));
        sumB = hn::Add(sumB, mixedGroup(d8, b.pixels + tap * 4, b.weights + tap * 4));
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
            sumA = hn::Add(sumA, mixedGroup(d8, a.pixels + tap * 4, a.weights + tap * 4));
            sumB = hn::Add(sumB, mixedGroup(d8, b.pixels + tap * 4, b.weights + tap * 4));
        }
        return foldedRows(d16, addedPairs(d16, sumA, sumB));
    } else {
        return hn::Add(everyOtherGroup(a, b, 0, taps), everyOtherGroup(a, b, 4, taps));
    }
}

template <int kTaps>
HWY_INLINE int mixColumnsOf(const std::uint8_t* row, const std::int32_t* first, const std::int8_t* weights, int taps,
                            int count, bool isCut, std::uint8_t* out) {
    const Bytes16 d8;
    const auto places = boundPlaces(d8, isCut);
    const Shorts8 d16;
    const int known = kTaps > 0 ? kTaps : taps;
    const auto at = [=](int i) {
        return MixedPixel{row + static_cast<std::ptrdiff_t>(first[i]) * 4,
                          weights + static_cast<std::ptrdiff_t>(i) * known * 4};
    };
    const auto four = [&](int i) {
        const auto bytes =
            packedInBlocks(d8, meansOf(d16, mixedTwo(at, i, known)), meansOf(d16, mixedTwo(at, i + 2, known)));
        hn::StoreU(bounded(bytes, places), d8, out + static_cast<std::ptrdiff_t>(i) * 4);
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

void mixEachColumn(const MixedColumns& columns, const MixedRow& mixed, int from, int count, bool isCut,
                   std::uint8_t* out) {
    const std::uint8_t* row = mixed.pixels;
    const std::int32_t* first = columns.first + from;
    const std::int8_t* weights = columns.weights + static_cast<std::ptrdiff_t>(from) * columns.taps * 4;
    const int taps = columns.taps;
    const int done = taps == 8    ? mixColumnsOf<8>(row, first, weights, taps, count, isCut, out)
                     : taps == 4  ? mixColumnsOf<4>(row, first, weights, taps, count, isCut, out)
                     : taps == 16 ? mixColumnsOf<16>(row, first, weights, taps, count, isCut, out)
                                  : mixColumnsOf<0>(row, first, weights, taps, count, isCut, out);
    scalarKernels().mixColumns(columns, mixed, from + done, count - done, isCut,
                               out + static_cast<std::ptrdiff_t>(done) * 4);
}

#if HWY_TARGET == HWY_AVX3_DL

// These processors have the sums of four products, which the library does not ask the compiler for. Clang would not add
// that to what is asked for around it, so all of it is asked for anew.
HWY_POP_ATTRIBUTES
HWY_PUSH_ATTRIBUTES(HWY_TARGET_STR ",avx512vnni")

/// A permutation: which byte goes to each of a column's.
template <class From> HWY_INLINE __m512i bytePlaces(int columns, From from) {
    alignas(64) std::uint8_t bytes[64];
    const int bytesEach = 64 / columns;
    for (int i = 0; i < 64; ++i) {
        bytes[i] = static_cast<std::uint8_t>(from(i / bytesEach, i % bytesEach));
    }
    return _mm512_load_si512(bytes);
}

/// Groups of columns: a permutation brings the taps that are taken at once to their columns, channel by channel.
template <int kTapsAtOnce, int kSteps> class GroupMixer {
public:
    static constexpr int columnsTogether = groupBytes / kTapsAtOnce;

    HWY_INLINE GroupMixer(const MixedColumns& columns, const MixedRow& row)
        : columns_(columns), row_(row.pixels), next_(row.next != nullptr ? row.next : row.pixels) {
        for (int step = 0; step < kSteps; ++step) {
            weightPlaces_[step] = bytePlaces(columnsTogether, [=](int column, int byte) {
                return step * groupBytes + column * kTapsAtOnce + byte % kTapsAtOnce;
            });
        }
        offsetPlaces_ = bytePlaces(columnsTogether, [](int column, int) { return column; });
        tapPlaces_ =
            bytePlaces(columnsTogether, [](int, int byte) { return byte / kTapsAtOnce + byte % kTapsAtOnce * 4; });
    }

    /// The columns' sums: of eight columns in 16 bits, of four in 32.
    HWY_INLINE __m512i sums(std::ptrdiff_t group) const {
        const ColumnGroup& at = columns_.groups[group];
        const std::uint8_t* pixels = row_ + static_cast<std::ptrdiff_t>(at.base) * 4;
        // A row comes from memory, more slowly than it is mixed. This one was fetched while the last one was.
        hwy::Prefetch(next_ + static_cast<std::ptrdiff_t>(at.base) * 4);
        const auto weights = _mm512_loadu_si512(columns_.groupWeights + group * (kSteps * groupBytes));
        const auto offsets = _mm512_castsi128_si512(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(at.offsets)));
        auto taken = _mm512_add_epi8(_mm512_permutexvar_epi8(offsetPlaces_, offsets), tapPlaces_);
        auto window = _mm512_loadu_si512(pixels);
        auto sum = _mm512_setzero_si512();
        for (int step = 0; step < kSteps; ++step) {
            const auto stepWeights = _mm512_permutexvar_epi8(weightPlaces_[step], weights);
            const auto taps = _mm512_permutexvar_epi8(taken, window);
            if constexpr (kTapsAtOnce == 2) {
                sum = _mm512_add_epi16(sum, _mm512_maddubs_epi16(taps, stepWeights));
                taken = _mm512_add_epi8(taken, _mm512_set1_epi8(8));
            } else {
                sum = _mm512_dpbusd_epi32(sum, taps, stepWeights);
                if (step + 1 < kSteps) {
                    window = _mm512_loadu_si512(pixels + (step + 1) * 16);
                }
            }
        }
        return sum;
    }

private:
    const MixedColumns& columns_;
    const std::uint8_t* row_;
    const std::uint8_t* next_;
    __m512i weightPlaces_[kSteps];
    __m512i offsetPlaces_;
    __m512i tapPlaces_;
};

HWY_INLINE __m512i meansOf(__m512i sums) {
    return meansOf(WideShorts(), hn::Vec<WideShorts>{sums}).raw;
}

/// Sixteen pixels from the group `first` on; what lies behind the group `last` is lost.
template <int kTapsAtOnce, int kSteps>
HWY_INLINE __m512i sixteenMixed(const GroupMixer<kTapsAtOnce, kSteps>& mixer, std::ptrdiff_t first,
                                std::ptrdiff_t last) {
    const auto sums = [&](int further) { return mixer.sums(std::min(first + further, last)); };
    auto bytes = _mm512_setzero_si512();
    if constexpr (kTapsAtOnce == 2) {
        const auto packed = _mm512_packus_epi16(meansOf(sums(0)), meansOf(sums(1)));
        bytes = _mm512_permutexvar_epi64(_mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0), packed);
    } else {
        const auto packed = _mm512_packus_epi16(meansOf(_mm512_packs_epi32(sums(0), sums(1))),
                                                meansOf(_mm512_packs_epi32(sums(2), sums(3))));
        bytes =
            _mm512_permutexvar_epi32(_mm512_set_epi32(15, 11, 7, 3, 14, 10, 6, 2, 13, 9, 5, 1, 12, 8, 4, 0), packed);
    }
    return bytes;
}

template <int kTapsAtOnce, int kSteps>
void mixGroups(const MixedColumns& columns, const MixedRow& row, int from, int count, bool isCut, std::uint8_t* out) {
    using Mixer = GroupMixer<kTapsAtOnce, kSteps>;
    const Mixer mixer(columns, row);
    const auto places = boundPlaces(WideBytes(), isCut);
    constexpr std::ptrdiff_t together = Mixer::columnsTogether;
    const std::ptrdiff_t end = std::ptrdiff_t{from} + count;
    for (std::ptrdiff_t left = from / together * together; left < end; left += 16) {
        const hn::Vec<WideBytes> sixteen{sixteenMixed(mixer, left / together, (end - 1) / together)};
        const auto mixed = bounded(sixteen, places).raw;
        if (left >= from && left + 16 <= end) {
            _mm512_storeu_si512(out + (left - from) * 4, mixed);
            continue;
        }
        alignas(64) std::uint8_t all[64];
        _mm512_store_si512(all, mixed);
        const std::ptrdiff_t first = std::max<std::ptrdiff_t>(left, from);
        const std::ptrdiff_t behind = std::min<std::ptrdiff_t>(left + 16, end);
        std::memcpy(out + (first - from) * 4, all + (first - left) * 4, static_cast<std::size_t>(behind - first) * 4);
    }
}

void mixGrouped(const MixedColumns& columns, const MixedRow& row, int from, int count, bool isCut, std::uint8_t* out) {
    using Mix = void (*)(const MixedColumns&, const MixedRow&, int, int, bool, std::uint8_t*);
    static constexpr Mix pairs[] = {mixGroups<2, 1>, mixGroups<2, 2>, mixGroups<2, 3>, mixGroups<2, 4>};
    static constexpr Mix fours[] = {mixGroups<4, 1>, mixGroups<4, 2>, mixGroups<4, 3>, mixGroups<4, 4>};
    static_assert(std::size(pairs) == mostGroupSteps && std::size(fours) == mostGroupSteps);
    (columns.tapsAtOnce == 2 ? pairs : fours)[columns.steps - 1](columns, row, from, count, isCut, out);
}

HWY_POP_ATTRIBUTES
HWY_PUSH_ATTRIBUTES(HWY_TARGET_STR)

#endif

void mixColumns(const MixedColumns& columns, const MixedRow& row, int from, int count, bool isCut, std::uint8_t* out) {
#if HWY_TARGET == HWY_AVX3_DL
    if (columns.groups != nullptr && count > 0) {
        mixGrouped(columns, row, from, count, isCut, out);
        return;
    }
#endif
    mixEachColumn(columns, row, from, count, isCut, out);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();
