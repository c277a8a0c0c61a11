// A colour: straight (not premultiplied) sRGB components and alpha, each from 0 to 1.
#pragma once

namespace quillomat {

struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 0;

    friend constexpr bool operator==(const Color&, const Color&) = default;

    [[nodiscard]] static constexpr Color clear() { return {0, 0, 0, 0}; }
    [[nodiscard]] static constexpr Color black() { return {0, 0, 0, 1}; }
    [[nodiscard]] static constexpr Color white() { return {1, 1, 1, 1}; }
    [[nodiscard]] static constexpr Color pureRed(double alpha = 1) { return {1, 0, 0, alpha}; }
    [[nodiscard]] static constexpr Color pureBlue() { return {0, 0, 1, 1}; }
};

} // namespace quillomat
