// How much of each pixel a convex polygon covers, exactly, one row at a time.
#pragma once

#include "platform/graphics/raster/ConvexPolygon.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quillomat::raster {

/// One row: pixels [left, right) may be touched. Inside, [runLeft, runRight) all have the value `run`; the values of
/// the rest stand in the scratch's `values`.
struct CoverageRow {
    int left = 0;
    int right = 0;
    int runLeft = 0;
    int runRight = 0;
    int run = 0; // 0 to 255; as wide as the others, so that all are handed on at once

    [[nodiscard]] bool isEmpty() const { return left >= right; }
};

/// Working memory of one thread for one plane of coverage, grown when it is first needed.
struct CoverageScratch {
    std::vector<double> cells; // zero between rows
    std::vector<std::uint8_t> values;

    void prepareFor(int width) {
        if (values.size() < static_cast<std::size_t>(width)) {
            cells.resize(static_cast<std::size_t>(width) + 2);
            values.resize(static_cast<std::size_t>(width));
        }
    }
};

/// Exact signed areas: each edge adds, to the cells that it passes in a row, the area between itself and the cell's
/// right side, and its height to all cells further right (the accumulation of L. Budiansky's and R. Levien's
/// rasterisers, in double). The pixels between the left and the right edges are whole only where the sum reaches 1.
class Coverage {
public:
    Coverage() = default;
    /// Values are `opacity` times the covered area, from 0 to 255. The polygon lies inside the canvas.
    Coverage(const Polygon& polygon, PixelSize canvas, double opacity);

    [[nodiscard]] int top() const { return top_; }
    [[nodiscard]] int bottom() const { return bottom_; }
    [[nodiscard]] bool isEmpty() const { return top_ >= bottom_; }
    [[nodiscard]] CoverageRow row(int y, CoverageScratch& scratch) const;
    /// As `row`, with the values of the run written too.
    [[nodiscard]] CoverageRow wholeRow(int y, CoverageScratch& scratch) const;

private:
    struct Edge {
        double topX = 0, topY = 0, bottomY = 0, slope = 0; // x by y
        double direction = 1;                              // +1 where the inside lies to the right
        double lowX = 0, highX = 0;
    };
    struct Touched {
        int first = 0;
        int last = -1;
    };

    [[nodiscard]] std::uint8_t quantised(double sum) const;
    [[nodiscard]] std::optional<CoverageRow> rowOfWholePixels(const Polygon& polygon) const;
    [[nodiscard]] Touched accumulate(const std::vector<Edge>& edges, int y, std::vector<double>& cells) const;

    std::optional<CoverageRow> everyRow_; // of a rectangle of whole pixels
    std::vector<Edge> leftEdges_;
    std::vector<Edge> rightEdges_;
    int top_ = 0;
    int bottom_ = 0;
    int right_ = 0;
    int width_ = 0;
    double scale_ = 255;
};

} // namespace quillomat::raster
