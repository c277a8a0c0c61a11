// Whether a file name can stand in an address as it is.
#pragma once

#include <string_view>

namespace quillomat {

/// Names go into addresses without escaping; one with a character that needs it gives no valid address.
[[nodiscard]] bool needsNoEscaping(std::string_view name);

} // namespace quillomat
