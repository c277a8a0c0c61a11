// Rows of pixels in blocks of 16, and what each block can be stored as.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quillomat {

constexpr std::size_t blockPixels = 16;

/// Bits of `PixelBlock::kinds`. A block is opaque or whole, never both.
constexpr std::uint32_t asOneColor = 1;
constexpr std::uint32_t asWhite = 2; // light: the colours are as the alpha
constexpr std::uint32_t asBlack = 4; // shadow: the colours are 0
constexpr std::uint32_t asWhole = 8;
constexpr std::uint32_t asOpaque = 16;

struct PixelBlock {
    std::uint32_t color = 0; // of its first pixel, whose alpha is the highest byte
    std::uint32_t kinds = 0;

    friend constexpr bool operator==(const PixelBlock&, const PixelBlock&) = default;
};

[[nodiscard]] constexpr std::size_t blockCount(std::size_t pixels) {
    return (pixels + blockPixels - 1) / blockPixels;
}

/// Looks at a row of premultiplied RGBA and writes `blockCount(pixels)` blocks; the last one is of what pixels there
/// are.
void classifyBlocks(const std::uint8_t* rgba, std::size_t pixels, PixelBlock* blocks);

} // namespace quillomat
