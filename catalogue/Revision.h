// Whether a published catalogue is later than the local one.
#pragma once

#include "platform/foundation/Value.h"

#include <optional>
#include <string>

namespace quillomat {

struct RevisionCheck {
    std::optional<std::string> local;     // nothing without a catalogue, or without a "version" that is a string
    std::optional<std::string> published; // likewise; also when nothing arrived

    /// A missing local revision is older than any published one, so that a damaged stored catalogue heals by updating.
    [[nodiscard]] bool isUpdateAvailable() const;
};

/// The "version" of a catalogue.
[[nodiscard]] std::optional<std::string> revisionOf(const Value& catalogue);

} // namespace quillomat
