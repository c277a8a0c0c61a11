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

constexpr int phaseBits = 7;
constexpr int phases = 1 << phaseBits;
constexpr int mostTaps = 16;

/// Weights of one filter profile at each of 128 phases of a position, laid out as vectors read them.
struct PhaseTable {
    int columnTaps = 4; // 4, 8, 12 or 16
    int rowTaps = 2;    // even, up to 16
    /// Column tap t reads the whole position - columnTaps / 2 + 1 + t; row tap t reads it + rowStart(phase) + t.
    int firstRowStart = 0;
    int laterRowStartsFrom = phases; // from this phase on, rows start one later
    /// A line has columnTaps x 4 bytes: of each two taps the pair of weights, four times over, once for each channel.
    /// The weights sum to 256, none is over 255.
    const std::uint8_t* columns = nullptr;
    /// A line has rowTaps x 8 numbers: each weight eight times over. They sum to 32768, none is over 32767.
    const std::int16_t* rows = nullptr;

    [[nodiscard]] std::ptrdiff_t columnLine() const { return columnTaps * 4; }
    [[nodiscard]] std::ptrdiff_t rowLine() const { return rowTaps * 8; }
    [[nodiscard]] int rowStart(int phase) const { return firstRowStart + (phase >= laterRowStartsFrom ? 1 : 0); }
    [[nodiscard]] std::uint8_t columnWeight(int phase, int tap) const {
        return columns[phase * columnLine() + (tap / 2) * 8 + tap % 2];
    }
    [[nodiscard]] std::int16_t rowWeight(int phase, int tap) const { return rows[phase * rowLine() + tap * 8]; }
};

/// A sheared separable footprint, the same over a stretch of pixels. Positions are in 1/128 of a picture's pixel, the
/// centre of the first pixel being 0.
struct Footprint {
    PixelView picture;
    const PhaseTable* columns = nullptr;
    const PhaseTable* rows = nullptr;
    std::int32_t shear = 0; // columns per row, times 65536, at most 16 of them
};

constexpr int longestSegment = 64;

/// A row of projected positions: at canvas coordinate x, u = (x uStep + u0) / (x wStep + w0), and so v, in 1/128 of a
/// pixel. They are cut to where all taps read the picture's edge anyway; what is no number becomes the lowest.
struct ProjectedRow {
    double u0 = 0, uStep = 0;
    double v0 = 0, vStep = 0;
    double w0 = 0, wStep = 0;
    double highestU = 0, highestV = 0;
};
constexpr double lowestPosition = -32 * phases;

struct Kernels {
    const char* name;

    /// Positions of the centres of `count` canvas pixels from column `left` on.
    void (*projectPositions)(const ProjectedRow& row, int left, int count, std::int32_t* u, std::int32_t* v);
    /// Filters up to `longestSegment` pixels at the positions (u, v). Taps outside the picture read its nearest pixel.
    void (*filterFootprint)(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                            std::uint8_t* out);
    /// Weighted sum of `taps` rows of `count` bytes, weights of sum 16384; results have 6 fractional bits.
    void (*combineRows)(const std::uint8_t* const* rows, const std::int16_t* weights, int taps, int count,
                        std::int16_t* out);
    /// For each pixel, `taps` (an even number of) neighbours from `first` on of a row of 6 fractional bits, weights of
    /// sum 16384. Colours that overshoot are cut to the alpha.
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

/// a / 255 rounded to the nearest, for a up to 65,152.
[[nodiscard]] constexpr std::uint32_t dividedBy255(std::uint32_t a) {
    return (a + 128 + ((a + 128) >> 8)) >> 8;
}

} // namespace quillomat::raster
