// PNG's row filters, forwards, at the machine's vector width; every machine gives the same bytes.
#pragma once

#include <array>
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

/// Cost of a row by each filter, in sixteenths of a bit.
using RowCosts = std::array<std::uint64_t, 5>;

/// What a row is likely to cost, by the number of each filter: the sum of log2(1 + d) over its filtered bytes, whose
/// distances from 0, taken as signed numbers, are d (beyond 15 in steps of 16). The sum of the distances themselves,
/// which PNG's authors propose, makes too much of few large ones: they cost a Huffman code's word each.
/// Row and row above are those of `filterRow`.
[[nodiscard]] RowCosts costsOfRow(const std::uint8_t* row, const std::uint8_t* above, std::size_t length,
                                  std::size_t pixelBytes);

struct FilteredCost {
    std::uint64_t sixteenths = 0; ///< of a bit, as above
    std::uint64_t zeros = 0;      ///< bytes
};

/// The same of a row that has been filtered, and how much of it costs nothing. `rowPadding` bytes behind it are read.
[[nodiscard]] FilteredCost costOfFiltered(const std::uint8_t* filtered, std::size_t length);

/// RGBA to packed RGB; alpha is dropped. May write `rowPadding` bytes behind the row's end.
void dropAlpha(const std::uint8_t* rgba, std::uint8_t* rgb, std::size_t pixels);

} // namespace quillomat::codecs
