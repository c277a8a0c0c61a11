#include "platform/views/ViewMap.h"

#include "platform/views/Controls.h"

#include <gtest/gtest.h>

using namespace quillomat;

namespace {

std::shared_ptr<View> makeView(double x, double y, double width, double height) {
    return std::make_shared<View>(makeRect(x, y, width, height));
}

} // namespace

TEST(ConvertToRoot, addsUpThePlacesOfTheViewsAbove) {
    const auto root = makeView(500, 600, 300, 300), middle = makeView(10, 20, 100, 100), leaf = makeView(3, 4, 10, 10);
    root->addSubview(middle);
    middle->addSubview(leaf);
    EXPECT_EQ(convertToRoot(*leaf, {1, 2}), (Point{14, 26}));
}

TEST(ConvertToRoot, leavesAPointOfTheRootAlone) {
    const auto root = makeView(500, 600, 300, 300);
    root->setTransform(AffineTransform::scale(9, 9));
    EXPECT_EQ(convertToRoot(*root, {1, 2}), (Point{1, 2}));
}

TEST(ConvertToRoot, honoursScalesAboutTheAnchorPoint) {
    const auto root = makeView(0, 0, 300, 300), container = makeView(0, 0, 100, 100), marker = makeView(80, 40, 20, 20);
    root->addSubview(container);
    container->addSubview(marker);
    container->setTransform(AffineTransform::scale(2, 2));
    EXPECT_EQ(convertToRoot(*marker, {10, 10}), (Point{130, 50}));
}

TEST(ConvertToRoot, honoursPerspective) {
    const auto root = makeView(0, 0, 300, 300), view = makeView(0, 0, 100, 50);
    root->addSubview(view);
    view->setAnchorPoint({0, 0});
    view->setCenter({20, 30});
    Transform3D tilt;
    tilt.m14 = 0.01;
    view->setLayerTransform(tilt);
    EXPECT_EQ(convertToRoot(*view, {100, 50}), (Point{70, 55}));
}

TEST(ConvertToRoot, hasNoAnswerBehindTheViewer) {
    const auto root = makeView(0, 0, 300, 300), view = makeView(0, 0, 100, 50);
    root->addSubview(view);
    view->setAnchorPoint({0, 0});
    Transform3D tilt;
    tilt.m14 = -0.02;
    view->setLayerTransform(tilt);
    EXPECT_FALSE(convertToRoot(*view, {100, 0}));
    EXPECT_FALSE(convertToRoot(*view, {50, 0}));
    EXPECT_TRUE(convertToRoot(*view, {49, 0}));
}

TEST(ConvertToRoot, countsTheOriginOfTheBounds) {
    const auto root = makeView(0, 0, 300, 300), view = makeView(10, 10, 100, 50);
    root->addSubview(view);
    view->setBounds(makeRect(5, 7, 100, 50));
    EXPECT_EQ(convertToRoot(*view, {5, 7}), (Point{10, 10}));
}

TEST(ConvertToRoot, scrollsTheContentOfAScrollView) {
    const auto root = makeView(0, 0, 300, 300);
    const auto scroll = std::make_shared<ScrollView>();
    const auto cell = makeView(0, 500, 100, 100);
    root->addSubview(scroll);
    scroll->setFrame(makeRect(10, 10, 200, 200));
    scroll->addSubview(cell);
    scroll->contentOffset = {3, 450};
    EXPECT_EQ(convertToRoot(*cell, {0, 0}), (Point{7, 60}));
    EXPECT_EQ(cell->frame(), makeRect(0, 500, 100, 100));
}

TEST(ConvertToRoot, ignoresPerspectiveWhenAskedForTheAffinePart) {
    const auto view = makeView(0, 0, 100, 50);
    Transform3D tilt = Transform3D::fromAffine(AffineTransform::scale(2, 2));
    tilt.m14 = 0.01;
    view->setLayerTransform(tilt);
    EXPECT_EQ(mapToSuperview(*view, Depth::ignored).project({100, 50}), (Point{150, 75}));
    EXPECT_NE(mapToSuperview(*view, Depth::honoured).project({100, 50}), (Point{150, 75}));
}

TEST(HitTest, findsTheTopmostViewThatTakesTouches) {
    const auto root = makeView(0, 0, 300, 300), lower = makeView(0, 0, 100, 100), upper = makeView(50, 50, 100, 100);
    root->addSubview(lower);
    root->addSubview(upper);
    EXPECT_EQ(hitTest(root, {75, 75}), upper);
    EXPECT_EQ(hitTest(root, {25, 25}), lower);
    EXPECT_EQ(hitTest(root, {250, 10}), root);
    EXPECT_EQ(hitTest(root, {300, 10}), nullptr);
    upper->userInteractionEnabled = false;
    EXPECT_EQ(hitTest(root, {75, 75}), lower);
    lower->hidden = true;
    EXPECT_EQ(hitTest(root, {75, 75}), root);
}

TEST(HitTest, looksThroughPicturesAndLabels) {
    const auto root = makeView(0, 0, 300, 300), marker = makeView(50, 50, 20, 20);
    const auto frame = std::make_shared<ImageView>();
    frame->setFrame(makeRect(0, 0, 300, 300));
    root->addSubview(marker);
    root->addSubview(frame);
    EXPECT_EQ(hitTest(root, {60, 60}), marker);
}

TEST(HitTest, passesACollapsedView) {
    const auto root = makeView(0, 0, 300, 300), view = makeView(50, 50, 100, 100);
    root->addSubview(view);
    view->setTransform(AffineTransform::scale(0, 0));
    EXPECT_EQ(hitTest(root, {100, 100}), root);
    EXPECT_EQ(hitTest(nullptr, {0, 0}), nullptr);
}
