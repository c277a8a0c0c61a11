// The hot loops, apart from the plain logic: what they compute is fixed to the bit, however fast they do it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quillomat::raster {

/// Pixels of a picture as the hot loops see them: packed premultiplied RGBA.
struct PixelView {
    const std::uint8_t* pixels = nullptr;
    int width = 0;
    int height = 0;
    std::size_t stride = 0;
};

/// A sheared separable footprint, the same over a stretch of pixels. Positions are in 1/64 of a picture's pixel, the
/// centre of the first pixel being 0. The tables have one line of 16 weights for each of the 64 phases, of which `taps`
/// count; tap t of a line belongs to the whole position - taps / 2 + 1 + t.
struct Footprint {
    PixelView picture;
    const std::uint8_t* columnWeights = nullptr; // 16 bytes a line, sum 128, none over 127
    const std::int16_t* rowWeights = nullptr;    // 16 numbers a line, sum 32768, none over 32767
    int columnTaps = 4;                          // 4, 8, 12 or 16
    int rowTaps = 4;                             // 4, 8, 12 or 16
    std::int32_t shear = 0;                      // columns per row, times 65536
};

constexpr int phaseBits = 6;
constexpr int phases = 1 << phaseBits;
constexpr int weightLine = 16;

struct Kernels {
    const char* name;

    /// Filters `count` pixels at the positions (u, v). Taps outside the picture read its nearest pixel.
    void (*filterFootprint)(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                            std::uint8_t* out);
    /// Weighted sum of `taps` rows of `count` bytes, weights of sum 16384; results have 6 fractional bits.
    void (*combineRows)(const std::uint8_t* const* rows, const std::int16_t* weights, int taps, int count,
                        std::int16_t* out);
    /// For each pixel, `taps` neighbours from `first` on of a row of 6 fractional bits, weights of sum 16384. Colours
    /// that overshoot are cut to the alpha.
    void (*combineColumns)(const std::int16_t* row, const std::int32_t* first, const std::int16_t* weights, int taps,
                           int count, std::uint8_t* out);
    /// Draws `count` pixels over `canvas`, each at its coverage.
    void (*compositeCovered)(std::uint8_t* canvas, const std::uint8_t* pixels, const std::uint8_t* coverage, int count);
    /// The same at one coverage.
    void (*compositeUniform)(std::uint8_t* canvas, const std::uint8_t* pixels, std::uint8_t coverage, int count);
};

/// Plain loops, one pixel at a time: the twin that the others are tested against.
[[nodiscard]] const Kernels& scalarKernels();
/// The best that this processor runs.
[[nodiscard]] const Kernels& bestKernels();

/// a / 255 rounded to the nearest, for a up to 65,279.
[[nodiscard]] constexpr std::uint32_t dividedBy255(std::uint32_t a) {
    return (a + 128 + ((a + 128) >> 8)) >> 8;
}

} // namespace quillomat::raster
