#include "platform/graphics/Cropping.h"

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

TEST(CroppingTest, wholePictureIsHandedBackItself) {
    const Image image = Image::fromBitmap(Bitmap(PixelSize{4, 3}));
    EXPECT_EQ(croppedImage(image, {0, 0, 4, 3}), image);
}

TEST(CroppingTest, rectangleOutsideGivesNoPicture) {
    EXPECT_FALSE(croppedImage(Image::fromBitmap(Bitmap(PixelSize{4, 3})), {2, 2, 3, 3}));
}

} // namespace
} // namespace quillomat
