#include "editor/HalvingDifferences.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace quillomat;

namespace {

TEST(NearlyEqual, neighboursOfLargeNumbersAreNearlyEqual) {
    const float a = 1000.0F;
    EXPECT_TRUE(nearlyEqual(a, std::nextafter(a, 2000.0F)));
    EXPECT_FALSE(nearlyEqual(a, a + 1));
}

TEST(NearlyEqual, takesTheSignedMaximumSoDifferentNegativeNumbersNeverAre) {
    const float a = -1000.0F;
    EXPECT_FALSE(nearlyEqual(a, std::nextafter(a, 0.0F)));
    EXPECT_TRUE(nearlyEqual(a, a));
}

TEST(NearlyEqual, nothingIsNearlyZeroButZero) {
    EXPECT_TRUE(nearlyEqual(0.0F, -0.0F));
    EXPECT_FALSE(nearlyEqual(0.0F, 1e-30F));
}

TEST(HalvingDifferences, exactHalvesDifferInNothing) {
    const auto found = halvingDifferences(makeRect(8, 10, 20, 2800), makeRect(4, 5, 10, 1400));
    EXPECT_EQ(found.width, 0);
    EXPECT_EQ(found.height, 0);
    EXPECT_EQ(found.moveFrameX, 0);
    EXPECT_EQ(found.moveFrameY, 0);
}

TEST(HalvingDifferences, boxMovedToTheOriginMovedByItsFormerOrigin) {
    const auto found = halvingDifferences(makeRect(8, -10, 20, 2800), makeRect(0, 0, 10, 1400));
    EXPECT_EQ(found.moveFrameX, 8);
    EXPECT_EQ(found.moveFrameY, -10);
}

TEST(HalvingDifferences, originWithAFractionIsReportedEvenWhereItIsExactlyHalf) {
    // 4.5 is half of 9, but not a whole number, and the second look compares whole numbers.
    const auto found = halvingDifferences(makeRect(9, 9, 20, 2800), makeRect(4.5, 4.5, 10, 1400));
    EXPECT_EQ(found.moveFrameX, 4);
    EXPECT_EQ(found.moveFrameY, 4);
}

TEST(HalvingDifferences, heightIsJudgedByTheWidthsOnPurpose) {
    const auto unnoticed = halvingDifferences(makeRect(0, 0, 20, 2800), makeRect(0, 0, 10, 700));
    EXPECT_EQ(unnoticed.height, 0) << "the height is a quarter, but the width is half";
    const auto noticed = halvingDifferences(makeRect(0, 0, 20, 2800), makeRect(0, 0, 5.5, 1400));
    EXPECT_EQ(noticed.width, 14);
    EXPECT_EQ(noticed.height, 1400) << "the height is half, but the width is not";
}

} // namespace
