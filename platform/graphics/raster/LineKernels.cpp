// Footprints along the line that a canvas row follows, in wide registers; they give the bits of the scalar twin.
#include "platform/graphics/raster/Kernels.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/raster/LineKernels.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include "platform/graphics/raster/FootprintOffsets-inl.h"
#include "platform/graphics/raster/LineColumns-inl.h"
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

/// Where each pixel of a segment reads the sums of columns, and its weights: in numbers from the first ones.
struct PixelOffsets {
    static constexpr int room = longestSegment + pixelsAlike;
    HWY_ALIGN std::int32_t sums[room];
    HWY_ALIGN std::int32_t weights[room];
};

using WideShorts = hn::CappedTag<std::int16_t, 32>;
using WideSums = hn::Repartition<std::int32_t, WideShorts>;

/// Adds the eight columns of a pixel times their weights, those of two blocks or more beside each other.
HWY_INLINE void addWeighedColumns(const std::int16_t* sums, const std::int16_t* weights, PairSums<WideSums>& total) {
    const WideShorts d16;
    const hn::Repartition<std::uint8_t, WideShorts> d8;
    const auto eight = hn::BitCast(d8, hn::LoadDup128(d16, weights));
    constexpr int lanes = static_cast<int>(hn::MaxLanes(WideShorts()));
    for (int from = 0; from < 4 * LineColumns::taps; from += lanes) {
        const auto spread = hn::TableLookupBytes(eight, hn::Load(d8, numbersInBlocks + 2 * from));
        total.add(hn::LoadU(d16, sums + from), hn::BitCast(d16, spread));
    }
}

template <int kParts> class LinePixels {
public:
    HWY_INLINE LinePixels(const ColumnSums* sums, const PixelOffsets* offsets) : sums_(sums), offsets_(offsets) {}

    /// From `first` up to `end`, whose weights are among those lines.
    HWY_INLINE void draw(const LineColumns& columns, int first, int end, std::uint8_t* out) {
        lines_ = columns.lines;
        int i = first;
        for (; i + atOnce <= end; i += atOnce, out += 4 * atOnce) {
            drawSome(i, out);
        }
        for (; i < end; ++i, out += 4) {
            drawOne(i, out);
        }
    }

private:
    HWY_INLINE void drawOne(int i, std::uint8_t* out) const {
        store(Longs4(), addedBlocks(WideSums(), weighed(i)), out);
    }

#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    static constexpr int atOnce = 4;

    HWY_INLINE void drawSome(int i, std::uint8_t* out) const {
        const WideSums d32;
        const auto addedHalves = [&](auto a, auto b) {
            return hn::Add(hn::ConcatLowerLower(d32, b, a), hn::ConcatUpperUpper(d32, b, a));
        };
        const auto first = addedHalves(weighed(i), weighed(i + 1)).raw;
        const auto second = addedHalves(weighed(i + 2), weighed(i + 3)).raw;
        const auto even = hn::Vec<WideSums>{_mm512_shuffle_i64x2(first, second, 0x88)};
        const auto odd = hn::Vec<WideSums>{_mm512_shuffle_i64x2(first, second, 0xDD)};
        store(d32, hn::Add(even, odd), out);
    }
#else
    static constexpr int atOnce = 1;

    HWY_INLINE void drawSome(int i, std::uint8_t* out) const {
        drawOne(i, out);
    }
#endif

    [[nodiscard]] HWY_INLINE hn::Vec<WideSums> weighed(int i) const {
        PairSums<WideSums> total;
        for (int k = 0; k < kParts; ++k) {
            addWeighedColumns(sums_[k].numbers + offsets_[k].sums[i], lines_ + offsets_[k].weights[i], total);
        }
        return total.total();
    }

    template <class D32> static HWY_INLINE void store(D32 d32, hn::Vec<D32> sums, std::uint8_t* out) {
        const hn::RebindToUnsigned<D32> u32;
        const auto raised = hn::Add(hn::BitCast(u32, sums), hn::Set(u32, halfOfLineSum(kParts)));
        const auto numbers = hn::BitCast(d32, hn::ShiftRight<lineSumBits(kParts)>(raised));
        hn::StoreU(asBytes(d32, numbers), hn::Rebind<std::uint8_t, D32>(), out);
    }

    const ColumnSums* sums_;
    const PixelOffsets* offsets_;
    const std::int16_t* lines_ = nullptr;
};

/// Positions along a line from its `first` one on.
HWY_INLINE PositionVector positionsAlong(const LineCurve& curve, int first) {
    const hn::RebindToFloat<PositionTag> d;
    const PositionTag d32;
    const auto at = hn::Iota(d, static_cast<float>(first));
    const auto w = hn::Add(hn::Set(d, 1.0F), hn::Mul(at, hn::Set(d, curve.fall)));
    const auto moved = hn::Div(hn::Mul(at, hn::Set(d, curve.step)), w);
    const auto rounded = hn::Add(hn::Add(hn::Set(d, curve.start), moved), hn::Set(d, roundingFloat));
    return hn::Add(hn::BitCast(d32, rounded), hn::Set(d32, curve.origin - bitsOfRoundingFloat));
}

/// A segment of the pixels along a line.
template <int kParts>
HWY_INLINE void filterLineSegment(const LineFootprint& footprint, const PictureLine& line, const LineCurve& curve,
                                  int first, int count, std::uint8_t* out) {
    const PositionTag d;
    const auto lanes = static_cast<int>(hn::Lanes(d));
    // From where all pixels of a register share columns.
    const int before = first % pixelsAlike;
    const int from = first - before;
    const int end = before + count;
    HWY_ALIGN std::int32_t positions[PixelOffsets::room];
    for (int i = 0; i < end; i += lanes) {
        hn::Store(positionsAlong(curve, from + i), d, positions + i);
    }
    const auto [low, high] = std::minmax(positions[before], positions[end - 1]);
    // To the nearest column, and from there to the first one that is read.
    const int farthest = kParts == 1 ? 0 : footprint.mostAside;
    const int firstColumn = (((low - farthest + phases / 2) >> phaseBits) - 3) & ~1;
    const int lastColumn = ((high + farthest + phases / 2) >> phaseBits) - 3 + LineColumns::taps;
    ColumnSums sums[kParts];
    combineColumns<kParts>(footprint, line, firstColumn, lastColumn + 1 - firstColumn, sums);
    PixelOffsets offsets[kParts];
    for (int i = 0; i < end; i += lanes) {
        const auto position = hn::Load(d, positions + i);
        const std::int32_t columnsAside = kParts == 1 ? 0 : footprint.columnsOf(from + i).aside;
        for (int part = 0; part < kParts; ++part) {
            const int side = kParts == 1 ? 0 : 2 * part - 1;
            const auto at = hn::Add(position, hn::Set(d, side * columnsAside + phases / 2));
            const auto column = hn::Sub(hn::ShiftRight<phaseBits>(at), hn::Set(d, 3 + firstColumn));
            const auto odd = hn::And(column, hn::Set(d, 1));
            hn::Store(hn::ShiftLeft<2>(hn::Sub(column, odd)), d, offsets[part].sums + i);
            const auto phase = hn::And(at, hn::Set(d, phases - 1));
            hn::Store(hn::Sub(hn::ShiftLeft<3>(phase), odd), d, offsets[part].weights + i);
        }
    }
    LinePixels<kParts> pixels(sums, offsets);
    for (int i = before; i < end;) {
        const int alike = std::min(footprint.endOfColumns(from + i) - from, end);
        pixels.draw(*footprint.columnsOf(from + i).table, i, alike, out);
        out += std::ptrdiff_t{4} * (alike - i);
        i = alike;
    }
}

template <int kParts>
void filterLine(const LineFootprint& footprint, const PictureLine& line, const LineCurve& curve, int first, int count,
                std::uint8_t* out) {
    for (int done = 0; done < count; done += longestSegment) {
        filterLineSegment<kParts>(footprint, line, curve, first + done, std::min(count - done, longestSegment),
                                  out + std::ptrdiff_t{4} * done);
    }
}

void filterAlongLine(const LineFootprint& footprint, const PictureLine& line, const LineCurve& curve, int first,
                     int count, std::uint8_t* out) {
    return footprint.parts == 1 ? filterLine<1>(footprint, line, curve, first, count, out)
                                : filterLine<2>(footprint, line, curve, first, count, out);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();
