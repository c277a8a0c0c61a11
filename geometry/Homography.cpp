#include "geometry/Homography.h"

#include <algorithm>
#include <cmath>

namespace quillomat {

Homography Homography::fromAffine(const AffineTransform& t) {
    // clang-format off
    return {{t.a,  t.b,  0,
             t.c,  t.d,  0,
             t.tx, t.ty, 1}};
    // clang-format on
}

Homography Homography::fromTransform3D(const Transform3D& t) {
    // clang-format off
    return {{t.m11, t.m12, t.m14,
             t.m21, t.m22, t.m24,
             t.m41, t.m42, t.m44}};
    // clang-format on
}

std::optional<Point> Homography::project(Point p) const {
    const double depth = w(p);
    if (!(depth > 0)) {
        return std::nullopt;
    }
    const Point result{(p.x * m[0] + p.y * m[3] + m[6]) / depth, (p.x * m[1] + p.y * m[4] + m[7]) / depth};
    if (!std::isfinite(result.x) || !std::isfinite(result.y)) {
        return std::nullopt;
    }
    return result;
}

Homography Homography::then(const Homography& next) const {
    Homography product;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            product.m[row * 3 + column] =
                m[row * 3] * next.m[column] + m[row * 3 + 1] * next.m[3 + column] + m[row * 3 + 2] * next.m[6 + column];
        }
    }
    return product;
}

std::optional<Homography> Homography::inverse() const {
    // The adjugate over the determinant; dividing by it keeps w of the inverse positive in front of the viewer.
    // clang-format off
    const std::array<double, 9> adjugate{
        m[4] * m[8] - m[5] * m[7], m[2] * m[7] - m[1] * m[8], m[1] * m[5] - m[2] * m[4],
        m[5] * m[6] - m[3] * m[8], m[0] * m[8] - m[2] * m[6], m[2] * m[3] - m[0] * m[5],
        m[3] * m[7] - m[4] * m[6], m[1] * m[6] - m[0] * m[7], m[0] * m[4] - m[1] * m[3]};
    // clang-format on
    const double determinant = m[0] * adjugate[0] + m[1] * adjugate[3] + m[2] * adjugate[6];
    if (determinant == 0 || !std::isfinite(determinant)) {
        return std::nullopt;
    }
    Homography result;
    for (std::size_t i = 0; i < 9; ++i) {
        result.m[i] = adjugate[i] / determinant;
    }
    if (!result.isFinite()) {
        return std::nullopt;
    }
    return result;
}

bool Homography::isFinite() const {
    return std::all_of(m.begin(), m.end(), [](double entry) { return std::isfinite(entry); });
}

} // namespace quillomat
