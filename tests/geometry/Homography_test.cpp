#include "geometry/Homography.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace quillomat {
namespace {

Homography randomMap(std::mt19937& random) {
    std::uniform_real_distribution<double> unit(-1, 1);
    Homography map;
    for (double& entry : map.m) {
        entry = unit(random);
    }
    map.m[2] *= 1e-3;
    map.m[5] *= 1e-3;
    map.m[8] = 1;
    return map;
}

TEST(Homography, projectsByRowVectors) {
    const Homography map{{2, 3, 0.5, 5, 7, 0.25, 11, 13, 1}};
    const auto p = map.project({1, 2});
    ASSERT_TRUE(p);
    EXPECT_DOUBLE_EQ(p->x, (1 * 2 + 2 * 5 + 11) / 2.0);
    EXPECT_DOUBLE_EQ(p->y, (1 * 3 + 2 * 7 + 13) / 2.0);
    EXPECT_DOUBLE_EQ(map.w({1, 2}), 2);
}

TEST(Homography, projectsNothingBehindTheViewer) {
    const Homography map{{1, 0, -1, 0, 1, 0, 0, 0, 1}};
    EXPECT_TRUE(map.project({0.5, 0}));
    EXPECT_FALSE(map.project({1, 0}));
    EXPECT_FALSE(map.project({2, 0}));
}

TEST(Homography, projectsNothingThatIsNotFinite) {
    const Homography map{{1e300, 0, 0, 0, 1, 0, 0, 0, 1}};
    EXPECT_FALSE(map.project({1e300, 0}));
    EXPECT_FALSE(Homography{}.project({std::numeric_limits<double>::quiet_NaN(), 0}));
}

TEST(Homography, fromAffineAppliesTheAffineMap) {
    const AffineTransform t{1.5, 0.25, -0.5, 2, 30, 40};
    const auto p = Homography::fromAffine(t).project({3, 4});
    ASSERT_TRUE(p);
    EXPECT_EQ(*p, t.apply({3, 4}));
    EXPECT_TRUE(Homography::fromAffine(t).isAffine());
}

TEST(Homography, fromTransform3DLeavesDepthOut) {
    Transform3D t;
    t.m11 = 2, t.m12 = 3, t.m13 = 99, t.m14 = 0.01;
    t.m21 = 4, t.m22 = 5, t.m23 = 99, t.m24 = 0.02;
    t.m31 = 99, t.m32 = 99, t.m33 = 99, t.m34 = 99;
    t.m41 = 6, t.m42 = 7, t.m43 = 99, t.m44 = 1;
    EXPECT_EQ(Homography::fromTransform3D(t), (Homography{{2, 3, 0.01, 4, 5, 0.02, 6, 7, 1}}));
    EXPECT_FALSE(Homography::fromTransform3D(t).isAffine());
}

TEST(Homography, thenAppliesTheSecondMapToTheFirstOnesResult) {
    std::mt19937 random(7);
    for (int i = 0; i < 1000; ++i) {
        const Homography first = randomMap(random);
        const Homography second = randomMap(random);
        const auto through = first.project({3, -2});
        ASSERT_TRUE(through);
        const auto stepwise = second.project(*through);
        const auto atOnce = first.then(second).project({3, -2});
        ASSERT_TRUE(stepwise && atOnce);
        EXPECT_NEAR(stepwise->x, atOnce->x, 1e-9);
        EXPECT_NEAR(stepwise->y, atOnce->y, 1e-9);
    }
}

TEST(Homography, inverseTakesPointsBack) {
    std::mt19937 random(11);
    for (int i = 0; i < 1000; ++i) {
        const Homography map = randomMap(random);
        const auto inverse = map.inverse();
        if (!inverse || std::abs(map.m[0] * map.m[4] - map.m[1] * map.m[3]) < 1e-3) {
            continue;
        }
        const auto there = map.project({5, 6});
        ASSERT_TRUE(there);
        const auto back = inverse->project(*there);
        ASSERT_TRUE(back) << "w of the inverse is positive where w of the map is";
        EXPECT_NEAR(back->x, 5, 1e-6);
        EXPECT_NEAR(back->y, 6, 1e-6);
    }
}

TEST(Homography, collapsedMapsHaveNoInverse) {
    EXPECT_FALSE((Homography{{0, 0, 0, 0, 0, 0, 0, 0, 1}}.inverse()));
    EXPECT_FALSE((Homography{{1, 2, 0, 2, 4, 0, 0, 0, 1}}.inverse()));
    Homography notFinite;
    notFinite.m[3] = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(notFinite.inverse());
    EXPECT_FALSE(notFinite.isFinite());
}

} // namespace
} // namespace quillomat
