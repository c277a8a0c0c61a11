// Between straight and premultiplied pixels, exactly rounded.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quillomat::codecs {

/// RGBA: each colour becomes colour * alpha / 255, rounded to nearest. In place or apart.
void premultiply(const std::uint8_t* straight, std::uint8_t* premultiplied, std::size_t pixels);
/// RGBA: each colour becomes colour * 255 / alpha, rounded to nearest, at most 255; 0 where alpha is 0. In place or
/// apart.
void unpremultiply(const std::uint8_t* premultiplied, std::uint8_t* straight, std::size_t pixels);
/// RGBA: each alpha becomes 255. In place or apart.
void makeOpaque(const std::uint8_t* rgbx, std::uint8_t* rgba, std::size_t pixels);
/// Adds each byte to its sum, which must not overflow.
void addBytes(const std::uint8_t* bytes, std::uint16_t* sums, std::size_t count);
/// Whether every alpha is 255.
[[nodiscard]] bool allOpaque(const std::uint8_t* rgba, std::size_t pixels);

} // namespace quillomat::codecs
