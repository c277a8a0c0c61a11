#include "platform/graphics/raster/ConvexPolygon.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace quillomat::raster {

namespace {

// A point before the division by its depth.
struct Corner {
    double x = 0;
    double y = 0;
    double w = 0;
};

constexpr int mostSegmentsPerArc = 256;
constexpr double nearestDepth = 1e-9; // relative to the farthest corner's

double clampedRadius(const RoundedRect& shape) {
    const double half = std::min(shape.rect.size.width, shape.rect.size.height) / 2;
    return shape.radius > 0 ? std::min(shape.radius, half) : 0;
}

/// How many chords keep a projected quarter circle within a few thousandths of a pixel: the sagitta of an arc of radius
/// r and angle t is about r t² / 8.
int segmentsForArc(const Homography& map, Point start, Point end) {
    const auto a = map.project(start);
    const auto b = map.project(end);
    if (!a || !b) {
        return mostSegmentsPerArc;
    }
    const double chord = std::hypot(a->x - b->x, a->y - b->y);
    const double count = std::ceil(9 * std::sqrt(chord));
    return count < mostSegmentsPerArc ? std::max(2, static_cast<int>(count)) : mostSegmentsPerArc;
}

std::vector<Point> flatten(const Homography& map, const RoundedRect& shape) {
    const Rect& rect = shape.rect;
    const double radius = clampedRadius(shape);
    if (!(radius > 0)) {
        return {{rect.minX(), rect.minY()},
                {rect.maxX(), rect.minY()},
                {rect.maxX(), rect.maxY()},
                {rect.minX(), rect.maxY()}};
    }
    const Point centers[4] = {{rect.maxX() - radius, rect.minY() + radius},
                              {rect.maxX() - radius, rect.maxY() - radius},
                              {rect.minX() + radius, rect.maxY() - radius},
                              {rect.minX() + radius, rect.minY() + radius}};
    std::vector<Point> points;
    for (int quarter = 0; quarter < 4; ++quarter) {
        const Point center = centers[quarter];
        const double from = (quarter - 1) * std::numbers::pi / 2;
        const auto onArc = [&](double angle) {
            return Point{center.x + radius * std::cos(angle), center.y + radius * std::sin(angle)};
        };
        const int segments = segmentsForArc(map, onArc(from), onArc(from + std::numbers::pi / 2));
        for (int i = 0; i <= segments; ++i) {
            points.push_back(onArc(from + std::numbers::pi / 2 * i / segments));
        }
    }
    return points;
}

/// Sutherland and Hodgman's step: the part of a convex outline where `side` (linear in the corner) is not negative.
template <typename Vertex, typename Side, typename Between>
std::vector<Vertex> clipped(const std::vector<Vertex>& in, const Side& side, const Between& between) {
    std::vector<Vertex> out;
    out.reserve(in.size() + 2);
    for (std::size_t i = 0; i < in.size(); ++i) {
        const Vertex& a = in[i];
        const Vertex& b = in[i + 1 == in.size() ? 0 : i + 1];
        const double sideA = side(a);
        const double sideB = side(b);
        if (sideA >= 0) {
            out.push_back(a);
        }
        if ((sideA > 0 && sideB < 0) || (sideA < 0 && sideB > 0)) {
            out.push_back(between(a, b, sideA / (sideA - sideB)));
        }
    }
    return out;
}

std::vector<Corner> clippedToCanvas(std::vector<Corner> corners, PixelSize canvas) {
    double farthest = 0;
    for (const Corner& corner : corners) {
        farthest = std::max(farthest, std::abs(corner.w));
    }
    const double nearest = farthest * nearestDepth;
    const double width = canvas.width;
    const double height = canvas.height;
    const auto between = [](const Corner& a, const Corner& b, double t) {
        return Corner{a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.w + (b.w - a.w) * t};
    };
    corners = clipped(
        corners, [nearest](const Corner& c) { return c.w - nearest; }, between);
    corners = clipped(
        corners, [](const Corner& c) { return c.x; }, between);
    corners = clipped(
        corners, [width](const Corner& c) { return width * c.w - c.x; }, between);
    corners = clipped(
        corners, [](const Corner& c) { return c.y; }, between);
    return clipped(
        corners, [height](const Corner& c) { return height * c.w - c.y; }, between);
}

} // namespace

double signedArea(const Polygon& polygon) {
    double twice = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point& a = polygon[i];
        const Point& b = polygon[i + 1 == polygon.size() ? 0 : i + 1];
        twice += a.x * b.y - b.x * a.y;
    }
    return twice / 2;
}

Polygon visibleOutline(const Homography& map, const RoundedRect& shape, PixelSize canvas) {
    if (shape.rect.isEmpty() || !map.isFinite() || canvas.isEmpty()) {
        return {};
    }
    std::vector<Corner> corners;
    for (const Point& p : flatten(map, shape)) {
        const Corner corner{p.x * map.m[0] + p.y * map.m[3] + map.m[6], p.x * map.m[1] + p.y * map.m[4] + map.m[7],
                            map.w(p)};
        if (!std::isfinite(corner.x) || !std::isfinite(corner.y) || !std::isfinite(corner.w)) {
            return {};
        }
        corners.push_back(corner);
    }
    Polygon polygon;
    for (const Corner& corner : clippedToCanvas(std::move(corners), canvas)) {
        if (!(corner.w > 0)) {
            return {};
        }
        polygon.push_back({std::clamp(corner.x / corner.w, 0.0, static_cast<double>(canvas.width)),
                           std::clamp(corner.y / corner.w, 0.0, static_cast<double>(canvas.height))});
    }
    const double area = signedArea(polygon);
    if (polygon.size() < 3 || !(std::abs(area) > 0)) {
        return {};
    }
    if (area < 0) {
        std::reverse(polygon.begin(), polygon.end());
    }
    return polygon;
}

Polygon intersection(const Polygon& a, const Polygon& b) {
    Polygon result = a;
    for (std::size_t i = 0; i < b.size() && result.size() >= 3; ++i) {
        const Point from = b[i];
        const Point along = b[i + 1 == b.size() ? 0 : i + 1] - from;
        result = clipped(
            result, [&](const Point& p) { return along.x * (p.y - from.y) - along.y * (p.x - from.x); },
            [](const Point& p, const Point& q, double t) {
                return Point{p.x + (q.x - p.x) * t, p.y + (q.y - p.y) * t};
            });
    }
    if (b.size() < 3 || result.size() < 3 || !(signedArea(result) > 0)) {
        return {};
    }
    return result;
}

bool coversCanvas(const Polygon& polygon, PixelSize canvas) {
    constexpr double tolerance = 1e-4;
    if (polygon.size() < 3) {
        return false;
    }
    const double width = canvas.width;
    const double height = canvas.height;
    const Point corners[4] = {{0, 0}, {width, 0}, {width, height}, {0, height}};
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point from = polygon[i];
        const Point along = polygon[i + 1 == polygon.size() ? 0 : i + 1] - from;
        const double length = std::hypot(along.x, along.y);
        for (const Point& corner : corners) {
            const double outside = along.y * (corner.x - from.x) - along.x * (corner.y - from.y);
            if (length > 1e-6 && outside > tolerance * length) {
                return false;
            }
        }
    }
    return true;
}

RoundedRect insetBy(const RoundedRect& shape, double inset) {
    const Rect& rect = shape.rect;
    return {makeRect(rect.origin.x + inset, rect.origin.y + inset, rect.size.width - 2 * inset,
                     rect.size.height - 2 * inset),
            std::max(0.0, clampedRadius(shape) - inset)};
}

} // namespace quillomat::raster
