#include "DrawnPictures.h"
#include "JpegDocuments.h"
#include "TemporaryFolder.h"
#include "TestPictures.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/PngWriter.h"

#include <png.h>

#include <cmath>
#include <optional>
#include <random>
#include <string_view>

#include <fcntl.h>

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

TEST(PngWriter, bytesDoNotDependOnTheNumberOfThreads) {
    for (const PngEffort effort : {PngEffort::fast, PngEffort::best}) {
        for (const bool opaque : {true, false}) {
            const Bitmap bitmap = effort == PngEffort::best
                                      ? sample(500, 900, opaque, 3)
                                      : sample(1700, 900, opaque, 3); // several bands, the last one short
            const Bytes alone = *encodePng(bitmap, effort, 1);
            EXPECT_EQ(*encodePng(bitmap, effort, 2), alone);
            if (effort == PngEffort::fast) {
                EXPECT_EQ(*encodePng(bitmap, effort, 7), alone);
                EXPECT_EQ(*encodePng(bitmap, effort), alone);
            }
            EXPECT_EQ(*decodeImage(alone), bitmap);
        }
    }
}

/// The size of the file that libpng makes of an opaque picture at a compression level, with its default filters.
std::size_t sizeByLibpng(const Bitmap& bitmap, int level) {
    std::size_t size = 0;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &size,
        [](png_structp p, png_bytep, std::size_t count) { *static_cast<std::size_t*>(png_get_io_ptr(p)) += count; },
        nullptr);
    png_set_IHDR(png, info, static_cast<png_uint_32>(bitmap.width()), static_cast<png_uint_32>(bitmap.height()), 8,
                 PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, level);
    png_write_info(png, info);
    png_set_filler(png, 0, PNG_FILLER_AFTER);
    for (int y = 0; y < bitmap.height(); ++y) {
        png_write_row(png, bitmap.row(y));
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return size;
}

TEST(PngWriter, filesAreNoLargerThanThoseOfLibpng) {
    const std::filesystem::path folder = std::filesystem::path(QUILLOMAT_SOURCE_DIR) / "resources/samples";
    for (const char* name : {"background.jpg", "screenshot.png"}) {
        const Result<Bitmap> whole = decodeImage(readWhole(folder / name));
        ASSERT_TRUE(whole) << name << ": " << whole.reason();
        // A part of it, or libpng takes many seconds.
        std::optional<Bitmap> bitmap(std::in_place, PixelSize{whole->width(), 200});
        std::copy_n(whole->row(400), bitmap->bytes().size(), bitmap->row(0));
        EXPECT_LE(encodePng(*bitmap, PngEffort::fast)->size(), sizeByLibpng(*bitmap, 1)) << name;
        EXPECT_LE(encodePng(*bitmap, PngEffort::best)->size(), sizeByLibpng(*bitmap, 9)) << name;
    }
}

/// Three channels of slopes and noise of a few levels, as a photograph's out of a camera.
Bitmap noisySlopes(PixelSize size) {
    std::mt19937 random(5);
    std::normal_distribution<float> noise(0, 2.5F);
    Bitmap bitmap(size);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            std::uint8_t* p = bitmap.row(y) + static_cast<std::ptrdiff_t>(x) * 4;
            for (int c = 0; c < 3; ++c) {
                p[c] = static_cast<std::uint8_t>(128 + x / (9 + c) % 64 - y / 7 % 32 + std::lround(noise(random)));
            }
            p[3] = 255;
        }
    }
    return bitmap;
}

TEST(PngWriter, noiseIsNotWrittenAsReferencesToWhatIsAlikeByChance) {
    const Bitmap noise = noisySlopes({1200, 200});
    EXPECT_LT(encodePng(noise)->size() * 100, sizeByLibpng(noise, 1) * 88);
}

TEST(PngWriter, rowsThatRepeatTheOneAboveHaveAFilterOfTheirOwn) {
    // As of a screen drawn at half its size and doubled.
    const Bitmap noise = noisySlopes({1200, 200});
    for (const int phase : {0, 1}) {
        Bitmap doubled(noise.size());
        for (int y = 0; y < doubled.height(); ++y) {
            std::copy_n(noise.row((y + phase) / 2), doubled.stride(), doubled.row(y));
        }
        const std::size_t once = encodePng(noise)->size();
        EXPECT_LT(encodePng(doubled)->size() * 100, once * 62) << phase;
        EXPECT_LE(encodePng(doubled)->size(), sizeByLibpng(doubled, 1)) << phase;
    }
}

TEST(PngWriter, theBestFilesAreNoLargerThanLibpngsBest) {
    // Of each kind a part: type, photographs, screens with both, drawn frames; libpng takes seconds for the whole.
    const std::filesystem::path root(QUILLOMAT_SOURCE_DIR);
    for (const char* name : {"resources/samples/screenshot.png", "resources/samples/screenshot-2.png",
                             "resources/samples/screenshot-tablet.png", "resources/samples/screenshot-wide.png",
                             "resources/samples/background.jpg", "resources/images/row-walls.png",
                             "resources/images/laptop.png", "resources/images/watch-glare.png"}) {
        const Result<Bitmap> whole = decodeImage(readWhole(root / name));
        ASSERT_TRUE(whole) << name << ": " << whole.reason();
        Bitmap opaque(PixelSize{whole->width(), std::min(whole->height(), 400)});
        const int top = (whole->height() - opaque.height()) / 2;
        std::copy_n(whole->row(top), opaque.bytes().size(), opaque.row(0));
        for (std::size_t i = 3; i < opaque.bytes().size(); i += 4) {
            opaque.bytes()[i] = 255;
        }
        EXPECT_LE(encodePng(opaque, PngEffort::best)->size(), sizeByLibpng(opaque, 9)) << name;
    }
}

TEST(PngWriter, noiseIsHardlyLargerThanItsPixels) {
    std::mt19937 random(5);
    Bitmap noise(PixelSize{400, 400});
    for (std::size_t i = 0; i < noise.bytes().size(); ++i) {
        noise.bytes()[i] = i % 4 == 3 ? 255 : static_cast<std::uint8_t>(random());
    }
    for (const PngEffort effort : {PngEffort::fast, PngEffort::best}) {
        const Bytes png = *encodePng(noise, effort);
        EXPECT_LT(png.size(), std::size_t{400} * 400 * 3 * 101 / 100 + 1000);
        EXPECT_EQ(*decodeImage(png), noise);
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

TEST(PngWriter, documentOfARecordingHasItsPixelsAndLetsGoOfWhatWasDrawn) {
    auto drawn = std::make_shared<const Bitmap>(sample(40, 30, false, 5));
    const std::weak_ptr<const Bitmap> watched = drawn;
    Image document;
    Bitmap expected;
    {
        BitmapContext context({40, 30}, 1);
        context.drawImage(Image::fromBitmap(std::move(drawn)), makeRect(3, 4, 20, 20));
        const Image image = context.makeImage();
        expected = *image.bitmap();
        const Result<Image> made = asPngDocument(image);
        ASSERT_TRUE(made) << made.reason();
        document = *made;
        ASSERT_TRUE(document.source()->document());
        EXPECT_EQ(*document.source()->document(), encodePng(image).value());
    }
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(*document.bitmap(), expected);
    EXPECT_EQ(*asPngDocument(document), document) << "it is one already";
    EXPECT_FALSE(asPngDocument(Image()));
}

class PngDraftTest : public ::testing::Test {
protected:
    [[nodiscard]] DraftMaker intoFile() const {
        return [path = path] { return FileDraft::begin(path); };
    }
    [[nodiscard]] std::size_t entries() const { return SystemFileManager().contentsOfDirectory(folder.path())->size(); }

    TemporaryFolder folder;
    std::string path = appendPathComponent(folder.path(), "picture.png");
};

TEST_F(PngDraftTest, documentsInFilesAreTheVeryBytesOfThoseInMemory) {
    BitmapContext context({90, 70});
    context.drawImage(Image::fromBitmap(photographLike({90, 70})), makeRect(0, 0, 90, 70));
    for (const Image& image : {Image::fromBitmap(sample(300, 200, true, 4)),
                               Image::fromBitmap(sample(300, 200, false, 4)), context.makeImage()}) {
        const Image document = asPngDocument(image, PngEffort::fast, intoFile()).value();
        const auto draft = draftOf(document);
        ASSERT_TRUE(draft);
        EXPECT_EQ(document.pixelSize(), image.pixelSize());
        EXPECT_EQ(document.source()->documentKey(), imageFromBytes(*encodePng(image))->source()->documentKey());
        EXPECT_TRUE(*document.source()->document() == *encodePng(image));
        EXPECT_EQ(*document.bitmap(), *image.bitmap());
        ASSERT_TRUE(draft->publish());
        EXPECT_TRUE(readWhole(path) == *encodePng(image));
        EXPECT_TRUE(*document.source()->document() == *encodePng(image)) << "still there";
    }
}

TEST_F(PngDraftTest, anotherFileOfTheNameIsNoDocumentOfThePicture) {
    const Image document = asPngDocument(Image::fromBitmap(sample(9, 9, true, 1)), PngEffort::fast, intoFile()).value();
    ASSERT_TRUE(draftOf(document)->publish());
    ASSERT_TRUE(SystemFileManager().write(path, *encodePng(sample(9, 9, true, 2))));
    EXPECT_EQ(document.source()->document(), nullptr);
    EXPECT_EQ(document.bitmap(), nullptr);
    EXPECT_EQ(document.source()->failure(), "the file holds another picture now");
}

TEST_F(PngDraftTest, whatIsNotStoredLeavesNothing) {
    {
        const Image document =
            asPngDocument(Image::fromBitmap(sample(9, 9, true, 1)), PngEffort::fast, intoFile()).value();
    }
    EXPECT_EQ(entries(), 0U);
}

TEST_F(PngDraftTest, filesThatCannotBeWrittenLeaveTheDocumentInMemory) {
    const Image image = Image::fromBitmap(sample(300, 200, false, 4));
    const DraftMaker nowhere = [this] { return FileDraft::begin(path + "/gone/picture.png"); };
    const DraftMaker full = [] {
        return Result(std::make_shared<FileDraft>(FileDescriptor(::open("/dev/full", O_WRONLY)), "", ""));
    };
    for (const DraftMaker& maker : {nowhere, full}) {
        const Image document = asPngDocument(image, PngEffort::fast, maker).value();
        EXPECT_EQ(draftOf(document), nullptr);
        EXPECT_TRUE(*document.source()->document() == *encodePng(image));
    }
}

TEST_F(PngDraftTest, damageFoundMeanwhileBeginsTheFileAfresh) {
    Bytes jpeg = jpegOf(photographLike({333, 251}));
    jpeg.resize(jpeg.size() - jpeg.size() / 3);
    const auto composed = [&] {
        BitmapContext context({300, 200});
        context.drawImage(imageFromBytes(jpeg).value(), makeRect(0, 0, 300, 200));
        context.drawImage(Image::fromBitmap(photographLike({90, 70})), makeRect(5, 5, 90, 70));
        return context.makeImage();
    };
    const Image document = asPngDocument(composed(), PngEffort::fast, intoFile()).value();
    ASSERT_TRUE(draftOf(document));
    EXPECT_TRUE(*document.source()->document() == *encodePng(composed()));
}

} // namespace
} // namespace quillomat::testing
