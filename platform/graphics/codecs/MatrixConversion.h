// Colours by three curves and a matrix, in whole numbers: how nearly every camera and screen describes its own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillomat::codecs {

struct MatrixColors {
    /// The linear light, from 0 to 1, of each value of red, green and blue.
    std::array<std::array<double, 256>, 3> linear{};
    /// Linear sRGB from linear colours: rows are red, green and blue of sRGB.
    std::array<std::array<double, 3>, 3> toSrgb{};
};

/// Immutable; some 28 KiB of tables.
class MatrixConversion {
public:
    explicit MatrixConversion(const MatrixColors& colors);
    /// Straight RGBA in place; alpha is kept.
    void convert(std::uint8_t* pixels, std::size_t count) const;

private:
    /// Linear light has this many bits: in the darkest colours, where sRGB is steepest, a step is a fifth of a level.
    static constexpr int linearBits = 14;
    static constexpr int productBits = 10; // more, while the three products are summed
    static constexpr std::int32_t largest = (1 << linearBits) - 1;

    struct Products {
        std::int32_t red = 0, green = 0, blue = 0, unused = 0;
    };

    std::array<std::array<Products, 256>, 3> products_{};
    std::vector<std::uint8_t> encoded_; // the value in sRGB of each linear light
};

} // namespace quillomat::codecs
