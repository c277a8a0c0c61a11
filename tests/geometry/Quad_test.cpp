#include "geometry/Quad.h"

#include "geometry/Homography.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <random>

using namespace quillomat;

namespace {

/// The transform by another road: Gaussian elimination over the eight equations of "corner goes to corner".
std::optional<Transform3D> solveEightEquations(const Rect& rect, const Quad& quad) {
    const std::array<Point, 4> from{Point{rect.minX(), rect.minY()}, Point{rect.maxX(), rect.minY()},
                                    Point{rect.minX(), rect.maxY()}, Point{rect.maxX(), rect.maxY()}};
    const std::array<Point, 4> to{quad.topLeft, quad.topRight, quad.bottomLeft, quad.bottomRight};
    std::array<std::array<long double, 9>, 8> rows{};
    for (std::size_t i = 0; i < 4; ++i) {
        const long double x = from[i].x, y = from[i].y, u = to[i].x, v = to[i].y;
        rows[2 * i] = {x, y, 1, 0, 0, 0, -u * x, -u * y, u};
        rows[2 * i + 1] = {0, 0, 0, x, y, 1, -v * x, -v * y, v};
    }
    for (std::size_t column = 0; column < 8; ++column) {
        std::size_t pivot = column;
        for (std::size_t row = column; row < 8; ++row)
            if (std::abs(rows[row][column]) > std::abs(rows[pivot][column]))
                pivot = row;
        if (std::abs(rows[pivot][column]) < 1e-12L)
            return std::nullopt;
        std::swap(rows[pivot], rows[column]);
        for (std::size_t row = 0; row < 8; ++row) {
            if (row == column)
                continue;
            const long double factor = rows[row][column] / rows[column][column];
            for (std::size_t k = column; k < 9; ++k)
                rows[row][k] -= factor * rows[column][k];
        }
    }
    const auto solution = [&](std::size_t i) { return static_cast<double>(rows[i][8] / rows[i][i]); };
    Transform3D t;
    t.m11 = solution(0), t.m21 = solution(1), t.m41 = solution(2);
    t.m12 = solution(3), t.m22 = solution(4), t.m42 = solution(5);
    t.m14 = solution(6), t.m24 = solution(7);
    return t;
}

/// The row-vector rule without the question of what is in front.
Point divided(const Transform3D& t, Point p) {
    const double w = p.x * t.m14 + p.y * t.m24 + t.m44;
    return {(p.x * t.m11 + p.y * t.m21 + t.m41) / w, (p.x * t.m12 + p.y * t.m22 + t.m42) / w};
}

double cross(Point a, Point b, Point c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// No three corners nearly on a line: what the linear system can answer well.
bool isComfortable(const Quad& q, double smallestArea) {
    return std::abs(cross(q.topLeft, q.topRight, q.bottomLeft)) > smallestArea &&
           std::abs(cross(q.topLeft, q.topRight, q.bottomRight)) > smallestArea &&
           std::abs(cross(q.topLeft, q.bottomLeft, q.bottomRight)) > smallestArea &&
           std::abs(cross(q.topRight, q.bottomLeft, q.bottomRight)) > smallestArea;
}

class RandomQuads {
public:
    Rect rect() { return makeRect(place_(random_), place_(random_), side_(random_), side_(random_)); }
    Quad quad() { return {point(), point(), point(), point()}; }

private:
    Point point() { return {place_(random_), place_(random_)}; }

    std::mt19937_64 random_{20260711};
    std::uniform_real_distribution<double> place_{-400, 400};
    std::uniform_real_distribution<double> side_{20, 500};
};

void expectClose(double actual, double expected, double scale, const char* entry) {
    EXPECT_NEAR(actual, expected, 1e-6 * (scale + std::abs(expected))) << entry;
}

Transform3D unitSquareTo(const Quad& q) {
    return rectToQuad(makeRect(0, 0, 1, 1), q.topLeft, q.topRight, q.bottomLeft, q.bottomRight);
}

/// The unit square onto a square of the given area: plain has a negative divisor, mirrored a positive one.
Transform3D unitSquareToArea(double area, bool mirrored) {
    const double s = std::sqrt(area);
    return mirrored ? unitSquareTo({{0, 0}, {0, s}, {s, 0}, {s, s}}) : unitSquareTo({{0, 0}, {s, 0}, {0, s}, {s, s}});
}

Transform3D collapsed() {
    Transform3D t;
    t.m11 = t.m22 = 0;
    return t;
}

} // namespace

TEST(BoundingBoxForQuadTR, spansTheFourPoints) {
    EXPECT_EQ(boundingBoxForQuadTR({9, 2}, {1, 3}, {2, 11}, {8, 12}), makeRect(1, 2, 8, 10));
}

TEST(BoundingBoxForQuadTR, isTheSameWhicheverTopCornerComesFirst) {
    const Point tl{-3.5, 7}, tr{20, -2}, bl{1, 30}, br{17, 18};
    EXPECT_EQ(boundingBoxForQuadTR(tr, tl, bl, br), boundingBoxForQuadTR(tl, tr, bl, br));
}

TEST(BoundingBoxForQuadTR, isAnEmptyRectangleAtFourEqualPoints) {
    EXPECT_EQ(boundingBoxForQuadTR({10, 20}, {10, 20}, {10, 20}, {10, 20}), makeRect(10, 20, 0, 0));
}

TEST(BoundingBoxForQuadTR, neverHasANegativeSide) {
    RandomQuads random;
    for (int i = 0; i < 1000; ++i) {
        const Quad q = random.quad();
        const Rect box = boundingBoxForQuadTR(q.topRight, q.topLeft, q.bottomLeft, q.bottomRight);
        EXPECT_GE(box.size.width, 0);
        EXPECT_GE(box.size.height, 0);
    }
}

TEST(BoundingBoxForQuadTR, takesNegativeCoordinates) {
    EXPECT_EQ(boundingBoxForQuadTR({-5, -40}, {-30, -38}, {-31, -2}, {-4, -1}), makeRect(-31, -40, 27, 39));
}

TEST(RectToQuad, rectangleOntoItselfIsExactlyTheIdentity) {
    EXPECT_EQ(rectToQuad(makeRect(0, 0, 100, 50), {0, 0}, {100, 0}, {0, 50}, {100, 50}), Transform3D{});
}

TEST(RectToQuad, pointsAndNumbersGiveTheSameTransform) {
    const Rect rect = makeRect(3, 4, 100, 50);
    EXPECT_EQ(rectToQuad(rect, {1, 2}, {90, 7}, {5, 60}, {110, 55}), rectToQuad(rect, 1, 2, 90, 7, 5, 60, 110, 55));
}

TEST(RectToQuad, agreesWithTheLinearSystemOnThousandsOfRandomQuads) {
    RandomQuads random;
    int compared = 0;
    for (int i = 0; i < 20000; ++i) {
        const Rect rect = random.rect();
        const Quad q = random.quad();
        const auto solved = solveEightEquations(rect, q);
        // Divided by an almost vanishing last entry, both roads give only noise.
        if (!solved || !isComfortable(q, 2000) || std::abs(solved->m14) > 1 || std::abs(solved->m24) > 1)
            continue;
        const Transform3D t = rectToQuad(rect, q.topLeft, q.topRight, q.bottomLeft, q.bottomRight);
        const double scale = std::abs(solved->m11) + std::abs(solved->m12) + std::abs(solved->m21) +
                             std::abs(solved->m22) + std::abs(solved->m41) + std::abs(solved->m42);
        expectClose(t.m11, solved->m11, scale, "m11");
        expectClose(t.m12, solved->m12, scale, "m12");
        expectClose(t.m14, solved->m14, 1, "m14");
        expectClose(t.m21, solved->m21, scale, "m21");
        expectClose(t.m22, solved->m22, scale, "m22");
        expectClose(t.m24, solved->m24, 1, "m24");
        expectClose(t.m41, solved->m41, scale, "m41");
        expectClose(t.m42, solved->m42, scale, "m42");
        ++compared;
    }
    EXPECT_GT(compared, 10000);
}

TEST(RectToQuad, takesTheCornersOfRandomRectanglesToTheQuad) {
    RandomQuads random;
    int compared = 0;
    for (int i = 0; i < 20000; ++i) {
        const Rect rect = random.rect();
        const Quad q = random.quad();
        if (!isComfortable(q, 2000))
            continue;
        const Transform3D t = rectToQuad(rect, q.topLeft, q.topRight, q.bottomLeft, q.bottomRight);
        if (std::abs(t.m14) > 1 || std::abs(t.m24) > 1)
            continue;
        const std::array<std::pair<Point, Point>, 4> pairs{std::pair{Point{rect.minX(), rect.minY()}, q.topLeft},
                                                           std::pair{Point{rect.maxX(), rect.minY()}, q.topRight},
                                                           std::pair{Point{rect.minX(), rect.maxY()}, q.bottomLeft},
                                                           std::pair{Point{rect.maxX(), rect.maxY()}, q.bottomRight}};
        for (const auto& [corner, image] : pairs) {
            const Point actual = divided(t, corner);
            EXPECT_NEAR(actual.x, image.x, 1e-5);
            EXPECT_NEAR(actual.y, image.y, 1e-5);
        }
        ++compared;
    }
    EXPECT_GT(compared, 10000);
}

TEST(RectToQuad, leavesDepthAlone) {
    const Transform3D t = rectToQuad(makeRect(5, 6, 70, 80), {1, 2}, {90, 7}, {5, 60}, {110, 55});
    EXPECT_THAT((std::array{t.m13, t.m23, t.m31, t.m32, t.m34, t.m43}), testing::Each(0.0));
    EXPECT_EQ(t.m33, 1);
    EXPECT_EQ(t.m44, 1);
}

TEST(RectToQuad, dividesByTheSumItselfAboveTheGuard) {
    const Transform3D t = unitSquareToArea(0.01, false);
    EXPECT_NEAR(t.m11, 0.1, 1e-12);
    EXPECT_NEAR(t.m22, 0.1, 1e-12);
}

// An unguarded divisor would give the side s; the guard gives s times area / 0.0001, with the sign of the guard.
TEST(RectToQuad, smallNegativeDivisorBecomesMinusOneTenThousandth) {
    const double s = std::sqrt(0.00005);
    const Transform3D t = unitSquareToArea(0.00005, false);
    EXPECT_NEAR(t.m11, s * 0.5, 1e-12);
    EXPECT_NEAR(t.m22, s * 0.5, 1e-12);
    EXPECT_EQ(t.m44, 1);
}

TEST(RectToQuad, smallPositiveDivisorBecomesPlusOneTenThousandth) {
    const double s = std::sqrt(0.00005);
    const Transform3D t = unitSquareToArea(0.00005, true);
    EXPECT_NEAR(t.m12, s * 0.5, 1e-12);
    EXPECT_NEAR(t.m21, s * 0.5, 1e-12);
    EXPECT_EQ(t.m44, 1);
}

TEST(RectToQuad, exactlyZeroDivisorBecomesMinusOneTenThousandth) {
    // Top right, bottom left and bottom right on one line: the divisor vanishes, the other sums do not.
    const Quad q{{0, 0}, {2, 0}, {0, 2}, {1, 1}};
    const Transform3D t = unitSquareTo(q);
    // All the sums above it are negative here, so the positive entries show the divisor's sign.
    EXPECT_DOUBLE_EQ(t.m11, 40000);
    EXPECT_DOUBLE_EQ(t.m22, 40000);
    EXPECT_DOUBLE_EQ(t.m14, 20000);
    EXPECT_DOUBLE_EQ(t.m24, 20000);
    EXPECT_EQ(t.m44, 1);
}

TEST(RectToQuad, emptyRectangleCollapses) {
    EXPECT_EQ(rectToQuad(makeRect(0, 0, 0, 0), {1, 2}, {90, 7}, {5, 60}, {110, 55}), collapsed());
}

TEST(RectToQuad, fourEqualCornersCollapse) {
    EXPECT_EQ(rectToQuad(makeRect(0, 0, 40, 30), {10, 10}, {10, 10}, {10, 10}, {10, 10}), collapsed());
}

TEST(RectToQuad, undefinedDivisorIsUsedAsItIs) {
    const double undefined = std::numeric_limits<double>::quiet_NaN();
    const Transform3D t = rectToQuad(makeRect(0, 0, 10, 10), {undefined, 0}, {10, 0}, {0, 10}, {10, 10});
    EXPECT_TRUE(std::isnan(t.m11));
    EXPECT_TRUE(std::isnan(t.m41));
    EXPECT_EQ(t.m33, 1);
    EXPECT_EQ(t.m44, 1);
}

TEST(RectToQuad, collinearCornersPassThroughTheArithmetic) {
    const Transform3D t = rectToQuad(makeRect(0, 0, 100, 100), {0, 0}, {50, 0}, {100, 0}, {60, 80});
    EXPECT_TRUE(Homography::fromTransform3D(t).isFinite());
    EXPECT_EQ(divided(t, {100, 0}), (Point{50, 0}));
    EXPECT_EQ(divided(t, {0, 100}), (Point{100, 0}));
    // The fourth corner is out of reach: the whole edge towards it falls on the line.
    EXPECT_EQ(Homography::fromTransform3D(t).w({100, 100}), 0);
}

TEST(RectToQuad, crossedCornersKeepTheirPlaces) {
    const Quad q{{0, 0}, {100, 100}, {0, 100}, {100, 0}};
    const Transform3D t = rectToQuad(makeRect(0, 0, 100, 100), q.topLeft, q.topRight, q.bottomLeft, q.bottomRight);
    EXPECT_EQ(divided(t, {0, 0}), q.topLeft);
    EXPECT_EQ(divided(t, {100, 0}), q.topRight);
    EXPECT_EQ(divided(t, {0, 100}), q.bottomLeft);
    EXPECT_EQ(divided(t, {100, 100}), q.bottomRight);
}

TEST(RectToQuad, nearlyCollinearCornersGiveHugeFiniteEntries) {
    const Transform3D t = rectToQuad(makeRect(0, 0, 100, 100), {0, 0}, {1e6, 0}, {0, 1e6}, {5e5, 5e5 + 1e-12});
    EXPECT_TRUE(Homography::fromTransform3D(t).isFinite());
    EXPECT_GT(std::abs(t.m11), 1e12);
}
