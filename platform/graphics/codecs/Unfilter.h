// PNG's row filters, backwards: eight rows at once, each behind the one above it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace quillomat::codecs {

constexpr std::size_t rowsAtOnce = 8;
/// What must be readable (and zero, before a filtered row) or may be overwritten on either side of each row.
constexpr std::size_t unfilterPadding = 64;

struct RowGroup {
    std::array<const std::uint8_t*, rowsAtOnce> filtered{};
    std::array<std::uint8_t, rowsAtOnce> filters{}; // each 0 to 4
    const std::uint8_t* above = nullptr;            // RGBA pixels of the row before, zero before the first
    std::array<std::uint8_t*, rowsAtOnce> pixels{}; // RGBA; alpha says nothing where there are 3 bytes to a pixel
};

/// Recovers eight rows of `width` pixels of `pixelBytes` (3 or 4) bytes.
void unfilter(const RowGroup& rows, std::size_t width, std::size_t pixelBytes);

} // namespace quillomat::codecs
