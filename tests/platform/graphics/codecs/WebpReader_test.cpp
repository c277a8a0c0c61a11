#include "TestPictures.h"

#include <webp/encode.h>

namespace quillomat::testing {
namespace {

void expectQuarters(const char* name) {
    const Result<Bitmap> decoded = decodeImage(fixture(name));
    ASSERT_TRUE(decoded) << name << ": " << decoded.reason();
    ASSERT_EQ(decoded->size(), (PixelSize{64, 48})) << name;
    EXPECT_EQ(pixelAt(*decoded, 12, 12), (Rgba{230, 40, 40, 255})) << name;
    EXPECT_EQ(pixelAt(*decoded, 50, 12), (Rgba{40, 200, 60, 255})) << name;
    EXPECT_EQ(pixelAt(*decoded, 12, 36), (Rgba{40, 60, 220, 255})) << name;
    EXPECT_EQ(pixelAt(*decoded, 50, 36), (Rgba{240, 240, 240, 255})) << name;
}

Bytes encoded(const std::vector<std::uint8_t>& rgba, int width, int height) {
    std::uint8_t* out = nullptr;
    const std::size_t length = WebPEncodeLosslessRGBA(rgba.data(), width, height, width * 4, &out);
    const auto* begin = reinterpret_cast<const std::byte*>(out);
    Bytes bytes(begin, begin + length);
    WebPFree(out);
    return bytes;
}

TEST(WebpReader, losslessPictureIsExact) {
    expectQuarters("quarters.webp");
    const Result<ImageHeader> header = readImageHeader(fixture("quarters.webp"));
    ASSERT_TRUE(header);
    EXPECT_EQ(header->format, ImageFormat::webp);
    EXPECT_TRUE(header->isKnownOpaque);
}

TEST(WebpReader, firstFrameOfAnAnimationIsShown) {
    expectQuarters("animated.webp");
}

TEST(WebpReader, exifOrientationIsAppliedWithAndWithoutItsHeader) {
    for (const char* name : {"turned-exif-with-header.webp", "turned-exif-without-header.webp"}) {
        EXPECT_EQ(readImageHeader(fixture(name))->size, (PixelSize{64, 48}));
        expectQuarters(name);
    }
}

TEST(WebpReader, transparencyIsPremultiplied) {
    const Bytes bytes = encoded({200, 100, 50, 51, 1, 2, 3, 255}, 2, 1);
    const Result<Bitmap> decoded = decodeImage(bytes);
    ASSERT_TRUE(decoded) << decoded.reason();
    EXPECT_EQ(pixelAt(*decoded, 0, 0), (Rgba{40, 20, 10, 51}));
    EXPECT_EQ(pixelAt(*decoded, 1, 0), (Rgba{1, 2, 3, 255}));
    EXPECT_FALSE(readImageHeader(bytes)->isKnownOpaque);
}

TEST(WebpReader, pictureThatClaimsToBeOpaqueIs) {
    const Bytes bytes = fixture("claims-to-be-opaque.webp");
    EXPECT_TRUE(readImageHeader(bytes)->isKnownOpaque);
    const Result<Bitmap> decoded = decodeImage(bytes);
    ASSERT_TRUE(decoded) << decoded.reason();
    EXPECT_TRUE(decoded->isOpaque());
}

TEST(WebpReader, embeddedProfileIsConverted) {
    const Result<Bitmap> decoded = decodeImage(fixture("quarters-display-p3.webp"));
    ASSERT_TRUE(decoded) << decoded.reason();
    // (40, 60, 220) in Display P3 by its definition.
    EXPECT_LE(largestDifference(pixelAt(*decoded, 12, 36), {34, 61, 229, 255}), 1);
    EXPECT_LE(largestDifference(pixelAt(*decoded, 50, 36), {240, 240, 240, 255}), 1);
}

TEST(WebpReader, everyCutIsRefused) {
    EXPECT_EQ(decodeImage(fixture("truncated.webp")).reason(), "truncated WebP");
    for (const char* name : {"quarters.webp", "animated.webp", "quarters-display-p3.webp"}) {
        const Bytes whole = fixture(name);
        for (std::size_t length = 0; length < whole.size(); ++length) {
            EXPECT_FALSE(decodeImage(std::span(whole).first(length))) << name << " " << length;
        }
    }
}

TEST(WebpReader, limitsHoldFromTheHeader) {
    ImageLimits tight;
    tight.side = 50;
    EXPECT_EQ(readImageHeader(fixture("quarters.webp"), tight).reason(),
              "picture of 64 x 48 pixels is over the limit of 50 a side");
    EXPECT_FALSE(decodeImage(fixture("quarters.webp"), tight));
}

TEST(WebpReader, reducedDecodingKeepsTheProportions) {
    const Result<Bitmap> decoded = decodeImageReduced(fixture("quarters.webp"), {16, 2});
    ASSERT_TRUE(decoded) << decoded.reason();
    EXPECT_EQ(decoded->size(), (PixelSize{16, 12}));
    EXPECT_LE(largestDifference(pixelAt(*decoded, 2, 2), {230, 40, 40, 255}), 1);
}

} // namespace
} // namespace quillomat::testing
