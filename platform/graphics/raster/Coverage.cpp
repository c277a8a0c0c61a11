#include "platform/graphics/raster/Coverage.h"

#include <algorithm>
#include <cmath>

namespace quillomat::raster {

Coverage::Coverage(const Polygon& polygon, PixelSize canvas, double opacity)
    : width_(canvas.width), scale_(opacity > 0 ? 255 * std::min(opacity, 1.0) : 0) {
    if (polygon.size() < 3 || scale_ <= 0) {
        return;
    }
    double low = canvas.height;
    double high = 0;
    double rightmost = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point a = polygon[i];
        const Point b = polygon[i + 1 == polygon.size() ? 0 : i + 1];
        low = std::min(low, a.y);
        high = std::max(high, a.y);
        rightmost = std::max(rightmost, a.x);
        if (a.y == b.y) {
            continue;
        }
        // With a positive area and y down, edges that run upwards have the inside to their right.
        const bool upwards = b.y < a.y;
        const Point upper = upwards ? b : a;
        const Point lower = upwards ? a : b;
        const Edge edge{upper.x,
                        upper.y,
                        lower.y,
                        (lower.x - upper.x) / (lower.y - upper.y),
                        upwards ? 1.0 : -1.0,
                        std::min(a.x, b.x),
                        std::max(a.x, b.x)};
        (upwards ? leftEdges_ : rightEdges_).push_back(edge);
    }
    const auto higher = [](const Edge& a, const Edge& b) { return a.topY < b.topY; };
    std::sort(leftEdges_.begin(), leftEdges_.end(), higher);
    std::sort(rightEdges_.begin(), rightEdges_.end(), higher);
    top_ = static_cast<int>(std::floor(low));
    bottom_ = static_cast<int>(std::ceil(high));
    right_ = static_cast<int>(std::ceil(rightmost));
    everyRow_ = rowOfWholePixels(polygon);
}

/// What most layers are, as large as the canvas: the same in every row.
std::optional<CoverageRow> Coverage::rowOfWholePixels(const Polygon& polygon) const {
    double leftmost = right_;
    for (const Point& p : polygon) {
        leftmost = std::min(leftmost, p.x);
    }
    const auto left = static_cast<int>(leftmost);
    const auto isCorner = [&](const Point& p) {
        return (p.x == left || p.x == right_) && (p.y == top_ || p.y == bottom_);
    };
    const double area = static_cast<double>(right_ - left) * (bottom_ - top_);
    if (!std::all_of(polygon.begin(), polygon.end(), isCorner) || signedArea(polygon) != area) {
        return std::nullopt;
    }
    return CoverageRow{left, right_, left, right_, quantised(1)};
}

std::uint8_t Coverage::quantised(double sum) const {
    return static_cast<std::uint8_t>(std::clamp(sum, 0.0, 1.0) * scale_ + 0.5);
}

Coverage::Touched Coverage::accumulate(const std::vector<Edge>& edges, int y, std::vector<double>& cells) const {
    Touched touched{width_, -1};
    const double rowTop = y;
    const double rowBottom = y + 1;
    auto edge = std::partition_point(edges.begin(), edges.end(), [&](const Edge& e) { return e.bottomY <= rowTop; });
    for (; edge != edges.end() && edge->topY < rowBottom; ++edge) {
        const double from = std::max(rowTop, edge->topY);
        const double to = std::min(rowBottom, edge->bottomY);
        const double height = (to - from) * edge->direction;
        // Multiplying a slope out may leave the edge's own extent by a rounding error.
        const double xFrom = std::clamp(edge->topX + (from - edge->topY) * edge->slope, edge->lowX, edge->highX);
        const double xTo = std::clamp(edge->topX + (to - edge->topY) * edge->slope, edge->lowX, edge->highX);
        const double low = std::min(xFrom, xTo);
        const double high = std::max(xFrom, xTo);
        const int first = static_cast<int>(low);
        const int last = std::max(first, static_cast<int>(std::ceil(high)) - 1);
        touched.first = std::min(touched.first, first);
        touched.last = std::max(touched.last, last);
        if (first == last) {
            const double mean = (low + high) / 2 - first;
            cells[static_cast<std::size_t>(first)] += height * (1 - mean);
            cells[static_cast<std::size_t>(first) + 1] += height * mean;
            continue;
        }
        const double perUnit = height / (high - low);
        for (int cell = first; cell <= last; ++cell) {
            const double cellLow = std::max(low, static_cast<double>(cell));
            const double cellHigh = std::min(high, static_cast<double>(cell + 1));
            const double part = (cellHigh - cellLow) * perUnit;
            const double mean = (cellLow + cellHigh) / 2 - cell;
            cells[static_cast<std::size_t>(cell)] += part * (1 - mean);
            cells[static_cast<std::size_t>(cell) + 1] += part * mean;
        }
    }
    return touched;
}

CoverageRow Coverage::row(int y, CoverageScratch& scratch) const {
    scratch.prepareFor(width_);
    if (y < top_ || y >= bottom_) {
        return {};
    }
    if (everyRow_) {
        return *everyRow_;
    }
    std::vector<double>& cells = scratch.cells;
    const Touched left = accumulate(leftEdges_, y, cells);
    const Touched right = accumulate(rightEdges_, y, cells);
    if (left.last < 0 || right.last < 0) {
        // Edges so flat that only one side has any: nothing that could be told apart.
        std::fill(cells.begin(), cells.end(), 0.0);
        return {};
    }
    const int first = std::min(left.first, right.first);
    const int last = std::min(std::max(left.last, right.last), width_ - 1);
    double sum = 0;
    const auto sumUp = [&](int from, int to) {
        for (int x = from; x < to; ++x) {
            const auto i = static_cast<std::size_t>(x);
            sum += cells[i];
            cells[i] = 0;
            scratch.values[i] = quantised(sum);
        }
    };
    CoverageRow result{first, last + 1, last + 1, last + 1, 0};
    const int runLeft = left.last + 2;
    const int runRight = std::min(right.first, width_);
    if (runLeft < runRight) {
        sumUp(first, runLeft);
        result.runLeft = runLeft;
        result.runRight = runRight;
        result.run = quantised(sum);
        sumUp(runRight, last + 1);
    } else {
        sumUp(first, last + 1);
    }
    // An edge that lies on the canvas's right side leaves its height beyond the last pixel.
    const int beyond = std::max(left.last, right.last) + 1;
    std::fill(cells.begin() + last + 1, cells.begin() + std::max(last, beyond) + 1, 0.0);
    // An edge on a pixel's left side touches that pixel with nothing.
    result.right = std::min(result.right, right_);
    result.runLeft = std::min(result.runLeft, result.right);
    result.runRight = std::min(result.runRight, result.right);
    // Pixels that an edge only touches belong to the run as well.
    if (result.runLeft < result.runRight) {
        const auto belongs = [&](int x) { return scratch.values[static_cast<std::size_t>(x)] == result.run; };
        while (result.runLeft > result.left && belongs(result.runLeft - 1)) {
            --result.runLeft;
        }
        while (result.runRight < result.right && belongs(result.runRight)) {
            ++result.runRight;
        }
    }
    return result;
}

CoverageRow Coverage::wholeRow(int y, CoverageScratch& scratch) const {
    CoverageRow result = row(y, scratch);
    std::fill(scratch.values.begin() + result.runLeft, scratch.values.begin() + result.runRight,
              static_cast<std::uint8_t>(result.run));
    return result;
}

} // namespace quillomat::raster
