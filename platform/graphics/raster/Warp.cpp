#include "platform/graphics/raster/FilterTables.h"
#include "platform/graphics/raster/Pyramid.h"
#include "platform/graphics/raster/Sampler.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quillomat::raster {

namespace {

constexpr int shortestSegment = 4;
// How much w may change over the pixels, and over the rows, that share a footprint.
constexpr double largestChange = 0.04;
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
// A segment's rows, some hundreds, then lie within 2^31 bytes.
constexpr int widestSteady = 1 << 20;

// A pixel's square goes to a parallelogram on the picture, spanned by where a step right and a step down lead: r and d.
// Convolved with the bilinear reconstruction's tents it is the ideal footprint. What is drawn is a sheared separable
// filter with its exact profiles: rows are weighted by two boxes, as wide as the rows that r and d cross, and a tent;
// each row is shifted by k columns per row, k = Cuv / (Cvv + 2), which makes columns and rows uncorrelated (C being
// r rT + d dT, in units in which a box of width s has s² and a tent 2); columns by what the shear leaves of r and d.
struct Steps {
    double rightU = 0;
    double rightV = 0;
    double downU = 0;
    double downV = 0;

    [[nodiscard]] double covariance() const { return rightU * rightV + downU * downV; }
    [[nodiscard]] double shear() const { return covariance() / (rightV * rightV + downV * downV + 2); }
    [[nodiscard]] Steps ofParts(PixelParts parts) const {
        return {rightU / parts.across, rightV / parts.across, downU / parts.down, downV / parts.down};
    }
};

// The sheared filter has the ideal footprint's covariance. What it lacks shows where steps lead aslant even when they
// are sheared, far in columns and rows: then a pixel is the average of parts of itself, whose steps are shorter. Up to
// this product of columns and rows fine patterns keep 56 dB.
constexpr double mostAslant = 0.9;
// The same where parts cost twice as much as the whole: their columns take four taps as well.
constexpr double mostAslantOfFour = 1.4;
constexpr double columnsOfFour = 2;
// Four parts beside each other cost twice as much as two, and gain little where these do not lead further aslant.
constexpr double mostAslantOfTwo = 2.5;

// What is shrunk further than 4.5 times, as previews are while a marker is dragged, has no more than four parts.
constexpr double largestFinelySplit = 4.5 * 4.5;
constexpr int partsBeyond = 4;

/// Parts as few as do.
PixelParts partsFor(const Steps& whole) {
    const bool isFinelySplit = std::abs(whole.rightU * whole.downV - whole.rightV * whole.downU) <= largestFinelySplit;
    const int mostParts = isFinelySplit ? mostPartsAcross * mostPartsDown : partsBeyond;
    PixelParts parts;
    while (true) {
        const Steps step = whole.ofParts(parts);
        const double shear = step.shear();
        const double rightColumns = std::abs(step.rightU - shear * step.rightV);
        const double downColumns = std::abs(step.downU - shear * step.downV);
        const double right = rightColumns * std::abs(step.rightV);
        const double down = downColumns * std::abs(step.downV);
        const bool isAcross = right >= down;
        const bool isOfFour = rightColumns + downColumns <= columnsOfFour;
        const double most = isAcross && parts.across == 2 ? mostAslantOfTwo : isOfFour ? mostAslantOfFour : mostAslant;
        int& split = isAcross ? parts.across : parts.down;
        if (right + down <= most || parts.count() >= mostParts ||
            split == (isAcross ? mostPartsAcross : mostPartsDown)) {
            return parts;
        }
        split *= 2;
    }
}

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
        while (left < right) {
            const FootprintBlock& block = blockAt(y, left, blocks);
            const int end = std::min(right, block.left + block.length);
            segment(block, y, left, end, out, scratch);
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
    [[nodiscard]] const FootprintBlock& blockAt(int y, int x, FootprintBlocks& blocks) const {
        const auto [block, isKnown] = blocks.at(static_cast<std::size_t>(x) / shortestSegment);
        if (!isKnown) {
            const double middleY = y / rowsTogether_ * rowsTogether_ + rowsTogether_ / 2.0;
            block->length = lengthAt(middleY, x);
            block->left = x / block->length * block->length;
            findFootprint(block->left + block->length / 2.0, middleY, *block);
        }
        return *block;
    }

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

    void findFootprint(double x, double y, FootprintBlock& block) const {
        const Steps whole = stepsAt(x, y);
        block.parts = partsFor(whole);
        const Steps step = whole.ofParts(block.parts);
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

        block.scaleU = 1 / factorU;
        block.scaleV = 1 / factorV;
        Footprint& footprint = block.footprint;
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
    }

    /// All that the next canvas row but one reads and the rows before it do not, a line of the cache at a time.
    static FetchedAhead fetchedAhead(int rowTaps, double rightU, double downV) {
        FetchedAhead ahead;
        ahead.rows = std::clamp(static_cast<int>(std::ceil(std::abs(downV))), 1, mostRowsFetched);
        ahead.firstRow = downV >= 0 ? rowTaps + ahead.rows : -2 * ahead.rows;
        ahead.pixelsApart =
            static_cast<int>(std::clamp(pixelsInCacheLine / std::max(std::abs(rightU), 1.0), 1.0, 16.0));
        return ahead;
    }

    void segment(const FootprintBlock& block, int y, int left, int right, std::uint8_t* out,
                 SamplerScratch& scratch) const {
        if (block.parts.count() > 1) {
            return segmentOfParts(block, y, left, right, out, scratch);
        }
        drawPositions(block, projectedRow(block, y, 0), left, right - left, kernels_.filterAlongCurve,
                      kernels_.filterFootprint, scratch, out);
    }

    void segmentOfParts(const FootprintBlock& block, int y, int left, int right, std::uint8_t* out,
                        SamplerScratch& scratch) const {
        for (int x = left; x < right; x += longestSegment) {
            const int pixels = std::min(right - x, longestSegment);
            const int inRow = pixels * block.parts.across;
            for (int down = 0; down < block.parts.down; ++down) {
                drawPositions(block, projectedRow(block, y, down), x * block.parts.across, inRow,
                              kernels_.sumAlongCurve, kernels_.sumFootprint, scratch,
                              scratch.sums.data() + std::ptrdiff_t{4} * inRow * down);
            }
            kernels_.averageParts(scratch.sums.data(), block.parts, pixels, out + std::ptrdiff_t{4} * (x - left));
        }
    }

    /// `count` pixels, or parts of a row, from the `first` one on, by the kernel for curves or, where none fits, for
    /// any positions. Of each come four numbers.
    template <class Number>
    void drawPositions(const FootprintBlock& block, const ProjectedRow& row, int first, int count,
                       void (*along)(const Footprint&, const CurvedRow&, int, int, Number*),
                       void (*at)(const Footprint&, const std::int32_t*, const std::int32_t*, int, Number*),
                       SamplerScratch& scratch, Number* out) const {
        if (const auto curve = curveAlong(row, block)) {
            along(block.footprint, *curve, first - block.left * block.parts.across, count, out);
            return;
        }
        Footprint scattered = block.footprint;
        scattered.isSteady = false;
        for (int done = 0; done < count; done += longestSegment) {
            const int now = std::min(count - done, longestSegment);
            kernels_.projectPositions(row, first + done, now, scratch.u.data(), scratch.v.data());
            at(scattered, scratch.u.data(), scratch.v.data(), now, out + std::ptrdiff_t{4} * done);
        }
    }

    /// Of one row of the block's parts; x counts parts.
    [[nodiscard]] ProjectedRow projectedRow(const FootprintBlock& block, int y, int partDown) const {
        const double centerY = y + (partDown + 0.5) / block.parts.down;
        const auto& m = map_.m;
        const double toU = block.scaleU * phases;
        const double toV = block.scaleV * phases;
        const double perPart = 1.0 / block.parts.across;
        ProjectedRow row;
        row.wStep = m[2] * perPart;
        row.w0 = centerY * m[5] + m[8];
        // The centre of the first pixel, half a pixel from the edge, is position 0.
        row.uStep = m[0] * perPart * toU - row.wStep * (phases / 2);
        row.u0 = (centerY * m[3] + m[6]) * toU - row.w0 * (phases / 2);
        row.vStep = m[1] * perPart * toV - row.wStep * (phases / 2);
        row.v0 = (centerY * m[4] + m[7]) * toV - row.w0 * (phases / 2);
        // 32 pixels outside, any footprint sees the edge alone.
        row.highestU = (block.footprint.picture.width + 32.0) * phases;
        row.highestV = (block.footprint.picture.height + 32.0) * phases;
        return row;
    }

    /// A parabola through the block's ends and its middle, which errs by less than half a position's unit; nothing
    /// where w changes too much for that, or positions do.
    [[nodiscard]] static std::optional<CurvedRow> curveAlong(const ProjectedRow& row, const FootprintBlock& block) {
        const double half = block.length * block.parts.across / 2;
        const double inverseHalf = 1 / half;
        const double x = block.left * block.parts.across + 0.5;
        const double w[3] = {x * row.wStep + row.w0, (x + half) * row.wStep + row.w0,
                             (x + 2 * half) * row.wStep + row.w0};
        if (!(std::abs(w[2] - w[0]) < 2 * largestChange * std::min(std::abs(w[0]), std::abs(w[2])))) {
            return std::nullopt;
        }
        const double inverse[3] = {1 / w[0], 1 / w[1], 1 / w[2]};
        const auto axis = [&](double start, double step, CurvedRow::Axis& out) {
            const double at[3] = {(x * step + start) * inverse[0], ((x + half) * step + start) * inverse[1],
                                  ((x + 2 * half) * step + start) * inverse[2]};
            const auto isPlain = [](double p) { return std::abs(p) < farthestPlain; };
            if (!isPlain(at[0]) || !isPlain(at[1]) || !isPlain(at[2]) ||
                std::abs(at[2] - at[0]) > farthestFromOrigin / 2) {
                return false;
            }
            const double bend = (at[2] - 2 * at[1] + at[0]) * (inverseHalf * inverseHalf / 2);
            out.origin = static_cast<std::int32_t>(at[0]);
            out.start = static_cast<float>(at[0] - out.origin);
            out.step = static_cast<float>((at[1] - at[0]) * inverseHalf - bend * half);
            out.bend = static_cast<float>(bend);
            return true;
        };
        CurvedRow curve;
        if (!axis(row.u0, row.uStep, curve.u) || !axis(row.v0, row.vStep, curve.v)) {
            return std::nullopt;
        }
        return curve;
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
