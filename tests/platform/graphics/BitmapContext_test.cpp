#include "platform/graphics/BitmapContext.h"

#include "DrawnPictures.h"
#include "PictureComparison.h"
#include "platform/graphics/Rasterizer.h"

#include <gtest/gtest.h>

#include <limits>

namespace quillomat {
namespace {

TEST(BitmapContext, fractionalPixelSizesAreRoundedUp) {
    EXPECT_EQ(BitmapContext({10.2, 20}, 1).pixelSize(), (PixelSize{11, 20}));
    EXPECT_EQ(BitmapContext({10.25, 20.1}, 2).pixelSize(), (PixelSize{21, 41}));
    EXPECT_EQ(BitmapContext({0.1 * 3 * 10, 7}, 1).pixelSize(), (PixelSize{3, 7})) << "not by a rounding error";
}

TEST(BitmapContext, impossibleSizesMakeAnEmptyCanvasWithoutAPicture) {
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const Size size : {Size{0, 10}, Size{10, 0}, Size{-5, 10}, Size{notANumber, 10}, Size{10, infinity},
                            Size{30001, 1}, Size{1, 30001}, Size{20000, 20000}, Size{1e300, 1e300}}) {
        BitmapContext context(size);
        EXPECT_TRUE(context.pixelSize().isEmpty());
        context.drawImage(Image::fromBitmap(screenshotLike({4, 4})), makeRect(0, 0, 4, 4));
        EXPECT_TRUE(context.recording().draws().empty());
        EXPECT_FALSE(context.makeImage());
    }
    EXPECT_TRUE(BitmapContext({10, 10}, notANumber).pixelSize().isEmpty());
    EXPECT_FALSE(BitmapContext({16000, 16000}).pixelSize().isEmpty()) << "256 megapixels are allowed";
    EXPECT_TRUE(BitmapContext({16001, 16000}).pixelSize().isEmpty());
}

TEST(BitmapContext, concatenatedTransformsApplyInsideOut) {
    BitmapContext context({100, 100}, 2);
    context.saveGState();
    context.translateCTM(10, 20);
    context.concatCTM(AffineTransform::scale(3, 4));
    context.translateCTM(1, 1);
    const auto p = context.userToPixels().project({5, 6});
    ASSERT_TRUE(p);
    EXPECT_EQ(*p, (Point{2 * (10 + 3 * 6), 2 * (20 + 4 * 7)}));
    context.restoreGState();
    EXPECT_EQ(context.userToPixels().project({5, 6}), (Point{10, 12}));
    context.restoreGState(); // one too many is harmless
}

TEST(BitmapContext, anAllZeroTransformDrawsNothing) {
    BitmapContext context({10, 10});
    context.concatCTM({0, 0, 0, 0, 0, 0});
    context.drawImage(Image::fromBitmap(screenshotLike({4, 4})), makeRect(0, 0, 4, 4));
    EXPECT_EQ(rasterize(context.recording()), Bitmap({10, 10}));
}

TEST(BitmapContext, drawingAbsentPicturesRecordsNothing) {
    BitmapContext context({10, 10});
    context.drawImage({}, makeRect(0, 0, 10, 10));
    EXPECT_TRUE(context.recording().draws().empty());
}

TEST(BitmapContext, imagesKeepTheScaleAndWhatWasDrawnSoFar) {
    BitmapContext context({10, 20}, 3);
    const Image before = context.makeImage();
    context.drawImage(Image::fromBitmap(screenshotLike({4, 4})), makeRect(0, 0, 10, 20));
    EXPECT_EQ(before.pixelSize(), (PixelSize{30, 60}));
    EXPECT_EQ(before.size(), (Size{10, 20}));
    EXPECT_EQ(*before.bitmap(), Bitmap({30, 60}));
    EXPECT_NE(*context.makeImage().bitmap(), Bitmap({30, 60}));
}

TEST(ContextStack, drawingGoesIntoTheInnermostCanvas) {
    ContextStack stack;
    EXPECT_TRUE(stack.isEmpty());
    EXPECT_FALSE(stack.imageFromCurrent());
    stack.begin({10, 10});
    stack.begin({20, 20});
    EXPECT_EQ(stack.current().pixelSize(), (PixelSize{20, 20}));
    EXPECT_EQ(stack.imageFromCurrent().pixelSize(), (PixelSize{20, 20}));
    stack.end();
    EXPECT_EQ(stack.current().pixelSize(), (PixelSize{10, 10}));
    stack.end();
    stack.end();
    EXPECT_TRUE(stack.isEmpty());
}

} // namespace
} // namespace quillomat
