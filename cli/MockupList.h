// Every mockup the catalogue and the imports offer, as the galleries show them.
#pragma once

#include "cli/World.h"
#include "platform/foundation/Value.h"
#include "platform/graphics/Bitmap.h"

#include <optional>
#include <string>
#include <vector>

namespace quillomat {

struct MockupSummary {
    std::string row;  // the row's "typeLabel"
    std::string name; // "-large" included
    Size canvas;      // pixels
    int screens = 1;
    std::optional<std::string> author; // without the leading words of the credit line
    bool imported = false;
    Value definition; // nothing when the catalogue has none
};

/// The rows' names, in the catalogue's order.
[[nodiscard]] std::vector<std::string> listRows(World& world);

/// Row by row, in gallery order.
[[nodiscard]] std::vector<MockupSummary> listMockups(World& world);

/// The mockup of that name (".png" added when missing), or a failure that names the three nearest.
[[nodiscard]] Result<MockupSummary> findMockup(World& world, const std::string& name);

} // namespace quillomat
