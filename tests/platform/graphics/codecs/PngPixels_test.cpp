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
    const auto sparse = codecs::decodeSparsePixels(asBytes(png), *header, {});
    ASSERT_TRUE(sparse) << what;
    EXPECT_EQ(bitmapOf(*sparse), *judge) << what << " in runs";
}

/// RGBA pixels by one filter for each row, in turn from `filters`.
std::vector<std::uint8_t> filteredRows(const Bitmap& straight, const std::vector<std::uint8_t>& filters) {
    std::vector<std::uint8_t> rows;
    const Bitmap nothing({straight.width(), 1});
    for (int y = 0; y < straight.height(); ++y) {
        const std::uint8_t filter = filters[static_cast<std::size_t>(y) % filters.size()];
        const std::uint8_t* row = straight.row(y);
        const std::uint8_t* above = y > 0 ? straight.row(y - 1) : nothing.row(0);
        rows.push_back(filter);
        for (std::size_t i = 0; i < straight.stride(); ++i) {
            const int left = i >= 4 ? row[i - 4] : 0;
            const int corner = i >= 4 ? above[i - 4] : 0;
            const int up = above[i];
            const int p = left + up - corner;
            const int nearest = std::min({std::abs(p - left), std::abs(p - up), std::abs(p - corner)});
            const int paeth = nearest == std::abs(p - left) ? left : nearest == std::abs(p - up) ? up : corner;
            const int predicted[] = {0, left, up, (left + up) / 2, paeth};
            rows.push_back(static_cast<std::uint8_t>(row[i] - predicted[filter]));
        }
    }
    return rows;
}

/// Wide empty parts, empty parts with a color that does not show, repeated rows, a shadow, something solid.
Bitmap straightOverlay(PixelSize size, std::mt19937& random) {
    Bitmap bitmap(size);
    for (int y = 0; y < size.height;) {
        const int end = std::min(size.height, y + 1 + static_cast<int>(random() % 11));
        const auto kind = random() % 5;
        for (int x = 0; x < size.width; ++x) {
            std::uint8_t* pixel = bitmap.row(y) + x * 4;
            const bool isInside = x > size.width / 4 && x < size.width / 2;
            if (kind == 1 || (kind == 2 && isInside)) {
                std::fill_n(pixel, 3, std::uint8_t{200});
                pixel[3] = kind == 1 ? 0 : 255;
            } else if (kind == 3 && isInside) {
                pixel[3] = static_cast<std::uint8_t>(x);
            } else if (kind == 4 && isInside) {
                std::generate_n(pixel, 4, [&] { return static_cast<std::uint8_t>(random()); });
            }
        }
        for (int copy = y + 1; copy < end; ++copy) {
            std::copy_n(bitmap.row(y), bitmap.stride(), bitmap.row(copy));
        }
        y = end;
    }
    return bitmap;
}

TEST(PngPixels, overlaysInRunsAreThoseOfLibpng) {
    onEveryTarget([](const char* target) {
        std::mt19937 random(12);
        for (int i = 0; i < 60; ++i) {
            const int height = 1 + static_cast<int>(random() % 60);
            const PixelSize size{1 + static_cast<int>(random() % 300), i == 0 ? 3000 : height};
            std::vector<std::uint8_t> filters;
            for (auto count = 1 + random() % 4; count > 0; --count) {
                filters.push_back(static_cast<std::uint8_t>(random() % 3 == 0 ? 2 : random() % 5));
            }
            const auto rows = filteredRows(straightOverlay(size, random), filters);
            const auto width = static_cast<std::uint32_t>(size.width);
            expectSameAsLibpng(
                pngDocument(
                    {pngHeader(width, static_cast<std::uint32_t>(size.height), 8, 6), {"IDAT", rows}, {"IEND", {}}}),
                std::string(target) + " " + std::to_string(i));
        }
    });
}

Bitmap boxAverages(const Bitmap& whole, int factor) {
    Bitmap reduced({whole.width() / factor, whole.height() / factor});
    for (int y = 0; y < reduced.height(); ++y) {
        for (int i = 0; i < reduced.width() * 4; ++i) {
            int sum = 0;
            for (int j = 0; j < factor * factor; ++j) {
                sum += whole.row(y * factor + j / factor)[(i / 4 * factor + j % factor) * 4 + i % 4];
            }
            reduced.row(y)[i] = static_cast<std::uint8_t>((sum + factor * factor / 2) / (factor * factor));
        }
    }
    return reduced;
}

TEST(PngPixels, reducedPicturesAreTheAveragesOfBoxes) {
    std::mt19937 random(14);
    for (int factor = 2; factor <= codecs::largestReduction; ++factor) {
        const PixelSize size{factor * 9, factor * 7};
        for (const bool isOverlay : {false, true}) {
            const auto png = isOverlay
                                 ? pngDocument({pngHeader(static_cast<std::uint32_t>(size.width),
                                                          static_cast<std::uint32_t>(size.height), 8, 6),
                                                {"IDAT", filteredRows(straightOverlay(size, random), {2, 2, 4, 1})},
                                                {"IEND", {}}})
                                 : written({size.width, size.height, factor % 2 == 0, PNG_ALL_FILTERS}, 3);
            const Result<Bitmap> judge = codecs::decodePngByLibpng(asBytes(png));
            ASSERT_TRUE(judge);
            const Result<Bitmap> reduced = decodeImageReduced(asBytes(png), {9, 1});
            ASSERT_TRUE(reduced) << reduced.reason();
            EXPECT_EQ(*reduced, boxAverages(*judge, factor)) << factor;
        }
    }
}

TEST(PngPixels, reductionLeavesWhatIsAskedForAndCutsNoPixel) {
    EXPECT_EQ(codecs::reductionFor({3000, 3000}, {750, 10}), 4);
    EXPECT_EQ(codecs::reductionFor({3000, 3000}, {751, 10}), 3);
    EXPECT_EQ(codecs::reductionFor({3000, 3000}, {10, 10}), 15) << "the largest up to 16 that divides the sides";
    EXPECT_EQ(codecs::reductionFor({1290, 2796}, {200, 200}), 6);
    EXPECT_EQ(codecs::reductionFor({1291, 2796}, {200, 200}), 1);
    EXPECT_EQ(codecs::reductionFor({100, 100}, {101, 1}), 1);
    EXPECT_EQ(codecs::reductionFor({100, 100}, {}), 1) << "the whole picture";
}

/// The document with its compressed pixels changed, and the chunks' checksums right.
std::vector<std::uint8_t> withDamagedStream(const std::vector<std::uint8_t>& png, std::mt19937& random) {
    std::vector<std::uint8_t> out(png.begin(), png.begin() + 8);
    for (auto chunk = codecs::firstPngChunk(asBytes(png)); chunk;
         chunk = codecs::pngChunkAt(asBytes(png), chunk->next)) {
        const std::uint8_t* data = codecs::asUnsignedChars(chunk->data);
        std::vector<std::uint8_t> body(data, data + chunk->data.size());
        if (chunk->type == "IDAT") {
            for (auto changes = 1 + random() % 2; changes > 0; --changes) {
                body[random() % body.size()] = static_cast<std::uint8_t>(random());
            }
            if (random() % 4 == 0) {
                body.resize(random() % body.size());
            }
        }
        tiny_png_detail::appendChunk(out, chunk->type, body);
    }
    return out;
}

TEST(PngPixels, damagedStreamsGiveNoRuns) {
    std::mt19937 random(13);
    const auto whole = written({60, 50, true, PNG_ALL_FILTERS, 100000}, 4);
    for (int i = 0; i < 5000; ++i) {
        const auto damaged = withDamagedStream(whole, random);
        const Result<codecs::PngHeader> header = codecs::readPngHeader(asBytes(damaged), {});
        ASSERT_TRUE(header);
        if (const auto sparse = codecs::decodeSparsePixels(asBytes(damaged), *header, {})) {
            const Result<Bitmap> judge = codecs::decodePngByLibpng(asBytes(damaged));
            ASSERT_TRUE(judge) << i << ": " << judge.reason();
            EXPECT_EQ(bitmapOf(*sparse), *judge) << i;
        }
    }
}

TEST(PngPixels, everyFilterAndShapeIsReadAsByLibpng) {
    onEveryTarget([](const char* target) {
        for (const int filters :
             {PNG_FILTER_NONE, PNG_FILTER_SUB, PNG_FILTER_UP, PNG_FILTER_AVG, PNG_FILTER_PAETH, PNG_ALL_FILTERS}) {
            for (const bool hasAlpha : {false, true}) {
                for (const auto& [width, height] :
                     {std::pair{1, 9}, std::pair{2, 5}, std::pair{3, 4}, std::pair{4, 3}, std::pair{5, 1},
                      std::pair{7, 6}, std::pair{8, 8}, std::pair{31, 16}, std::pair{32, 17}, std::pair{33, 13},
                      std::pair{70, 24}, std::pair{257, 66}}) {
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
        const codecs::PngHeader pngHeader = *codecs::readPngHeader(asBytes(png), {});
        const bool taken = codecs::decodePlainPixels(asBytes(png), pngHeader, {}).has_value();
        EXPECT_EQ(codecs::decodeSparsePixels(asBytes(png), pngHeader, {}) != nullptr, taken);
        return taken;
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
