#include "platform/foundation/Geometry.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quillomat {
namespace {

TEST(Geometry, writesTheTextFormsOfTheLog) {
    EXPECT_EQ(stringFromRect(makeRect(0, 0, 300, 300)), "{{0, 0}, {300, 300}}");
    EXPECT_EQ(stringFromRect(makeRect(-1.5, 2.25, 1290, 2796)), "{{-1.5, 2.25}, {1290, 2796}}");
    EXPECT_EQ(stringFromSize({3000, 0.1}), "{3000, 0.1}");
    EXPECT_EQ(stringFromPoint({12.5, -12.5}), "{12.5, -12.5}");
}

TEST(Geometry, writesNumbersThatAreNotFinite) {
    EXPECT_EQ(stringFromPoint({std::nan(""), HUGE_VAL}), "{nan, inf}");
}

TEST(Geometry, aRectangleIsEmptyUnlessBothSidesArePositive) {
    EXPECT_TRUE(makeRect(0, 0, 0, 5).isEmpty());
    EXPECT_TRUE(makeRect(0, 0, 5, -1).isEmpty());
    EXPECT_TRUE(makeRect(0, 0, std::nan(""), 5).isEmpty());
    EXPECT_FALSE(makeRect(-5, -5, 0.1, 0.1).isEmpty());
}

TEST(Geometry, aRectangleKnowsItsEdgesAndCentre) {
    constexpr Rect rect = makeRect(10, 20, 30, 40);
    EXPECT_EQ(rect.maxX(), 40);
    EXPECT_EQ(rect.maxY(), 60);
    EXPECT_EQ(rect.center(), (Point{25, 40}));
}

TEST(Geometry, thenAppliesTheFirstMapFirst) {
    constexpr AffineTransform map = AffineTransform::scale(2, 3).then(AffineTransform::translation(10, 20));
    EXPECT_EQ(map.apply({1, 1}), (Point{12, 23}));
    constexpr AffineTransform other = AffineTransform::translation(10, 20).then(AffineTransform::scale(2, 3));
    EXPECT_EQ(other.apply({1, 1}), (Point{22, 63}));
    constexpr AffineTransform skew{1, 0.5, 0.25, 1, 3, 4};
    EXPECT_EQ(skew.then(map).apply({5, 7}), map.apply(skew.apply({5, 7})));
}

TEST(Geometry, affineMapsSurviveTheFourByFourMatrix) {
    constexpr AffineTransform map{1, 2, 3, 4, 5, 6};
    EXPECT_TRUE(Transform3D::fromAffine(map).isAffine());
    EXPECT_EQ(Transform3D::fromAffine(map).affine(), map);
    Transform3D projective;
    projective.m14 = 0.001;
    EXPECT_FALSE(projective.isAffine());
}

} // namespace
} // namespace quillomat
