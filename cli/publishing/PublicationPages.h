// The maker's two web pages: plain HTML that needs no script, in light and dark, readable on a phone.
#pragma once

#include "cli/publishing/Publication.h"
#include "platform/foundation/Result.h"

#include <string>

namespace quillomat {

/// All frames, row by row, with previews and credits. Previews are addressed as "previews/" + the mockup's name.
[[nodiscard]] std::string mockupsPage(const Publication& publication);
[[nodiscard]] std::string supportPage();

/// A small picture of the frame with its screens lit, at most 640 pixels on the longer side, as PNG.
[[nodiscard]] Result<Bytes> framePreview(World& world, const Publication& publication, const PublishedFrame& frame);

/// Text as HTML shows it literally, also inside quoted attributes.
[[nodiscard]] std::string escapeHtml(std::string_view text);

} // namespace quillomat
