// Points, sizes, rectangles and transforms: plain immutable values of double, y pointing down.
#pragma once

#include <string>

namespace quillomat {

struct Point {
    double x = 0;
    double y = 0;

    friend constexpr bool operator==(const Point&, const Point&) = default;
    friend constexpr Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
    friend constexpr Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
};

struct Size {
    double width = 0;
    double height = 0;

    friend constexpr bool operator==(const Size&, const Size&) = default;
};

/// An axis-aligned rectangle, half open at its right and bottom edges. Sizes may be negative or NaN when they come
/// from outside; nothing here validates, callers that allocate do.
struct Rect {
    Point origin;
    Size size;

    friend constexpr bool operator==(const Rect&, const Rect&) = default;

    [[nodiscard]] constexpr double minX() const { return origin.x; }
    [[nodiscard]] constexpr double minY() const { return origin.y; }
    [[nodiscard]] constexpr double maxX() const { return origin.x + size.width; }
    [[nodiscard]] constexpr double maxY() const { return origin.y + size.height; }
    [[nodiscard]] constexpr Point center() const { return {origin.x + size.width / 2, origin.y + size.height / 2}; }
    [[nodiscard]] constexpr bool isEmpty() const { return !(size.width > 0 && size.height > 0); }
};

[[nodiscard]] constexpr Rect makeRect(double x, double y, double width, double height) {
    return {{x, y}, {width, height}};
}

/// A 2-D affine map of row vectors: x' = a x + c y + tx, y' = b x + d y + ty.
struct AffineTransform {
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;

    friend constexpr bool operator==(const AffineTransform&, const AffineTransform&) = default;

    [[nodiscard]] static constexpr AffineTransform scale(double sx, double sy) { return {sx, 0, 0, sy, 0, 0}; }
    [[nodiscard]] static constexpr AffineTransform translation(double x, double y) { return {1, 0, 0, 1, x, y}; }

    [[nodiscard]] constexpr Point apply(Point p) const { return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty}; }
    /// This map followed by `next`.
    [[nodiscard]] constexpr AffineTransform then(const AffineTransform& next) const {
        return {a * next.a + b * next.c,
                a * next.b + b * next.d,
                c * next.a + d * next.c,
                c * next.b + d * next.d,
                tx * next.a + ty * next.c + next.tx,
                tx * next.b + ty * next.d + next.ty};
    }
};

/// A 4 x 4 matrix that acts on row vectors (x, y, z, 1); entries m11 ... m44 row by row.
struct Transform3D {
    // clang-format off
    double m11 = 1, m12 = 0, m13 = 0, m14 = 0;
    double m21 = 0, m22 = 1, m23 = 0, m24 = 0;
    double m31 = 0, m32 = 0, m33 = 1, m34 = 0;
    double m41 = 0, m42 = 0, m43 = 0, m44 = 1;
    // clang-format on

    friend constexpr bool operator==(const Transform3D&, const Transform3D&) = default;

    [[nodiscard]] static constexpr Transform3D fromAffine(const AffineTransform& t) {
        Transform3D r;
        r.m11 = t.a, r.m12 = t.b, r.m21 = t.c, r.m22 = t.d, r.m41 = t.tx, r.m42 = t.ty;
        return r;
    }
    /// The affine reading: what is left when the z and w rows and columns are ignored.
    [[nodiscard]] constexpr AffineTransform affine() const { return {m11, m12, m21, m22, m41, m42}; }
    [[nodiscard]] constexpr bool isAffine() const {
        return m13 == 0 && m14 == 0 && m23 == 0 && m24 == 0 && m31 == 0 && m32 == 0 && m33 == 1 && m34 == 0 &&
               m43 == 0 && m44 == 1;
    }
};

/// Text forms as the log writes them: "{{x, y}, {w, h}}", "{w, h}", "{x, y}".
[[nodiscard]] std::string stringFromRect(const Rect& rect);
[[nodiscard]] std::string stringFromSize(const Size& size);
[[nodiscard]] std::string stringFromPoint(const Point& point);

} // namespace quillomat
