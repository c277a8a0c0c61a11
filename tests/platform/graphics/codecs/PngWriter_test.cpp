#include "TestPictures.h"
#include "platform/graphics/PngWriter.h"

#include <png.h>

#include <random>
#include <string_view>

namespace quillomat::testing {
namespace {

std::uint8_t colorTypeOf(const Bytes& png) {
    return std::to_integer<std::uint8_t>(png.at(25));
}

/// What libpng reads: straight RGBA, whatever the file holds.
std::vector<std::uint8_t> readByLibpng(const Bytes& png) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&image, png.data(), png.size()), 0) << image.message;
    image.format = PNG_FORMAT_RGBA;
    std::vector<std::uint8_t> pixels(PNG_IMAGE_SIZE(image));
    EXPECT_NE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr), 0) << image.message;
    EXPECT_EQ(image.warning_or_error, 0U) << image.message;
    return pixels;
}

/// Noise over slopes, so that every row filter has its turn; premultiplied.
Bitmap sample(int width, int height, bool opaque, unsigned seed) {
    std::mt19937 random(seed);
    Bitmap bitmap(PixelSize{width, height});
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const unsigned alpha = opaque ? 255 : (x * 7 + y) % 5 == 0 ? random() % 256 : x % 3 == 0 ? 0 : 255;
            std::uint8_t* p = bitmap.row(y) + static_cast<std::ptrdiff_t>(x) * 4;
            for (int c = 0; c < 3; ++c) {
                const unsigned value = (static_cast<unsigned>(x * (c + 1) + y) + random() % 4) % 256;
                p[c] = static_cast<std::uint8_t>((value * alpha + 127) / 255);
            }
            p[3] = static_cast<std::uint8_t>(alpha);
        }
    }
    return bitmap;
}

TEST(PngWriter, whatLibpngReadsIsWhatWasWritten) {
    for (const PngEffort effort : {PngEffort::fast, PngEffort::best}) {
        for (const bool opaque : {true, false}) {
            for (const PixelSize size : {PixelSize{1, 1}, PixelSize{3, 200}, PixelSize{257, 65}, PixelSize{640, 300}}) {
                const Bitmap bitmap = sample(size.width, size.height, opaque, 7);
                const Result<Bytes> png = encodePng(bitmap, effort);
                ASSERT_TRUE(png) << png.reason();
                const std::vector<std::uint8_t> straight = readByLibpng(*png);
                ASSERT_EQ(straight.size(), bitmap.bytes().size());
                for (std::size_t i = 0; i < straight.size(); ++i) {
                    const unsigned alpha = bitmap.bytes()[i / 4 * 4 + 3];
                    const unsigned value = bitmap.bytes()[i];
                    const unsigned expected = i % 4 == 3   ? alpha
                                              : alpha == 0 ? 0
                                                           : std::min(255U, (value * 255 + alpha / 2) / alpha);
                    ASSERT_EQ(straight[i], expected) << i;
                }
            }
        }
    }
}

TEST(PngWriter, writingAndReadingGivesTheSamePixels) {
    for (const bool opaque : {true, false}) {
        const Bitmap bitmap = sample(301, 203, opaque, 11);
        const Result<Bytes> png = encodePng(bitmap);
        ASSERT_TRUE(png);
        const Result<Bitmap> back = decodeImage(*png);
        ASSERT_TRUE(back) << back.reason();
        EXPECT_EQ(*back, bitmap);
    }
}

TEST(PngWriter, opaquePicturesAreRgbAndOthersRgba) {
    EXPECT_EQ(colorTypeOf(*encodePng(sample(9, 9, true, 1))), 2);
    EXPECT_EQ(colorTypeOf(*encodePng(sample(9, 9, false, 1))), 6);
}

TEST(PngWriter, fileIsTaggedSrgbRightBehindItsHeader) {
    const Bytes png = *encodePng(sample(2, 2, true, 1));
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(png.data()) + 37, 4), "sRGB");
}

TEST(PngWriter, pictureWithoutPixelsIsNotWritten) {
    EXPECT_FALSE(encodePng(Bitmap()));
    EXPECT_FALSE(encodePng(Image()));
}

TEST(PngWriter, pictureThatCannotBeDecodedSaysWhy) {
    Bytes broken = tinyPng(2, 2);
    broken.resize(broken.size() - 14);
    const Result<Image> image = imageFromBytes(broken);
    ASSERT_TRUE(image) << image.reason();
    const Result<Bytes> png = encodePng(*image);
    ASSERT_FALSE(png);
    EXPECT_EQ(png.reason(), "truncated PNG");
}

} // namespace
} // namespace quillomat::testing
