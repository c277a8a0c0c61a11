#include "platform/views/Drawing.h"

#include "geometry/Quad.h"
#include "platform/graphics/ReferenceRenderer.h"
#include "platform/views/Controls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <limits>

using namespace quillomat;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Rgba = std::array<int, 4>; // premultiplied

constexpr Color red{1, 0, 0, 1};
constexpr Color green{0, 1, 0, 1};
constexpr Color blue{0, 0, 1, 1};
constexpr Rgba redPixel{255, 0, 0, 255};
constexpr Rgba greenPixel{0, 255, 0, 255};
constexpr Rgba bluePixel{0, 0, 255, 255};
constexpr Rgba nothing{0, 0, 0, 0};

std::shared_ptr<View> makeView(double x, double y, double width, double height, std::optional<Color> color = {}) {
    auto view = std::make_shared<View>(makeRect(x, y, width, height));
    view->backgroundColor = color;
    return view;
}

Bitmap plainBitmap(PixelSize size, Rgba color) {
    Bitmap bitmap(size);
    for (std::size_t i = 0; i < bitmap.bytes().size(); ++i)
        bitmap.bytes()[i] = static_cast<std::uint8_t>(color[i % 4]);
    return bitmap;
}

/// Left half green, right half blue.
Image twoColours(PixelSize size) {
    Bitmap bitmap = plainBitmap(size, greenPixel);
    for (int y = 0; y < size.height; ++y)
        for (int x = size.width / 2; x < size.width; ++x)
            for (std::size_t k = 0; k < 4; ++k)
                bitmap.row(y)[static_cast<std::size_t>(x) * 4 + k] = static_cast<std::uint8_t>(bluePixel[k]);
    return Image::fromBitmap(std::move(bitmap));
}

std::shared_ptr<ImageView> pictureView(const Rect& frame, Image image) {
    auto view = std::make_shared<ImageView>(std::move(image));
    view->setFrame(frame);
    return view;
}

Rgba pixel(const Bitmap& bitmap, int x, int y) {
    const std::uint8_t* p = bitmap.row(y) + static_cast<std::ptrdiff_t>(x) * 4;
    return {p[0], p[1], p[2], p[3]};
}

/// The view drawn one to one, point for pixel.
BitmapContext drawn(const View& view) {
    BitmapContext context(view.bounds().size);
    EXPECT_TRUE(drawViewHierarchy(view, {{0, 0}, view.bounds().size}, context));
    return context;
}

Bitmap picture(const View& view) {
    return renderReference(drawn(view).recording());
}

void expectNear(const Rgba& actual, const Rgba& expected, int tolerance) {
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "component " << i;
}

} // namespace

// What a layer becomes ------------------------------------------------------------------------------------------------

TEST(DrawViewHierarchy, plainViewWithoutLookDrawsNothing) {
    EXPECT_THAT(drawn(*makeView(0, 0, 10, 10)).recording().draws(), IsEmpty());
    EXPECT_THAT(drawn(*makeView(0, 0, 10, 10, Color::clear())).recording().draws(), IsEmpty());
}

TEST(DrawViewHierarchy, backgroundPictureAndBorderOfOneShapeAreOneDraw) {
    const auto view = pictureView(makeRect(0, 0, 20, 10), twoColours({4, 2}));
    view->backgroundColor = red;
    view->borderWidth = 2;
    view->borderColor = Color::white();
    const auto context = drawn(*view);
    ASSERT_THAT(context.recording().draws(), SizeIs(1));
    const LayerDraw& draw = context.recording().draws()[0];
    EXPECT_EQ(draw.shape, (RoundedRect{makeRect(0, 0, 20, 10), 0}));
    EXPECT_EQ(draw.fill, red);
    EXPECT_EQ(draw.picture, view->image());
    EXPECT_EQ(draw.pictureRect, makeRect(0, 0, 20, 10));
    EXPECT_EQ(draw.borderWidth, 2);
    EXPECT_EQ(draw.borderColor, Color::white());
    EXPECT_THAT(draw.clips, IsEmpty());
}

TEST(DrawViewHierarchy, clippedPictureSharesTheRoundedShape) {
    const auto view = pictureView(makeRect(0, 0, 20, 10), twoColours({4, 2}));
    view->backgroundColor = red;
    view->cornerRadius = 4;
    view->masksToBounds = true;
    const auto context = drawn(*view);
    ASSERT_THAT(context.recording().draws(), SizeIs(1));
    EXPECT_EQ(context.recording().draws()[0].shape.radius, 4);
}

TEST(DrawViewHierarchy, radiusRoundsTheBackgroundButNotAnUnclippedPicture) {
    auto bitmap = plainBitmap({4, 2}, {0, 0, 0, 0}); // translucent, so the background counts
    const auto view = pictureView(makeRect(0, 0, 20, 10), Image::fromBitmap(std::move(bitmap)));
    view->backgroundColor = red;
    view->cornerRadius = 4;
    const auto context = drawn(*view);
    ASSERT_THAT(context.recording().draws(), SizeIs(2));
    EXPECT_EQ(context.recording().draws()[0].fill, red);
    EXPECT_EQ(context.recording().draws()[0].shape.radius, 4);
    EXPECT_FALSE(context.recording().draws()[0].picture);
    EXPECT_EQ(context.recording().draws()[1].picture, view->image());
    EXPECT_EQ(context.recording().draws()[1].shape.radius, 0);
    EXPECT_FALSE(context.recording().draws()[1].fill);
}

TEST(DrawViewHierarchy, backgroundWhollyHiddenByAnOpaquePictureDoesNotDarkenItsEdges) {
    Recording filled({4, 4});
    LayerDraw all;
    all.shape = {makeRect(0, 0, 4, 4), 0};
    all.fill = Color::white();
    filled.add(all);
    const auto root = makeView(0, 0, 20, 20);
    const auto view = pictureView(makeRect(2.5, 2, 10, 10), imageOfRecording(std::move(filled)));
    view->backgroundColor = Color::black();
    view->cornerRadius = 3;
    root->addSubview(view);
    ASSERT_THAT(drawn(*root).recording().draws(), SizeIs(1));
    const Bitmap result = picture(*root);
    expectNear(pixel(result, 2, 6), {128, 128, 128, 128}, 1); // half covered, and white
    expectNear(pixel(result, 3, 2), {255, 255, 255, 255}, 0); // the picture's corner is not rounded
}

TEST(DrawViewHierarchy, borderLiesAboveTheSubviews) {
    const auto view = makeView(0, 0, 20, 20);
    view->borderWidth = 3;
    view->borderColor = blue;
    view->addSubview(makeView(0, 0, 20, 20, green));
    const Bitmap result = picture(*view);
    EXPECT_EQ(pixel(result, 1, 10), bluePixel);
    EXPECT_EQ(pixel(result, 17, 10), bluePixel);
    EXPECT_EQ(pixel(result, 10, 10), greenPixel);
}

TEST(DrawViewHierarchy, borderLiesInsideTheBounds) {
    const auto root = makeView(0, 0, 20, 20);
    const auto view = makeView(5, 5, 10, 10, green);
    view->borderWidth = 2;
    view->borderColor = blue;
    root->addSubview(view);
    const Bitmap result = picture(*root);
    EXPECT_EQ(pixel(result, 4, 10), nothing);
    EXPECT_EQ(pixel(result, 5, 10), bluePixel);
    EXPECT_EQ(pixel(result, 6, 10), bluePixel);
    EXPECT_EQ(pixel(result, 7, 10), greenPixel);
}

TEST(DrawViewHierarchy, negativeBorderAndRadiusDrawNone) {
    const auto view = makeView(0, 0, 20, 20, green);
    view->borderWidth = -1;
    view->borderColor = blue;
    view->cornerRadius = -7;
    const auto context = drawn(*view);
    ASSERT_THAT(context.recording().draws(), SizeIs(1));
    EXPECT_EQ(context.recording().draws()[0].borderWidth, 0);
    EXPECT_EQ(context.recording().draws()[0].shape.radius, 0);
    EXPECT_EQ(pixel(picture(*view), 0, 0), greenPixel);
}

TEST(DrawViewHierarchy, undefinedAndEndlessLooksDrawNoBorder) {
    for (const double odd : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        const auto view = makeView(0, 0, 20, 20, green);
        view->borderWidth = odd;
        EXPECT_EQ(drawn(*view).recording().draws().at(0).borderWidth, 0);
    }
}

TEST(DrawViewHierarchy, hugeRadiusIsACircle) {
    const auto view = makeView(0, 0, 20, 20, green);
    view->cornerRadius = 1e9;
    const Bitmap result = picture(*view);
    EXPECT_EQ(pixel(result, 0, 0), nothing);
    EXPECT_EQ(pixel(result, 10, 10), greenPixel);
}

TEST(DrawViewHierarchy, hiddenAndTransparentViewsDrawNothingWithAllBelow) {
    for (const double alpha : {0.0, -0.5, std::numeric_limits<double>::quiet_NaN(), 1.0}) {
        const auto root = makeView(0, 0, 20, 20);
        const auto view = makeView(0, 0, 20, 20, red);
        root->addSubview(view);
        view->addSubview(makeView(0, 0, 5, 5, green));
        view->alpha = alpha;
        view->hidden = alpha == 1;
        EXPECT_THAT(drawn(*root).recording().draws(), IsEmpty()) << alpha;
    }
}

TEST(DrawViewHierarchy, subviewsOfAnEmptyViewStillShowUnlessItClips) {
    const auto root = makeView(0, 0, 20, 20);
    const auto empty = makeView(0, 0, 0, 0, red);
    root->addSubview(empty);
    empty->addSubview(makeView(5, 5, 5, 5, green));
    EXPECT_EQ(pixel(picture(*root), 7, 7), greenPixel);
    empty->masksToBounds = true;
    EXPECT_THAT(drawn(*root).recording().draws(), IsEmpty());
}

TEST(DrawViewHierarchy, laterSubviewsLieOnTop) {
    const auto root = makeView(0, 0, 20, 20, red);
    root->addSubview(makeView(0, 0, 10, 10, green));
    root->addSubview(makeView(5, 5, 10, 10, blue));
    const Bitmap result = picture(*root);
    EXPECT_EQ(pixel(result, 2, 2), greenPixel);
    EXPECT_EQ(pixel(result, 7, 7), bluePixel);
    EXPECT_EQ(pixel(result, 18, 18), redPixel);
}

TEST(DrawViewHierarchy, textsAreLeftToTheHost) {
    const auto root = makeView(0, 0, 50, 20);
    const auto label = std::make_shared<Label>();
    label->setFrame(makeRect(0, 0, 50, 20));
    label->text = "Saved";
    root->addSubview(label);
    EXPECT_THAT(drawn(*root).recording().draws(), IsEmpty());
}

// Clipping ------------------------------------------------------------------------------------------------------------

TEST(DrawViewHierarchy, subviewsReachOutsideUnlessTheViewClips) {
    const auto root = makeView(0, 0, 30, 30);
    const auto view = makeView(10, 10, 10, 10);
    root->addSubview(view);
    view->addSubview(makeView(-5, -5, 20, 20, green));
    EXPECT_EQ(pixel(picture(*root), 6, 6), greenPixel);
    view->masksToBounds = true;
    const Bitmap clipped = picture(*root);
    EXPECT_EQ(pixel(clipped, 6, 6), nothing);
    EXPECT_EQ(pixel(clipped, 15, 15), greenPixel);
}

TEST(DrawViewHierarchy, clippingViewCutsSubviewsWithItsRadius) {
    const auto root = makeView(0, 0, 40, 40);
    root->masksToBounds = true;
    root->cornerRadius = 20;
    root->addSubview(makeView(0, 0, 40, 40, green));
    const auto context = drawn(*root);
    ASSERT_THAT(context.recording().draws(), SizeIs(1));
    ASSERT_THAT(context.recording().draws()[0].clips, SizeIs(1));
    EXPECT_EQ(context.recording().draws()[0].clips[0].shape, (RoundedRect{makeRect(0, 0, 40, 40), 20}));
    const Bitmap result = renderReference(context.recording());
    EXPECT_EQ(pixel(result, 2, 2), nothing);
    EXPECT_EQ(pixel(result, 20, 20), greenPixel);
}

TEST(DrawViewHierarchy, clipsOfAllViewsAboveAddUp) {
    const auto root = makeView(0, 0, 30, 30);
    const auto left = makeView(0, 0, 15, 30), top = makeView(0, 0, 30, 10);
    left->masksToBounds = top->masksToBounds = true;
    root->addSubview(left);
    left->addSubview(top);
    top->addSubview(makeView(0, 0, 30, 30, green));
    const Bitmap result = picture(*root);
    EXPECT_EQ(pixel(result, 14, 9), greenPixel);
    EXPECT_EQ(pixel(result, 15, 9), nothing);
    EXPECT_EQ(pixel(result, 14, 10), nothing);
}

TEST(DrawViewHierarchy, scrollViewShiftsAndClipsItsContent) {
    const auto root = makeView(0, 0, 40, 40);
    const auto scroll = std::make_shared<ScrollView>();
    scroll->setFrame(makeRect(10, 10, 20, 20));
    scroll->contentOffset = {0, 100};
    scroll->addSubview(makeView(0, 90, 40, 20, green));
    root->addSubview(scroll);
    const Bitmap result = picture(*root);
    EXPECT_EQ(pixel(result, 15, 9), nothing);
    EXPECT_EQ(pixel(result, 15, 10), greenPixel);
    EXPECT_EQ(pixel(result, 15, 19), greenPixel);
    EXPECT_EQ(pixel(result, 15, 20), nothing);
    EXPECT_EQ(pixel(result, 31, 15), nothing);
}

TEST(DrawViewHierarchy, scrollingDoesNotMoveTheScrollViewsOwnBackground) {
    const auto scroll = std::make_shared<ScrollView>();
    scroll->setFrame(makeRect(0, 0, 20, 20));
    scroll->backgroundColor = red;
    scroll->contentOffset = {7, 7};
    EXPECT_EQ(pixel(picture(*scroll), 19, 19), redPixel);
}

// Content modes -------------------------------------------------------------------------------------------------------

namespace {

/// Where an 8 x 4 picture lies in a 20 x 20 view.
Rect pictureRectIn(ContentMode mode, const Rect& frame = makeRect(0, 0, 20, 20), PixelSize size = {8, 4}) {
    const auto view = pictureView(frame, twoColours(size));
    view->contentMode = mode;
    return drawn(*view).recording().draws().at(0).pictureRect;
}

} // namespace

TEST(ContentModes, scaleToFillStretchesToTheBounds) {
    EXPECT_EQ(pictureRectIn(ContentMode::scaleToFill), makeRect(0, 0, 20, 20));
}

TEST(ContentModes, aspectFitLiesWhollyInsideAndCentred) {
    EXPECT_EQ(pictureRectIn(ContentMode::scaleAspectFit), makeRect(0, 5, 20, 10));
    EXPECT_EQ(pictureRectIn(ContentMode::scaleAspectFit, makeRect(0, 0, 40, 10)), makeRect(10, 0, 20, 10));
}

TEST(ContentModes, aspectFillCoversTheBoundsAndIsCentred) {
    EXPECT_EQ(pictureRectIn(ContentMode::scaleAspectFill), makeRect(-10, 0, 40, 20));
    EXPECT_EQ(pictureRectIn(ContentMode::scaleAspectFill, makeRect(0, 0, 40, 10)), makeRect(0, -5, 40, 20));
}

TEST(ContentModes, sameShapeFitsAndFillsExactlyWhateverTheNumbers) {
    for (const auto mode : {ContentMode::scaleAspectFit, ContentMode::scaleAspectFill}) {
        const Rect rect = pictureRectIn(mode, makeRect(0, 0, 300.0 / 7, 100.0 / 7), {9, 3});
        EXPECT_NEAR(rect.size.width, 300.0 / 7, 1e-12);
        EXPECT_NEAR(rect.size.height, 100.0 / 7, 1e-12);
    }
}

TEST(ContentModes, aspectFillIsOneDrawWhenClippedAndOverflowsWhenNot) {
    const auto root = makeView(0, 0, 40, 20);
    const auto view = pictureView(makeRect(10, 0, 20, 20), twoColours({8, 4}));
    view->contentMode = ContentMode::scaleAspectFill;
    view->backgroundColor = red;
    view->masksToBounds = true;
    root->addSubview(view);
    EXPECT_THAT(drawn(*root).recording().draws(), SizeIs(1));
    EXPECT_EQ(pixel(picture(*root), 5, 10), nothing);
    view->masksToBounds = false;
    EXPECT_EQ(pixel(picture(*root), 5, 10), greenPixel);
}

TEST(ContentModes, aspectFitLeavesTheBackgroundBesideThePicture) {
    const auto view = pictureView(makeRect(0, 0, 20, 20), twoColours({8, 4}));
    view->contentMode = ContentMode::scaleAspectFit;
    view->backgroundColor = red;
    const Bitmap result = picture(*view);
    EXPECT_EQ(pixel(result, 3, 2), redPixel);
    EXPECT_EQ(pixel(result, 3, 10), greenPixel);
    EXPECT_EQ(pixel(result, 16, 10), bluePixel);
}

TEST(ContentModes, pictureScaleCountsInPoints) {
    Bitmap bitmap = plainBitmap({40, 10}, greenPixel);
    const auto view = pictureView(makeRect(0, 0, 20, 20), Image::fromBitmap(std::move(bitmap), 2));
    view->contentMode = ContentMode::scaleAspectFit;
    EXPECT_EQ(drawn(*view).recording().draws().at(0).pictureRect, makeRect(0, 7.5, 20, 5));
}

TEST(ContentModes, viewWithoutAPictureDrawsItsBackgroundAlone) {
    const auto view = pictureView(makeRect(0, 0, 20, 20), {});
    EXPECT_THAT(drawn(*view).recording().draws(), IsEmpty());
    view->backgroundColor = Color::black();
    EXPECT_EQ(pixel(picture(*view), 10, 10), (Rgba{0, 0, 0, 255}));
}

// Opacity -------------------------------------------------------------------------------------------------------------

TEST(ViewOpacity, singleLayerCarriesItItself) {
    const auto root = makeView(0, 0, 20, 20);
    const auto view = pictureView(makeRect(0, 0, 20, 20), twoColours({4, 2}));
    view->backgroundColor = red;
    view->alpha = 0.9;
    root->addSubview(view);
    const auto context = drawn(*root);
    ASSERT_THAT(context.recording().draws(), SizeIs(1));
    EXPECT_EQ(context.recording().draws()[0].opacity, 0.9);
}

TEST(ViewOpacity, isClampedToOne) {
    const auto view = makeView(0, 0, 20, 20, red);
    view->alpha = 5;
    EXPECT_EQ(drawn(*view).recording().draws().at(0).opacity, 1);
}

TEST(ViewOpacity, overlappingLayersFadeAsOnePicture) {
    const auto root = makeView(0, 0, 20, 20);
    const auto group = makeView(2, 2, 16, 16, red);
    group->addSubview(makeView(2, 2, 8, 8, blue));
    group->alpha = 0.5;
    root->addSubview(group);
    const Bitmap result = picture(*root);
    expectNear(pixel(result, 3, 3), {128, 0, 0, 128}, 1);
    expectNear(pixel(result, 6, 6), {0, 0, 128, 128}, 1); // no red shines through
    EXPECT_EQ(pixel(result, 1, 1), nothing);
}

TEST(ViewOpacity, multipliesDownTheTree) {
    const auto root = makeView(0, 0, 20, 20);
    const auto outer = makeView(0, 0, 20, 20);
    const auto inner = makeView(0, 0, 20, 20, red);
    outer->alpha = inner->alpha = 0.5;
    outer->addSubview(inner);
    root->addSubview(outer);
    const auto context = drawn(*root);
    ASSERT_THAT(context.recording().draws(), SizeIs(1));
    EXPECT_EQ(context.recording().draws()[0].opacity, 0.25);
}

TEST(ViewOpacity, fadedGroupTakesOnlyThePixelsItTouches) {
    const auto root = makeView(0, 0, 200, 200);
    const auto group = makeView(50.5, 60, 20, 30, red);
    group->addSubview(makeView(2, 2, 8, 8, blue));
    group->alpha = 0.5;
    root->addSubview(group);
    const auto context = drawn(*root);
    ASSERT_THAT(context.recording().draws(), SizeIs(1));
    EXPECT_EQ(context.recording().draws()[0].picture.pixelSize(), (PixelSize{21, 30}));
}

TEST(ViewOpacity, fadedGroupOutsideTheCanvasDrawsNothing) {
    const auto root = makeView(0, 0, 20, 20);
    const auto group = makeView(100, 100, 10, 10, red);
    group->addSubview(makeView(0, 0, 5, 5, blue));
    group->alpha = 0.5;
    root->addSubview(group);
    EXPECT_THAT(drawn(*root).recording().draws(), IsEmpty());
}

TEST(ViewOpacity, fadedGroupIsCutByTheViewsAbove) {
    const auto root = makeView(0, 0, 20, 20);
    const auto window = makeView(0, 0, 10, 20);
    window->masksToBounds = true;
    const auto group = makeView(0, 0, 20, 20, red);
    group->addSubview(makeView(5, 5, 10, 10, blue));
    group->alpha = 0.5;
    window->addSubview(group);
    root->addSubview(window);
    const Bitmap result = picture(*root);
    expectNear(pixel(result, 9, 10), {0, 0, 128, 128}, 1);
    EXPECT_EQ(pixel(result, 10, 10), nothing);
}

TEST(ViewOpacity, fadedGroupReachingBehindTheViewerStaysInTheCanvas) {
    const auto root = makeView(0, 0, 20, 20);
    const auto group = makeView(0, 0, 20, 20, red);
    group->addSubview(makeView(0, 0, 5, 5, blue));
    group->alpha = 0.5;
    Transform3D behind;
    behind.m14 = 0.2;
    group->setLayerTransform(behind);
    root->addSubview(group);
    const auto context = drawn(*root);
    ASSERT_THAT(context.recording().draws(), SizeIs(1));
    EXPECT_EQ(context.recording().draws()[0].picture.pixelSize(), (PixelSize{20, 20}));
}

TEST(ViewOpacity, fadedGroupIsSharpOnAScaledCanvas) {
    const auto root = makeView(0, 0, 20, 20);
    const auto group = makeView(2.5, 0, 10, 10, red);
    group->addSubview(makeView(2.5, 2.5, 5, 5, blue));
    group->alpha = 0.5;
    root->addSubview(group);
    BitmapContext context({20, 20}, 2);
    ASSERT_TRUE(drawViewHierarchy(*root, makeRect(0, 0, 20, 20), context));
    const Bitmap result = renderReference(context.recording());
    EXPECT_EQ(pixel(result, 4, 0), nothing);
    expectNear(pixel(result, 5, 0), {128, 0, 0, 128}, 1);
    expectNear(pixel(result, 9, 5), {128, 0, 0, 128}, 1);
    expectNear(pixel(result, 10, 5), {0, 0, 128, 128}, 1);
}

// Maps ----------------------------------------------------------------------------------------------------------------

TEST(DrawViewHierarchy, stretchesTheBoundsToTheRectangle) {
    const auto root = makeView(77, 88, 10, 10, red);
    root->setTransform(AffineTransform::scale(9, 9)); // the root's own place does not count
    root->addSubview(makeView(5, 0, 5, 10, green));
    BitmapContext context({40, 40});
    EXPECT_TRUE(drawViewHierarchy(*root, makeRect(10, 20, 20, 10), context));
    const Bitmap result = renderReference(context.recording());
    EXPECT_EQ(pixel(result, 10, 20), redPixel);
    EXPECT_EQ(pixel(result, 19, 29), redPixel);
    EXPECT_EQ(pixel(result, 20, 20), greenPixel);
    EXPECT_EQ(pixel(result, 29, 29), greenPixel);
    EXPECT_EQ(pixel(result, 30, 20), nothing);
    EXPECT_EQ(pixel(result, 10, 30), nothing);
}

TEST(DrawViewHierarchy, countsTheContextsOwnTransform) {
    const auto root = makeView(0, 0, 10, 10, red);
    BitmapContext context({40, 40}, 2);
    context.translateCTM(20, 0);
    EXPECT_TRUE(drawViewHierarchy(*root, makeRect(0, 0, 10, 10), context));
    const Bitmap result = renderReference(context.recording());
    EXPECT_EQ(pixel(result, 39, 0), nothing);
    EXPECT_EQ(pixel(result, 40, 0), redPixel);
    EXPECT_EQ(pixel(result, 59, 19), redPixel);
    EXPECT_EQ(pixel(result, 60, 0), nothing);
}

TEST(DrawViewHierarchy, boundsOriginOfTheRootShiftsItsSubviews) {
    const auto root = makeView(0, 0, 10, 10);
    root->setBounds(makeRect(100, 100, 10, 10));
    root->addSubview(makeView(102, 103, 2, 2, green));
    EXPECT_EQ(pixel(picture(*root), 2, 3), greenPixel);
    EXPECT_EQ(pixel(picture(*root), 1, 3), nothing);
}

TEST(DrawViewHierarchy, fittedPictureFillsItsQuad) {
    const auto root = makeView(0, 0, 120, 120);
    const auto screen = pictureView(makeRect(0, 0, 10, 10), twoColours({64, 64}));
    screen->setAnchorPoint({0, 0});
    const Quad q{{20, 10}, {100, 25}, {15, 110}, {105, 90}};
    const Rect box = boundingBoxForQuadTR(q.topRight, q.topLeft, q.bottomLeft, q.bottomRight);
    screen->fitToBox(box, rectToQuad({{0, 0}, box.size}, q.topLeft - box.origin, q.topRight - box.origin,
                                     q.bottomLeft - box.origin, q.bottomRight - box.origin));
    root->addSubview(screen);
    const Bitmap result = picture(*root);
    EXPECT_EQ(pixel(result, 21, 13), greenPixel); // just inside each corner
    EXPECT_EQ(pixel(result, 98, 27), bluePixel);
    EXPECT_EQ(pixel(result, 17, 107), greenPixel);
    EXPECT_EQ(pixel(result, 102, 89), bluePixel);
    EXPECT_EQ(pixel(result, 18, 12), nothing); // just outside
    EXPECT_EQ(pixel(result, 100, 20), nothing);
    EXPECT_EQ(pixel(result, 14, 112), nothing);
    EXPECT_EQ(pixel(result, 106, 95), nothing);
}

TEST(DrawViewHierarchy, subviewsOfAWarpedViewAreWarpedWithIt) {
    const auto root = makeView(0, 0, 100, 100);
    const auto warped = makeView(0, 0, 100, 100);
    warped->setAnchorPoint({0, 0});
    warped->setCenter({0, 0});
    Transform3D t;
    t.m14 = 0.01; // x = 100 comes to 50
    warped->setLayerTransform(t);
    const auto child = makeView(80, 0, 20, 20, green);
    warped->addSubview(child);
    root->addSubview(warped);
    const Bitmap result = picture(*root);
    EXPECT_EQ(pixel(result, 43, 2), nothing); // 80 comes to 44.4
    EXPECT_EQ(pixel(result, 46, 2), greenPixel);
    EXPECT_EQ(pixel(result, 49, 8), greenPixel); // 20 comes to 10
    EXPECT_EQ(pixel(result, 51, 2), nothing);
    EXPECT_EQ(pixel(result, 49, 12), nothing);
}

TEST(DrawViewHierarchy, collapsedViewDrawsNothing) {
    const auto root = makeView(0, 0, 20, 20);
    const auto view = makeView(0, 0, 20, 20, red);
    view->setTransform(AffineTransform::scale(0, 0));
    view->addSubview(makeView(0, 0, 5, 5, green));
    root->addSubview(view);
    EXPECT_THAT(drawn(*root).recording().draws(), IsEmpty());
}

TEST(DrawViewHierarchy, undefinedTransformDrawsNothing) {
    const auto root = makeView(0, 0, 20, 20);
    const auto view = makeView(0, 0, 20, 20, red);
    Transform3D t;
    t.m11 = std::numeric_limits<double>::quiet_NaN();
    view->setLayerTransform(t);
    root->addSubview(view);
    EXPECT_THAT(drawn(*root).recording().draws(), IsEmpty());
}

TEST(DrawViewHierarchy, failsWithoutExtent) {
    BitmapContext context({20, 20});
    const double endless = std::numeric_limits<double>::infinity();
    const double undefined = std::numeric_limits<double>::quiet_NaN();
    const auto root = makeView(0, 0, 20, 20, red);
    EXPECT_TRUE(drawViewHierarchy(*root, makeRect(0, 0, 20, 20), context));
    for (const Rect& rect : {makeRect(0, 0, 0, 20), makeRect(0, 0, 20, -1), makeRect(0, 0, undefined, 20),
                             makeRect(undefined, 0, 20, 20), makeRect(0, 0, endless, 20)}) {
        EXPECT_FALSE(drawViewHierarchy(*root, rect, context));
        const auto odd = makeView(0, 0, 20, 20, red);
        odd->setBounds(rect);
        EXPECT_FALSE(drawViewHierarchy(*odd, makeRect(0, 0, 20, 20), context));
    }
    EXPECT_THAT(context.recording().draws(), SizeIs(1));
    BitmapContext noCanvas({0, 20});
    EXPECT_FALSE(drawViewHierarchy(*root, makeRect(0, 0, 20, 20), noCanvas));
}

TEST(DrawViewHierarchy, hiddenRootDrawsNothingAndSucceeds) {
    const auto root = makeView(0, 0, 20, 20, red);
    root->hidden = true;
    EXPECT_THAT(drawn(*root).recording().draws(), IsEmpty());
}

// Layers without depth ------------------------------------------------------------------------------------------------

TEST(RenderInContext, drawsInBoundsCoordinatesWhateverTheViewsOwnTransform) {
    const auto view = makeView(50, 60, 10, 10, red);
    view->setTransform(AffineTransform::scale(3, 3));
    BitmapContext context({20, 20});
    renderInContext(*view, context);
    const Bitmap result = renderReference(context.recording());
    EXPECT_EQ(pixel(result, 0, 0), redPixel);
    EXPECT_EQ(pixel(result, 9, 9), redPixel);
    EXPECT_EQ(pixel(result, 10, 10), nothing);
}

TEST(RenderInContext, ignoresPerspectiveAndKeepsTheAffinePart) {
    const auto root = makeView(0, 0, 40, 40);
    const auto view = makeView(0, 0, 20, 20, red);
    view->setAnchorPoint({0, 0});
    view->setCenter({0, 0});
    Transform3D t = Transform3D::fromAffine(AffineTransform::scale(2, 1));
    t.m14 = 0.05;
    view->setLayerTransform(t);
    root->addSubview(view);
    BitmapContext context({40, 40});
    renderInContext(*root, context);
    const Bitmap result = renderReference(context.recording());
    EXPECT_EQ(pixel(result, 39, 19), redPixel);
    EXPECT_EQ(pixel(result, 39, 20), nothing);
    EXPECT_NE(pixel(picture(*root), 39, 19), redPixel);
}

TEST(RenderInContext, backgroundIsRenderedAsItIsDisplayed) {
    const auto view = pictureView(makeRect(30, 40, 20, 20), twoColours({80, 40}));
    view->contentMode = ContentMode::scaleAspectFill;
    view->masksToBounds = true;
    BitmapContext context(view->bounds().size);
    renderInContext(*view, context);
    const Bitmap result = renderReference(context.recording());
    EXPECT_EQ(result.size(), (PixelSize{20, 20}));
    EXPECT_EQ(pixel(result, 1, 10), greenPixel);
    EXPECT_EQ(pixel(result, 18, 10), bluePixel);
}

TEST(RenderInContext, flatPictureAboutItsCentreIsTheWholePictureUnchanged) {
    const Image image = twoColours({12, 8});
    const auto view = pictureView(makeRect(0, 0, 12, 8), image);
    BitmapContext context({12, 8});
    context.saveGState();
    context.translateCTM(view->center().x, view->center().y);
    context.concatCTM(view->transform());
    context.translateCTM(-12 * view->anchorPoint().x, -8 * view->anchorPoint().y);
    renderInContext(*view, context);
    context.restoreGState();
    EXPECT_EQ(renderReference(context.recording()), *image.bitmap());
}

TEST(RenderInContext, drawsNothingWithoutACanvas) {
    BitmapContext context({-1, 20});
    renderInContext(*makeView(0, 0, 20, 20, red), context);
    EXPECT_THAT(context.recording().draws(), IsEmpty());
}
