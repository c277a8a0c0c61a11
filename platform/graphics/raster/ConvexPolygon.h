// Convex outlines on the canvas: what is left of a projected shape in front of the viewer and inside the canvas.
#pragma once

#include "geometry/Homography.h"
#include "platform/graphics/Bitmap.h"
#include "platform/graphics/Recording.h"

#include <vector>

namespace quillomat::raster {

/// Corners in canvas pixels, in the order that gives a positive shoelace area; fewer than three mean nothing.
using Polygon = std::vector<Point>;

/// The shape flattened to a few thousandths of a pixel, projected, cut to positive w and to the canvas. A crossed
/// quad's map changes the sign of w inside the shape: the part in front of the viewer is what is drawn. Nothing for
/// shapes and maps that are empty, collapsed or not finite.
[[nodiscard]] Polygon visibleOutline(const Homography& map, const RoundedRect& shape, PixelSize canvas);

/// The part of one convex polygon inside another.
[[nodiscard]] Polygon intersection(const Polygon& a, const Polygon& b);

[[nodiscard]] double signedArea(const Polygon& polygon);

/// Whether the polygon leaves no part of the canvas out that could be told in 8 bits.
[[nodiscard]] bool coversCanvas(const Polygon& polygon, PixelSize canvas);

/// The shape drawn inside by `inset` on every side, its corners concentric; nothing where the insets meet.
[[nodiscard]] RoundedRect insetBy(const RoundedRect& shape, double inset);

} // namespace quillomat::raster
