// Gaussian blur of a picture whose edge pixels go on for ever.
#pragma once

#include "platform/graphics/Image.h"

namespace quillomat {

/// A picture of the same pixel size at scale 1; the image itself when the radius is not positive; no picture for none.
/// `radius` is the Gaussian's standard deviation in pixels.
[[nodiscard]] Image gaussianBlurClamped(const Image& image, double radius);

} // namespace quillomat
