// Tables of weights: room for every width, and dropped when they are many and nobody reads them.
#include "platform/graphics/raster/FilterTables.h"

#include <gtest/gtest.h>

#include <bit>
#include <memory>
#include <utility>

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

TEST(FilterTables, weightsAlongLinesComeToOne) {
    const TablesInUse use;
    for (double width = 0; width <= widestLineRows; width += 0.11) {
        for (const int parts : {1, 2}) {
            const LineRows& rows = lineRows(width, parts);
            ASSERT_EQ(rows.taps % 2, 0);
            ASSERT_LE(rows.taps, mostLineRows);
            for (int part = 0; part < parts; ++part) {
                ASSERT_EQ(std::bit_cast<std::uintptr_t>(rows.weights[part]) % 64, 0U) << width;
            }
            for (int phase = 0; phase < linePhases; ++phase) {
                for (int part = 0; part < parts; ++part) {
                    int sum = 0;
                    for (int tap = 0; tap < rows.taps; ++tap) {
                        sum += rows.weight(part, phase, tap);
                    }
                    ASSERT_EQ(sum, 256) << width << " in " << parts;
                }
            }
        }
    }
    for (double width = 0; width <= widestLineColumns; width += 0.11) {
        const LineColumns& columns = lineColumns(width);
        ASSERT_EQ(columns.lines[-1], 0) << "before the first line";
        for (int phase = -phases / 2; phase < phases / 2; ++phase) {
            int sum = 0;
            for (int tap = 0; tap < LineColumns::taps; ++tap) {
                sum += columns.weight(phase, tap);
            }
            ASSERT_EQ(sum, 32768) << width;
            ASSERT_EQ(columns.weight(phase, LineColumns::taps - 1), 0) << width << " at " << phase;
        }
    }
}

TEST(FilterTables, partsOfALineLeaveTheOtherSidesTapsAlone) {
    const TablesInUse use;
    for (double width = 0; width <= widestLineRows; width += 0.11) {
        const LineRows& rows = lineRows(width, 2);
        for (int phase = 0; phase < linePhases; ++phase) {
            for (int tap = rows.taps / 2 + 1; tap < rows.taps; ++tap) {
                ASSERT_EQ(rows.weight(0, phase, tap), 0) << width << " at " << phase;
            }
            for (int tap = 0; tap < rows.taps / 2 - 1; ++tap) {
                ASSERT_EQ(rows.weight(1, phase, tap), 0) << width << " at " << phase;
            }
        }
    }
}

TEST(FilterTables, halvesOfALinesRowsAreTheWhole) {
    const TablesInUse use;
    for (double width = 1; width <= widestLineRows; width += 0.25) {
        const LineRows& whole = lineRows(width, 1);
        const LineRows& halves = lineRows(width, 2);
        ASSERT_EQ(whole.taps, halves.taps);
        for (int phase = 0; phase < linePhases; ++phase) {
            for (int tap = 0; tap < whole.taps; ++tap) {
                EXPECT_NEAR((halves.weight(0, phase, tap) + halves.weight(1, phase, tap)) / 2.0,
                            whole.weight(0, phase, tap), 1.5)
                    << width << " at " << phase << ", " << tap;
            }
        }
    }
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
    EXPECT_EQ(&lineRows(3, 1), &lineRows(3, 1));
    EXPECT_NE(&lineRows(3, 1), &lineRows(3, 2));
    EXPECT_EQ(&lineColumns(3), &lineColumns(3));
}

TEST(FilterTables, areDroppedWhenTheyAreManyAndTheLastUserEnds) {
    auto first = std::make_unique<TablesInUse>();
    auto second = std::make_unique<TablesInUse>();
    const ColumnTable& columns = columnTable(2.5, 1);
    const std::uint8_t weight = columns.weight(7, 3);
    const std::uint8_t ofRow = lineRows(3.5, 1).weight(0, 5, 2);
    const std::uint8_t ofHalf = lineRows(3.5, 2).weight(1, 5, 3);
    const std::int16_t ofColumn = lineColumns(2.5).weight(7, 3);
    askForMany();
    const std::size_t many = keptTableBytes();
    ASSERT_GT(many, mostTableBytes);
    first.reset();
    EXPECT_EQ(keptTableBytes(), many);
    EXPECT_EQ(columns.weight(7, 3), weight) << "somebody still reads it";
    second.reset();
    EXPECT_EQ(keptTableBytes(), 0U);

    const TablesInUse again;
    std::size_t kept = 0;
    const auto madeAnew = [&kept] { return std::exchange(kept, keptTableBytes()) < keptTableBytes(); };
    EXPECT_EQ(columnTable(2.5, 1).weight(7, 3), weight);
    EXPECT_TRUE(madeAnew());
    EXPECT_EQ(lineRows(3.5, 1).weight(0, 5, 2), ofRow);
    EXPECT_TRUE(madeAnew());
    EXPECT_EQ(lineRows(3.5, 2).weight(1, 5, 3), ofHalf);
    EXPECT_TRUE(madeAnew());
    EXPECT_EQ(lineColumns(2.5).weight(7, 3), ofColumn);
    EXPECT_TRUE(madeAnew());
}

} // namespace
} // namespace quillomat::raster
