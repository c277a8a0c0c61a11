// Ordering of strings in which runs of digits compare by their numeric value: "1.10" is later than "1.9".
#pragma once

#include <compare>
#include <string_view>

namespace quillomat {

/// Digit runs may be of any length; leading zeros do not count. Other characters compare by code point.
[[nodiscard]] std::weak_ordering compareNumerically(std::string_view a, std::string_view b);

} // namespace quillomat
