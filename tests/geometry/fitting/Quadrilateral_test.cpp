#include "geometry/fitting/Quadrilateral.h"

#include "geometry/Homography.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <random>

using namespace quillomat;

namespace {

std::shared_ptr<View> cornerAnchoredView() {
    auto view = std::make_shared<View>(makeRect(3, 4, 120, 90));
    view->setAnchorPoint({0, 0});
    return view;
}

void fit(View& view, const Quad& q) {
    SilentLog log;
    transformToFitQuadTopLeft(view, q.topLeft, q.topRight, q.bottomLeft, q.bottomRight, log);
}

/// Adds the view to a superview and looks where a point of its bounds lands there.
Point placed(const std::shared_ptr<View>& view, Point point) {
    const auto root = std::make_shared<View>(makeRect(0, 0, 300, 300));
    root->addSubview(view);
    return convertToRoot(*view, point).value();
}

constexpr Quad tilted{{40, 30}, {210, 55}, {25, 260}, {190, 240}};

} // namespace

TEST(TransformToFitQuad, bringsTheBoundsCornersToTheQuad) {
    const auto view = cornerAnchoredView();
    fit(*view, tilted);
    const Size size = view->bounds().size;
    const std::pair<Point, Point> pairs[] = {{{0, 0}, tilted.topLeft},
                                             {{size.width, 0}, tilted.topRight},
                                             {{0, size.height}, tilted.bottomLeft},
                                             {{size.width, size.height}, tilted.bottomRight}};
    for (const auto& [corner, expected] : pairs) {
        const Point actual = placed(view, corner);
        EXPECT_NEAR(actual.x, expected.x, 1e-9);
        EXPECT_NEAR(actual.y, expected.y, 1e-9);
    }
}

TEST(TransformToFitQuad, takesTheBoxAsBoundsSizeAndPosition) {
    const auto view = cornerAnchoredView();
    fit(*view, tilted);
    EXPECT_EQ(view->bounds(), makeRect(0, 0, 185, 230));
    EXPECT_EQ(view->position(), (Point{25, 30}));
}

TEST(TransformToFitQuad, keepsTheBoxExactlyAsTheFrame) {
    // Recomputed from the matrix, whole-numbered boxes would come out a hair below and truncate to one less.
    std::mt19937 random(7);
    std::uniform_int_distribution<int> place(-50, 3000);
    const auto point = [&] { return Point{double(place(random)), double(place(random))}; };
    for (int i = 0; i < 5000; ++i) {
        const auto view = cornerAnchoredView();
        const Quad q{point(), point(), point(), point()};
        fit(*view, q);
        EXPECT_EQ(view->frame(), boundingBoxForQuadTR(q.topRight, q.topLeft, q.bottomLeft, q.bottomRight));
    }
}

TEST(TransformToFitQuad, logsTheBoxInTheTextFormOfRectangles) {
    const auto view = cornerAnchoredView();
    RecordingLog log;
    transformToFitQuadTopLeft(*view, {10, 20}, {110, 20}, {10, 70.5}, {110, 70.5}, log);
    EXPECT_THAT(log.lines(), testing::ElementsAre("{{10, 20}, {100, 50.5}}"));
}

TEST(TransformToFitQuad, fittingAgainToTheSameCornersChangesNothing) {
    const auto view = cornerAnchoredView();
    fit(*view, tilted);
    const Transform3D transform = view->layerTransform();
    const Rect frame = view->frame();
    fit(*view, tilted);
    EXPECT_EQ(view->layerTransform(), transform);
    EXPECT_EQ(view->frame(), frame);
}

TEST(TransformToFitQuad, formerTransformLeavesNoTrace) {
    const auto fresh = cornerAnchoredView();
    const auto used = cornerAnchoredView();
    used->setTransform(AffineTransform::scale(3, 0.5));
    fit(*used, {{5, 5}, {50, 9}, {2, 70}, {60, 80}});
    fit(*used, tilted);
    fit(*fresh, tilted);
    EXPECT_EQ(used->layerTransform(), fresh->layerTransform());
    EXPECT_EQ(used->bounds(), fresh->bounds());
    EXPECT_EQ(used->position(), fresh->position());
}

TEST(TransformToFitQuad, negativeCornersGiveANegativeOriginAndTheSameTransform) {
    const auto here = cornerAnchoredView();
    const auto there = cornerAnchoredView();
    fit(*here, tilted);
    const Point away{-512, -1024};
    fit(*there, {tilted.topLeft + away, tilted.topRight + away, tilted.bottomLeft + away, tilted.bottomRight + away});
    EXPECT_EQ(there->frame().origin, (Point{25 - 512, 30 - 1024}));
    // Relative to the box the corners are the same, so the numbers stay as small far away as here.
    EXPECT_EQ(there->layerTransform(), here->layerTransform());
}

TEST(TransformToFitQuad, fourEqualCornersCollapseTheViewToItsAnchorPoint) {
    const auto view = cornerAnchoredView();
    fit(*view, {{10, 10}, {10, 10}, {10, 10}, {10, 10}});
    EXPECT_EQ(view->frame(), makeRect(10, 10, 0, 0));
    EXPECT_EQ(view->layerTransform().m11, 0);
    EXPECT_EQ(view->layerTransform().m44, 1);
    EXPECT_EQ(placed(view, {25, 70}), (Point{10, 10}));
}
