// Footprints along the line that a canvas row follows, in wide registers; they give the bits of the scalar twin.
#include "platform/graphics/raster/Kernels.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/raster/LineKernels.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include "platform/graphics/raster/FootprintOffsets-inl.h"
#include "platform/graphics/raster/LineColumns-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

/// Where each pixel of a segment reads the sums of columns, and its weights: in numbers from the first ones.
struct PixelOffsets {
    HWY_ALIGN std::int32_t sums[longestSegment];
    HWY_ALIGN std::int32_t weights[longestSegment];
};

using WideShorts = hn::CappedTag<std::int16_t, 32>;
using WideSums = hn::Repartition<std::int32_t, WideShorts>;

/// The eight columns of a pixel times their weights, those of two blocks or more beside each other.
HWY_INLINE hn::Vec<WideSums> weighedColumns(const std::int16_t* sums, const std::int16_t* weights) {
    const WideShorts d16;
    const hn::Repartition<std::uint8_t, WideShorts> d8;
    const WideSums d32;
    const auto eight = hn::BitCast(d8, hn::LoadDup128(d16, weights));
    constexpr int lanes = static_cast<int>(hn::MaxLanes(WideShorts()));
    auto sum = hn::Zero(d32);
    for (int from = 0; from < 4 * LineColumns::taps; from += lanes) {
        const auto spread = hn::TableLookupBytes(eight, hn::Load(d8, numbersInBlocks + 2 * from));
        sum = hn::Add(sum, pairSums(d32, hn::LoadU(d16, sums + from), hn::BitCast(d16, spread)));
    }
    return sum;
}

template <int kParts> class LinePixels {
public:
    HWY_INLINE LinePixels(const ColumnSums* sums, const PixelOffsets* offsets, const std::int16_t* lines)
        : sums_(sums), offsets_(offsets), lines_(lines) {}

    HWY_INLINE void drawOne(int i, std::uint8_t* out) const {
        store(Longs4(), addedBlocks(WideSums(), weighed(i)), out + std::ptrdiff_t{4} * i);
    }

#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    static constexpr int atOnce = 4;

    HWY_INLINE void draw(int i, std::uint8_t* out) const {
        const WideSums d32;
        const auto addedHalves = [&](auto a, auto b) {
            return hn::Add(hn::ConcatLowerLower(d32, b, a), hn::ConcatUpperUpper(d32, b, a));
        };
        const auto first = addedHalves(weighed(i), weighed(i + 1)).raw;
        const auto second = addedHalves(weighed(i + 2), weighed(i + 3)).raw;
        const auto even = hn::Vec<WideSums>{_mm512_shuffle_i64x2(first, second, 0x88)};
        const auto odd = hn::Vec<WideSums>{_mm512_shuffle_i64x2(first, second, 0xDD)};
        store(d32, hn::Add(even, odd), out + std::ptrdiff_t{4} * i);
    }
#else
    static constexpr int atOnce = 1;

    HWY_INLINE void draw(int i, std::uint8_t* out) const {
        drawOne(i, out);
    }
#endif

private:
    [[nodiscard]] HWY_INLINE hn::Vec<WideSums> weighed(int i) const {
        const auto part = [&](int k) {
            return weighedColumns(sums_[k].numbers + offsets_[k].sums[i], lines_ + offsets_[k].weights[i]);
        };
        if constexpr (kParts == 1) {
            return part(0);
        } else {
            return hn::Add(part(0), part(1));
        }
    }

    template <class D32> static HWY_INLINE void store(D32 d32, hn::Vec<D32> sums, std::uint8_t* out) {
        const hn::RebindToUnsigned<D32> u32;
        const auto raised = hn::Add(hn::BitCast(u32, sums), hn::Set(u32, halfOfLineSum(kParts)));
        const auto numbers = hn::BitCast(d32, hn::ShiftRight<lineSumBits(kParts)>(raised));
        hn::StoreU(asBytes(d32, numbers), hn::Rebind<std::uint8_t, D32>(), out);
    }

    const ColumnSums* sums_;
    const PixelOffsets* offsets_;
    const std::int16_t* lines_;
};

/// A segment of the pixels along a line.
template <int kParts>
HWY_INLINE void filterLineSegment(const LineFootprint& footprint, const PictureLine& line, const CurvedRow::Axis& curve,
                                  int first, int count, std::uint8_t* out) {
    const PositionTag d;
    const auto lanes = static_cast<int>(hn::Lanes(d));
    HWY_ALIGN std::int32_t positions[longestSegment];
    for (int i = 0; i < count; i += lanes) {
        hn::Store(positionsAlong(curve, first + i), d, positions + i);
    }
    const auto [low, high] = std::minmax(positions[0], positions[count - 1]);
    // To the nearest column, and from there to the first one that is read.
    const int farthest = kParts == 1 ? 0 : std::abs(footprint.columnsAside);
    const int firstColumn = (((low - farthest + phases / 2) >> phaseBits) - 3) & ~1;
    const int lastColumn = ((high + farthest + phases / 2) >> phaseBits) - 3 + LineColumns::taps;
    ColumnSums sums[kParts];
    combineColumns<kParts>(footprint, line, firstColumn, lastColumn + 1 - firstColumn, sums);
    PixelOffsets offsets[kParts];
    for (int part = 0; part < kParts; ++part) {
        const int side = kParts == 1 ? 0 : 2 * part - 1;
        const auto aside = hn::Set(d, side * footprint.columnsAside + phases / 2);
        for (int i = 0; i < count; i += lanes) {
            const auto at = hn::Add(hn::Load(d, positions + i), aside);
            const auto column = hn::Sub(hn::ShiftRight<phaseBits>(at), hn::Set(d, 3 + firstColumn));
            const auto odd = hn::And(column, hn::Set(d, 1));
            hn::Store(hn::ShiftLeft<2>(hn::Sub(column, odd)), d, offsets[part].sums + i);
            const auto phase = hn::And(at, hn::Set(d, phases - 1));
            hn::Store(hn::Sub(hn::ShiftLeft<3>(phase), odd), d, offsets[part].weights + i);
        }
    }
    const LinePixels<kParts> pixels(sums, offsets, footprint.columns->lines);
    constexpr int atOnce = LinePixels<kParts>::atOnce;
    int i = 0;
    for (; i + atOnce <= count; i += atOnce) {
        pixels.draw(i, out);
    }
    for (; i < count; ++i) {
        pixels.drawOne(i, out);
    }
}

template <int kParts>
void filterLine(const LineFootprint& footprint, const PictureLine& line, const CurvedRow::Axis& curve, int first,
                int count, std::uint8_t* out) {
    for (int done = 0; done < count; done += longestSegment) {
        filterLineSegment<kParts>(footprint, line, curve, first + done, std::min(count - done, longestSegment),
                                  out + std::ptrdiff_t{4} * done);
    }
}

void filterAlongLine(const LineFootprint& footprint, const PictureLine& line, const CurvedRow::Axis& curve, int first,
                     int count, std::uint8_t* out) {
    return footprint.parts == 1 ? filterLine<1>(footprint, line, curve, first, count, out)
                                : filterLine<2>(footprint, line, curve, first, count, out);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();
