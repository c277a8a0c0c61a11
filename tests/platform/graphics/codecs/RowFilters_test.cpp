#include "EveryTarget.h"
#include "platform/graphics/codecs/RowFilters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

namespace quillomat::testing {
namespace {

using codecs::RowFilter;
using codecs::rowPadding;

/// The filters as the PNG standard writes them down.
std::uint8_t filtered(RowFilter filter, int value, int left, int above, int aboveLeft) {
    const int estimate = left + above - aboveLeft;
    const int fromLeft = std::abs(estimate - left);
    const int fromAbove = std::abs(estimate - above);
    const int fromAboveLeft = std::abs(estimate - aboveLeft);
    const int nearest = fromLeft <= fromAbove && fromLeft <= fromAboveLeft ? left
                        : fromAbove <= fromAboveLeft                       ? above
                                                                           : aboveLeft;
    switch (filter) {
    case RowFilter::none:
        return static_cast<std::uint8_t>(value);
    case RowFilter::sub:
        return static_cast<std::uint8_t>(value - left);
    case RowFilter::up:
        return static_cast<std::uint8_t>(value - above);
    case RowFilter::average:
        return static_cast<std::uint8_t>(value - (left + above) / 2);
    case RowFilter::paeth:
        return static_cast<std::uint8_t>(value - nearest);
    }
    return 0;
}

/// Sixteenths of a bit for a filtered byte.
std::uint64_t costOf(std::uint8_t filteredByte) {
    const int distance = std::abs(int{static_cast<std::int8_t>(filteredByte)});
    const int stood = distance < 16 ? distance : distance / 16 * 16 + 8;
    return static_cast<std::uint64_t>(std::lround(16 * std::log2(1 + stood)));
}

TEST(RowFilters, everyFilterAtEveryWidthIsTheStandards) {
    std::mt19937 random(1);
    onEveryTarget([&](const char* target) {
        for (const std::size_t pixelBytes : {3U, 4U}) {
            for (std::size_t pixels = 1; pixels < 70; ++pixels) {
                const std::size_t length = pixels * pixelBytes;
                std::vector<std::uint8_t> above(length + 2 * rowPadding);
                std::vector<std::uint8_t> row = above;
                for (std::size_t i = 0; i < length; ++i) {
                    // Near values as well as far ones, so that ties are met.
                    above[rowPadding + i] = static_cast<std::uint8_t>(random() % (pixels % 2 == 0 ? 256 : 3));
                    row[rowPadding + i] = static_cast<std::uint8_t>(random() % (pixels % 2 == 0 ? 256 : 3));
                }
                const codecs::RowCosts costs =
                    codecs::costsOfRow(row.data() + rowPadding, above.data() + rowPadding, length, pixelBytes);
                for (const RowFilter filter :
                     {RowFilter::none, RowFilter::sub, RowFilter::up, RowFilter::average, RowFilter::paeth}) {
                    std::vector<std::uint8_t> out(length + rowPadding + 1, 0xee);
                    codecs::filterRow(filter, row.data() + rowPadding, above.data() + rowPadding, length, pixelBytes,
                                      out.data());
                    codecs::FilteredCost cost;
                    for (std::size_t i = 0; i < length; ++i) {
                        const std::uint8_t* r = row.data() + rowPadding + i;
                        const std::uint8_t* a = above.data() + rowPadding + i;
                        const std::uint8_t expected = filtered(filter, *r, *(r - pixelBytes), *a, *(a - pixelBytes));
                        ASSERT_EQ(out[i], expected) << target << " filter " << int(filter) << " at " << i;
                        cost.sixteenths += costOf(expected);
                        cost.zeros += expected == 0 ? 1 : 0;
                    }
                    EXPECT_EQ(out.back(), 0xee) << target << ": written too far";
                    EXPECT_EQ(costs.at(static_cast<std::size_t>(filter)), cost.sixteenths) << target;
                    const codecs::FilteredCost counted = codecs::costOfFiltered(out.data(), length);
                    EXPECT_EQ(counted.sixteenths, cost.sixteenths) << target;
                    EXPECT_EQ(counted.zeros, cost.zeros) << target;
                }
            }
        }
    });
}

TEST(RowFilters, whatLiesBehindARowCostsNothing) {
    onEveryTarget([](const char* target) {
        std::vector<std::uint8_t> row(30 + 2 * rowPadding, 0x55);
        std::fill_n(row.begin(), rowPadding + 30, std::uint8_t{0});
        const std::vector<std::uint8_t> above(row.size());
        const codecs::RowCosts costs = codecs::costsOfRow(row.data() + rowPadding, above.data() + rowPadding, 30, 3);
        EXPECT_EQ(costs, codecs::RowCosts{}) << target;
        const codecs::FilteredCost cost = codecs::costOfFiltered(row.data() + rowPadding, 30);
        EXPECT_EQ(cost.sixteenths, 0U) << target;
        EXPECT_EQ(cost.zeros, 30U) << target;
    });
}

TEST(RowFilters, alphaIsDroppedAtEveryWidth) {
    onEveryTarget([](const char* target) {
        for (std::size_t pixels = 0; pixels < 200; ++pixels) {
            std::vector<std::uint8_t> rgba(pixels * 4);
            for (std::size_t i = 0; i < rgba.size(); ++i) {
                rgba[i] = static_cast<std::uint8_t>(i * 7);
            }
            std::vector<std::uint8_t> rgb(pixels * 3 + rowPadding + 1, 0xee);
            codecs::dropAlpha(rgba.data(), rgb.data(), pixels);
            for (std::size_t i = 0; i < pixels * 3; ++i) {
                ASSERT_EQ(rgb[i], rgba[i / 3 * 4 + i % 3]) << target << " " << pixels;
            }
            EXPECT_EQ(rgb.back(), 0xee) << target << ": written too far";
        }
    });
}

} // namespace
} // namespace quillomat::testing
