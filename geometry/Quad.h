// Four corner points, their bounding box, and the projective map of a rectangle onto them.
#pragma once

#include "platform/foundation/Geometry.h"

namespace quillomat {

/// Corners of a fitted view in its superview's coordinates: the rectangle's (minX, minY) corner goes to `topLeft`,
/// (maxX, minY) to `topRight`, (minX, maxY) to `bottomLeft`, (maxX, maxY) to `bottomRight`. Any shape; not checked.
struct Quad {
    Point topLeft;
    Point topRight;
    Point bottomLeft;
    Point bottomRight;

    friend constexpr bool operator==(const Quad&, const Quad&) = default;
};

/// The axis-aligned bounding box. The top-right corner comes first on purpose, unlike everywhere else.
[[nodiscard]] Rect boundingBoxForQuadTR(Point tr, Point tl, Point bl, Point br);

/// The transform that takes the rectangle's corners to TL, TR, BL and BR, in closed form. Degenerate input passes
/// through the arithmetic: a divisor below 0.0001 in magnitude is replaced by +0.0001 when positive and by -0.0001
/// otherwise, an exact zero included.
[[nodiscard]] Transform3D rectToQuad(const Rect& rect, Point quadTL, Point quadTR, Point quadBL, Point quadBR);
[[nodiscard]] Transform3D rectToQuad(const Rect& rect, double quadTLX, double quadTLY, double quadTRX, double quadTRY,
                                     double quadBLX, double quadBLY, double quadBRX, double quadBRY);

} // namespace quillomat
