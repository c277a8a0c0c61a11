#include "TestPictures.h"

#include <thread>

namespace quillomat::testing {
namespace {

std::span<const std::byte> textBytes(std::string_view text) {
    return std::as_bytes(std::span(text));
}

TEST(ImageFile, formatIsRecognisedByContent) {
    EXPECT_EQ(readImageHeader(fixture("quarters.jpg"))->format, ImageFormat::jpeg);
    EXPECT_EQ(readImageHeader(fixture("quarters.webp"))->format, ImageFormat::webp);
    EXPECT_EQ(readImageHeader(fixture("quarters.avif"))->format, ImageFormat::heif);
    EXPECT_EQ(readImageHeader(tinyPng(1, 1))->format, ImageFormat::png);
}

TEST(ImageFile, whatIsNoPictureIsRefusedInWords) {
    EXPECT_EQ(readImageHeader({}).reason(), "empty file");
    EXPECT_EQ(decodeImage(textBytes("{\"a\": 1}")).reason(), "not a picture of a known format");
    EXPECT_EQ(readImageHeader(textBytes("GIF89a......")).reason(), "not a picture of a known format");
    EXPECT_EQ(readImageHeader(textBytes("\x89PN")).reason(), "not a picture of a known format");
}

TEST(ImageFile, sourceKnowsItsSizeBeforeItIsDecoded) {
    const Result<Image> image = imageFromBytes(fixture("quarters.jpg"));
    ASSERT_TRUE(image) << image.reason();
    EXPECT_EQ(image->pixelSize(), (PixelSize{64, 48}));
    EXPECT_TRUE(image->source()->isKnownOpaque());
    EXPECT_EQ(image->source()->failure(), "");
}

TEST(ImageFile, sourceIsDecodedOnceWhoeverAsks) {
    const Result<Image> image = imageFromBytes(fixture("quarters.jpg"));
    ASSERT_TRUE(image);
    std::array<SharedBitmap, 8> seen;
    std::vector<std::thread> threads;
    for (SharedBitmap& bitmap : seen) {
        threads.emplace_back([&] { bitmap = image->bitmap(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    ASSERT_TRUE(seen[0]);
    for (const SharedBitmap& bitmap : seen) {
        EXPECT_EQ(bitmap, seen[0]);
    }
}

TEST(ImageFile, failedDecodingKeepsItsReason) {
    const Result<Image> image = imageFromBytes(fixture("truncated-in-the-scan.jpg"));
    ASSERT_TRUE(image) << image.reason();
    EXPECT_EQ(image->bitmap(), nullptr);
    EXPECT_EQ(image->source()->failure(), "truncated JPEG");
    EXPECT_EQ(image->bitmap(), nullptr);
}

TEST(ImageFile, sourceHandsOutItsDocument) {
    const Bytes document = fixture("quarters.jpg");
    const Result<Image> image = imageFromBytes(document);
    ASSERT_TRUE(image);
    ASSERT_TRUE(image->bitmap());
    const std::span<const std::byte> handed = image->source()->encodedBytes();
    EXPECT_EQ(Bytes(handed.begin(), handed.end()), document);
}

TEST(ImageFile, missingFileIsNoPicture) {
    const SystemFileManager files;
    EXPECT_FALSE(imageFromFile(files, "/nowhere/at/all.png"));
}

TEST(ImageFile, formatsHaveNames) {
    EXPECT_EQ(describeFormat(ImageFormat::png), "PNG");
    EXPECT_EQ(describeFormat(ImageFormat::jpeg), "JPEG");
    EXPECT_EQ(describeFormat(ImageFormat::webp), "WebP");
    EXPECT_EQ(describeFormat(ImageFormat::heif), "HEIF");
}

} // namespace
} // namespace quillomat::testing
