#include "platform/graphics/raster/FilterTables.h"
#include "platform/graphics/raster/FootprintShape.h"
#include "platform/graphics/raster/Pyramid.h"
#include "platform/graphics/raster/Sampler.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>

namespace quillomat::raster {

namespace {

constexpr int shortestSegment = 4;
// How much w may change over the pixels, and over the rows, that share a footprint.
constexpr double largestChange = 0.03;
// The same for long stretches, where the parabola that their positions follow would stray.
constexpr double largestLongChange = 0.01;
constexpr int mostRowsTogether = 16;
// Positions that leave their room to be counted in whole numbers from the picture's edge, in phases.
constexpr double farthestPlain = 1 << 28;
// In columns; a phase less than the tables hold, as positions are rounded.
constexpr double farthestSteady = 0.49;
// Footprints of four rows have tables of their own for each shear: finer steps leave the caches, and no trace.
constexpr int smallShear = 2 * steadyShear;
constexpr double pixelsInCacheLine = 16;
constexpr int mostRowsFetched = 8;
// So far below the canvas row that is drawn is the one whose pixels are fetched meanwhile.
constexpr int rowsAhead = 5;
// A segment's rows, some hundreds, then lie within 2^31 bytes.
constexpr int widestSteady = 1 << 20;

/// Two box widths.
struct Boxes {
    double a = 0;
    double b = 0;

    [[nodiscard]] double squared() const { return a * a + b * b; }
    [[nodiscard]] Boxes scaledTo(double squares) const {
        const double now = squared();
        const double scale = now > 0 ? std::sqrt(squares / now) : 0;
        return {a * scale, b * scale};
    }
};

/// What a box of squared width `squared` leaves for a picture halved to 1/`factor`: halving has averaged `factor`
/// samples already, and the tent is as much wider.
double squaredWidthAtLevel(double squared, double factor) {
    return factor == 1 ? squared : std::max(0.0, squared + 3 - 3 * factor * factor) / (factor * factor);
}

int levelForWidth(double width) {
    int level = 0;
    while (width > widestBoxes && level < 20) {
        width /= 2;
        ++level;
    }
    return level;
}

/// How many rows from one multiple of it to the next share footprints: over them w changes little, wherever it is
/// asked.
int rowsTogetherFor(const Homography& map, const SampledArea& area) {
    double smallest = std::numeric_limits<double>::infinity();
    for (const double x : {static_cast<double>(area.left), static_cast<double>(area.right)}) {
        for (const double y : {static_cast<double>(area.top), static_cast<double>(area.bottom)}) {
            smallest = std::min(smallest, x * map.m[2] + y * map.m[5] + map.m[8]);
        }
    }
    int rows = mostRowsTogether;
    while (rows > 1 && !(std::abs(map.m[5]) * rows < largestChange * smallest)) {
        rows /= 2;
    }
    return rows;
}

/// Where a projected row leads at x.
struct PointOnRow {
    double x = std::numeric_limits<double>::quiet_NaN();
    double w = 0;
    double u = 0;
    double v = 0;

    PointOnRow() = default;
    PointOnRow(const ProjectedRow& row, double at) : x(at), w(at * row.wStep + row.w0) {
        const double inverse = 1 / w;
        u = (at * row.uStep + row.u0) * inverse;
        v = (at * row.vStep + row.v0) * inverse;
    }
};

/// How a row's pixels move on the picture, wherever they are: w² times what a step right leads to.
struct LineOfRow {
    double toU = 0;
    double slope = 0; // in rows to a column

    explicit LineOfRow(const ProjectedRow& row)
        : toU(row.uStep * row.w0 - row.u0 * row.wStep), slope((row.vStep * row.w0 - row.v0 * row.wStep) / toU) {}
};

/// A canvas row that is being drawn.
struct RowUnderWay {
    int y = 0;
    ProjectedRow positions;
    std::optional<LineOfRow> line; // once it is needed
    PointOnRow from;               // where the last block ended
};

/// A block's first position, the one in its middle, and the next block's first one.
struct CurveEnds {
    PointOnRow from;
    PointOnRow middle;
    PointOnRow to;
};

class WarpSampler final : public Sampler {
public:
    WarpSampler(std::shared_ptr<const Pyramid> picture, const Homography& canvasToPicture, const SampledArea& area,
                const Kernels& kernels)
        : size_(picture->picture()->size())
        , pyramid_(std::move(picture))
        , map_(canvasToPicture)
        , rowsTogether_(rowsTogetherFor(canvasToPicture, area))
        , kernels_(kernels) {}

    void row(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const override {
        FootprintBlocks& blocks = scratch.footprintsOf(this);
        blocks.begin(y / rowsTogether_, static_cast<std::size_t>(right) / shortestSegment + 1);
        RowUnderWay row{y, projectedRow(y, 0, {}), {}, {}};
        while (left < right) {
            FootprintBlock& block = blockAt(y, left, blocks);
            const int end = std::min(right, block.left + block.length);
            segment(block, row, left, end, out, scratch);
            out += static_cast<std::ptrdiff_t>(end - left) * 4;
            left = end;
        }
    }

private:
    /// How many pixels may share a footprint, which grows as w falls: over them w changes by a few hundredths. Blocks
    /// begin at multiples of their lengths, so that a pixel's block does not depend on how much of its row is drawn.
    [[nodiscard]] int lengthAt(double y, int x) const {
        int length = longestBlock;
        while (length > shortestSegment && !isAlike(x / length * length + length / 2, y, length)) {
            length /= 2;
        }
        return length;
    }

    /// Whether footprints are alike over so many pixels about x.
    [[nodiscard]] bool isAlike(double x, double y, int length) const {
        const auto& m = map_.m;
        const double w = x * m[2] + y * m[5] + m[8];
        const double change = std::abs(m[2] / w) * length;
        if (length <= longestSegment) {
            return change < largestChange;
        }
        // What one step down leads to grows along the row, where w changes from row to row.
        const double sidewards =
            std::abs((m[0] * w - (x * m[0] + y * m[3] + m[6]) * m[2]) * m[5] / (w * w * w)) * length;
        return change < largestLongChange && sidewards < largestLongChange;
    }

    /// The block that pixel x of row y lies in, the same for all rows that go together.
    [[nodiscard]] FootprintBlock& blockAt(int y, int x, FootprintBlocks& blocks) const {
        const auto [block, isKnown] = blocks.at(static_cast<std::size_t>(x) / shortestSegment);
        if (!isKnown) {
            const double middleY = middleOfRows(y);
            block->length = lengthAt(middleY, x);
            block->left = x / block->length * block->length;
            block->along.reset();
            block->ofParts.reset();
            const Steps whole = stepsAt(block->left + block->length / 2.0, middleY);
            if (block->length >= pixelsAlike) {
                block->along = lineFootprintFor(whole);
            }
            if (block->along) {
                block->along->picture = pyramid_->level(0, 0);
                block->along->ahead = fetchedAhead(block->along->rows->taps, whole.rightU, whole.downV);
                findColumnsAlong(*block, middleY);
            }
        }
        return *block;
    }

    /// What a step right leads to changes with the square of w, and more than rows do: columns of their own, which cost
    /// nothing, are changed more often.
    void findColumnsAlong(FootprintBlock& block, double y) const {
        LineFootprint& along = *block.along;
        const int alike = std::max(block.length / static_cast<int>(LineFootprint::mostColumns), pixelsAlike);
        along.columnBits = std::countr_zero(static_cast<unsigned>(alike));
        for (int at = 0; at < block.length; at += alike) {
            const Steps step = stepsAt(block.left + at + alike / 2.0, y);
            LineFootprint::Columns& columns = along.columns[static_cast<std::size_t>(at / alike)];
            columns = lineColumnsFor(step, along.parts);
            along.mostAside = std::max(along.mostAside, std::abs(columns.aside));
        }
    }

    [[nodiscard]] double middleOfRows(int y) const { return y / rowsTogether_ * rowsTogether_ + rowsTogether_ / 2.0; }

    [[nodiscard]] Steps stepsAt(double x, double y) const {
        const auto& m = map_.m;
        const double w = x * m[2] + y * m[5] + m[8];
        const double u = (x * m[0] + y * m[3] + m[6]) / w;
        const double v = (x * m[1] + y * m[4] + m[7]) / w;
        const double most = 4.0 * std::max(size_.width, size_.height);
        const auto bounded = [most](double value) {
            return value > -most ? (value < most ? value : most) : -most; // NaN becomes -most
        };
        return {bounded((m[0] - u * m[2]) / w), bounded((m[1] - v * m[2]) / w), bounded((m[3] - u * m[5]) / w),
                bounded((m[4] - v * m[5]) / w)};
    }

    [[nodiscard]] PartsFootprint footprintFor(const Steps& whole) const {
        PartsFootprint result;
        result.parts.each = partsFor(whole);
        const Steps step = whole.ofParts(result.parts.each);
        const Boxes fullRows{std::abs(step.rightV), std::abs(step.downV)};
        const int levelV = levelForWidth(fullRows.a + fullRows.b);
        const double factorV = 1 << levelV;
        const Boxes rows = fullRows.scaledTo(squaredWidthAtLevel(fullRows.squared(), factorV));
        const double covariance = step.covariance() / factorV;
        const double shear = covariance / (rows.squared() + 2);

        const Boxes sheared{std::abs(step.rightU - shear * step.rightV / factorV),
                            std::abs(step.downU - shear * step.downV / factorV)};
        const double squares = std::max(0.0, step.rightU * step.rightU + step.downU * step.downU - covariance * shear);
        const Boxes fullColumns = sheared.scaledTo(squares);
        const int levelU = levelForWidth(fullColumns.a + fullColumns.b);
        const double factorU = 1 << levelU;
        const Boxes columns = fullColumns.scaledTo(squaredWidthAtLevel(squares, factorU));

        result.parts.scaleU = 1 / factorU;
        result.parts.scaleV = 1 / factorV;
        Footprint& footprint = result.footprint;
        footprint.picture = pyramid_->level(levelU, levelV);
        footprint.rows = &rowTable(rows.a, rows.b);
        // Beyond 16 columns a row nothing is told apart that so few rows of taps could show.
        const double columnsPerRow = std::clamp(shear / factorU, -16.0, 16.0);
        const double farthest = std::abs(columnsPerRow) * (footprint.rows->taps - 1) / 2;
        footprint.isSteady = footprint.picture.width <= widestSteady && farthest <= farthestSteady &&
                             columns.a + columns.b + 2 * farthest <= widestBoxes;
        footprint.columns = &columnTable(columns.a, columns.b, footprint.isSteady ? farthest : 0);
        const bool isSmall = footprint.isSteady && footprint.rows->taps == 4 && footprint.columns->taps == 4;
        const int unit = isSmall ? smallShear : footprint.isSteady ? steadyShear : 1;
        footprint.shear = unit * static_cast<std::int32_t>(std::lround(columnsPerRow * shearOne / unit));
        footprint.ahead = fetchedAhead(footprint.rows->taps, step.rightU / factorU, whole.downV / factorV);
        footprint.steadyLines = isSmall ? steadyLines(*footprint.columns, footprint.shear / steadyShear) : nullptr;
        return result;
    }

    /// All that the canvas row so far below reads and the rows before it do not, a line of the cache at a time.
    static FetchedAhead fetchedAhead(int rowTaps, double rightU, double downV) {
        FetchedAhead ahead;
        ahead.rows = std::clamp(static_cast<int>(std::ceil(std::abs(downV))), 1, mostRowsFetched);
        ahead.firstRow = downV >= 0 ? rowTaps + (rowsAhead - 1) * ahead.rows : -rowsAhead * ahead.rows;
        ahead.pixelsApart =
            static_cast<int>(std::clamp(pixelsInCacheLine / std::max(std::abs(rightU), 1.0), 1.0, 16.0));
        return ahead;
    }

    void segment(FootprintBlock& block, RowUnderWay& row, int left, int right, std::uint8_t* out,
                 SamplerScratch& scratch) const {
        if (block.along && segmentAlongLine(block, row, left, right, out)) {
            return;
        }
        if (!block.ofParts) {
            block.ofParts = footprintFor(stepsAt(block.left + block.length / 2.0, middleOfRows(row.y)));
        }
        const PartsOfPixels& parts = block.ofParts->parts;
        if (parts.each.count() > 1) {
            return segmentOfParts(block, row.y, left, right, out, scratch);
        }
        const bool isWhole = parts.scaleU == 1 && parts.scaleV == 1;
        const ProjectedRow& positions = isWhole ? row.positions : projectedRow(row.y, 0, parts);
        const CurveEnds ends = curveEnds(positions, block, PixelParts{}, isWhole ? row.from : PointOnRow{});
        if (isWhole) {
            row.from = ends.to;
        }
        drawPositions(block, positions, ends, left, right - left, kernels_.filterAlongCurve, kernels_.filterFootprint,
                      scratch, out);
    }

    /// Draws pixels of a block along the line, where they lie as the kernel can take them.
    bool segmentAlongLine(const FootprintBlock& block, RowUnderWay& row, int left, int right, std::uint8_t* out) const {
        const ProjectedRow& positions = row.positions;
        if (!row.line) {
            row.line = LineOfRow(positions);
        }
        const double slope = row.line->slope;
        const PointOnRow from(positions, block.left + 0.5);
        const double inverse = 1 / from.w;
        const double step = row.line->toU * inverse * inverse;
        const double fall = positions.wStep * inverse;
        const double fastest = std::abs(step) * (1 + 3 * std::abs(fall) * block.length);
        if (!(std::abs(from.u) < farthestPlain && std::abs(from.v) < farthestPlain &&
              std::abs(fall) * block.length < 2 * largestChange && fastest < mostLineStep &&
              fastest * block.length < farthestFromOrigin && std::abs(slope) * (1 << lineBits) < steepestLine)) {
            return false;
        }
        LineCurve curve;
        curve.origin = static_cast<std::int32_t>(from.u);
        curve.start = static_cast<float>(from.u - curve.origin);
        curve.step = static_cast<float>(step);
        curve.fall = static_cast<float>(fall);
        PictureLine line;
        line.column = curve.origin >> phaseBits;
        line.row = static_cast<std::int32_t>(from.v) >> phaseBits;
        const double inColumn = line.column * static_cast<double>(phases) - from.u;
        const double start = (from.v - line.row * static_cast<double>(phases) + inColumn * slope) / phases;
        line.start = static_cast<std::int32_t>(start * (1 << lineBits));
        line.step = static_cast<std::int32_t>(slope * (1 << lineBits));
        kernels_.filterAlongLine(*block.along, line, curve, left - block.left, right - left, out);
        return true;
    }

    void segmentOfParts(const FootprintBlock& block, int y, int left, int right, std::uint8_t* out,
                        SamplerScratch& scratch) const {
        const PixelParts parts = block.ofParts->parts.each;
        for (int x = left; x < right; x += longestSegment) {
            const int pixels = std::min(right - x, longestSegment);
            const int inRow = pixels * parts.across;
            for (int down = 0; down < parts.down; ++down) {
                const ProjectedRow row = projectedRow(y, down, block.ofParts->parts);
                drawPositions(block, row, curveEnds(row, block, parts, {}), x * parts.across, inRow,
                              kernels_.sumAlongCurve, kernels_.sumFootprint, scratch,
                              scratch.sums.data() + std::ptrdiff_t{4} * inRow * down);
            }
            kernels_.averageParts(scratch.sums.data(), parts, pixels, out + std::ptrdiff_t{4} * (x - left));
        }
    }

    /// `count` pixels, or parts of a row, from the `first` one on, by the kernel for curves or, where none fits, for
    /// any positions. Of each come four numbers.
    template <class Number>
    void drawPositions(const FootprintBlock& block, const ProjectedRow& row, const CurveEnds& ends, int first,
                       int count, void (*along)(const Footprint&, const CurvedRow&, int, int, Number*),
                       void (*at)(const Footprint&, const std::int32_t*, const std::int32_t*, int, Number*),
                       SamplerScratch& scratch, Number* out) const {
        const auto& [footprint, parts] = *block.ofParts;
        CurvedRow curve;
        if (passesThrough(ends, curve)) {
            along(footprint, curve, first - block.left * parts.each.across, count, out);
            return;
        }
        Footprint scattered = footprint;
        scattered.isSteady = false;
        ProjectedRow bounded = row;
        // 32 pixels outside, any footprint sees the edge alone.
        bounded.highestU = (footprint.picture.width + 32.0) * phases;
        bounded.highestV = (footprint.picture.height + 32.0) * phases;
        for (int done = 0; done < count; done += longestSegment) {
            const int now = std::min(count - done, longestSegment);
            kernels_.projectPositions(bounded, first + done, now, scratch.u.data(), scratch.v.data());
            at(scattered, scratch.u.data(), scratch.v.data(), now, out + std::ptrdiff_t{4} * done);
        }
    }

    /// Of one row of parts; x counts parts. How far it goes is left open.
    [[nodiscard]] ProjectedRow projectedRow(int y, int partDown, const PartsOfPixels& parts) const {
        const double centerY = y + (partDown + 0.5) / parts.each.down;
        const auto& m = map_.m;
        const double toU = parts.scaleU * phases;
        const double toV = parts.scaleV * phases;
        const double perPart = 1.0 / parts.each.across;
        ProjectedRow row;
        row.wStep = m[2] * perPart;
        row.w0 = centerY * m[5] + m[8];
        // The centre of the first pixel, half a pixel from the edge, is position 0.
        row.uStep = m[0] * perPart * toU - row.wStep * (phases / 2);
        row.u0 = (centerY * m[3] + m[6]) * toU - row.w0 * (phases / 2);
        row.vStep = m[1] * perPart * toV - row.wStep * (phases / 2);
        row.v0 = (centerY * m[4] + m[7]) * toV - row.w0 * (phases / 2);
        return row;
    }

    /// Of a block's positions, `from` known where it is the first one already.
    static CurveEnds curveEnds(const ProjectedRow& row, const FootprintBlock& block, PixelParts parts,
                               const PointOnRow& from) {
        const double x = block.left * parts.across + 0.5;
        const double length = block.length * parts.across;
        return {from.x == x ? from : PointOnRow(row, x), PointOnRow(row, x + length / 2), PointOnRow(row, x + length)};
    }

    /// Makes it a parabola through a block's ends and its middle, which errs by less than half a position's unit; tells
    /// when w changes too much for that, or positions do. It is handed on as it is: pieces of it that are copied would
    /// wait for each other.
    static bool passesThrough(const CurveEnds& ends, CurvedRow& curve) {
        const auto& [from, middle, to] = ends;
        const double half = middle.x - from.x;
        const double inverseHalf = 1 / half;
        const auto axis = [&](double first, double second, double third, CurvedRow::Axis& out) {
            const auto isPlain = [](double p) { return std::abs(p) < farthestPlain; };
            if (!isPlain(first) || !isPlain(second) || !isPlain(third) ||
                std::abs(third - first) > farthestFromOrigin / 2) {
                return false;
            }
            const double bend = (third - 2 * second + first) * (inverseHalf * inverseHalf / 2);
            out.origin = static_cast<std::int32_t>(first);
            out.start = static_cast<float>(first - out.origin);
            out.step = static_cast<float>((second - first) * inverseHalf - bend * half);
            out.bend = static_cast<float>(bend);
            return true;
        };
        return std::abs(to.w - from.w) < 2 * largestChange * std::min(std::abs(from.w), std::abs(to.w)) &&
               axis(from.u, middle.u, to.u, curve.u) && axis(from.v, middle.v, to.v, curve.v);
    }

    PixelSize size_;
    std::shared_ptr<const Pyramid> pyramid_;
    Homography map_;
    int rowsTogether_;
    const Kernels& kernels_;
};

} // namespace

std::unique_ptr<Sampler> makeWarpSampler(std::shared_ptr<const Pyramid> picture, const Homography& canvasToPicture,
                                         const SampledArea& area, const Kernels& kernels) {
    return std::make_unique<WarpSampler>(std::move(picture), canvasToPicture, area, kernels);
}

} // namespace quillomat::raster
