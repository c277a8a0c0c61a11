#include "TestPictures.h"
#include "platform/graphics/codecs/ColorConversion.h"

#include <lcms2.h>

#include <cmath>
#include <functional>

namespace quillomat::testing {
namespace {

using codecs::ColorConversion;
using codecs::ColorModel;
using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 3>;

double srgbToLinear(double v) {
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

double linearToSrgb(double v) {
    v = std::clamp(v, 0.0, 1.0);
    return v <= 0.0031308 ? v * 12.92 : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
}

/// Straight from the definitions, in doubles.
Rgba expected(Rgba color, const std::function<double(double)>& curve, const Matrix& toSrgb) {
    Vector linear{};
    for (std::size_t i = 0; i < 3; ++i) {
        linear[i] = curve(color[i] / 255.0);
    }
    Rgba result = color;
    for (std::size_t i = 0; i < 3; ++i) {
        const double value = toSrgb[i][0] * linear[0] + toSrgb[i][1] * linear[1] + toSrgb[i][2] * linear[2];
        result[i] = static_cast<std::uint8_t>(linearToSrgb(value) * 255 + 0.5);
    }
    return result;
}

// The published matrices between the linear spaces.
// clang-format off
constexpr Matrix displayP3ToSrgb{{{ 1.2249401, -0.2249404,  0.0},
                                  {-0.0420569,  1.0420571,  0.0},
                                  {-0.0196376, -0.0786361,  1.0982735}}};
constexpr Matrix adobeToSrgb{{{ 1.3983557, -0.3983557,  0.0},
                              { 0.0,        1.0,        0.0},
                              { 0.0,       -0.0429290,  1.0429290}}};
constexpr Matrix proPhotoToSrgb{{{ 2.0341926, -0.7274198, -0.3067655},
                                 {-0.2288108,  1.2317292, -0.0029216},
                                 {-0.0085649, -0.1532726,  1.1618390}}};
constexpr Matrix same{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
// clang-format on

constexpr std::array<Rgba, 9> colors{Rgba{200, 100, 50, 255},  Rgba{50, 160, 90, 77},   Rgba{30, 60, 190, 0},
                                     Rgba{128, 128, 128, 255}, Rgba{255, 255, 255, 9},  Rgba{0, 0, 0, 255},
                                     Rgba{180, 170, 90, 255},  Rgba{100, 90, 110, 255}, Rgba{255, 20, 10, 255}};

class EmbeddedProfile : public ::testing::Test {
protected:
    void SetUp() override {
        folder_ = corpora() / "icc/profiles";
        if (!std::filesystem::exists(folder_)) {
            GTEST_SKIP() << "the colour profiles are not here: " << folder_;
        }
    }

    void expectConversion(const std::string& name, const std::function<double(double)>& curve, const Matrix& toSrgb,
                          int tolerance) {
        const ColorConversion conversion = ColorConversion::fromProfile(readWhole(folder_ / name), ColorModel::rgb);
        ASSERT_FALSE(conversion.isIdentity()) << name;
        for (const Rgba& color : colors) {
            Rgba converted = color;
            conversion.convert(converted.data(), 1);
            EXPECT_EQ(converted[3], color[3]) << "alpha is kept";
            EXPECT_LE(largestDifference(converted, expected(color, curve, toSrgb)), tolerance)
                << name << " of " << int{color[0]} << " " << int{color[1]} << " " << int{color[2]} << " gives "
                << int{converted[0]} << " " << int{converted[1]} << " " << int{converted[2]};
        }
    }

    std::filesystem::path folder_;
};

TEST_F(EmbeddedProfile, displayP3IsConvertedByItsDefinition) {
    expectConversion("DisplayP3-v4.icc", srgbToLinear, displayP3ToSrgb, 1);
}

TEST_F(EmbeddedProfile, displayP3OfTheOldVersionIsConvertedByItsDefinition) {
    expectConversion("DisplayP3-v2-magic.icc", srgbToLinear, displayP3ToSrgb, 2);
}

// Two levels, in the darkest colours: the primaries in the profile are rounded.
TEST_F(EmbeddedProfile, adobeCompatibleIsConvertedByItsDefinition) {
    expectConversion(
        "AdobeCompat-v4.icc", [](double v) { return std::pow(v, 563 / 256.0); }, adobeToSrgb, 2);
}

TEST_F(EmbeddedProfile, proPhotoIsConvertedByItsDefinition) {
    expectConversion(
        "ProPhoto-v4.icc", [](double v) { return v < 1 / 32.0 ? v / 16 : std::pow(v, 1.8); }, proPhotoToSrgb, 2);
}

/// Every colour on a lattice through the whole cube, and every grey.
std::vector<Rgba> manyColors() {
    std::vector<Rgba> many;
    for (int red = 0; red < 256; red += 15) {
        for (int green = 0; green < 256; green += 15) {
            for (int blue = 0; blue < 256; blue += 15) {
                many.push_back({static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                                static_cast<std::uint8_t>(blue), 200});
            }
        }
    }
    for (int level = 0; level < 256; ++level) {
        const auto value = static_cast<std::uint8_t>(level);
        many.push_back({value, value, value, 255});
    }
    return many;
}

TEST_F(EmbeddedProfile, ownMatrixArithmeticAgreesWithTheColorLibrary) {
    for (const char* name : {"DisplayP3-v4.icc", "AdobeCompat-v4.icc", "ProPhoto-v4.icc"}) {
        const Bytes profile = readWhole(folder_ / name);
        const ColorConversion own = ColorConversion::fromProfile(profile, ColorModel::rgb);
        ASSERT_FALSE(own.isIdentity()) << name;
        cmsHPROFILE from = cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size()));
        cmsHPROFILE srgb = cmsCreate_sRGBProfile();
        // In floating point: its own whole-number path is off by up to three levels in dark colours.
        cmsHTRANSFORM judge =
            cmsCreateTransform(from, TYPE_RGB_FLT, srgb, TYPE_RGB_FLT, INTENT_PERCEPTUAL, cmsFLAGS_NOCACHE);
        for (const Rgba& color : manyColors()) {
            const std::array<float, 3> input{color[0] / 255.0F, color[1] / 255.0F, color[2] / 255.0F};
            std::array<float, 3> output{};
            cmsDoTransform(judge, input.data(), output.data(), 1);
            Rgba expectedColor = color;
            for (std::size_t i = 0; i < 3; ++i) {
                expectedColor[i] = static_cast<std::uint8_t>(std::clamp(output[i], 0.0F, 1.0F) * 255 + 0.5F);
            }
            Rgba converted = color;
            own.convert(converted.data(), 1);
            ASSERT_LE(largestDifference(converted, expectedColor), 1)
                << name << " of " << int{color[0]} << " " << int{color[1]} << " " << int{color[2]};
        }
        cmsDeleteTransform(judge);
        cmsCloseProfile(srgb);
        cmsCloseProfile(from);
    }
}

TEST_F(EmbeddedProfile, manyPixelsAreConvertedLikeEachAlone) {
    const ColorConversion conversion =
        ColorConversion::fromProfile(readWhole(folder_ / "DisplayP3-v4.icc"), ColorModel::rgb);
    std::vector<Rgba> together = manyColors();
    together.insert(together.end(), 50, together.back());
    std::vector<Rgba> alone = together;
    conversion.convert(together.front().data(), together.size());
    for (Rgba& color : alone) {
        conversion.convert(color.data(), 1);
    }
    EXPECT_EQ(together, alone);
    conversion.convert(nullptr, 0);
}

TEST_F(EmbeddedProfile, srgbInAllButNameConvertsNothing) {
    for (const char* name : {"sRGB-v4.icc", "sRGB-v2-magic.icc"}) {
        EXPECT_TRUE(ColorConversion::fromProfile(readWhole(folder_ / name), ColorModel::rgb).isIdentity()) << name;
    }
    EXPECT_TRUE(ColorConversion::fromProfile(readWhole(folder_ / "sGrey-v4.icc"), ColorModel::gray).isIdentity());
}

TEST_F(EmbeddedProfile, profileForAnotherModelThanThePicturesIsIgnored) {
    const Bytes gray = readWhole(folder_ / "sGrey-v4.icc");
    const Bytes rgb = readWhole(folder_ / "DisplayP3-v4.icc");
    EXPECT_TRUE(ColorConversion::fromProfile(gray, ColorModel::rgb).isIdentity());
    EXPECT_TRUE(ColorConversion::fromProfile(rgb, ColorModel::gray).isIdentity());
    EXPECT_TRUE(ColorConversion::fromProfile(rgb, ColorModel::invertedCmyk).isIdentity());
}

TEST_F(EmbeddedProfile, damagedProfilesAreIgnored) {
    const Bytes whole = readWhole(folder_ / "DisplayP3-v4.icc");
    for (std::size_t length = 0; length < whole.size(); length += 7) {
        Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        Rgba color{1, 2, 3, 4};
        ColorConversion::fromProfile(cut, ColorModel::rgb).convert(color.data(), 1);
        EXPECT_EQ(color[3], 4);
    }
}

TEST_F(EmbeddedProfile, aColorSpaceThatNobodyKnowsIsIgnored) {
    constexpr std::size_t placeOfColorSpace = 16;
    Bytes profile = readWhole(folder_ / "DisplayP3-v4.icc");
    ASSERT_GT(profile.size(), placeOfColorSpace + 4);
    std::fill_n(profile.begin() + placeOfColorSpace, 4, std::byte{0xff});
    for (const ColorModel model : {ColorModel::gray, ColorModel::rgb, ColorModel::cmyk, ColorModel::invertedCmyk}) {
        EXPECT_TRUE(ColorConversion::fromProfile(profile, model).isIdentity());
    }
}

TEST_F(EmbeddedProfile, winsOverTheOtherColorChunksOfPng) {
    const PngChunk linear{"gAMA", bigEndian(100000)};
    const PngChunk profile = profileChunk(readWhole(folder_ / "DisplayP3-v4.icc"));
    const auto png = onePixelPng(200, 100, 50, {linear, profile});
    const Result<Bitmap> decoded = decodeImage(asBytes(png));
    ASSERT_TRUE(decoded) << decoded.reason();
    const Rgba inSrgb = expected({200, 100, 50, 255}, srgbToLinear, displayP3ToSrgb);
    EXPECT_LE(largestDifference(pixelAt(*decoded, 0, 0), inSrgb), 1);
}

TEST_F(EmbeddedProfile, colorsAreConvertedBeforeTheyArePremultiplied) {
    const PngChunk profile = profileChunk(readWhole(folder_ / "DisplayP3-v4.icc"));
    const auto png = pngDocument({pngHeader(1, 1, 8, 6), profile, {"IDAT", {0, 200, 100, 50, 51}}, {"IEND", {}}});
    const Result<Bitmap> decoded = decodeImage(asBytes(png));
    ASSERT_TRUE(decoded) << decoded.reason();
    Rgba premultiplied = expected({200, 100, 50, 51}, srgbToLinear, displayP3ToSrgb);
    for (std::size_t i = 0; i < 3; ++i) {
        premultiplied[i] = static_cast<std::uint8_t>(premultiplied[i] * 51 / 255.0 + 0.5);
    }
    EXPECT_LE(largestDifference(pixelAt(*decoded, 0, 0), premultiplied), 1);
}

TEST(PngGamma, linearValuesAreBrightened) {
    const auto png = onePixelPng(128, 64, 0, {{"gAMA", bigEndian(100000)}});
    const Result<Bitmap> decoded = decodeImage(asBytes(png));
    ASSERT_TRUE(decoded) << decoded.reason();
    const Rgba inSrgb = expected(
        {128, 64, 0, 255}, [](double v) { return v; }, same);
    EXPECT_LE(largestDifference(pixelAt(*decoded, 0, 0), inSrgb), 1);
}

TEST(PngGamma, srgbChunkWinsOverGamma) {
    const auto png = onePixelPng(128, 64, 0, {{"sRGB", {0}}, {"gAMA", bigEndian(100000)}});
    const Result<Bitmap> decoded = decodeImage(asBytes(png));
    ASSERT_TRUE(decoded) << decoded.reason();
    EXPECT_EQ(pixelAt(*decoded, 0, 0), (Rgba{128, 64, 0, 255}));
}

TEST(PngGamma, gammaOfSrgbLeavesTheValuesAlone) {
    const auto png = onePixelPng(12, 64, 200, {{"gAMA", bigEndian(45455)}});
    const Result<Bitmap> decoded = decodeImage(asBytes(png));
    ASSERT_TRUE(decoded) << decoded.reason();
    EXPECT_EQ(pixelAt(*decoded, 0, 0), (Rgba{12, 64, 200, 255}));
}

TEST(PngGamma, primariesAreHonoured) {
    std::vector<std::uint8_t> primaries; // of Display P3, in the chunk's order: white, red, green, blue
    for (const std::uint32_t value : {31270U, 32900U, 68000U, 32000U, 26500U, 69000U, 15000U, 6000U}) {
        tiny_png_detail::appendBigEndian(primaries, value);
    }
    const auto png = onePixelPng(200, 100, 50, {{"gAMA", bigEndian(45455)}, {"cHRM", primaries}});
    const Result<Bitmap> decoded = decodeImage(asBytes(png));
    ASSERT_TRUE(decoded) << decoded.reason();
    const Rgba inSrgb = expected({200, 100, 50, 255}, srgbToLinear, displayP3ToSrgb);
    EXPECT_LE(largestDifference(pixelAt(*decoded, 0, 0), inSrgb), 1);
}

TEST(PngGamma, absurdValuesAreIgnored) {
    for (const std::uint32_t gamma : {0U, 1U, 2147483647U, 4294967295U}) {
        const auto png = onePixelPng(128, 64, 0, {{"gAMA", bigEndian(gamma)}});
        const Result<Bitmap> decoded = decodeImage(asBytes(png));
        ASSERT_TRUE(decoded) << gamma;
        EXPECT_EQ(pixelAt(*decoded, 0, 0), (Rgba{128, 64, 0, 255})) << gamma;
    }
}

TEST(GrayPicture, gammaIsAppliedToItsLevels) {
    const auto png =
        pngDocument({pngHeader(2, 1, 8, 0), {"gAMA", bigEndian(100000)}, {"IDAT", {0, 128, 10}}, {"IEND", {}}});
    const Result<Bitmap> decoded = decodeImage(asBytes(png));
    ASSERT_TRUE(decoded) << decoded.reason();
    for (int x = 0; x < 2; ++x) {
        const std::uint8_t level = x == 0 ? 128 : 10;
        const Rgba inSrgb = expected(
            {level, level, level, 255}, [](double v) { return v; }, same);
        EXPECT_LE(largestDifference(pixelAt(*decoded, x, 0), inSrgb), 1);
    }
}

TEST(Inks, multiplyWhereNoProfileSaysHow) {
    Rgba pixels{255, 0, 128, 51};
    codecs::convertInksWithoutProfile(pixels.data(), 1, /*inverted=*/false);
    EXPECT_EQ(pixels, (Rgba{0, 204, 102, 255}));
    Rgba inverted{0, 255, 127, 204};
    codecs::convertInksWithoutProfile(inverted.data(), 1, /*inverted=*/true);
    EXPECT_EQ(inverted, (Rgba{0, 204, 102, 255}));
}

} // namespace
} // namespace quillomat::testing
