#include "platform/graphics/codecs/PixelRows.h"

#include <algorithm>

namespace quillomat::codecs {
namespace {

constexpr std::uint8_t timesAlpha(unsigned color, unsigned alpha) {
    const unsigned product = color * alpha + 128;
    return static_cast<std::uint8_t>((product + (product >> 8)) >> 8);
}

constexpr std::uint8_t overAlpha(unsigned color, unsigned alpha) {
    return static_cast<std::uint8_t>(std::min(255U, (color * 255 + alpha / 2) / alpha));
}

} // namespace

void premultiply(std::uint8_t* rgba, std::size_t pixels) {
    for (std::uint8_t* end = rgba + pixels * 4; rgba != end; rgba += 4) {
        const unsigned alpha = rgba[3];
        if (alpha == 255) {
            continue;
        }
        rgba[0] = timesAlpha(rgba[0], alpha);
        rgba[1] = timesAlpha(rgba[1], alpha);
        rgba[2] = timesAlpha(rgba[2], alpha);
    }
}

void unpremultiply(const std::uint8_t* premultiplied, std::uint8_t* straight, std::size_t pixels) {
    const std::uint8_t* from = premultiplied;
    std::uint8_t* to = straight;
    for (std::size_t i = 0; i < pixels; ++i, from += 4, to += 4) {
        const unsigned alpha = from[3];
        if (alpha == 255) {
            std::copy_n(from, 4, to);
        } else if (alpha == 0) {
            std::fill_n(to, 4, std::uint8_t{0});
        } else {
            to[0] = overAlpha(from[0], alpha);
            to[1] = overAlpha(from[1], alpha);
            to[2] = overAlpha(from[2], alpha);
            to[3] = from[3];
        }
    }
}

bool allOpaque(const std::uint8_t* rgba, std::size_t pixels) {
    unsigned all = 255;
    for (std::size_t i = 0; i < pixels; ++i) {
        all &= rgba[i * 4 + 3];
    }
    return all == 255;
}

} // namespace quillomat::codecs
