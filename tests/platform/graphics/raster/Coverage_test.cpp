// How much of each pixel a polygon covers, row by row.
#include "platform/graphics/raster/Coverage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace quillomat::raster {
namespace {

constexpr PixelSize canvas{12, 9};

std::vector<int> coverageOf(const Coverage& coverage, int y) {
    std::vector<int> values(static_cast<std::size_t>(canvas.width), 0);
    CoverageScratch scratch;
    const CoverageRow row = coverage.wholeRow(y, scratch);
    std::copy(scratch.values.begin() + row.left, scratch.values.begin() + row.right, values.begin() + row.left);
    return values;
}

TEST(Coverage, aRectangleOfWholePixelsCoversThemAlone) {
    for (const double opacity : {1.0, 0.5}) {
        const Coverage coverage({{2, 1}, {9, 1}, {9, 7}, {2, 7}}, canvas, opacity);
        EXPECT_EQ(coverage.top(), 1);
        EXPECT_EQ(coverage.bottom(), 7);
        std::vector<int> expected(static_cast<std::size_t>(canvas.width), 0);
        std::fill(expected.begin() + 2, expected.begin() + 9, opacity == 1 ? 255 : 128);
        for (int y = 1; y < 7; ++y) {
            EXPECT_EQ(coverageOf(coverage, y), expected) << y;
        }
        CoverageScratch scratch;
        EXPECT_TRUE(coverage.row(0, scratch).isEmpty());
        EXPECT_TRUE(coverage.row(7, scratch).isEmpty());
        const CoverageRow row = coverage.row(3, scratch);
        EXPECT_EQ(row.runLeft, 2);
        EXPECT_EQ(row.runRight, 9);
    }
}

TEST(Coverage, moreCornersThanFourMakeNoDifferenceToARectangle) {
    const Coverage four({{0, 0}, {12, 0}, {12, 9}, {0, 9}}, canvas, 1);
    const Coverage more({{0, 0}, {5.5, 0}, {12, 0}, {12, 3}, {12, 9}, {0, 9}, {0, 0.25}}, canvas, 1);
    for (int y = 0; y < canvas.height; ++y) {
        EXPECT_EQ(coverageOf(more, y), coverageOf(four, y)) << y;
    }
}

TEST(Coverage, aTriangleBetweenCornersOfARectangleIsNone) {
    const Coverage half({{0, 0}, {8, 0}, {8, 0}, {0, 8}}, canvas, 1);
    int sum = 0;
    for (int y = 0; y < 8; ++y) {
        const std::vector<int> row = coverageOf(half, y);
        EXPECT_EQ(row[static_cast<std::size_t>(7 - y)], 128) << "cut in two by the edge";
        sum += std::accumulate(row.begin(), row.end(), 0);
    }
    EXPECT_NEAR(sum / 255.0, 32, 0.1);
}

TEST(Coverage, edgesWithinPixelsCoverTheirShares) {
    const Coverage coverage({{2.25, 1.5}, {9.5, 1.5}, {9.5, 7}, {2.25, 7}}, canvas, 1);
    EXPECT_EQ(coverageOf(coverage, 3)[2], 191);
    EXPECT_EQ(coverageOf(coverage, 3)[5], 255);
    EXPECT_EQ(coverageOf(coverage, 3)[9], 128);
    EXPECT_EQ(coverageOf(coverage, 1)[5], 128);
}

} // namespace
} // namespace quillomat::raster
