#include "geometry/Quad.h"

#include <algorithm>
#include <cmath>

namespace quillomat {

namespace {

/// Keeps a collapsed or mirrored-flat quad from dividing by nothing. An exact zero falls to the negative side, where
/// almost zero values of an ordinary (not mirrored) quad lie. NaN fails the comparison and stays.
double guardedDivisor(double i) {
    constexpr double smallest = 0.0001;
    if (std::abs(i) < smallest)
        return i > 0 ? smallest : -smallest;
    return i;
}

} // namespace

Rect boundingBoxForQuadTR(Point tr, Point tl, Point bl, Point br) {
    const double minX = std::min(std::min(std::min(tr.x, tl.x), bl.x), br.x);
    const double maxX = std::max(std::max(std::max(tr.x, tl.x), bl.x), br.x);
    const double minY = std::min(std::min(std::min(tr.y, tl.y), bl.y), br.y);
    const double maxY = std::max(std::max(std::max(tr.y, tl.y), bl.y), br.y);
    return makeRect(minX, minY, maxX - minX, maxY - minY);
}

Transform3D rectToQuad(const Rect& rect, Point quadTL, Point quadTR, Point quadBL, Point quadBR) {
    return rectToQuad(rect, quadTL.x, quadTL.y, quadTR.x, quadTR.y, quadBL.x, quadBL.y, quadBR.x, quadBR.y);
}

// The eight equations "corner goes to corner" have one solution up to a common factor; written out, each entry is a sum
// of products of coordinates, so nothing is inverted and a marker can be dragged at any rate.
Transform3D rectToQuad(const Rect& rect, double x1, double y1, double x2, double y2, double x3, double y3, double x4,
                       double y4) {
    const double X = rect.origin.x;
    const double Y = rect.origin.y;
    const double W = rect.size.width;
    const double H = rect.size.height;

    const double y21 = y2 - y1;
    const double y32 = y3 - y2;
    const double y43 = y4 - y3;
    const double y14 = y1 - y4;
    const double y31 = y3 - y1;
    const double y42 = y4 - y2;

    const double P = x2 * x3 * y14 + x2 * x4 * y31 - x1 * x4 * y32 + x1 * x3 * y42;
    const double Q = x2 * x3 * y14 + x3 * x4 * y21 + x1 * x4 * y32 + x1 * x2 * y43;

    const double a = -H * P;
    const double b = W * Q;
    const double c = H * X * P - H * W * x1 * (x4 * y32 - x3 * y42 + x2 * y43) - W * Y * Q;
    const double d = H * (x3 * y2 * y4 + x2 * y1 * y43 - x4 * y21 * y3 - x1 * y2 * y43 - x3 * y1 * y4);
    const double e = W * (x1 * y3 * y42 + x4 * y2 * y31 - x3 * y1 * y42 - x2 * y31 * y4);
    const double f = -(W * (Y * x1 * y3 * y42 + Y * x2 * (y1 - y3) * y4 + H * x2 * y1 * y43 +
                            x4 * (Y * y2 * y31 + H * y1 * y32) - (H + Y) * x3 * y1 * y42) -
                       H * X * (x1 * y2 * y43 + x3 * (y1 - y2) * y4 + x4 * y21 * y3 - x2 * y1 * y43));
    const double g = H * (x3 * y21 - x4 * y21 + (x2 - x1) * y43);
    const double h = W * (x4 * y31 - x2 * y31 + (x1 - x3) * y42);
    const double i = W * Y * (x2 * y31 - x4 * y31 - x1 * y42 + x3 * y42) +
                     H * (X * (x4 * y21 - x3 * y21 + x1 * y43 - x2 * y43) +
                          W * (x3 * y4 + x2 * y3 + x4 * y2 - x3 * y2 - x4 * y3 - x2 * y4));

    const double D = guardedDivisor(i);
    Transform3D t;
    t.m11 = a / D, t.m12 = d / D, t.m14 = g / D;
    t.m21 = b / D, t.m22 = e / D, t.m24 = h / D;
    t.m41 = c / D, t.m42 = f / D;
    return t;
}

} // namespace quillomat
