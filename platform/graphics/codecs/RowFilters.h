// PNG's row filters, forwards, at the machine's vector width; every machine gives the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quillomat::codecs {

enum class RowFilter : std::uint8_t { none = 0, sub = 1, up = 2, average = 3, paeth = 4 };

/// Bytes that must be readable before a row, and zero, and behind it; filtered rows may be written this far behind
/// their end.
constexpr std::size_t rowPadding = 64;

/// Filters `length` bytes of `row` over the row above it (all zero above the first), `pixelBytes` (3 or 4) to a pixel.
void filterRow(RowFilter filter, const std::uint8_t* row, const std::uint8_t* above, std::size_t length,
               std::size_t pixelBytes, std::uint8_t* out);

/// How much a filtered row is likely to cost: the sum of its bytes' distances from 0, taken as signed numbers.
[[nodiscard]] std::uint64_t costOfRow(const std::uint8_t* filtered, std::size_t length);

/// RGBA to packed RGB; alpha is dropped. May write `rowPadding` bytes behind the row's end.
void dropAlpha(const std::uint8_t* rgba, std::uint8_t* rgb, std::size_t pixels);

} // namespace quillomat::codecs
