#include "ColorProfiles.h"
#include "DrawnPictures.h"
#include "JpegDocuments.h"
#include "TestPictures.h"
#include "platform/graphics/Cropping.h"
#include "platform/graphics/codecs/ColorConversion.h"

#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
// After <cstdio>, which it needs and does not include.
#include <jpeglib.h>

namespace quillomat::testing {
namespace {

constexpr Rgba red{230, 40, 40, 255};
constexpr Rgba green{40, 200, 60, 255};
constexpr Rgba blue{40, 60, 220, 255};
constexpr Rgba white{240, 240, 240, 255};

void expectQuarters(const Bitmap& bitmap, int tolerance) {
    ASSERT_EQ(bitmap.size(), (PixelSize{64, 48}));
    EXPECT_LE(largestDifference(pixelAt(bitmap, 12, 12), red), tolerance);
    EXPECT_LE(largestDifference(pixelAt(bitmap, 50, 12), green), tolerance);
    EXPECT_LE(largestDifference(pixelAt(bitmap, 12, 36), blue), tolerance);
    EXPECT_LE(largestDifference(pixelAt(bitmap, 50, 36), white), tolerance);
}

/// How a picture is to be compressed for a test.
struct JpegRecipe {
    int width = 64;
    int height = 64;
    J_COLOR_SPACE colors = JCS_RGB;
    std::vector<jpeg_scan_info> scans;
    Bytes profile;
};

/// A soft gradient in as many components as the colours have.
std::vector<std::uint8_t> compress(const JpegRecipe& recipe) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* out = nullptr;
    unsigned long length = 0;
    jpeg_mem_dest(&info, &out, &length);
    info.image_width = static_cast<JDIMENSION>(recipe.width);
    info.image_height = static_cast<JDIMENSION>(recipe.height);
    info.input_components = recipe.colors == JCS_GRAYSCALE ? 1 : recipe.colors == JCS_CMYK ? 4 : 3;
    info.in_color_space = recipe.colors;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 95, TRUE);
    if (!recipe.scans.empty()) {
        info.scan_info = recipe.scans.data();
        info.num_scans = static_cast<int>(recipe.scans.size());
    }
    jpeg_start_compress(&info, TRUE);
    if (!recipe.profile.empty()) {
        jpeg_write_icc_profile(&info, reinterpret_cast<const JOCTET*>(recipe.profile.data()),
                               static_cast<unsigned int>(recipe.profile.size()));
    }
    std::vector<std::uint8_t> row(static_cast<std::size_t>(recipe.width * info.input_components));
    while (info.next_scanline < info.image_height) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            const bool tinted = recipe.colors == JCS_RGB && i % 3 == 0;
            row[i] = static_cast<std::uint8_t>(40 + info.next_scanline * 2 + i / 3 + (tinted ? 60 : 0));
        }
        JSAMPROW rows = row.data();
        jpeg_write_scanlines(&info, &rows, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    std::vector<std::uint8_t> bytes(out, out + length);
    std::free(out); // NOLINT: the library allocates it with malloc
    return bytes;
}

jpeg_scan_info scanOf(int first, int last, int high, int low) {
    return {1, {0, 0, 0, 0}, first, last, high, low};
}

/// Grey, progressive, in `count` scans: first whole, then refined bit by bit and coefficient by coefficient.
JpegRecipe inScans(int count) {
    JpegRecipe recipe{64, 64, JCS_GRAYSCALE, {scanOf(0, 0, 0, 0)}, {}};
    for (int bit = 3; bit >= 0; --bit) {
        for (int coefficient = 1; coefficient < 64 && static_cast<int>(recipe.scans.size()) < count; ++coefficient) {
            recipe.scans.push_back(scanOf(coefficient, coefficient, bit == 3 ? 0 : bit + 1, bit));
        }
    }
    return recipe;
}

TEST(JpegReader, ordinaryPictureIsDecoded) {
    const Result<Bitmap> decoded = decodeImage(fixture("quarters.jpg"));
    ASSERT_TRUE(decoded) << decoded.reason();
    expectQuarters(*decoded, 3);
    EXPECT_TRUE(readImageHeader(fixture("quarters.jpg"))->isKnownOpaque);
}

TEST(JpegReader, bytesAfterTheEndAreTolerated) {
    const Result<Bitmap> decoded = decodeImage(fixture("bytes-after-the-end.jpg"));
    ASSERT_TRUE(decoded) << decoded.reason();
    expectQuarters(*decoded, 3);
}

TEST(JpegReader, bytesBetweenMarkersAreTolerated) {
    Bytes bytes = fixture("quarters.jpg");
    const std::array<std::byte, 3> extra{};
    bytes.insert(bytes.begin() + 20, extra.begin(), extra.end()); // between the first marker's segment and the next
    const Result<Bitmap> decoded = decodeImage(bytes);
    ASSERT_TRUE(decoded) << decoded.reason();
    expectQuarters(*decoded, 3);
}

TEST(JpegReader, truncatedFilesAreRefused) {
    for (const char* name : {"truncated-in-the-scan.jpg", "truncated-in-the-header.jpg", "without-end-marker.jpg"}) {
        EXPECT_EQ(decodeImage(fixture(name)).reason(), "truncated JPEG") << name;
    }
}

TEST(JpegReader, everyCutIsRefused) {
    const Bytes whole = fixture("quarters.jpg");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(decodeImage(std::span(whole).first(length))) << length;
    }
}

TEST(JpegReader, zeroWidthIsRefused) {
    EXPECT_FALSE(readImageHeader(fixture("zero-width.jpg")));
    EXPECT_FALSE(decodeImage(fixture("zero-width.jpg")));
}

TEST(JpegReader, headerOverTheLimitIsRefusedBeforeDecoding) {
    EXPECT_EQ(readImageHeader(fixture("announces-65000-a-side.jpg")).reason(),
              "picture of 65000 x 65000 pixels is over the limit of 30000 a side");
    EXPECT_FALSE(decodeImage(fixture("announces-65000-a-side.jpg")));
}

TEST(JpegReader, progressivePicturesOfAnOrdinaryNumberOfScansAreDecoded) {
    const auto progressive = compress(inScans(60));
    const Result<Bitmap> decoded = decodeImage(asBytes(progressive));
    ASSERT_TRUE(decoded) << decoded.reason();
    EXPECT_LE(largestDifference(pixelAt(*decoded, 30, 10), {70, 70, 70, 255}), 3);
}

TEST(JpegReader, progressivePicturesOfVeryManyScansAreRefused) {
    const auto deep = compress(inScans(130));
    EXPECT_EQ(decodeImage(asBytes(deep)).reason(), "JPEG of more than 100 scans");
}

TEST(JpegReader, theHeaderTellsWhatDecodingTakes) {
    const Result<ImageHeader> plain = readImageHeader(fixture("quarters.jpg"));
    EXPECT_EQ(plain->decoding.whole, 0U);
    EXPECT_EQ(plain->decoding.part, 0U);
    EXPECT_TRUE(plain->isHalvedWhileDecoding);
    const Result<ImageHeader> progressive = readImageHeader(asBytes(compress(inScans(60))));
    EXPECT_EQ(progressive->decoding.whole, 64U * 64 * 2) << "one coefficient a pixel, of two bytes";
    EXPECT_EQ(progressive->decoding.part, 64U * 64 * 2);
}

TEST(JpegReader, aTurnedPictureIsDecodedWholeForItsParts) {
    constexpr std::string_view exif{"\xff\xe1\0\x22"
                                    "Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0",
                                    36};
    Bytes bytes = fixture("quarters.jpg");
    const auto* begin = reinterpret_cast<const std::byte*>(exif.data());
    bytes.insert(bytes.begin() + 2, begin, begin + exif.size());
    const Result<ImageHeader> turned = readImageHeader(bytes);
    ASSERT_EQ(turned->size, (PixelSize{48, 64}));
    EXPECT_EQ(turned->decoding.whole, 64U * 48 * 4);
    EXPECT_EQ(turned->decoding.part, 2U * 64 * 48 * 4);
    EXPECT_FALSE(turned->isHalvedWhileDecoding);
}

TEST(JpegReader, coefficientsOfAProgressivePictureCountAgainstTheLimit) {
    JpegRecipe recipe{512, 512, JCS_GRAYSCALE, {scanOf(0, 0, 0, 0), scanOf(1, 63, 0, 0)}, {}};
    const auto progressive = compress(recipe);
    EXPECT_TRUE(readImageHeader(asBytes(progressive)));
    recipe.colors = JCS_RGB;
    recipe.scans.clear();
    jpeg_scan_info all{3, {0, 1, 2, 0}, 0, 0, 0, 0};
    recipe.scans = {all, scanOf(1, 63, 0, 0)};
    const auto colored = compress(recipe);
    ImageLimits tight;
    tight.pixels = std::uint64_t{512} * 512;
    EXPECT_TRUE(readImageHeader(asBytes(colored), tight)) << "3 bytes a pixel with halved colours";
    // In four inks a progressive picture keeps 8 bytes a pixel.
    recipe.colors = JCS_CMYK;
    recipe.scans = {{4, {0, 1, 2, 3}, 0, 0, 0, 0}, scanOf(1, 63, 0, 0)};
    const auto inks = compress(recipe);
    const Result<ImageHeader> header = readImageHeader(asBytes(inks), tight);
    ASSERT_FALSE(header);
    EXPECT_EQ(header.reason(), "progressive JPEG needs 2 MiB, over the limit of 1 MiB");
}

TEST(JpegReader, grayPictureIsDecodedAsGray) {
    const auto gray = compress({64, 64, JCS_GRAYSCALE, {}, {}});
    const Result<Bitmap> decoded = decodeImage(asBytes(gray));
    ASSERT_TRUE(decoded) << decoded.reason();
    EXPECT_LE(largestDifference(pixelAt(*decoded, 30, 10), {70, 70, 70, 255}), 2);
}

TEST(JpegReader, inksMarkedAsInvertedAreInverted) {
    const Result<Bitmap> decoded = decodeImage(fixture("inks-inverted.jpg"));
    ASSERT_TRUE(decoded) << decoded.reason();
    EXPECT_LE(largestDifference(pixelAt(*decoded, 12, 12), {0, 255, 255, 255}), 4) << "cyan";
    EXPECT_LE(largestDifference(pixelAt(*decoded, 50, 12), {255, 0, 0, 255}), 4) << "magenta and yellow";
    EXPECT_LE(largestDifference(pixelAt(*decoded, 12, 36), {0, 0, 0, 255}), 4) << "black";
    EXPECT_LE(largestDifference(pixelAt(*decoded, 50, 36), {255, 255, 255, 255}), 4) << "paper";
}

/// A profile by whose account only the black ink prints.
Bytes profileOfBlackInkAlone() {
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsSetProfileVersion(profile, 2.1);
    cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsStage* table = cmsStageAllocCLut16bit(nullptr, 2, 4, 3, nullptr);
    cmsStageSampleCLut16bit(
        table,
        [](const cmsUInt16Number* inks, cmsUInt16Number* lab, void*) -> cmsInt32Number {
            lab[0] = static_cast<cmsUInt16Number>((0xffff - inks[3]) * 0xff00U / 0xffffU); // 100 is 0xff00
            lab[1] = lab[2] = 0x8000;
            return TRUE;
        },
        nullptr, 0);
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    EXPECT_TRUE(cmsWriteTag(profile, cmsSigAToB0Tag, pipeline));
    cmsPipelineFree(pipeline);
    return documentOf(profile);
}

TEST(JpegReader, inksWithAProfileArePrintedByIt) {
    // Row y has about 40 + 2 y of each ink, inverted as that marker says: 255 is none.
    JpegRecipe recipe{64, 64, JCS_CMYK, {}, {}};
    const auto withoutProfile = compress(recipe);
    recipe.profile = profileOfBlackInkAlone();
    const auto withProfile = compress(recipe);
    const Result<Bitmap> plain = decodeImage(asBytes(withoutProfile));
    const Result<Bitmap> printed = decodeImage(asBytes(withProfile));
    ASSERT_TRUE(plain) << plain.reason();
    ASSERT_TRUE(printed) << printed.reason();
    for (const int y : {10, 60}) {
        const double lightness = (40 + 2 * y) / 255.0; // no ink: 1
        const double linear = lightness > 0.08 ? std::pow((lightness * 100 + 16) / 116, 3) : lightness * 100 / 903.3;
        const auto gray = static_cast<std::uint8_t>((1.055 * std::pow(linear, 1 / 2.4) - 0.055) * 255 + 0.5);
        EXPECT_LE(largestDifference(pixelAt(*printed, 0, y), {gray, gray, gray, 255}), 4) << y;
        EXPECT_GT(largestDifference(pixelAt(*printed, 0, y), pixelAt(*plain, 0, y)), 15) << y;
    }
}

TEST(JpegReader, embeddedProfileIsConverted) {
    const std::filesystem::path profile = corpora() / "icc/profiles/DisplayP3-v4.icc";
    if (!std::filesystem::exists(profile)) {
        GTEST_SKIP() << "the colour profiles are not here: " << profile;
    }
    const auto plain = compress({64, 64, JCS_RGB, {}, {}});
    const auto inDisplayP3 = compress({64, 64, JCS_RGB, {}, readWhole(profile)});
    // The same numbers, so the colour conversion alone tells them apart; it is tried by itself elsewhere.
    Rgba expected = pixelAt(*decodeImage(asBytes(plain)), 60, 10);
    codecs::ColorConversion::fromProfile(readWhole(profile), codecs::ColorModel::rgb).convert(expected.data(), 1);
    EXPECT_EQ(pixelAt(*decodeImage(asBytes(inDisplayP3)), 60, 10), expected);
    EXPECT_NE(pixelAt(*decodeImage(asBytes(plain)), 60, 10), expected);
}

TEST(JpegReader, reducedDecodingHasAtLeastWhatIsAskedFor) {
    const auto whole = compress({640, 400, JCS_RGB, {}, {}});
    for (const auto& [minimum, expected] :
         {std::pair{PixelSize{80, 50}, PixelSize{80, 50}}, std::pair{PixelSize{81, 50}, PixelSize{160, 100}},
          std::pair{PixelSize{320, 10}, PixelSize{320, 200}}, std::pair{PixelSize{9000, 9000}, PixelSize{640, 400}},
          std::pair{PixelSize{321, 10}, PixelSize{640, 400}}, std::pair{PixelSize{0, 0}, PixelSize{80, 50}}}) {
        const Result<Bitmap> decoded = decodeImageReduced(asBytes(whole), minimum);
        ASSERT_TRUE(decoded) << decoded.reason();
        EXPECT_EQ(decoded->size(), expected);
    }
}

/// Columns apart are not recovered, which must not show at the edges of those that are.
TEST(JpegReader, partsHaveTheVeryPixelsOfTheWhole) {
    for (const JpegKind& kind :
         {JpegKind{}, JpegKind{.across = 1, .down = 1}, JpegKind{.across = 2, .down = 1},
          JpegKind{.across = 1, .down = 2}, JpegKind{.across = 4, .down = 2}, JpegKind{.isGray = true},
          JpegKind{.hasInks = true}, JpegKind{.isProgressive = true}}) {
        const Image image = imageFromBytes(jpegOf(photographLike({203, 97}), kind)).value();
        const Bitmap whole = *image.bitmap();
        for (int left = 0; left < 203; left += 9) {
            for (const int width : {1, 2, 15, 16, 33, 100, 203 - left}) {
                const PixelRect part{left, 20, std::min(width, 203 - left), 40};
                EXPECT_EQ(*croppedImage(image, part).bitmap(), partOf(whole, part)) << left << ", " << width;
            }
        }
    }
}

TEST(JpegReader, reducedPartsHaveTheVeryPixelsOfTheWholeReduction) {
    const Image image = imageFromBytes(jpegOf(photographLike({640, 160}))).value();
    for (const int factor : {2, 4, 8}) {
        const SharedBitmap whole = image.source()->bitmapOfAtLeast({640 / factor, 160 / factor});
        ASSERT_EQ(whole->width(), 640 / factor);
        for (int left = 0; left < 640 - 160; left += 56) {
            const Image cut = croppedImage(image, {left, 0, 160, 160});
            const SharedBitmap part = cut.source()->bitmapOfAtLeast({160 / factor, 160 / factor});
            EXPECT_EQ(*part, partOf(*whole, {left / factor, 0, 160 / factor, 160 / factor})) << left;
        }
    }
}

} // namespace
} // namespace quillomat::testing
