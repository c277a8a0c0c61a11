// Tables of weights: room for every width, and dropped when they are many and nobody reads them.
#include "platform/graphics/raster/FilterTables.h"

#include <gtest/gtest.h>

#include <memory>

namespace quillomat::raster {
namespace {

TEST(FilterTables, tablesOfAllWidthsKeepWithinTheMostTaps) {
    for (double wide = 0; wide <= widestBoxes + 1; wide += 0.03) {
        for (double narrow = 0; narrow <= wide; narrow += 0.03) {
            ASSERT_LE(rowTable(wide, narrow).taps, mostTaps) << wide << " and " << narrow;
            ASSERT_LE(columnTable(wide, narrow, 0.4).taps, mostTaps) << wide << " and " << narrow;
        }
    }
}

/// The variance of the taps' places under the column weights of all phases together, in twelfths of a squared sample,
/// as a box of width s has s².
double spreadOf(const ColumnTable& table) {
    double sum = 0;
    for (int phase = 0; phase < phases; ++phase) {
        for (int tap = 0; tap < table.taps; ++tap) {
            const double place = tap + 1 - table.taps / 2 - phase / static_cast<double>(phases);
            sum += table.weight(phase, tap) * place * place;
        }
    }
    return 12 * sum / (256.0 * phases);
}

TEST(FilterTables, spreadAsMuchAsTheBoxesAndTheTent) {
    constexpr double tent = 2;
    for (double wide = 0.5; wide <= 6; wide += 0.37) {
        for (double narrow = 0; narrow <= wide; narrow += 0.23) {
            // Widths are rounded to 32nds, weights to whole numbers.
            const double expected = wide * wide + narrow * narrow + tent;
            EXPECT_NEAR(spreadOf(columnTable(wide, narrow)), expected, wide / 24 + 0.05) << wide << ", " << narrow;
        }
    }
}

TEST(FilterTables, boxesOfNearlyTheSameProfileShareATable) {
    EXPECT_EQ(&columnTable(2, 0.40), &columnTable(2, 0.42));
    EXPECT_EQ(&rowTable(3, 0.9), &rowTable(3, 0.92));
    EXPECT_NE(&columnTable(2, 0.5), &columnTable(2, 0.9));
    EXPECT_NE(&columnTable(2, 0.5), &columnTable(2.1, 0.5));
}

void askForMany() {
    for (double wide = 0; wide <= widestBoxes; wide += 1.0 / 16) {
        for (double narrow = 0; narrow <= wide; narrow += 1.0 / 16) {
            (void)columnTable(wide, narrow);
        }
    }
}

TEST(FilterTables, areFoundAgainWhileTheyAreFew) {
    const TablesInUse use;
    const ColumnTable* const columns = &columnTable(1, 0.5);
    const RowTable* const rows = &rowTable(1, 0.5);
    EXPECT_EQ(&columnTable(1, 0.5), columns);
    EXPECT_EQ(&columnTable(0.5, 1), columns) << "the boxes' order does not matter";
    EXPECT_EQ(&rowTable(1, 0.5), rows);
    EXPECT_EQ(steadyLines(*columns, 3), steadyLines(*columns, 3));
    EXPECT_NE(steadyLines(*columns, 3), steadyLines(*columns, 4));
}

TEST(FilterTables, areDroppedWhenTheyAreManyAndTheLastUserEnds) {
    auto first = std::make_unique<TablesInUse>();
    auto second = std::make_unique<TablesInUse>();
    const ColumnTable& columns = columnTable(2.5, 1);
    const std::uint8_t weight = columns.weight(7, 3);
    askForMany();
    const std::size_t many = keptTableBytes();
    ASSERT_GT(many, mostTableBytes);
    first.reset();
    EXPECT_EQ(keptTableBytes(), many);
    EXPECT_EQ(columns.weight(7, 3), weight) << "somebody still reads it";
    second.reset();
    EXPECT_EQ(keptTableBytes(), 0U);

    const TablesInUse again;
    EXPECT_EQ(columnTable(2.5, 1).weight(7, 3), weight) << "made anew";
}

} // namespace
} // namespace quillomat::raster
