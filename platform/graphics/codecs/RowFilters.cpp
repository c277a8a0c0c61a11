#include "platform/graphics/codecs/RowFilters.h"

#include "platform/graphics/ProcessorTarget.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/codecs/RowFilters.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillomat::codecs {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor
namespace hn = hwy::HWY_NAMESPACE;

using Bytes8 = hn::ScalableTag<std::uint8_t>;

/// The nearest of left, above and above-left to left + above - aboveLeft, in bytes: of two distances on the same side
/// of aboveLeft the third is their sum, of two on different sides their difference. Saturation changes no comparison.
template <class V> HWY_INLINE V predictPaeth(Bytes8 d, V left, V above, V aboveLeft) {
    const V fromLeft = hn::Sub(hn::Max(above, aboveLeft), hn::Min(above, aboveLeft));
    const V fromAbove = hn::Sub(hn::Max(left, aboveLeft), hn::Min(left, aboveLeft));
    const auto aboveIsMore = hn::VecFromMask(d, hn::Max(above, aboveLeft) == above);
    const auto leftIsMore = hn::VecFromMask(d, hn::Max(left, aboveLeft) == left);
    const V sum = hn::SaturatedAdd(fromLeft, fromAbove);
    const V difference = hn::Sub(hn::Max(fromLeft, fromAbove), hn::Min(fromLeft, fromAbove));
    const V fromAboveLeft = hn::IfThenElse(hn::MaskFromVec(hn::Xor(aboveIsMore, leftIsMore)), difference, sum);
    const V nearer = hn::IfThenElse(hn::Min(fromAbove, fromAboveLeft) == fromAbove, above, aboveLeft);
    const V nearerDistance = hn::Min(fromAbove, fromAboveLeft);
    return hn::IfThenElse(hn::Min(fromLeft, nearerDistance) == fromLeft, left, nearer);
}

template <class V> HWY_INLINE V predictAverage(Bytes8 d, V left, V above) {
    const V roundedUp = hn::AverageRound(left, above);
    return hn::Sub(roundedUp, hn::And(hn::Xor(left, above), hn::Set(d, std::uint8_t{1})));
}

template <class Predict>
HWY_INLINE void filterWith(const std::uint8_t* row, std::size_t length, std::uint8_t* out, const Predict& predict) {
    const Bytes8 d;
    for (std::size_t i = 0; i < length; i += hn::Lanes(d)) {
        hn::StoreU(hn::Sub(hn::LoadU(d, row + i), predict(i)), d, out + i);
    }
}

void Filter(RowFilter filter, const std::uint8_t* HWY_RESTRICT row, const std::uint8_t* HWY_RESTRICT above,
            std::size_t length, std::size_t pixelBytes, std::uint8_t* HWY_RESTRICT out) {
    const Bytes8 d;
    const std::uint8_t* left = row - pixelBytes;
    const std::uint8_t* aboveLeft = above - pixelBytes;
    switch (filter) {
    case RowFilter::none:
        std::memcpy(out, row, length);
        break;
    case RowFilter::sub:
        filterWith(row, length, out, [&](std::size_t i) HWY_ATTR { return hn::LoadU(d, left + i); });
        break;
    case RowFilter::up:
        filterWith(row, length, out, [&](std::size_t i) HWY_ATTR { return hn::LoadU(d, above + i); });
        break;
    case RowFilter::average:
        filterWith(row, length, out, [&](std::size_t i) HWY_ATTR {
            return predictAverage(d, hn::LoadU(d, left + i), hn::LoadU(d, above + i));
        });
        break;
    case RowFilter::paeth:
        filterWith(row, length, out, [&](std::size_t i) HWY_ATTR {
            return predictPaeth(d, hn::LoadU(d, left + i), hn::LoadU(d, above + i), hn::LoadU(d, aboveLeft + i));
        });
        break;
    }
}

// 16 * log2(1 + i), and for each sixteen the same of its middle; nothing for the first one, which the other table
// knows.
alignas(16) constexpr std::uint8_t costsOfUnits[16] = {0, 16, 25, 32, 37, 41, 45, 48, 51, 53, 55, 57, 59, 61, 63, 64};
alignas(16) constexpr std::uint8_t costsOfSixteens[16] = {0, 74, 86, 93, 99, 104, 107, 111, 114};

template <class V> HWY_INLINE V costsOf(Bytes8 d, V filtered) {
    const V distance = hn::Min(filtered, hn::Sub(hn::Zero(d), filtered));
    const V units = hn::And(distance, hn::Set(d, std::uint8_t{15}));
    const V sixteens = hn::ShiftRight<4>(distance);
#if HWY_TARGET == HWY_SCALAR
    const V ofUnits = hn::Set(d, costsOfUnits[hn::GetLane(units)]);
    const V ofSixteens = hn::Set(d, costsOfSixteens[hn::GetLane(sixteens)]);
#else
    const V ofUnits = hn::TableLookupBytes(hn::LoadDup128(d, costsOfUnits), units);
    const V ofSixteens = hn::TableLookupBytes(hn::LoadDup128(d, costsOfSixteens), sixteens);
#endif
    return hn::Max(ofUnits, ofSixteens);
}

/// Calls `addFrom(i, kept)` for each register from byte i on, of whose bytes those count that are kept.
template <class AddFrom> HWY_INLINE void forWholeAndRest(std::size_t length, const AddFrom& addFrom) {
    const Bytes8 d;
    const std::size_t whole = length - length % hn::Lanes(d);
    for (std::size_t i = 0; i < whole; i += hn::Lanes(d)) {
        addFrom(i, hn::Set(d, std::uint8_t{0xff}));
    }
    if (whole < length) {
        addFrom(whole, hn::VecFromMask(d, hn::FirstN(d, length - whole)));
    }
}

void Costs(const std::uint8_t* HWY_RESTRICT row, const std::uint8_t* HWY_RESTRICT above, std::size_t length,
           std::size_t pixelBytes, RowCosts& costs) {
    const Bytes8 d;
    const hn::Repartition<std::uint64_t, Bytes8> d64;
    auto none = hn::Zero(d64);
    auto sub = none;
    auto up = none;
    auto average = none;
    auto paeth = none;
    const auto addFrom = [&](std::size_t i, auto kept) HWY_ATTR {
        const auto value = hn::LoadU(d, row + i);
        const auto left = hn::LoadU(d, row + i - pixelBytes);
        const auto over = hn::LoadU(d, above + i);
        const auto overLeft = hn::LoadU(d, above + i - pixelBytes);
        const auto sumOf = [&](auto filtered) HWY_ATTR { return hn::SumsOf8(hn::And(costsOf(d, filtered), kept)); };
        none = hn::Add(none, sumOf(value));
        sub = hn::Add(sub, sumOf(hn::Sub(value, left)));
        up = hn::Add(up, sumOf(hn::Sub(value, over)));
        average = hn::Add(average, sumOf(hn::Sub(value, predictAverage(d, left, over))));
        paeth = hn::Add(paeth, sumOf(hn::Sub(value, predictPaeth(d, left, over, overLeft))));
    };
    forWholeAndRest(length, addFrom);
    costs = {hn::GetLane(hn::SumOfLanes(d64, none)), hn::GetLane(hn::SumOfLanes(d64, sub)),
             hn::GetLane(hn::SumOfLanes(d64, up)), hn::GetLane(hn::SumOfLanes(d64, average)),
             hn::GetLane(hn::SumOfLanes(d64, paeth))};
}

void CostOfFiltered(const std::uint8_t* HWY_RESTRICT filtered, std::size_t length, FilteredCost& cost) {
    const Bytes8 d;
    const hn::Repartition<std::uint64_t, Bytes8> d64;
    auto sixteenths = hn::Zero(d64);
    auto zeros = sixteenths;
    const auto addFrom = [&](std::size_t i, auto kept) HWY_ATTR {
        const auto value = hn::LoadU(d, filtered + i);
        const auto one = hn::And(kept, hn::Set(d, std::uint8_t{1}));
        sixteenths = hn::Add(sixteenths, hn::SumsOf8(hn::And(costsOf(d, value), kept)));
        zeros = hn::Add(zeros, hn::SumsOf8(hn::IfThenElseZero(value == hn::Zero(d), one)));
    };
    forWholeAndRest(length, addFrom);
    cost = {hn::GetLane(hn::SumOfLanes(d64, sixteenths)), hn::GetLane(hn::SumOfLanes(d64, zeros))};
}

void DropAlpha(const std::uint8_t* HWY_RESTRICT rgba, std::uint8_t* HWY_RESTRICT rgb, std::size_t pixels) {
    const Bytes8 d;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= pixels; i += hn::Lanes(d)) {
        auto red = hn::Zero(d);
        auto green = red;
        auto blue = red;
        auto alpha = red;
        hn::LoadInterleaved4(d, rgba + i * 4, red, green, blue, alpha);
        hn::StoreInterleaved3(red, green, blue, d, rgb + i * 3);
    }
    for (; i < pixels; ++i) {
        std::memcpy(rgb + i * 3, rgba + i * 4, 3);
    }
}

} // namespace HWY_NAMESPACE
} // namespace quillomat::codecs
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillomat::codecs {

void filterRow(RowFilter filter, const std::uint8_t* row, const std::uint8_t* above, std::size_t length,
               std::size_t pixelBytes, std::uint8_t* out) {
    QUILLOMAT_DISPATCH(Filter)(filter, row, above, length, pixelBytes, out);
}

RowCosts costsOfRow(const std::uint8_t* row, const std::uint8_t* above, std::size_t length, std::size_t pixelBytes) {
    RowCosts costs{};
    QUILLOMAT_DISPATCH(Costs)(row, above, length, pixelBytes, costs);
    return costs;
}

FilteredCost costOfFiltered(const std::uint8_t* filtered, std::size_t length) {
    FilteredCost cost;
    QUILLOMAT_DISPATCH(CostOfFiltered)(filtered, length, cost);
    return cost;
}

void dropAlpha(const std::uint8_t* rgba, std::uint8_t* rgb, std::size_t pixels) {
    QUILLOMAT_DISPATCH(DropAlpha)(rgba, rgb, pixels);
}

} // namespace quillomat::codecs
#endif
