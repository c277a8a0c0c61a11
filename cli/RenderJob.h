// One mockup to render: what the user would pick and press, and what becomes of it.
#pragma once

#include "cli/World.h"
#include "platform/foundation/Result.h"
#include "platform/graphics/Cropping.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace quillomat {

struct RenderJob {
    std::string mockup;                    // as `list` prints it
    std::vector<std::string> screenshots;  // one or two files; "-" is standard input
    std::optional<std::string> background; // a file
    std::optional<PixelRect> crop;         // of the background
    bool blur = false;
    bool glare = false;
    bool best = false;                 // the smallest file, whatever time it takes
    std::optional<std::string> dump;   // a file for the recording of what is drawn
    std::optional<std::string> output; // a file, "-" for standard output; without one: the pictures folder
};

struct RenderReport {
    std::string output;
    PixelSize size;
    std::chrono::milliseconds duration{0};
};

/// Plays the job through an editor of its own. The failure reads "what: why" and nothing has been written then.
[[nodiscard]] Result<RenderReport> renderMockup(World& world, const RenderJob& job);

} // namespace quillomat
