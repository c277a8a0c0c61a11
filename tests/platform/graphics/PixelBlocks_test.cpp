#include "platform/graphics/PixelBlocks.h"

#include "EveryTarget.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <vector>

namespace quillomat::testing {
namespace {

using Pixel = std::array<std::uint8_t, 4>;
using Row = std::vector<Pixel>;

std::vector<PixelBlock> classified(const Row& row) {
    std::vector<PixelBlock> blocks(blockCount(row.size()) + 1, PixelBlock{7, 7});
    classifyBlocks(row.data()->data(), row.size(), blocks.data());
    EXPECT_EQ(blocks.back(), (PixelBlock{7, 7})) << "nothing is touched behind the last";
    blocks.pop_back();
    return blocks;
}

/// What a block's pixels say one by one.
PixelBlock expected(Row::const_iterator begin, Row::const_iterator end) {
    const auto all = [&](auto is) { return std::all_of(begin, end, is); };
    PixelBlock block;
    std::memcpy(&block.color, begin->data(), 4);
    block.kinds = all([](const Pixel& p) { return p[3] == 255; }) ? asOpaque : asWhole;
    block.kinds |= all([&](const Pixel& p) { return p == *begin; }) ? asOneColor : 0;
    block.kinds |= all([](const Pixel& p) { return p[0] == p[3] && p[1] == p[3] && p[2] == p[3]; }) ? asWhite : 0;
    block.kinds |= all([](const Pixel& p) { return p[0] == 0 && p[1] == 0 && p[2] == 0; }) ? asBlack : 0;
    return block;
}

/// Runs of pixels that are alike in one way or another; one in a while is not.
Row randomRow(std::size_t width, std::mt19937& random) {
    Row row(width);
    const auto byte = [&] { return static_cast<std::uint8_t>(random() % 256); };
    for (std::size_t x = 0; x < width;) {
        const std::size_t end = std::min(width, x + 1 + random() % 50);
        const Pixel color{byte(), byte(), byte(), byte()};
        const auto kind = random() % 5;
        for (; x < end; ++x) {
            const std::uint8_t alpha = byte();
            row[x] = kind == 0   ? color
                     : kind == 1 ? Pixel{alpha, alpha, alpha, alpha}
                     : kind == 2 ? Pixel{0, 0, 0, alpha}
                     : kind == 3 ? Pixel{alpha, 1, 2, 255}
                                 : Pixel{};
        }
        if (random() % 3 == 0) {
            row[x - 1][random() % 4] ^= static_cast<std::uint8_t>(1U << random() % 8);
        }
    }
    return row;
}

TEST(PixelBlocks, areWhatTheirPixelsSay) {
    onEveryTarget([](const char* target) {
        std::mt19937 random(5);
        for (std::size_t width = 1; width < 200; ++width) {
            const Row row = randomRow(width, random);
            const std::vector<PixelBlock> blocks = classified(row);
            for (std::size_t b = 0; b < blocks.size(); ++b) {
                const auto begin = row.begin() + static_cast<std::ptrdiff_t>(b * blockPixels);
                const auto end = row.begin() + static_cast<std::ptrdiff_t>(std::min(width, (b + 1) * blockPixels));
                ASSERT_EQ(blocks[b], expected(begin, end)) << target << " block " << b << " of " << width << " pixels";
            }
        }
    });
}

// A block may be stored in any of the ways that suit all of its pixels.
TEST(PixelBlocks, onePixelDecides) {
    onEveryTarget([](const char* target) {
        for (std::size_t odd = 0; odd < blockPixels; ++odd) {
            Row row(blockPixels, Pixel{255, 255, 255, 255});
            EXPECT_EQ(classified(row)[0].kinds, asOneColor | asWhite | asOpaque) << target;
            row[odd] = {254, 254, 254, 254};
            EXPECT_EQ(classified(row)[0].kinds, asWhite | asWhole) << target << " " << odd;
            row[odd] = {255, 254, 255, 255};
            EXPECT_EQ(classified(row)[0].kinds, asOpaque) << target << " " << odd;
            row[odd] = {254, 255, 254, 255};
            EXPECT_EQ(classified(row)[0].kinds, asOpaque) << target << " " << odd;
            row.assign(blockPixels, Pixel{});
            EXPECT_EQ(classified(row)[0].kinds, asOneColor | asWhite | asBlack | asWhole) << target;
            row[odd] = {0, 0, 0, 1};
            EXPECT_EQ(classified(row)[0].kinds, asBlack | asWhole) << target << " " << odd;
        }
    });
}

} // namespace
} // namespace quillomat::testing
