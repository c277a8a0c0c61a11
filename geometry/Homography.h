// A projective map of the plane: where a layer's transform, seen without its depth, takes a point.
#pragma once

#include "platform/foundation/Geometry.h"

#include <array>
#include <optional>

namespace quillomat {

/// Row-vector convention, as the layer transform has it:
///   X = x m[0] + y m[3] + m[6],  Y = x m[1] + y m[4] + m[7],  w = x m[2] + y m[5] + m[8],  result (X / w, Y / w).
/// Only points with w > 0 are in front of the viewer.
struct Homography {
    // clang-format off
    std::array<double, 9> m{1, 0, 0,
                            0, 1, 0,
                            0, 0, 1};
    // clang-format on

    friend bool operator==(const Homography&, const Homography&) = default;

    [[nodiscard]] static Homography fromAffine(const AffineTransform& t);
    /// The plane part of a 4 x 4 transform: z = 0 goes in, depth is dropped.
    [[nodiscard]] static Homography fromTransform3D(const Transform3D& t);

    /// Nothing where w is not positive or the result is not finite.
    [[nodiscard]] std::optional<Point> project(Point p) const;
    [[nodiscard]] double w(Point p) const { return p.x * m[2] + p.y * m[5] + m[8]; }
    /// This map followed by `next`.
    [[nodiscard]] Homography then(const Homography& next) const;
    /// Nothing when the map collapses the plane or has entries that are not finite.
    [[nodiscard]] std::optional<Homography> inverse() const;
    [[nodiscard]] bool isAffine() const { return m[2] == 0 && m[5] == 0 && m[8] == 1; }
    [[nodiscard]] bool isFinite() const;
};

} // namespace quillomat
