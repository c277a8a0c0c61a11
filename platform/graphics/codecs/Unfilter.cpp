// A pixel depends on those to its left, above and above-left, so a row can only be recovered pixel by pixel. But once a
// row is one pixel ahead, the next row can follow it: four rows go together, one in each 32-bit lane of a vector. Each
// step then has what it needs in the vectors of the step before: the left pixels are its result, those above are its
// result moved by one lane, and those above-left are what was above.
//
// Each step waits for the one before. Meanwhile the processor has time for another four rows, which follow these at a
// distance.
#include "platform/graphics/codecs/Unfilter.h"

#include "platform/graphics/ProcessorTarget.h"

#include <algorithm>
#include <cstdlib>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/codecs/Unfilter.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillomat::codecs {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

int Predict(std::uint8_t filter, int left, int above, int aboveLeft) {
    const int fromLeft = std::abs(above - aboveLeft);
    const int fromAbove = std::abs(left - aboveLeft);
    const int fromAboveLeft = std::abs(left + above - 2 * aboveLeft);
    switch (filter) {
    case 1:
        return left;
    case 2:
        return above;
    case 3:
        return (left + above) / 2;
    case 4:
        return fromLeft <= fromAbove && fromLeft <= fromAboveLeft ? left
               : fromAbove <= fromAboveLeft                       ? above
                                                                  : aboveLeft;
    default:
        return 0;
    }
}

void Unfilter(const RowGroup& rows, std::size_t width, std::size_t pixelBytes) {
    const std::uint8_t* above = rows.above;
    for (std::size_t row = 0; row < rowsAtOnce; ++row) {
        const std::uint8_t* filtered = rows.filtered[row];
        std::uint8_t* pixels = rows.pixels[row];
        for (std::size_t x = 0; x < width; ++x) {
            for (std::size_t i = 0; i < pixelBytes; ++i) {
                const std::size_t at = x * 4 + i;
                const int left = x > 0 ? pixels[at - 4] : 0;
                const int aboveLeft = x > 0 ? above[at - 4] : 0;
                pixels[at] = static_cast<std::uint8_t>(filtered[x * pixelBytes + i] +
                                                       Predict(rows.filters[row], left, above[at], aboveLeft));
            }
        }
        above = pixels;
    }
}

#else

using Lanes32 = hn::FixedTag<std::uint32_t, 4>;
using Lanes64 = hn::Repartition<std::uint64_t, Lanes32>;
using Lanes8 = hn::Repartition<std::uint8_t, Lanes32>;
using Pixels = hn::Vec<Lanes32>;
using PixelBytes = hn::Vec<Lanes8>;

constexpr std::size_t rowsTogether = 4;
// So far the following rows stay behind that what they read above them is no longer on its way to the cache.
constexpr std::ptrdiff_t pixelsBehind = 32;
static_assert(rowsAtOnce == 2 * rowsTogether);

/// Lanes of all ones where a row has that filter.
struct FilterMasks {
    PixelBytes sub;
    PixelBytes up;
    PixelBytes average;
    PixelBytes paeth;
};

HWY_INLINE PixelBytes MaskOf(const std::uint8_t* filters, std::uint8_t filter) {
    HWY_ALIGN std::array<std::uint32_t, rowsTogether> lanes{};
    for (std::size_t i = 0; i < rowsTogether; ++i) {
        lanes[i] = filters[i] == filter ? ~std::uint32_t{0} : 0;
    }
    return hn::BitCast(Lanes8(), hn::Load(Lanes32(), lanes.data()));
}

HWY_INLINE void Transpose(Pixels& a, Pixels& b, Pixels& c, Pixels& d) {
    const Lanes32 d32;
    const Lanes64 d64;
    const auto abLow = hn::BitCast(d64, hn::InterleaveLower(d32, a, b));
    const auto abHigh = hn::BitCast(d64, hn::InterleaveUpper(d32, a, b));
    const auto cdLow = hn::BitCast(d64, hn::InterleaveLower(d32, c, d));
    const auto cdHigh = hn::BitCast(d64, hn::InterleaveUpper(d32, c, d));
    a = hn::BitCast(d32, hn::InterleaveLower(d64, abLow, cdLow));
    b = hn::BitCast(d32, hn::InterleaveUpper(d64, abLow, cdLow));
    c = hn::BitCast(d32, hn::InterleaveLower(d64, abHigh, cdHigh));
    d = hn::BitCast(d32, hn::InterleaveUpper(d64, abHigh, cdHigh));
}

template <int pixelBytes> HWY_INLINE Pixels LoadFour(const std::uint8_t* from) {
    const Lanes8 d8;
    const PixelBytes loaded = hn::LoadU(d8, from);
    if (pixelBytes == 4) {
        return hn::BitCast(Lanes32(), loaded);
    }
    alignas(16) static constexpr std::array<std::uint8_t, 16> spread{0, 1, 2, 0x80, 3, 4,  5,  0x80,
                                                                     6, 7, 8, 0x80, 9, 10, 11, 0x80};
    return hn::BitCast(Lanes32(), hn::TableLookupBytesOr0(loaded, hn::Load(d8, spread.data())));
}

HWY_INLINE PixelBytes Distance(PixelBytes a, PixelBytes b) {
    return hn::Sub(hn::Max(a, b), hn::Min(a, b));
}

/// Of two distances on the same side of above-left the third is their sum, of two on different sides their difference;
/// a sum that saturates is still the largest.
HWY_INLINE PixelBytes Paeth(PixelBytes left, PixelBytes above, PixelBytes aboveLeft) {
    const Lanes8 d8;
    const PixelBytes fromLeft = Distance(above, aboveLeft);
    const PixelBytes fromAbove = Distance(left, aboveLeft);
    const auto aboveIsMore = hn::VecFromMask(d8, hn::Max(above, aboveLeft) == above);
    const auto leftIsMore = hn::VecFromMask(d8, hn::Max(left, aboveLeft) == left);
    const PixelBytes fromAboveLeft =
        hn::IfThenElse(hn::MaskFromVec(hn::Xor(aboveIsMore, leftIsMore)), Distance(fromLeft, fromAbove),
                       hn::SaturatedAdd(fromLeft, fromAbove));
    const PixelBytes nearerDistance = hn::Min(fromAbove, fromAboveLeft);
    const PixelBytes nearer = hn::IfThenElse(nearerDistance == fromAbove, above, aboveLeft);
    return hn::IfThenElse(hn::Min(fromLeft, nearerDistance) == fromLeft, left, nearer);
}

HWY_INLINE PixelBytes Average(PixelBytes left, PixelBytes above) {
    const PixelBytes one = hn::Set(Lanes8(), std::uint8_t{1});
    return hn::Sub(hn::AverageRound(left, above), hn::And(hn::Xor(left, above), one));
}

struct Walk {
    PixelBytes left;
    PixelBytes aboveLeft;
};

template <bool hasAverage, bool hasPaeth>
HWY_INLINE Pixels Step(Pixels filtered, Pixels aboveFirst, const FilterMasks& masks, Walk& walk) {
    const Lanes32 d32;
    const Lanes8 d8;
    const Pixels moved = hn::ShiftLeftLanes<1>(d32, hn::BitCast(d32, walk.left));
    const PixelBytes above = hn::BitCast(d8, hn::Or(moved, aboveFirst));
    PixelBytes predicted = hn::Or(hn::And(walk.left, masks.sub), hn::And(above, masks.up));
    if (hasAverage) {
        predicted = hn::Or(predicted, hn::And(Average(walk.left, above), masks.average));
    }
    if (hasPaeth) {
        predicted = hn::Or(predicted, hn::And(Paeth(walk.left, above, walk.aboveLeft), masks.paeth));
    }
    walk.aboveLeft = above;
    walk.left = hn::Add(hn::BitCast(d8, filtered), predicted);
    return hn::BitCast(d32, walk.left);
}

/// Whether nothing is added to four pixels of each row, and all that they could be predicted from is one colour: then
/// every filter predicts that colour, but for the one that predicts nothing.
HWY_INLINE bool IsFlat(Pixels filtered, Pixels above, const Walk& walk) {
    const Lanes32 d32;
    const Pixels left = hn::BitCast(d32, walk.left);
    const Pixels aboveLeft = hn::BitCast(d32, walk.aboveLeft);
    const Pixels unlike =
        hn::Or(hn::Or(hn::Xor(above, left), hn::Xor(above, aboveLeft)), hn::Xor(above, hn::Shuffle0321(above)));
    return hn::AllTrue(d32, hn::Or(filtered, unlike) == hn::Zero(d32));
}

/// Four rows on their way to the right.
template <int pixelBytes, bool hasAverage, bool hasPaeth> class FourRows {
public:
    HWY_INLINE FourRows(const RowGroup& rows, std::size_t first, const std::uint8_t* above)
        : filtered_(rows.filtered.data() + first)
        , above_(above)
        , pixels_(rows.pixels.data() + first)
        , masks_{MaskOf(filtersOf(rows, first), 1), MaskOf(filtersOf(rows, first), 2),
                 MaskOf(filtersOf(rows, first), 3), MaskOf(filtersOf(rows, first), 4)}
        , allPredict_(std::count(filtersOf(rows, first), filtersOf(rows, first) + rowsTogether, 0) == 0)
        , walk_{hn::Zero(Lanes8()), hn::Zero(Lanes8())} {}

    /// Four pixels of each row: from x on in the first, each of the others a pixel behind.
    HWY_INLINE void recover(std::ptrdiff_t x) {
        const Lanes32 d32;
        HWY_ALIGN static constexpr std::array<std::uint32_t, rowsTogether> onlyFirst{~std::uint32_t{0}, 0, 0, 0};
        const Pixels first = hn::Load(d32, onlyFirst.data());
        Pixels a = LoadFour<pixelBytes>(filtered_[0] + x * pixelBytes);
        Pixels b = LoadFour<pixelBytes>(filtered_[1] + (x - 1) * pixelBytes);
        Pixels c = LoadFour<pixelBytes>(filtered_[2] + (x - 2) * pixelBytes);
        Pixels d = LoadFour<pixelBytes>(filtered_[3] + (x - 3) * pixelBytes);
        const Pixels above = hn::BitCast(d32, hn::LoadU(Lanes8(), above_ + x * 4));
        if (IsFlat(hn::Or(hn::Or(a, b), hn::Or(c, d)), above, walk_) &&
            (allPredict_ || hn::AllTrue(d32, above == hn::Zero(d32)))) {
            store(above, above, above, above, x);
            return;
        }
        Transpose(a, b, c, d);
        a = Step<hasAverage, hasPaeth>(a, hn::And(above, first), masks_, walk_);
        b = Step<hasAverage, hasPaeth>(b, hn::And(hn::ShiftRightLanes<1>(d32, above), first), masks_, walk_);
        c = Step<hasAverage, hasPaeth>(c, hn::And(hn::ShiftRightLanes<2>(d32, above), first), masks_, walk_);
        d = Step<hasAverage, hasPaeth>(d, hn::And(hn::ShiftRightLanes<3>(d32, above), first), masks_, walk_);
        Transpose(a, b, c, d);
        store(a, b, c, d, x);
    }

private:
    static HWY_INLINE const std::uint8_t* filtersOf(const RowGroup& rows, std::size_t first) {
        return rows.filters.data() + first;
    }

    HWY_INLINE void store(Pixels a, Pixels b, Pixels c, Pixels d, std::ptrdiff_t x) const {
        const Lanes8 d8;
        hn::StoreU(hn::BitCast(d8, a), d8, pixels_[0] + x * 4);
        hn::StoreU(hn::BitCast(d8, b), d8, pixels_[1] + (x - 1) * 4);
        hn::StoreU(hn::BitCast(d8, c), d8, pixels_[2] + (x - 2) * 4);
        hn::StoreU(hn::BitCast(d8, d), d8, pixels_[3] + (x - 3) * 4);
    }

    const std::uint8_t* const* filtered_;
    const std::uint8_t* above_;
    std::uint8_t* const* pixels_;
    FilterMasks masks_;
    bool allPredict_;
    Walk walk_;
};

template <int pixelBytes, bool hasAverage, bool hasPaeth>
HWY_INLINE void UnfilterRows(const RowGroup& rows, std::size_t width) {
    FourRows<pixelBytes, hasAverage, hasPaeth> leading(rows, 0, rows.above);
    FourRows<pixelBytes, hasAverage, hasPaeth> following(rows, rowsTogether, rows.pixels[rowsTogether - 1]);
    const auto end = static_cast<std::ptrdiff_t>((width + rowsTogether - 1 + 3) / 4 * 4);
    const std::ptrdiff_t start = std::min(end, pixelsBehind);
    std::ptrdiff_t x = 0;
    for (; x < start; x += 4) {
        leading.recover(x);
    }
    for (; x < end; x += 4) {
        leading.recover(x);
        following.recover(x - start);
    }
    for (; x < end + start; x += 4) {
        following.recover(x - start);
    }
}

template <int pixelBytes> HWY_INLINE void UnfilterAny(const RowGroup& rows, std::size_t width) {
    bool hasAverage = false;
    bool hasPaeth = false;
    for (const std::uint8_t filter : rows.filters) {
        hasAverage = hasAverage || filter == 3;
        hasPaeth = hasPaeth || filter == 4;
    }
    if (hasAverage) {
        UnfilterRows<pixelBytes, true, true>(rows, width);
    } else if (hasPaeth) {
        UnfilterRows<pixelBytes, false, true>(rows, width);
    } else {
        UnfilterRows<pixelBytes, false, false>(rows, width);
    }
}

void Unfilter(const RowGroup& rows, std::size_t width, std::size_t pixelBytes) {
    if (pixelBytes == 3) {
        UnfilterAny<3>(rows, width);
    } else {
        UnfilterAny<4>(rows, width);
    }
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::codecs
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillomat::codecs {

void unfilter(const RowGroup& rows, std::size_t width, std::size_t pixelBytes) {
    QUILLOMAT_DISPATCH(Unfilter)(rows, width, pixelBytes);
}

} // namespace quillomat::codecs
#endif
