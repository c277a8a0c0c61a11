// The hot loops, apart from the plain logic: what they compute is fixed to the bit, however fast they do it.
#pragma once

#include <array>
#include <bit>
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

constexpr int phaseBits = 8;
constexpr int phases = 1 << phaseBits;
constexpr int mostTaps = 16;

/// Weights of one filter profile at each of 256 phases of a column position. Tap t of a position reads the whole
/// position - taps / 2 + 1 + t. The weights of a line sum to 256, none is over 255.
struct ColumnTable {
    int taps = 4; // 4, 8 or 16
    /// The line of phase 0, a byte for each tap. There are lines from phase -128 up to phase 383: they weigh a
    /// neighbouring whole position's taps.
    const std::uint8_t* lines = nullptr;

    [[nodiscard]] std::uint8_t weight(int phase, int tap) const { return lines[phase * taps + tap]; }
};
constexpr int phasesBeyond = phases / 2;

/// The same for rows: tap t reads the whole position - taps / 2 + 1 + t. The weights of a line sum to 32768, none is
/// over 32767.
struct RowTable {
    int taps = 2; // even, up to 16
    const std::int16_t* lines = nullptr;

    /// A line has 4, 8 or 16 numbers; what follows the taps is 0.
    [[nodiscard]] int line() const { return taps <= 4 ? 4 : taps <= 8 ? 8 : 16; }
    [[nodiscard]] std::int16_t weight(int phase, int tap) const { return lines[phase * line() + tap]; }
};
constexpr int beyondRowLines = 4; // numbers that may be read behind the last line

/// What canvas rows to come will read, to be fetched from memory meanwhile: rows of the picture, counted from the first
/// that a footprint reads, at every so many canvas pixels.
struct FetchedAhead {
    int firstRow = 0;
    int rows = 0;
    int pixelsApart = 1;
};

/// A sheared separable footprint, the same over a stretch of pixels. Positions are in 1/256 of a picture's pixel, the
/// centre of the first pixel being 0.
struct Footprint {
    PixelView picture;
    const ColumnTable* columns = nullptr;
    const RowTable* rows = nullptr;
    /// Columns per row, times 32768, at most 16 of them.
    std::int32_t shear = 0;
    /// All rows begin at one column, that of the footprint's middle, and their phases differ by a whole number each:
    /// then `shear` is a multiple of `steadyShear`, it moves no row by more than `phasesBeyond` from the middle, and
    /// the rows of a segment lie within 2^31 bytes.
    bool isSteady = false;
    /// Of a steady footprint of four rows of four columns, where somebody made them: sixteen bytes for each phase from
    /// -128 up to 383 of its first row, the column weights of all four rows.
    const std::uint8_t* steadyLines = nullptr;
    FetchedAhead ahead;
};
// Weights' products sum to 2^23 times the pixels less 128: half a step more and 128 raise them to where they are
// rounded by cutting.
constexpr int sumBits = 23;
constexpr std::int32_t sumOfHalf = (1 << (sumBits - 1)) + (128 << sumBits);
constexpr int shearOne = 1 << 15;
constexpr int steadyShear = shearOne / phases;

/// Pixels that are the average of parts of themselves: so many beside each other, in so many rows; powers of two.
struct PixelParts {
    int across = 1;
    int down = 1;

    [[nodiscard]] constexpr int count() const { return across * down; }
    /// Bits that a part's sum loses, so that those of all parts add up to one of a whole pixel.
    [[nodiscard]] constexpr int shift() const { return std::countr_zero(static_cast<unsigned>(count())); }
};

constexpr int mostPartsAcross = 4;
constexpr int mostPartsDown = 4;

constexpr int longestSegment = 64;
constexpr int longestBlock = 256;

/// A row of projected positions: at canvas coordinate x, u = (x uStep + u0) / (x wStep + w0), and so v, in 1/256 of a
/// pixel. They are cut to where all taps read the picture's edge anyway; what is no number becomes the lowest.
struct ProjectedRow {
    double u0 = 0, uStep = 0;
    double v0 = 0, vStep = 0;
    double w0 = 0, wStep = 0;
    double highestU = 0, highestV = 0;
};
constexpr double lowestPosition = -32 * phases;

/// Positions along a block in which w hardly changes: start + step i + bend i², rounded, `origin` apart.
struct CurvedRow {
    struct Axis {
        std::int32_t origin = 0;
        float start = 0;
        float step = 0;
        float bend = 0;
    };
    Axis u;
    Axis v;
};
/// Positions lie less than this from their origin.
constexpr float farthestFromOrigin = 1 << 18;
/// 1.5 x 2^23, from where on floats are whole numbers: added to a position it rounds that to the nearest one, and the
/// sum's bits are these and as many more.
constexpr float roundingFloat = 12582912;
constexpr std::int32_t bitsOfRoundingFloat = 0x4B400000;

constexpr int linePhaseBits = 6;
constexpr int linePhases = 1 << linePhaseBits;
constexpr int mostLineRows = 8;
constexpr int mostLineParts = 2;

/// Row weights of a footprint along a line, at each of 64 phases: tap t of a position reads the whole position
/// - taps / 2 + 1 + t. Those of a phase sum to 256, none is over 255.
struct LineRows {
    int taps = 4; // even, up to `mostLineRows`
    /// Of each part the weights of tap 0 at all phases, then those of tap 1, and so on. Of two parts the first, above
    /// the line, leaves the taps behind taps / 2 alone, the second those before taps / 2 - 1. Each tap's weights begin
    /// at a multiple of 64 bytes.
    const std::uint8_t* weights[mostLineParts] = {};
    /// The same once more for each two taps, phase by phase: their two weights four times over, once for each channel.
    const std::uint8_t* pairs[mostLineParts] = {};

    [[nodiscard]] std::uint8_t weight(int part, int phase, int tap) const {
        return weights[part][tap * linePhases + phase];
    }
};

/// The same for columns, at 256 phases about the nearest whole position: tap t reads that position - 3 + t. Those of a
/// phase sum to 32768, none is over 32767.
struct LineColumns {
    /// Eight numbers for each phase from -128 up to 127. The eighth is 0, and so is the number before the first one.
    const std::int16_t* lines = nullptr;

    [[nodiscard]] std::int16_t weight(int phase, int tap) const { return lines[(phase + phases / 2) * taps + tap]; }
    static constexpr int taps = 8;
};

/// Pixels of a block along a line have the same columns from one multiple of it to the next at least.
constexpr int pixelsAlike = 16;

/// A footprint for canvas rows that lead along the picture's rows, more or less. Columns of the picture are combined
/// first, each about where the canvas row's line crosses it, once for all pixels that read it. Pixels are combined from
/// those. A footprint of two parts is the average of two halves, above and below the line, which lie as far aside as
/// the canvas's columns lean.
struct LineFootprint {
    struct Columns {
        const LineColumns* table = nullptr;
        std::int32_t aside = 0; // of the second part, in phases; the first lies as far on the other side
    };
    static constexpr std::size_t mostColumns = 4;

    PixelView picture;
    const LineRows* rows = nullptr;
    /// Of each 2^(columnBits) pixels from the first one on.
    std::array<Columns, mostColumns> columns;
    int columnBits = 0;
    std::int32_t mostAside = 0; // of any of them
    int parts = 1;
    FetchedAhead ahead;

    [[nodiscard]] const Columns& columnsOf(int pixel) const {
        return columns[static_cast<std::size_t>(pixel) >> columnBits];
    }
    /// The pixel behind those that share a pixel's columns.
    [[nodiscard]] int endOfColumns(int pixel) const { return ((pixel >> columnBits) + 1) << columnBits; }
};
constexpr int farthestAside = 2 * phases;
/// Positions of neighbouring pixels are no farther apart, in phases.
constexpr int mostLineStep = 6 * phases;

/// Columns at which a row's pixels lie, in phases: start + step i / (1 + fall i), rounded, `origin` apart. All lie one
/// way.
struct LineCurve {
    std::int32_t origin = 0;
    float start = 0;
    float step = 0;
    float fall = 0;
};

/// Where a canvas row's line leads: in `column` + c it lies at `row` + (start + step c) / 65536.
struct PictureLine {
    std::int32_t column = 0;
    std::int32_t row = 0;
    std::int32_t start = 0;
    std::int32_t step = 0;
};
constexpr int lineBits = 16;
/// A line's step is no more than that: 16 columns of it lie in no more than ten rows.
constexpr int steepestLine = (9 << lineBits) / 15;
/// Sums of weights' products come to 2^(bits) times the pixels less 128, for each part half of that: what is added to
/// them before they are cut, in 32 bits without a sign.
constexpr int lineSumBits(int parts) {
    return 22 + parts;
}
constexpr std::uint32_t halfOfLineSum(int parts) {
    return (1U << (lineSumBits(parts) - 1)) + (128U << lineSumBits(parts));
}

/// The sum of weights whose products with bytes are added up in 16 bits.
constexpr int mixedWhole = 112;
/// 65536 / mixedWhole: (sum + mixedWhole / 2) x this / 65536 is at most 0.06 below the sum's mean.
constexpr int mixedInverse = 585;
/// What a line's positive weights come to at most, so that no sum of them leaves 16 bits in whatever order it is made.
constexpr int mostOneSign = 128;
static_assert(255 * mostOneSign + mixedWhole / 2 <= 32767);

/// Neighbouring columns that wide registers mix together: eight, two taps of each at once, or four, four taps of each.
/// All that is taken at once lies in a window of 16 pixels, of eight columns even all taps; that of four columns
/// moves on by four pixels with each step. Pixel `base` of a row is the window's first; the columns' first taps lie so
/// many bytes on.
struct ColumnGroup {
    std::int32_t base = 0;
    std::uint8_t offsets[8] = {};
};
constexpr int groupWindow = 16;
constexpr int groupBytes = 16; // of a group's weights for the taps that are taken at once
constexpr int mostGroupSteps = 4;
constexpr int beyondGroupWeights = 64; // bytes that may be read behind the last ones

/// Which pixels of a row each column takes, and their weights.
struct MixedColumns {
    int taps = 4; // 4 or a multiple of 8
    const std::int32_t* first = nullptr;
    /// Of each two weights the pair stands four times over, once for each channel.
    const std::int8_t* weights = nullptr;
    /// The same once more for groups of columns from the first one on, where windows hold their pixels. Of each group,
    /// step by step, its columns' weights.
    const ColumnGroup* groups = nullptr;
    const std::int8_t* groupWeights = nullptr;
    int tapsAtOnce = 0; // 2 or 4
    int steps = 0;
};

/// Sixteen neighbouring columns of a plane that wide registers mix together, four taps of each at once. Those four lie
/// in a window of 64 samples, `offsets` on from its first one, which is sample `base` and moves on by four with each
/// step.
struct PlaneGroup {
    std::int32_t base = 0;
    std::uint8_t offsets[16] = {};
};
constexpr int planeGroupColumns = 16;
constexpr int planeGroupTaps = 4; // that are taken at once
constexpr int planeWindow = 64;
constexpr int planeTapsTogether = 16;

/// Which samples of a row each column of a plane takes, and their weights, of the sum `mixedWhole`.
struct PlaneColumns {
    int taps = planeTapsTogether; // a multiple of that
    const std::int32_t* first = nullptr;
    const std::int8_t* weights = nullptr;
    /// The same once more for groups of columns from the first one on, where windows hold their samples. Of each group,
    /// step by step, its columns' weights.
    const PlaneGroup* groups = nullptr;
    const std::int8_t* groupWeights = nullptr;
    int steps = 0;
};

/// Rows of a plane that are mixed, and those that will be mixed next: asked for meanwhile, as they come from memory
/// more slowly than they are mixed. Of those, the ones that are not there yet are null.
struct PlaneRows {
    const std::uint8_t* const* rows = nullptr;
    const std::int8_t* weights = nullptr;
    int taps = 0;
    const std::uint8_t* const* next = nullptr;
    int nextCount = 0;
};

/// A row of each plane: Y, Cb and Cr.
struct PlanarRow {
    const std::uint8_t* luma = nullptr;
    const std::uint8_t* blueChroma = nullptr;
    const std::uint8_t* redChroma = nullptr;
};

/// From sums of weights' products, chroma's less that of 128, to colours times 2^20: JFIF's 1, 1.402, -0.344136,
/// -0.714136 and 1.772, each times 2^20 / mixedWhole.
namespace planar {
constexpr int colorBits = 20;
constexpr std::int16_t luma = 9362;
constexpr std::int16_t redOfRed = 13126;
constexpr std::int16_t greenOfBlue = -3222;
constexpr std::int16_t greenOfRed = -6686;
constexpr std::int16_t blueOfBlue = 16590;
constexpr std::int16_t noChroma = 128 * mixedWhole;
} // namespace planar

/// A row of a picture, and the one that is likely to be read next: it is fetched from memory meanwhile. Null where
/// nothing is known of that one.
struct MixedRow {
    const std::uint8_t* pixels = nullptr;
    const std::uint8_t* next = nullptr;
};

struct Kernels {
    const char* name;

    /// Positions of the centres of `count` canvas pixels from column `left` on.
    void (*projectPositions)(const ProjectedRow& row, int left, int count, std::int32_t* u, std::int32_t* v);
    /// Filters up to `longestSegment` pixels at the positions (u, v), which have room for so many; what they hold
    /// beyond `count` does not matter. Taps outside the picture read its nearest pixel.
    void (*filterFootprint)(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                            std::uint8_t* out);
    /// The same at any number of positions along a curve, from its `first` on.
    void (*filterAlongCurve)(const Footprint& footprint, const CurvedRow& row, int first, int count, std::uint8_t* out);
    /// The same two for parts of pixels: four sums of weights' products for each position, not rounded yet.
    void (*sumFootprint)(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                         std::int32_t* sums);
    void (*sumAlongCurve)(const Footprint& footprint, const CurvedRow& row, int first, int count, std::int32_t* sums);
    /// Filters any number of pixels of a canvas row that follows the line, at the positions along a curve from its
    /// `first` on.
    void (*filterAlongLine)(const LineFootprint& footprint, const PictureLine& line, const LineCurve& curve, int first,
                            int count, std::uint8_t* out);
    /// `count` pixels from the sums of their parts, row of parts by row of parts.
    void (*averageParts)(const std::int32_t* sums, PixelParts parts, int count, std::uint8_t* out);
    /// Weighted sum of `taps` rows of `count` bytes, weights of sum 16384; results have 6 fractional bits.
    void (*combineRows)(const std::uint8_t* const* rows, const std::int16_t* weights, int taps, int count,
                        std::int16_t* out);
    /// For each pixel, `taps` (an even number of) neighbours from `first` on of a row of 6 fractional bits, weights of
    /// sum 16384. Colours that overshoot are cut to the alpha.
    void (*combineColumns)(const std::int16_t* row, const std::int32_t* first, const std::int16_t* weights, int taps,
                           int count, std::uint8_t* out);
    /// The same two in bytes, with weights of the sum `mixedWhole`, of which neither the positive ones nor the negative
    /// ones come to more than `mostOneSign`. Colours that overshoot are cut to the alpha.
    /// `taps` rows of `count` pixels.
    void (*mixRows)(const std::uint8_t* const* rows, const std::int8_t* weights, int taps, int count,
                    std::uint8_t* out);
    /// `count` columns from `from` on; where rows are mixed afterwards, colours may wait until then to be cut.
    void (*mixColumns)(const MixedColumns& columns, const MixedRow& row, int from, int count, bool isCut,
                       std::uint8_t* out);
    /// The same for rows and columns of planes. Of rows that begin at lines of the cache, the samples [from, to), all
    /// of those lines.
    void (*mixPlaneRows)(const PlaneRows& rows, int from, int to, std::uint8_t* out);
    /// `count` columns from `from` on of all three planes, as opaque colours.
    void (*mixPlaneColumns)(const PlaneColumns& luma, const PlaneColumns& chroma, const PlanarRow& row, int from,
                            int count, std::uint8_t* out);
    /// Draws `count` pixels over `canvas`, each at its coverage.
    void (*compositeCovered)(std::uint8_t* canvas, const std::uint8_t* pixels, const std::uint8_t* coverage, int count);
    /// The same at one coverage.
    void (*compositeUniform)(std::uint8_t* canvas, const std::uint8_t* pixels, int coverage, int count);
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
