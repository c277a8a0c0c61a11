#include "EveryTarget.h"
#include "platform/graphics/codecs/PixelRows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace quillomat::testing {
namespace {

/// Every colour with every alpha, in rows of an odd length.
std::vector<std::uint8_t> everyColorAndAlpha() {
    std::vector<std::uint8_t> pixels;
    for (int alpha = 0; alpha < 256; ++alpha) {
        for (int color = 0; color < 256; ++color) {
            for (const int value : {color, 255 - color, (color * 3) % 256, alpha}) {
                pixels.push_back(static_cast<std::uint8_t>(value));
            }
        }
    }
    pixels.resize(pixels.size() + 12, 77);
    return pixels;
}

TEST(PixelRows, premultipliedColorsAreTheNearestOnes) {
    const std::vector<std::uint8_t> straight = everyColorAndAlpha();
    onEveryTarget([&](const char* target) {
        std::vector<std::uint8_t> out(straight.size());
        codecs::premultiply(straight.data(), out.data(), straight.size() / 4);
        for (std::size_t i = 0; i < straight.size(); ++i) {
            const int alpha = straight[i / 4 * 4 + 3];
            const double exact = i % 4 == 3 ? alpha : straight[i] * alpha / 255.0;
            ASSERT_EQ(out[i], static_cast<int>(std::floor(exact + 0.5))) << target << " " << i;
        }
        std::vector<std::uint8_t> inPlace = straight;
        codecs::premultiply(inPlace.data(), inPlace.data(), inPlace.size() / 4);
        EXPECT_EQ(inPlace, out) << target;
    });
}

TEST(PixelRows, bytesAreAddedToTheirSums) {
    onEveryTarget([&](const char* target) {
        for (const std::size_t count : {0U, 1U, 7U, 64U, 131U}) {
            std::vector<std::uint8_t> bytes(count);
            std::vector<std::uint16_t> sums(count + 1);
            for (std::size_t i = 0; i < count; ++i) {
                bytes[i] = static_cast<std::uint8_t>(255 - i);
                sums[i] = static_cast<std::uint16_t>(i * 300);
            }
            codecs::addBytes(bytes.data(), sums.data(), count);
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(sums[i], i * 300 + bytes[i]) << target;
            }
            EXPECT_EQ(sums[count], 0) << target << ": nothing is touched behind the last";
        }
    });
}

TEST(PixelRows, everyPremultipliedColorSurvivesBeingMadeStraight) {
    for (int alpha = 1; alpha < 256; ++alpha) {
        for (int color = 0; color <= alpha; ++color) {
            const std::uint8_t value = static_cast<std::uint8_t>(color);
            const std::uint8_t pixel[4] = {value, value, value, static_cast<std::uint8_t>(alpha)};
            std::uint8_t straight[4];
            std::uint8_t back[4];
            codecs::unpremultiply(pixel, straight, 1);
            codecs::premultiply(straight, back, 1);
            ASSERT_TRUE(std::equal(back, back + 4, pixel)) << color << " of " << alpha;
        }
    }
}

TEST(PixelRows, straightColorsAreTheNearestOnesAmongOpaqueAndEmptyOnes) {
    std::vector<std::uint8_t> row;
    for (int i = 0; i < 203; ++i) {
        const int alpha = i % 31 < 12 ? 255 : i % 31 < 24 ? 0 : i;
        for (const int value : {alpha / 2, alpha, alpha / 5, alpha}) {
            row.push_back(static_cast<std::uint8_t>(value));
        }
    }
    std::vector<std::uint8_t> out(row.size());
    codecs::unpremultiply(row.data(), out.data(), row.size() / 4);
    for (std::size_t i = 0; i < row.size(); ++i) {
        const int alpha = row[i / 4 * 4 + 3];
        const double exact = i % 4 == 3 ? alpha : alpha == 0 ? 0 : std::min(255.0, row[i] * 255.0 / alpha);
        EXPECT_EQ(out[i], static_cast<int>(std::floor(exact + 0.5))) << i;
    }
}

TEST(PixelRows, rowsAreMadeOpaqueAtEveryWidth) {
    onEveryTarget([](const char* target) {
        for (std::size_t pixels = 0; pixels < 80; ++pixels) {
            std::vector<std::uint8_t> from(pixels * 4);
            for (std::size_t i = 0; i < from.size(); ++i) {
                from[i] = static_cast<std::uint8_t>(i * 5);
            }
            std::vector<std::uint8_t> to(pixels * 4 + 1, 0xee);
            codecs::makeOpaque(from.data(), to.data(), pixels);
            for (std::size_t i = 0; i < from.size(); ++i) {
                ASSERT_EQ(to[i], i % 4 == 3 ? 255 : from[i]) << target << " " << pixels;
            }
            EXPECT_EQ(to.back(), 0xee) << target << ": written too far";
            codecs::makeOpaque(from.data(), from.data(), pixels);
            EXPECT_TRUE(std::equal(from.begin(), from.end(), to.begin())) << target << ": in place";
            EXPECT_TRUE(codecs::allOpaque(to.data(), pixels));
            if (pixels > 0) {
                to[pixels * 4 - 1] = 254;
                EXPECT_FALSE(codecs::allOpaque(to.data(), pixels));
            }
        }
    });
}

} // namespace
} // namespace quillomat::testing
