#include "platform/views/View.h"

#include "platform/views/Controls.h"
#include "platform/views/ViewMap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace quillomat;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

std::shared_ptr<View> makeView(double x = 0, double y = 0, double width = 100, double height = 50) {
    return std::make_shared<View>(makeRect(x, y, width, height));
}

/// Perspective that narrows towards the right.
Transform3D tilt() {
    Transform3D t;
    t.m14 = 0.01;
    return t;
}

void expectNear(const Rect& actual, const Rect& expected) {
    EXPECT_NEAR(actual.origin.x, expected.origin.x, 1e-9);
    EXPECT_NEAR(actual.origin.y, expected.origin.y, 1e-9);
    EXPECT_NEAR(actual.size.width, expected.size.width, 1e-9);
    EXPECT_NEAR(actual.size.height, expected.size.height, 1e-9);
}

} // namespace

// Geometry ------------------------------------------------------------------------------------------------------------

TEST(ViewGeometry, frameSetsBoundsSizeAndTheMiddleAsPosition) {
    const auto view = makeView(10, 20, 100, 50);
    EXPECT_EQ(view->bounds(), makeRect(0, 0, 100, 50));
    EXPECT_EQ(view->center(), (Point{60, 45}));
}

TEST(ViewGeometry, markerAtACoordinateHasItsCentreTenFurther) {
    EXPECT_EQ(makeView(100, 40, 20, 20)->center(), (Point{110, 50}));
}

TEST(ViewGeometry, frameOfAnUntransformedViewComesBackExactly) {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> number(-1000, 1000);
    for (int i = 0; i < 1000; ++i) {
        const Rect frame = makeRect(number(random), number(random), std::abs(number(random)), std::abs(number(random)));
        const auto view = makeView();
        view->setFrame(frame);
        EXPECT_EQ(view->frame(), frame);
    }
}

TEST(ViewGeometry, movingTheCentreMovesTheFrame) {
    const auto view = makeView(10, 20, 100, 50);
    view->setCenter({0, 0});
    EXPECT_EQ(view->frame(), makeRect(-50, -25, 100, 50));
}

TEST(ViewGeometry, anchorPointMovesTheViewAndKeepsThePosition) {
    const auto view = makeView(10, 20, 100, 50);
    view->setAnchorPoint({0, 0});
    EXPECT_EQ(view->position(), (Point{60, 45}));
    EXPECT_EQ(view->frame(), makeRect(60, 45, 100, 50));
}

TEST(ViewGeometry, boundsChangeAroundTheAnchorPoint) {
    const auto view = makeView(0, 0, 100, 50);
    view->setBounds(makeRect(0, 0, 50, 50));
    EXPECT_EQ(view->frame(), makeRect(25, 0, 50, 50));
}

TEST(ViewGeometry, scaleActsAboutTheCentre) {
    const auto view = makeView(0, 0, 100, 50);
    view->setTransform(AffineTransform::scale(0.5, 2));
    EXPECT_EQ(view->frame(), makeRect(25, -25, 50, 100));
    EXPECT_EQ(view->bounds(), makeRect(0, 0, 100, 50));
}

TEST(ViewGeometry, settingEitherTransformReplacesTheOther) {
    const auto view = makeView();
    view->setLayerTransform(tilt());
    view->setTransform(AffineTransform::scale(2, 2));
    EXPECT_EQ(view->layerTransform(), Transform3D::fromAffine(AffineTransform::scale(2, 2)));
    view->setLayerTransform(tilt());
    EXPECT_EQ(view->transform(), AffineTransform{});
    EXPECT_EQ(view->layerTransform(), tilt());
}

TEST(ViewGeometry, zeroScaleLeavesAnEmptyFrameAtThePosition) {
    const auto view = makeView(10, 20, 100, 50);
    view->setTransform(AffineTransform::scale(0, 0));
    EXPECT_EQ(view->frame(), makeRect(60, 45, 0, 0));
}

TEST(ViewGeometry, frameOfAWarpedViewIsTheBoxOfItsProjectedCorners) {
    const auto view = makeView(0, 0, 100, 50);
    view->setLayerTransform(tilt());
    // About the middle the corners stand at x = -50 and 50, where w is 0.5 and 1.5.
    expectNear(view->frame(), makeRect(50 - 100, 25 - 50, 100 + 50 / 1.5, 100));
}

TEST(ViewGeometry, cornersBehindTheViewerDoNotCount) {
    const auto view = makeView(0, 0, 400, 50); // w is -1 at the left, 3 at the right
    view->setLayerTransform(tilt());
    expectNear(view->frame(), makeRect(200 + 200 / 3.0, 25 - 25 / 3.0, 0, 50 / 3.0));
}

TEST(ViewGeometry, viewWhollyBehindTheViewerHasAnEmptyFrame) {
    const auto view = makeView(0, 0, 100, 50);
    Transform3D behind;
    behind.m44 = -1;
    view->setLayerTransform(behind);
    EXPECT_EQ(view->frame(), makeRect(50, 25, 0, 0));
}

TEST(ViewGeometry, settingTheFrameOfATransformedViewIgnoresTheTransform) {
    const auto view = makeView(0, 0, 100, 50);
    view->setTransform(AffineTransform::scale(2, 2));
    view->setFrame(makeRect(0, 0, 10, 10));
    EXPECT_EQ(view->bounds().size, (Size{10, 10}));
    EXPECT_EQ(view->center(), (Point{5, 5}));
    EXPECT_EQ(view->frame(), makeRect(-5, -5, 20, 20));
}

TEST(ViewGeometry, fittedViewKeepsItsBoxExactly) {
    const auto view = makeView();
    view->setAnchorPoint({0, 0});
    const Rect box = makeRect(0.1, 0.2, 1.0 / 3, 2.0 / 3);
    view->fitToBox(box, tilt());
    EXPECT_EQ(view->frame(), box);
    EXPECT_EQ(view->bounds(), makeRect(0, 0, 1.0 / 3, 2.0 / 3));
    EXPECT_EQ(view->position(), box.origin);
    EXPECT_EQ(view->layerTransform(), tilt());
}

TEST(ViewGeometry, everyOtherSetterForgetsTheFittedBox) {
    const Rect box = makeRect(0, 0, 100, 50);
    Transform3D half;
    half.m11 = half.m22 = 0.5;
    const auto fitted = [&] {
        const auto view = makeView();
        view->setAnchorPoint({0, 0});
        view->fitToBox(box, half); // the box is the caller's word, not what the transform gives
        return view;
    };
    const Rect computed = makeRect(0, 0, 50, 25);
    ASSERT_EQ(fitted()->frame(), box);

    auto view = fitted();
    view->setCenter(view->center());
    EXPECT_EQ(view->frame(), computed);
    view = fitted();
    view->setBounds(view->bounds());
    EXPECT_EQ(view->frame(), computed);
    view = fitted();
    view->setAnchorPoint({0, 0});
    EXPECT_EQ(view->frame(), computed);
    view = fitted();
    view->setLayerTransform(half);
    EXPECT_EQ(view->frame(), computed);
    view = fitted();
    view->setTransform(view->transform());
    EXPECT_EQ(view->frame(), computed);
    view = fitted();
    view->setFrame(box);
    EXPECT_EQ(view->frame(), computed);
}

TEST(ViewGeometry, movingAWarpedViewsBoxShiftsEveryPointAndKeepsTheTransform) {
    const auto root = makeView(0, 0, 300, 300);
    const auto view = makeView(40, 30, 100, 50);
    root->addSubview(view);
    view->setLayerTransform(tilt());
    const Rect old = view->frame();
    const Point before = convertToRoot(*view, {70, 20}).value();
    view->moveBoundingBox({{0, 0}, old.size});
    const Point after = convertToRoot(*view, {70, 20}).value();
    EXPECT_EQ(view->layerTransform(), tilt());
    EXPECT_NEAR(after.x, before.x - old.origin.x, 1e-9);
    EXPECT_NEAR(after.y, before.y - old.origin.y, 1e-9);
    EXPECT_EQ(view->frame(), Rect({0, 0}, old.size));
}

TEST(ViewGeometry, halvingAWarpedViewsBoxHalvesEveryPointAndKeepsTheBounds) {
    const auto root = makeView(0, 0, 300, 300);
    const auto view = makeView(40, 30, 100, 50);
    root->addSubview(view);
    view->setLayerTransform(tilt());
    const Rect old = view->frame();
    const Point before = convertToRoot(*view, {70, 20}).value();
    const Rect half = makeRect(0, 0, old.size.width / 2, old.size.height / 2);
    view->moveBoundingBox(half);
    const Point after = convertToRoot(*view, {70, 20}).value();
    EXPECT_EQ(view->bounds(), makeRect(0, 0, 100, 50));
    EXPECT_NEAR(after.x, (before.x - old.origin.x) / 2, 1e-9);
    EXPECT_NEAR(after.y, (before.y - old.origin.y) / 2, 1e-9);
    EXPECT_EQ(view->frame(), half);
}

TEST(ViewGeometry, movedBoxAgreesWithTheProjectedCorners) {
    const auto view = makeView(40, 30, 100, 50);
    view->setLayerTransform(tilt());
    const Rect box = makeRect(-7, 11, 33, 222);
    view->moveBoundingBox(box);
    EXPECT_EQ(view->frame(), box);
    view->setCenter(view->center()); // forget the kept box, measure
    expectNear(view->frame(), box);
}

TEST(ViewGeometry, movingABoxTwiceToTheSamePlaceChangesNothing) {
    const auto view = makeView(40, 30, 100, 50);
    view->setLayerTransform(tilt());
    view->moveBoundingBox(makeRect(0, 0, 60, 40));
    const Transform3D transform = view->layerTransform();
    const Point position = view->position();
    view->moveBoundingBox(makeRect(0, 0, 60, 40));
    EXPECT_EQ(view->layerTransform(), transform);
    EXPECT_EQ(view->position(), position);
}

TEST(ViewGeometry, collapsedViewIsMovedOnly) {
    const auto view = makeView(10, 20, 100, 50);
    view->setAnchorPoint({0, 0});
    Transform3D nothing;
    nothing.m11 = nothing.m22 = 0;
    view->fitToBox(makeRect(10, 10, 0, 0), nothing);
    view->moveBoundingBox(makeRect(3, 4, 50, 60));
    EXPECT_EQ(view->frame(), makeRect(3, 4, 0, 0));
    EXPECT_EQ(view->position(), (Point{3, 4}));
    EXPECT_EQ(view->layerTransform(), nothing);
}

TEST(ViewGeometry, flatBoxIsStretchedAlongItsOwnAxisOnly) {
    const auto view = makeView(0, 0, 100, 50);
    view->setTransform(AffineTransform::scale(1, 0));
    view->moveBoundingBox(makeRect(5, 6, 50, 50));
    EXPECT_EQ(view->frame(), makeRect(5, 6, 50, 0));
    EXPECT_EQ(view->transform(), AffineTransform::scale(0.5, 0));
}

TEST(ViewGeometry, undefinedSizesPassThroughWithoutHarm) {
    const double undefined = std::numeric_limits<double>::quiet_NaN();
    const auto view = makeView(0, 0, undefined, 10);
    view->setTransform(AffineTransform::scale(2, 2));
    EXPECT_EQ(view->frame().size, (Size{0, 0}));
    view->moveBoundingBox(makeRect(0, 0, 10, 10));
    EXPECT_FALSE(view->description().empty());
}

TEST(ViewGeometry, negativeSizesAreKeptAsTheyAre) {
    EXPECT_EQ(makeView(5, 5, -10, -20)->frame(), makeRect(5, 5, -10, -20));
}

// Hierarchy -----------------------------------------------------------------------------------------------------------

TEST(ViewHierarchy, addedViewIsTopmost) {
    const auto root = makeView(), a = makeView(), b = makeView();
    root->addSubview(a);
    root->addSubview(b);
    EXPECT_THAT(root->subviews(), ElementsAre(a, b));
    root->addSubview(a);
    EXPECT_THAT(root->subviews(), ElementsAre(b, a));
    EXPECT_EQ(a->superview(), root);
}

TEST(ViewHierarchy, addedViewLeavesItsFormerSuperview) {
    const auto first = makeView(), second = makeView(), view = makeView();
    first->addSubview(view);
    second->addSubview(view);
    EXPECT_THAT(first->subviews(), IsEmpty());
    EXPECT_THAT(second->subviews(), ElementsAre(view));
    EXPECT_EQ(view->superview(), second);
}

TEST(ViewHierarchy, viewIsNeverAddedToItselfOrBelowItself) {
    const auto root = makeView(), child = makeView(), grandchild = makeView();
    root->addSubview(child);
    child->addSubview(grandchild);
    root->addSubview(root);
    grandchild->addSubview(root);
    grandchild->insertSubviewBelow(root, nullptr);
    EXPECT_THAT(root->subviews(), ElementsAre(child));
    EXPECT_THAT(grandchild->subviews(), IsEmpty());
    EXPECT_EQ(root->superview(), nullptr);
}

TEST(ViewHierarchy, nothingIsAddedForNoView) {
    const auto root = makeView();
    root->addSubview(nullptr);
    root->insertSubviewBelow(nullptr, nullptr);
    EXPECT_THAT(root->subviews(), IsEmpty());
}

TEST(ViewHierarchy, insertsDirectlyBelowASibling) {
    const auto root = makeView(), a = makeView(), b = makeView(), c = makeView(), inserted = makeView();
    for (const auto& view : {a, b, c})
        root->addSubview(view);
    root->insertSubviewBelow(inserted, b);
    EXPECT_THAT(root->subviews(), ElementsAre(a, inserted, b, c));
    EXPECT_EQ(inserted->superview(), root);
}

TEST(ViewHierarchy, insertingMovesAViewThatIsThereAlready) {
    const auto root = makeView(), a = makeView(), b = makeView(), c = makeView();
    for (const auto& view : {a, b, c})
        root->addSubview(view);
    root->insertSubviewBelow(a, c);
    EXPECT_THAT(root->subviews(), ElementsAre(b, a, c));
    root->insertSubviewBelow(root->subviews()[2], root->subviews()[0]);
    EXPECT_THAT(root->subviews(), ElementsAre(c, b, a));
    root->insertSubviewBelow(b, b);
    EXPECT_THAT(root->subviews(), ElementsAre(c, b, a));
}

TEST(ViewHierarchy, insertingBelowAStrangerAddsOnTop) {
    const auto root = makeView(), a = makeView(), inserted = makeView();
    root->addSubview(a);
    root->insertSubviewBelow(inserted, makeView());
    EXPECT_THAT(root->subviews(), ElementsAre(a, inserted));
}

TEST(ViewHierarchy, removedViewHasNoSuperview) {
    const auto root = makeView(), view = makeView();
    root->addSubview(view);
    view->removeFromSuperview();
    EXPECT_THAT(root->subviews(), IsEmpty());
    EXPECT_EQ(view->superview(), nullptr);
    view->removeFromSuperview();
}

TEST(ViewHierarchy, viewHeldByItsSuperviewAloneCanBeRemoved) {
    const auto root = makeView();
    root->addSubview(makeView());
    const std::weak_ptr<View> gone = root->subviews().front();
    root->subviews().front()->removeFromSuperview();
    EXPECT_TRUE(gone.expired());
    EXPECT_THAT(root->subviews(), IsEmpty());
}

TEST(ViewHierarchy, superviewIsNotKeptAliveFromBelow) {
    const auto view = makeView();
    std::weak_ptr<View> above;
    {
        const auto root = makeView();
        above = root;
        root->addSubview(view);
    }
    EXPECT_TRUE(above.expired());
    EXPECT_EQ(view->superview(), nullptr);
    makeView()->addSubview(view);
}

TEST(ViewHierarchy, subviewsAreKeptAliveFromAbove) {
    const auto root = makeView();
    std::weak_ptr<View> below;
    {
        const auto view = makeView();
        below = view;
        root->addSubview(view);
    }
    EXPECT_FALSE(below.expired());
}

TEST(ViewHierarchy, descendantsIncludeTheViewItself) {
    const auto root = makeView(), child = makeView(), grandchild = makeView();
    root->addSubview(child);
    child->addSubview(grandchild);
    EXPECT_TRUE(grandchild->isDescendantOf(*root));
    EXPECT_TRUE(root->isDescendantOf(*root));
    EXPECT_FALSE(root->isDescendantOf(*child));
}

TEST(ViewInteraction, isTakenAwayByAnyViewAbove) {
    const auto root = makeView(), view = makeView();
    root->addSubview(view);
    EXPECT_TRUE(view->takesInteraction());
    root->userInteractionEnabled = false;
    EXPECT_FALSE(view->takesInteraction());
    root->userInteractionEnabled = true;
    root->hidden = true;
    EXPECT_FALSE(view->takesInteraction());
    root->hidden = false;
    view->userInteractionEnabled = false;
    EXPECT_FALSE(view->takesInteraction());
}

// Description ---------------------------------------------------------------------------------------------------------

TEST(ViewDescription, namesClassAndFrame) {
    const auto marker = makeView(100, 40.5, 20, 20);
    EXPECT_THAT(marker->description(), StartsWith("<UIView: 0x"));
    EXPECT_THAT(marker->description(), HasSubstr("; frame = {{100, 40.5}, {20, 20}}"));
    EXPECT_EQ(marker->description().back(), '>');
    EXPECT_THAT(std::make_shared<Button>()->description(), StartsWith("<UIButton: 0x"));
    EXPECT_THAT(std::make_shared<ImageView>()->description(), StartsWith("<UIImageView: 0x"));
}

TEST(ViewDescription, frameFollowsAMovedMarker) {
    const auto marker = makeView(100, 40, 20, 20);
    marker->setCenter(marker->center() + Point{-120, 2.25});
    EXPECT_THAT(marker->description(), HasSubstr("frame = {{-20, 42.25}, {20, 20}}"));
}

TEST(ViewDescription, mentionsWhatIsUnusual) {
    const auto view = makeView();
    view->alpha = 0.5;
    view->hidden = true;
    view->userInteractionEnabled = false;
    view->tag = 7;
    view->accessibilityIdentifier = "phone.png";
    view->setTransform(AffineTransform::scale(2, 2));
    EXPECT_THAT(view->description(),
                HasSubstr("; transformed; alpha = 0.5; hidden; no interaction; tag = 7; identifier = phone.png>"));
}
