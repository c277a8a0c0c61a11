#include "platform/graphics/raster/FootprintShape.h"

#include "platform/graphics/raster/FilterTables.h"

#include <algorithm>
#include <cmath>

namespace quillomat::raster {

namespace {

// The sheared filter has the ideal footprint's covariance. What it lacks shows where steps lead aslant even when they
// are sheared, far in columns and rows: then a pixel is the average of parts of itself, whose steps are shorter. Up to
// this product of columns and rows fine patterns keep 56 dB.
constexpr double mostAslant = 0.9;
// The same where parts cost twice as much as the whole: their columns take four taps as well. Not for footprints so long
// and oblique that two parts beside each other still lead aslant: there it shows most.
constexpr double mostAslantOfFour = 1.4;
constexpr double columnsOfFour = 2;

// What is shrunk further than 4.5 times, as previews are while a marker is dragged, has no more than four parts.
constexpr double largestFinelySplit = 4.5 * 4.5;
constexpr int partsBeyond = 4;

// A footprint along the line of its canvas row takes the row's slope as it is, v rising by s rows per column; how the
// canvas's columns lean, u moving by t columns per row, is left to its two parts, or to nothing. With the tents, in the
// units of C: M = C + 2, t R² = Muv - s Muu, R² = Mvv - 2 s t R² - s² Muu. Of the leaning that makes up for tents which
// follow the line instead of the picture's rows, two thirds are best: it shows at the parallelogram's sides alone. Fine
// patterns keep 56 dB up to these limits.
constexpr double tentsLeaning = 2.0 / 3;
constexpr double farthestLeaningWhole = 0.008; // in steps right
constexpr double farthestLeaning = 0.12;
constexpr double mostColumnsAside = 0.265; // of the picture
constexpr double steepestSlope = static_cast<double>(steepestLine - 1) / (1 << lineBits);
constexpr double steepestFootprint = 0.45;
// Below that footprints are as fast that round no phases, and no weights of rows to bytes.
constexpr double narrowestLine = 1.6;
constexpr double smallestLineArea = 4.2;

/// The parallelogram of a pixel as a footprint along its row's line sees it.
struct LineShape {
    double slope = 0;
    double acrossSquares = 0;
    double downSquares = 0; // with the tent
    double down = 0;
    double leaning = 0;

    explicit LineShape(const Steps& step)
        : slope(step.rightV / step.rightU), acrossSquares(step.rightU * step.rightU + step.downU * step.downU) {
        const double wholeLeaning = step.covariance() - slope * (acrossSquares + 2);
        downSquares = step.rightV * step.rightV + step.downV * step.downV + 2 - 2 * slope * wholeLeaning -
                      slope * slope * (acrossSquares + 2);
        down = std::sqrt(std::max(downSquares - 2, 0.0));
        leaning = step.covariance() - slope * (acrossSquares + 2 * tentsLeaning);
    }
};

} // namespace

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
        const bool isLong = isAcross && parts.across > 1;
        const double most = isOfFour && !isLong ? mostAslantOfFour : mostAslant;
        int& split = isAcross ? parts.across : parts.down;
        if (right + down <= most || parts.count() >= mostParts ||
            split == (isAcross ? mostPartsAcross : mostPartsDown)) {
            return parts;
        }
        split *= 2;
    }
}

std::optional<LineFootprint> lineFootprintFor(const Steps& step) {
    const LineShape shape(step);
    const double right = std::abs(step.rightU);
    const double slope = std::abs(shape.slope);
    const double aside = std::abs(shape.leaning / shape.downSquares) * shape.down;
    // Never where anything is no number.
    if (!(right >= narrowestLine && shape.down >= narrowestLine && right * shape.down >= smallestLineArea &&
          aside <= farthestLeaning * right && aside <= mostColumnsAside && slope <= steepestSlope &&
          slope * shape.down <= steepestFootprint * right * right && shape.down <= widestLineRows &&
          shape.acrossSquares <= widestLineColumns * widestLineColumns)) {
        return std::nullopt;
    }
    LineFootprint footprint;
    footprint.parts = aside <= farthestLeaningWhole * right ? 1 : 2;
    footprint.rows = &lineRows(shape.down, footprint.parts);
    return footprint;
}

LineFootprint::Columns lineColumnsFor(const Steps& step, int parts) {
    const LineShape shape(step);
    LineFootprint::Columns columns;
    double squares = shape.acrossSquares;
    if (parts == 2) {
        // Half a box is a quarter of it away from the whole one's middle.
        const double columnsPerRow = shape.leaning / (0.75 * shape.down * shape.down);
        const double aside = columnsPerRow * shape.down / 4 * phases;
        columns.aside = static_cast<std::int32_t>(
            std::lround(std::clamp(aside, static_cast<double>(-farthestAside), static_cast<double>(farthestAside))));
        squares -= columnsPerRow * shape.leaning;
    }
    columns.table = &lineColumns(std::sqrt(std::max(squares, 0.0)));
    return columns;
}

} // namespace quillomat::raster
