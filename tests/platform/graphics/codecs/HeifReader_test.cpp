#include "TestPictures.h"

namespace quillomat::testing {
namespace {

constexpr Rgba red{230, 40, 40, 255};
constexpr Rgba green{40, 200, 60, 255};
constexpr Rgba blue{40, 60, 220, 255};
constexpr Rgba white{240, 240, 240, 255};
constexpr int lossy = 4;

/// The colours in the middle of the four quarters, row by row.
void expectColors(const char* name, const std::array<Rgba, 4>& expected) {
    const Result<Bitmap> decoded = decodeImage(fixture(name));
    ASSERT_TRUE(decoded) << name << ": " << decoded.reason();
    EXPECT_EQ(readImageHeader(fixture(name))->size, decoded->size()) << name;
    const int right = decoded->width() * 3 / 4;
    const int bottom = decoded->height() * 3 / 4;
    const int left = decoded->width() / 4;
    const int top = decoded->height() / 4;
    EXPECT_LE(largestDifference(pixelAt(*decoded, left, top), expected[0]), lossy) << name;
    EXPECT_LE(largestDifference(pixelAt(*decoded, right, top), expected[1]), lossy) << name;
    EXPECT_LE(largestDifference(pixelAt(*decoded, left, bottom), expected[2]), lossy) << name;
    EXPECT_LE(largestDifference(pixelAt(*decoded, right, bottom), expected[3]), lossy) << name;
}

TEST(HeifReader, picturesOfBothCodecsAreDecoded) {
    expectColors("quarters.heic", {red, green, blue, white});
    expectColors("quarters.avif", {red, green, blue, white});
    const Result<ImageHeader> header = readImageHeader(fixture("quarters.heic"));
    ASSERT_TRUE(header);
    EXPECT_EQ(header->format, ImageFormat::heif);
    EXPECT_EQ(header->size, (PixelSize{64, 48}));
    EXPECT_TRUE(header->isKnownOpaque);
}

TEST(HeifReader, turnsAndMirrorsOfTheContainerAreApplied) {
    EXPECT_EQ(readImageHeader(fixture("quarters-turned.heic"))->size, (PixelSize{48, 64}));
    expectColors("quarters-turned.heic", {green, white, red, blue});
    expectColors("quarters-mirrored.heic", {green, red, white, blue});
}

TEST(HeifReader, exifOrientationIsNotAppliedAgain) {
    expectColors("quarters-with-exif-orientation.heic", {red, green, blue, white});
}

TEST(HeifReader, embeddedProfileIsConverted) {
    expectColors("quarters-display-p3.heic",
                 {Rgba{251, 0, 18, 255}, Rgba{0, 204, 12, 255}, Rgba{34, 61, 229, 255}, white});
}

TEST(HeifReader, primariesWithoutAProfileAreConverted) {
    expectColors("quarters-display-p3-primaries.avif",
                 {Rgba{251, 0, 18, 255}, Rgba{0, 204, 12, 255}, Rgba{34, 61, 229, 255}, white});
}

TEST(HeifReader, transparencyIsPremultiplied) {
    expectColors("quarters-half-transparent.heic",
                 {Rgba{115, 20, 20, 128}, Rgba{20, 100, 30, 128}, Rgba{20, 30, 110, 128}, Rgba{120, 120, 120, 128}});
    EXPECT_FALSE(readImageHeader(fixture("quarters-half-transparent.heic"))->isKnownOpaque);
}

TEST(HeifReader, everyCutIsRefused) {
    EXPECT_EQ(decodeImage(fixture("truncated.heic")).reason(), "truncated HEIF");
    for (const char* name : {"quarters.heic", "quarters.avif"}) {
        const Bytes whole = fixture(name);
        for (std::size_t length = 0; length < whole.size(); ++length) {
            EXPECT_FALSE(decodeImage(std::span(whole).first(length))) << name << " " << length;
        }
    }
}

TEST(HeifReader, limitsHoldFromTheHeader) {
    ImageLimits tight;
    tight.pixels = 1000;
    EXPECT_EQ(readImageHeader(fixture("quarters.heic"), tight).reason(),
              "picture of 64 x 48 pixels is over the limit of 1000 pixels");
    EXPECT_FALSE(decodeImage(fixture("quarters.heic"), tight));
}

} // namespace
} // namespace quillomat::testing
