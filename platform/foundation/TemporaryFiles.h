// The hidden files that hold what is being written until it is whole, and what becomes of those that a killed program
// left behind.
#pragma once

#include <string>
#include <string_view>

namespace quillomat {

/// A new name: ".quillomat-", 16 random hexadecimal digits, ".tmp". It has no ".cfg" in it, so that no scan takes the
/// file for an imported definition.
[[nodiscard]] std::string temporaryFileName();
[[nodiscard]] bool isTemporaryFileName(std::string_view name);

/// Removes what stands in the folder itself under such a name, is a regular file of this user's, and was last written
/// more than a day ago. Everything else stays, and what cannot be looked at or removed stays silently.
void removeStaleTemporaryFiles(const std::string& folder);

} // namespace quillomat
