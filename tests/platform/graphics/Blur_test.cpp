#include "platform/graphics/Blur.h"

#include "DrawnPictures.h"
#include "PictureComparison.h"

#include <gtest/gtest.h>

namespace quillomat {
namespace {

/// The convolution itself, both directions at once, in double, out to ten deviations.
Bitmap exactGaussian(const Bitmap& source, double deviation) {
    const int reach = static_cast<int>(deviation * 10);
    std::vector<double> weights(static_cast<std::size_t>(2 * reach + 1));
    double sum = 0;
    for (int i = -reach; i <= reach; ++i) {
        sum += weights[static_cast<std::size_t>(i + reach)] = std::exp(-i * i / (2 * deviation * deviation));
    }
    Bitmap result(source.size());
    for (int y = 0; y < source.height(); ++y) {
        for (int x = 0; x < source.width(); ++x) {
            double channels[4] = {};
            for (int j = -reach; j <= reach; ++j) {
                for (int i = -reach; i <= reach; ++i) {
                    const std::uint8_t* pixel = source.row(std::clamp(y + j, 0, source.height() - 1)) +
                                                std::clamp(x + i, 0, source.width() - 1) * 4;
                    const double weight =
                        weights[static_cast<std::size_t>(i + reach)] * weights[static_cast<std::size_t>(j + reach)];
                    for (int c = 0; c < 4; ++c) {
                        channels[c] += pixel[c] * weight;
                    }
                }
            }
            for (int c = 0; c < 4; ++c) {
                result.row(y)[x * 4 + c] = static_cast<std::uint8_t>(channels[c] / (sum * sum) + 0.5);
            }
        }
    }
    return result;
}

TEST(Blur, isWithinOneLevelOfTheExactGaussian) {
    for (const bool opaque : {true, false}) {
        const Bitmap source = screenshotLike({61, 47}, opaque);
        const Image blurred = gaussianBlurClamped(Image::fromBitmap(source), 4);
        EXPECT_TRUE(picturesAgree(exactGaussian(source, 4), *blurred.bitmap(), {1, 0, 0.02, 50}));
    }
}

TEST(Blur, edgesAreNotDarkened) {
    Bitmap white({50, 40});
    std::fill(white.bytes().begin(), white.bytes().end(), std::uint8_t{255});
    EXPECT_EQ(*gaussianBlurClamped(Image::fromBitmap(white), 4).bitmap(), white);
}

TEST(Blur, keepsThePixelSizeAtScaleOne) {
    const Image blurred = gaussianBlurClamped(Image::fromBitmap(screenshotLike({30, 20}), 2), 4);
    EXPECT_EQ(blurred.pixelSize(), (PixelSize{30, 20}));
    EXPECT_EQ(blurred.scale(), 1);
}

TEST(Blur, withoutRadiusOrPictureNothingHappens) {
    const Image image = Image::fromBitmap(screenshotLike({5, 5}));
    EXPECT_EQ(gaussianBlurClamped(image, 0), image);
    EXPECT_EQ(gaussianBlurClamped(image, -1), image);
    EXPECT_FALSE(gaussianBlurClamped({}, 4));
}

TEST(Blur, picturesSmallerThanTheKernelBecomeTheirMiddle) {
    EXPECT_EQ(gaussianBlurClamped(Image::fromBitmap(screenshotLike({1, 1})), 4).pixelSize(), (PixelSize{1, 1}));
    const Image wide = gaussianBlurClamped(Image::fromBitmap(screenshotLike({3, 2})), 1e300);
    EXPECT_EQ(wide.pixelSize(), (PixelSize{3, 2}));
}

} // namespace
} // namespace quillomat
