#include "hosts/qt/Crop.h"

#include <gtest/gtest.h>

#include <limits>

namespace quillomat {
namespace {

Image picture(int width, int height) {
    return Image::fromBitmap(Bitmap({width, height}));
}

TEST(Crop, startsWithTheLargestRectangleOfTheShape) {
    const Crop crop(picture(401, 300), {3, 4}, {});
    EXPECT_EQ(crop.rect(), centredCrop({401, 300}, {3, 4}));
}

TEST(Crop, neverLeavesThePicture) {
    Crop crop(picture(1000, 700), {1, 1}, {});
    for (int step = 0; step < 400; ++step) {
        crop.zoom(step % 3 == 0 ? 1.3 : 0.9, (step % 7) / 6.0, (step % 5) / 4.0);
        crop.move((step % 11 - 5) * 0.4, (step % 13 - 6) * 0.4);
        ASSERT_TRUE(liesInside(crop.rect(), {1000, 700})) << "step " << step;
    }
}

TEST(Crop, movedByAWindowsWidthShowsTheNeighbour) {
    Crop crop(picture(3000, 1000), {1, 1}, {});
    crop.move(-1, 0);
    EXPECT_EQ(crop.rect(), (PixelRect{2000, 0, 1000, 1000}));
    crop.move(5, 0);
    EXPECT_EQ(crop.rect(), (PixelRect{0, 0, 1000, 1000}));
}

TEST(Crop, zoomKeepsThePointUnderTheFinger) {
    Crop crop(picture(1000, 1000), {1, 1}, {});
    crop.zoom(2, 0, 0);
    EXPECT_EQ(crop.rect(), (PixelRect{0, 0, 500, 500}));
    crop.zoom(0.5, 0, 0);
    crop.zoom(2, 1, 1);
    EXPECT_EQ(crop.rect(), (PixelRect{500, 500, 500, 500}));
}

TEST(Crop, zoomOutEndsWithTheLargestRectangle) {
    Crop crop(picture(1000, 500), {1, 1}, {});
    crop.zoom(4);
    crop.zoom(0.001);
    EXPECT_EQ(crop.rect().width, 500);
    crop.zoom(-3);
    crop.zoom(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(crop.rect().width, 500);
}

TEST(Crop, tinyPictureIsNotMagnified) {
    Crop crop(picture(2, 1), {1, 1}, {});
    crop.zoom(100);
    EXPECT_EQ(crop.rect(), (PixelRect{0, 0, 1, 1}));
}

} // namespace
} // namespace quillomat
