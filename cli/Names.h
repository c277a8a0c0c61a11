// Mockup names as people type them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillomat {

/// Insertions, deletions, replacements and swaps of neighbours that turn one string into the other (optimal string
/// alignment distance).
[[nodiscard]] std::size_t editDistance(std::string_view a, std::string_view b);

/// The `count` candidates nearest to `name`, nearest first; equally near ones keep their order. Names that are
/// longer than a file's can be are left out.
[[nodiscard]] std::vector<std::string> nearestNames(std::string_view name, const std::vector<std::string>& candidates,
                                                    std::size_t count = 3);

/// The name with ".png" added when it has no such ending.
[[nodiscard]] std::string withPngExtension(std::string name);

} // namespace quillomat
