#include "platform/graphics/codecs/MatrixConversion.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace quillomat::codecs {
namespace {

double encodeSrgb(double linear) {
    return linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

} // namespace

MatrixConversion::MatrixConversion(const MatrixColors& colors) : encoded_(std::size_t{1} << linearBits) {
    for (std::size_t light = 0; light < encoded_.size(); ++light) {
        encoded_[light] = static_cast<std::uint8_t>(encodeSrgb(static_cast<double>(light) / largest) * 255 + 0.5);
    }
    constexpr double scale = static_cast<double>(largest) * (1 << productBits);
    for (std::size_t channel = 0; channel < 3; ++channel) {
        for (std::size_t value = 0; value < 256; ++value) {
            const auto part = [&](std::size_t row) {
                const double product = colors.linear[channel][value] * colors.toSrgb[row][channel] * scale;
                // A profile can say anything; four of the largest still fit.
                return static_cast<std::int32_t>(std::lround(std::clamp(product, -4.0 * scale, 4.0 * scale)));
            };
            products_[channel][value] = {part(0), part(1), part(2)};
        }
    }
    for (Products& product : products_[0]) {
        for (std::int32_t* part : {&product.red, &product.green, &product.blue}) {
            *part += 1 << (productBits - 1); // so that the shift rounds
        }
    }
}

void MatrixConversion::convert(std::uint8_t* pixels, std::size_t count) const {
    if (count == 0) {
        return;
    }
    const auto encode = [this](std::int32_t sum) {
        return encoded_[static_cast<std::size_t>(std::clamp(sum >> productBits, 0, largest))];
    };
    // Neighbours are often equal, in screenshots mostly.
    std::array<std::uint8_t, 3> last{pixels[0], static_cast<std::uint8_t>(~pixels[1]), 0};
    std::array<std::uint8_t, 3> result{};
    for (std::uint8_t* end = pixels + count * 4; pixels != end; pixels += 4) {
        if (std::memcmp(pixels, last.data(), 3) != 0) {
            std::memcpy(last.data(), pixels, 3);
            const Products& r = products_[0][pixels[0]];
            const Products& g = products_[1][pixels[1]];
            const Products& b = products_[2][pixels[2]];
            result = {encode(r.red + g.red + b.red), encode(r.green + g.green + b.green),
                      encode(r.blue + g.blue + b.blue)};
        }
        std::memcpy(pixels, result.data(), 3);
    }
}

} // namespace quillomat::codecs
