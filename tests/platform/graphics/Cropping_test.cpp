#include "platform/graphics/Cropping.h"

#include "codecs/TestPictures.h"

#include <gtest/gtest.h>

namespace quillomat {
namespace {

TEST(CroppingTest, centredCropKeepsTheFullHeightOfAWidePicture) {
    EXPECT_EQ(centredCrop({400, 100}, {1000, 1000}), (PixelRect{150, 0, 100, 100}));
}

TEST(CroppingTest, centredCropKeepsTheFullWidthOfATallPicture) {
    EXPECT_EQ(centredCrop({100, 400}, {200, 100}), (PixelRect{0, 175, 100, 50}));
}

TEST(CroppingTest, centredCropOfThePicturesOwnShapeIsTheWholePicture) {
    EXPECT_EQ(centredCrop({300, 200}, {1500, 1000}), (PixelRect{0, 0, 300, 200}));
}

TEST(CroppingTest, centredCropOfAnExtremeShapeKeepsAPixel) {
    EXPECT_EQ(centredCrop({10, 10}, {30000, 1}), (PixelRect{0, 4, 10, 1}));
}

TEST(CroppingTest, centredCropWithoutAShapeIsTheWholePicture) {
    EXPECT_EQ(centredCrop({10, 20}, {0, 5}), (PixelRect{0, 0, 10, 20}));
}

TEST(CroppingTest, rectanglesOutsideOrWithoutExtentDoNotLieInside) {
    EXPECT_TRUE(liesInside({0, 0, 10, 10}, {10, 10}));
    EXPECT_FALSE(liesInside({1, 0, 10, 10}, {10, 10}));
    EXPECT_FALSE(liesInside({-1, 0, 5, 5}, {10, 10}));
    EXPECT_FALSE(liesInside({0, 0, 0, 5}, {10, 10}));
    EXPECT_FALSE(liesInside({2147483647, 0, 2147483647, 1}, {10, 10})) << "the sum must not overflow";
}

TEST(CroppingTest, cutPictureHoldsTheVeryPixels) {
    Bitmap bitmap(PixelSize{4, 3});
    for (std::size_t i = 0; i < bitmap.bytes().size(); ++i) {
        bitmap.bytes()[i] = i % 4 == 3 ? 255 : static_cast<std::uint8_t>(i * 5);
    }
    const Image cut = croppedImage(Image::fromBitmap(bitmap), {1, 1, 2, 2});
    ASSERT_EQ(cut.pixelSize(), (PixelSize{2, 2}));
    const auto pixels = cut.bitmap();
    ASSERT_NE(pixels, nullptr);
    for (int y = 0; y < 2; ++y) {
        EXPECT_TRUE(std::equal(pixels->row(y), pixels->row(y) + 8, bitmap.row(y + 1) + 4)) << "row " << y;
    }
}

/// 1600 x 1200, upright.
Image photograph() {
    return imageFromBytes(
               testing::readWhole(std::filesystem::path(QUILLOMAT_SOURCE_DIR) / "resources/samples/background.jpg"))
        .value();
}

TEST(CroppingTest, cutOfAnEncodedPictureHoldsTheVeryPixels) {
    for (const char* name : {"quarters.jpg", "quarters.webp", "quarters.avif"}) {
        const Image image = imageFromBytes(testing::fixture(name)).value();
        const PixelRect part{7, 5, image.pixelSize().width - 20, image.pixelSize().height - 9};
        const Image cut = croppedImage(image, part);
        EXPECT_EQ(cut.pixelSize(), (PixelSize{part.width, part.height}));
        const SharedBitmap pixels = cut.bitmap();
        ASSERT_TRUE(pixels) << name;
        EXPECT_EQ(*pixels, partOf(*image.bitmap(), part)) << name;
        EXPECT_EQ(cut.bitmap(), pixels) << "decoded once while it is held";
        EXPECT_EQ(cut.source()->isKnownOpaque(), image.source()->isKnownOpaque());
    }
}

TEST(CroppingTest, cutOfAHeldPictureIsTakenFromIt) {
    const Image image = photograph();
    const SharedBitmap whole = image.bitmap();
    EXPECT_EQ(*croppedImage(image, {100, 200, 300, 400}).bitmap(), partOf(*whole, {100, 200, 300, 400}));
}

TEST(CroppingTest, cutIsReducedWhileItIsDecodedWhereThatCutsNoPixel) {
    const Image image = photograph();
    const PixelSize whole = image.pixelSize();
    const Image cut = croppedImage(image, {200, 0, whole.height, whole.height});
    const SharedBitmap half = cut.source()->bitmapOfAtLeast({whole.height / 2, whole.height / 2});
    ASSERT_TRUE(half);
    EXPECT_EQ(half->size(), (PixelSize{whole.height / 2, whole.height / 2}));
    const Bitmap expected = partOf(*image.source()->bitmapOfAtLeast({whole.width / 2, whole.height / 2}),
                                   {100, 0, half->width(), half->height()});
    EXPECT_EQ(*half, expected);
    // Column 201 lies between pixels of any reduction.
    const Image odd = croppedImage(image, {201, 0, whole.height, whole.height});
    EXPECT_EQ(odd.source()->bitmapOfAtLeast({10, 10})->size(), odd.pixelSize());
}

TEST(CroppingTest, damagedPictureIsRefusedWhereverItIsCut) {
    const Image image = imageFromBytes(testing::fixture("truncated-in-the-scan.jpg")).value();
    const Image cut = croppedImage(image, {0, 0, 8, 1});
    EXPECT_EQ(cut.bitmap(), nullptr);
    EXPECT_EQ(cut.source()->failure(), "truncated JPEG");
}

TEST(CroppingTest, turnedPhotographIsCutAsItStandsUpright) {
    const std::filesystem::path folder = testing::corpora() / "exif-orientation";
    if (!std::filesystem::exists(folder)) {
        GTEST_SKIP() << "no pictures of every orientation";
    }
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const Image image =
            imageFromBytes(testing::readWhole(folder / ("Landscape_" + std::to_string(orientation) + ".jpg"))).value();
        const PixelRect part{40, 80, 300, 200};
        const SharedBitmap pixels = croppedImage(image, part).bitmap();
        ASSERT_TRUE(pixels);
        EXPECT_EQ(*pixels, partOf(*image.bitmap(), part)) << orientation;
    }
}

TEST(CroppingTest, wholePictureIsHandedBackItself) {
    const Image image = Image::fromBitmap(Bitmap(PixelSize{4, 3}));
    EXPECT_EQ(croppedImage(image, {0, 0, 4, 3}), image);
}

TEST(CroppingTest, rectangleOutsideGivesNoPicture) {
    EXPECT_FALSE(croppedImage(Image::fromBitmap(Bitmap(PixelSize{4, 3})), {2, 2, 3, 3}));
}

} // namespace
} // namespace quillomat
