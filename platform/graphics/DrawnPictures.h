// The pixels that a recording's draws need: decoded together, on several threads, and no larger than they are drawn.
#pragma once

#include "platform/graphics/Recording.h"
#include "platform/graphics/raster/StreamedPicture.h"

#include <memory>
#include <vector>

namespace quillomat {

/// The recording with its encoded pictures decoded and the recordings among them rasterised. A picture that is drawn
/// much smaller than it is, without perspective, is decoded at a reduced size where its format can do that: at least
/// twice what is drawn.
[[nodiscard]] Recording withDecodedPictures(const Recording& recording, int threads = 0);

struct StreamedRecording {
    Recording recording;
    std::vector<std::shared_ptr<raster::StreamedPicture>> streams; // of each draw; null for most
};

/// The same for canvas rows of which each is drawn once: backgrounds whose format gives rows are not decoded yet, or
/// not to the end.
[[nodiscard]] StreamedRecording withStreamedPictures(const Recording& recording, int threads = 0);

} // namespace quillomat
