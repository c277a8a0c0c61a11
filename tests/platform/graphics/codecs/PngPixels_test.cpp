// The reader of our own for the commonest PNG files, judged by libpng.
#include "EveryTarget.h"
#include "TestPictures.h"
#include "platform/graphics/codecs/Codec.h"
#include "platform/graphics/codecs/PngPixels.h"

#include <png.h>

#include <random>

namespace quillomat::testing {
namespace {

struct PngRecipe {
    int width = 1;
    int height = 1;
    bool hasAlpha = false;
    int filters = PNG_ALL_FILTERS;
    std::size_t pieceBytes = 8192; // of compressed pixels in a chunk
};

/// Written by libpng with the given filters: soft slopes and noise by turns, straight alpha of every kind.
std::vector<std::uint8_t> written(const PngRecipe& recipe, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> out;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &out,
        [](png_structp p, png_bytep data, std::size_t count) {
            auto* bytes = static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(p));
            bytes->insert(bytes->end(), data, data + count);
        },
        nullptr);
    png_set_IHDR(png, info, static_cast<png_uint_32>(recipe.width), static_cast<png_uint_32>(recipe.height), 8,
                 recipe.hasAlpha ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, recipe.filters);
    png_set_compression_buffer_size(png, recipe.pieceBytes);
    png_write_info(png, info);
    const std::size_t pixelBytes = recipe.hasAlpha ? 4 : 3;
    std::vector<std::uint8_t> row(static_cast<std::size_t>(recipe.width) * pixelBytes);
    for (int y = 0; y < recipe.height; ++y) {
        const bool isNoise = random() % 3 == 0;
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = static_cast<std::uint8_t>(isNoise ? random() : i * 2 + static_cast<unsigned>(y) * 3);
            if (recipe.hasAlpha && i % 4 == 3 && random() % 2 == 0) {
                row[i] = random() % 2 == 0 ? 0 : 255;
            }
        }
        png_write_row(png, row.data());
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return out;
}

/// Our own code must take the file, and agree with libpng.
void expectSameAsLibpng(const std::vector<std::uint8_t>& png, const std::string& what) {
    const Result<codecs::PngHeader> header = codecs::readPngHeader(asBytes(png), {});
    ASSERT_TRUE(header) << what;
    ASSERT_TRUE(codecs::hasPlainPixels(*header)) << what;
    const std::optional<Bitmap> own = codecs::decodePlainPixels(asBytes(png), *header, {});
    const Result<Bitmap> judge = codecs::decodePngByLibpng(asBytes(png));
    ASSERT_TRUE(judge) << what << ": " << judge.reason();
    ASSERT_TRUE(own) << what;
    EXPECT_EQ(*own, *judge) << what;
}

TEST(PngPixels, everyFilterAndShapeIsReadAsByLibpng) {
    onEveryTarget([](const char* target) {
        for (const int filters :
             {PNG_FILTER_NONE, PNG_FILTER_SUB, PNG_FILTER_UP, PNG_FILTER_AVG, PNG_FILTER_PAETH, PNG_ALL_FILTERS}) {
            for (const bool hasAlpha : {false, true}) {
                for (const auto& [width, height] :
                     {std::pair{1, 9}, std::pair{2, 5}, std::pair{3, 4}, std::pair{4, 3}, std::pair{5, 1},
                      std::pair{7, 6}, std::pair{8, 8}, std::pair{33, 13}, std::pair{257, 66}}) {
                    const auto png = written({width, height, hasAlpha, filters}, 5);
                    expectSameAsLibpng(png, std::string(target) + " filters " + std::to_string(filters) + ", " +
                                                std::to_string(width) + " x " + std::to_string(height) +
                                                (hasAlpha ? " RGBA" : " RGB"));
                }
            }
        }
    });
}

TEST(PngPixels, pixelsInManyPiecesAreJoined) {
    expectSameAsLibpng(written({100, 100, true, PNG_ALL_FILTERS, 17}, 1), "small pieces");
}

TEST(PngPixels, filesOutOfTheOrdinaryAreLeftToLibpng) {
    const PngChunk header = pngHeader(1, 1, 8, 2);
    const PngChunk pixels{"IDAT", {0, 1, 2, 3}};
    const PngChunk end{"IEND", {}};
    const auto take = [](const std::vector<std::uint8_t>& png) {
        return codecs::decodePlainPixels(asBytes(png), *codecs::readPngHeader(asBytes(png), {}), {}).has_value();
    };
    EXPECT_TRUE(take(pngDocument({header, pixels, end})));
    EXPECT_TRUE(take(pngDocument({header, pixels, {"tEXt", {'a', 0, 'b'}}, end})));
    EXPECT_FALSE(take(pngDocument({header, pixels}))) << "no end";
    EXPECT_FALSE(take(pngDocument({header, end}))) << "no pixels";
    EXPECT_FALSE(take(pngDocument({header, {"IDAT", {7, 1, 2, 3}}, end}))) << "no such filter";
    EXPECT_FALSE(take(pngDocument({header, {"IDAT", {0, 1, 2}}, end}))) << "too few bytes";
    EXPECT_FALSE(take(pngDocument({header, {"IDAT", {0, 1, 2, 3, 4}}, end}))) << "too many bytes";
    EXPECT_FALSE(take(pngDocument({header, pixels, {"ABCD", {1}}, end}))) << "a chunk that must be understood";
    auto damaged = pngDocument({header, pixels, end});
    damaged[damaged.size() - 14] ^= 1;
    EXPECT_FALSE(take(damaged)) << "a wrong checksum";
}

TEST(PngPixels, damagedFilesMeetTheSameVerdictAsWithLibpngAlone) {
    std::mt19937 random(9);
    const auto whole = written({40, 30, true, PNG_ALL_FILTERS, 200}, 2);
    for (int i = 0; i < 3000; ++i) {
        auto damaged = whole;
        for (unsigned change = 0; change < 1 + random() % 3; ++change) {
            damaged[random() % damaged.size()] = static_cast<std::uint8_t>(random());
        }
        const Result<Bitmap> own = decodeImage(asBytes(damaged));
        if (damaged[0] != 0x89 || !own) {
            continue;
        }
        const Result<Bitmap> judge = codecs::decodePngByLibpng(asBytes(damaged));
        ASSERT_TRUE(judge) << i << ": " << judge.reason();
        EXPECT_EQ(*own, *judge) << i;
    }
}

} // namespace
} // namespace quillomat::testing
