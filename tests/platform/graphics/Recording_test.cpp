#include "platform/graphics/Recording.h"

#include "DrawnPictures.h"
#include "PictureComparison.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/ReferenceRenderer.h"

#include <gtest/gtest.h>

namespace quillomat {
namespace {

Image opaquePicture() {
    return Image::fromBitmap(screenshotLike({40, 30}));
}
Image translucentPicture() {
    return Image::fromBitmap(screenshotLike({40, 30}, /*opaque=*/false));
}

Recording stretched(const Image& image, const Rect& rect) {
    BitmapContext context({100, 80});
    context.drawImage(image, rect);
    return context.recording();
}

TEST(Recording, anOpaquePictureOverTheWholeCanvasProvesOpaque) {
    EXPECT_TRUE(stretched(opaquePicture(), makeRect(0, 0, 100, 80)).provesOpaque());
    EXPECT_TRUE(stretched(opaquePicture(), makeRect(-5, -5, 200, 200)).provesOpaque());
}

TEST(Recording, whatLeavesAnyPixelFreeProvesNothing) {
    EXPECT_FALSE(Recording(PixelSize{100, 80}).provesOpaque());
    EXPECT_FALSE(Recording().provesOpaque());
    EXPECT_FALSE(stretched(translucentPicture(), makeRect(0, 0, 100, 80)).provesOpaque());
    EXPECT_FALSE(stretched(opaquePicture(), makeRect(0, 0, 99.5, 80)).provesOpaque());
    EXPECT_FALSE(stretched(opaquePicture(), makeRect(0, 1, 100, 80)).provesOpaque());
}

TEST(Recording, roundingClippingOpacityAndSmallPicturesProveNothing) {
    LayerDraw draw;
    draw.shape = {makeRect(0, 0, 100, 80), 0};
    draw.fill = Color::black();
    EXPECT_TRUE(recordingOf({100, 80}, draw).provesOpaque());
    LayerDraw rounded = draw;
    rounded.shape.radius = 5;
    EXPECT_FALSE(recordingOf({100, 80}, rounded).provesOpaque());
    LayerDraw faint = draw;
    faint.opacity = 0.99;
    EXPECT_FALSE(recordingOf({100, 80}, faint).provesOpaque());
    LayerDraw thin = draw;
    thin.fill->alpha = 0.9;
    EXPECT_FALSE(recordingOf({100, 80}, thin).provesOpaque());
    LayerDraw clipped = draw;
    clipped.clips.push_back({Homography{}, {makeRect(10, 0, 100, 80), 0}});
    EXPECT_FALSE(recordingOf({100, 80}, clipped).provesOpaque());
    clipped.clips[0].shape.rect = makeRect(-10, -10, 200, 200);
    EXPECT_TRUE(recordingOf({100, 80}, clipped).provesOpaque());
    LayerDraw pictured = draw;
    pictured.fill.reset();
    pictured.picture = opaquePicture();
    pictured.pictureRect = makeRect(0, 0, 50, 80);
    EXPECT_FALSE(recordingOf({100, 80}, pictured).provesOpaque());
}

TEST(Recording, whatIsProvedOpaqueIsOpaque) {
    const Recording recording = stretched(opaquePicture(), makeRect(-0.00001, 0, 100.00001, 80));
    ASSERT_TRUE(recording.provesOpaque());
    EXPECT_TRUE(rasterize(recording).isOpaque());
}

TEST(Recording, opacityIsProvedThroughRecordingsInside) {
    const Image inner = imageOfRecording(stretched(opaquePicture(), makeRect(0, 0, 100, 80)));
    EXPECT_TRUE(inner.source()->isKnownOpaque());
    EXPECT_TRUE(stretched(inner, makeRect(0, 0, 100, 80)).provesOpaque());
    const Image free = imageOfRecording(Recording(PixelSize{100, 80}));
    EXPECT_FALSE(stretched(free, makeRect(0, 0, 100, 80)).provesOpaque());
}

Recording nested(int depth, const Rect& rect) {
    Recording recording = recordingOf({100, 80}, fittedLayer(opaquePicture(), turnedQuad({60, 40}, {70, 50}, 20), 9));
    for (int i = 0; i < depth; ++i) {
        Image inner = imageOfRecording(std::move(recording));
        BitmapContext context({100, 80});
        context.drawImage(translucentPicture(), makeRect(3, 4, 60, 70));
        context.drawImage(inner, rect);
        recording = context.recording();
    }
    return recording;
}

bool hasNesting(const Recording& recording) {
    for (const LayerDraw& draw : recording.draws()) {
        if (draw.picture && draw.picture.source()->recording()) {
            return true;
        }
    }
    return false;
}

TEST(Recording, unscaledNestingIsFlattenedAndLooksTheSame) {
    const Recording recording = nested(3, makeRect(-7, 5, 100, 80));
    EXPECT_TRUE(hasNesting(recording));
    EXPECT_FALSE(hasNesting(flattened(recording)));
    EXPECT_TRUE(picturesAgree(renderReference(recording), rasterize(recording), {6, 3, 0.01, 52}));
}

TEST(Recording, scaledTurnedFaintOrRoundedNestingIsNotFlattened) {
    EXPECT_TRUE(hasNesting(flattened(nested(1, makeRect(0, 0, 99, 80)))));
    EXPECT_TRUE(hasNesting(flattened(nested(1, makeRect(0.5, 0, 100, 80)))));
    const Image inner = imageOfRecording(nested(0, {}));
    LayerDraw draw;
    draw.shape = {makeRect(0, 0, 100, 80), 0};
    draw.picture = inner;
    draw.pictureRect = draw.shape.rect;
    EXPECT_FALSE(hasNesting(flattened(recordingOf({100, 80}, draw))));
    LayerDraw faint = draw;
    faint.opacity = 0.5;
    EXPECT_TRUE(hasNesting(flattened(recordingOf({100, 80}, faint))));
    LayerDraw rounded = draw;
    rounded.shape.radius = 10;
    EXPECT_TRUE(hasNesting(flattened(recordingOf({100, 80}, rounded))));
    LayerDraw cut = draw;
    cut.clips.push_back({Homography{}, {makeRect(0.5, 0, 50, 80), 0}});
    EXPECT_TRUE(hasNesting(flattened(recordingOf({100, 80}, cut))));
}

TEST(Recording, scaledNestingIsRasterisedOnceAndLooksTheSame) {
    const Recording recording = nested(2, makeRect(2, 3, 200, 160));
    EXPECT_TRUE(picturesAgree(renderReference(recording), rasterize(recording), {8, 3, 0.02, 50}));
}

TEST(Recording, drawsDoNotLeaveTheNestedCanvas) {
    Recording inner(PixelSize{20, 20});
    LayerDraw flood;
    flood.shape = {makeRect(-100, -100, 500, 500), 0};
    flood.fill = Color::black();
    inner.add(flood);
    BitmapContext context({60, 60});
    context.drawImage(imageOfRecording(inner), makeRect(10, 10, 20, 20));
    const Bitmap drawn = rasterize(context.recording());
    EXPECT_EQ(drawn.row(10)[10 * 4 + 3], 255);
    EXPECT_EQ(drawn.row(29)[29 * 4 + 3], 255);
    EXPECT_EQ(drawn.row(9)[10 * 4 + 3], 0);
    EXPECT_EQ(drawn.row(10)[9 * 4 + 3], 0);
    EXPECT_EQ(drawn.row(30)[29 * 4 + 3], 0);
    EXPECT_EQ(drawn.row(29)[30 * 4 + 3], 0);
}

TEST(Recording, picturesOfRecordingsShareTheirPixelsWhileHeld) {
    const Image image = imageOfRecording(stretched(opaquePicture(), makeRect(0, 0, 50, 50)));
    const SharedBitmap first = image.bitmap();
    EXPECT_EQ(first.get(), image.bitmap().get());
    EXPECT_FALSE(imageOfRecording(Recording()));
}

} // namespace
} // namespace quillomat
