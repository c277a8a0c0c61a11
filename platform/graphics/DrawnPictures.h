// The pixels that a recording's draws need: decoded together, on several threads, and no larger than they are drawn.
#pragma once

#include "platform/graphics/Recording.h"

namespace quillomat {

/// The recording with its encoded pictures decoded. A picture that is drawn much smaller than it is, without
/// perspective, is decoded at a reduced size where its format can do that: at least twice what is drawn.
[[nodiscard]] Recording withDecodedPictures(const Recording& recording, int threads = 0);

} // namespace quillomat
