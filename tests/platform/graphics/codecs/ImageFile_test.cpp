#include "TestPictures.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
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
    ASSERT_TRUE(image->source()->document());
    EXPECT_EQ(*image->source()->document(), document);
    EXPECT_EQ(image->source()->documentKey().length, document.size());
}

TEST(ImageFile, sourceKeepsItsPixelsOnlyWhileSomebodyHoldsThem) {
    const Result<Image> image = imageFromBytes(fixture("quarters.jpg"));
    ASSERT_TRUE(image);
    SharedBitmap pixels = image->bitmap();
    ASSERT_TRUE(pixels);
    EXPECT_EQ(image->bitmap(), pixels);
    const Bitmap copy = *pixels;
    const std::weak_ptr<const Bitmap> watched = pixels;
    pixels.reset();
    EXPECT_TRUE(watched.expired());
    ASSERT_TRUE(image->bitmap());
    EXPECT_EQ(*image->bitmap(), copy);
}

TEST(ImageFile, oneChangedByteMakesAnotherDocument) {
    Bytes document = tinyPng(1, 1);
    const DocumentKey key = imageFromBytes(document)->source()->documentKey();
    EXPECT_EQ(imageFromBytes(document)->source()->documentKey(), key);
    document.back() ^= std::byte{1};
    EXPECT_NE(imageFromBytes(document)->source()->documentKey(), key);
    EXPECT_TRUE(Image::fromBitmap(Bitmap({1, 1})).source()->documentKey().isEmpty());
}

/// A picture in a file of its own.
class FilePicture : public ::testing::Test {
protected:
    void SetUp() override { put(fixture("quarters.jpg")); }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    void put(const Bytes& bytes) { ASSERT_TRUE(files.write(path, bytes)); }
    [[nodiscard]] Image open() const { return imageReadWhenDrawn(files, path).value(); }

    SystemFileManager files;

private:
    std::filesystem::path folder_ = makeFolder();
    static std::filesystem::path makeFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "quillomat-picture-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        return name;
    }

protected:
    std::string path = (folder_ / "picture").string();
};

TEST_F(FilePicture, isReadAgainWheneverItIsWanted) {
    const Image image = open();
    EXPECT_EQ(image.pixelSize(), (PixelSize{64, 48}));
    EXPECT_TRUE(image.source()->isKnownOpaque());
    EXPECT_EQ(*image.bitmap(), *imageFromFile(files, path)->bitmap());
    EXPECT_EQ(*image.source()->document(), fixture("quarters.jpg"));
    EXPECT_EQ(image.source()->failure(), "");
}

TEST_F(FilePicture, thatIsGoneHasNoPixelsAndSaysWhy) {
    const Image image = open();
    std::filesystem::remove(path);
    EXPECT_EQ(image.bitmap(), nullptr);
    EXPECT_EQ(image.source()->document(), nullptr);
    EXPECT_EQ(image.source()->failure(), "the file is gone");
    EXPECT_EQ(image.pixelSize(), (PixelSize{64, 48}));
}

TEST_F(FilePicture, neverBecomesAnother) {
    const Image image = open();
    Bytes other = fixture("quarters.jpg");
    other[other.size() - 3] ^= std::byte{1}; // as long as before
    put(other);
    EXPECT_EQ(image.bitmap(), nullptr);
    EXPECT_EQ(image.source()->bitmapOfAtLeast({8, 6}), nullptr);
    EXPECT_EQ(image.source()->document(), nullptr);
    EXPECT_EQ(image.source()->failure(), "the file holds another picture now");
    put(tinyPng(3, 3));
    EXPECT_EQ(image.bitmap(), nullptr);
    put(Bytes(100000));
    EXPECT_EQ(image.bitmap(), nullptr);
    EXPECT_EQ(image.source()->failure(), "larger than " + std::to_string(fixture("quarters.jpg").size()) + " bytes");
}

TEST_F(FilePicture, comesBackWithItsBytes) {
    const Image image = open();
    std::filesystem::remove(path);
    EXPECT_EQ(image.bitmap(), nullptr);
    put(fixture("quarters.jpg"));
    EXPECT_NE(image.bitmap(), nullptr);
    EXPECT_EQ(image.source()->failure(), "");
}

TEST_F(FilePicture, keepsPixelsThatAreHeldWhenTheFileGoes) {
    const Image image = open();
    const SharedBitmap pixels = image.bitmap();
    std::filesystem::remove(path);
    EXPECT_EQ(image.bitmap(), pixels);
}

TEST_F(FilePicture, heldInMemoryNoLongerNeedsItsFile) {
    const Image held = heldInMemory(Image(open().source(), 2));
    const Image late = open();
    std::filesystem::remove(path);
    EXPECT_EQ(held.scale(), 2);
    ASSERT_TRUE(held.bitmap());
    EXPECT_EQ(held.source()->documentKey(), late.source()->documentKey());
    EXPECT_FALSE(heldInMemory(late));
    EXPECT_EQ(heldInMemory(held), held);
    EXPECT_FALSE(heldInMemory(Image()));
}

TEST_F(FilePicture, openedToBeWorkedWithNeverNeedsItsFileAgain) {
    const Result<Image> image = imageFromFile(files, path);
    std::filesystem::remove(path);
    ASSERT_TRUE(image);
    EXPECT_NE(image->bitmap(), nullptr);
}

TEST(ImageFile, damagedPictureReadWhenDrawnKeepsItsReason) {
    const SystemFileManager files;
    const Result<Image> image = imageReadWhenDrawn(files, fixturePath("truncated-in-the-scan.jpg"));
    ASSERT_TRUE(image) << image.reason();
    EXPECT_EQ(image->bitmap(), nullptr);
    EXPECT_EQ(image->source()->failure(), "truncated JPEG");
    EXPECT_FALSE(imageReadWhenDrawn(files, "/nowhere/at/all.png"));
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
