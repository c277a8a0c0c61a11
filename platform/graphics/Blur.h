// Gaussian blur of a picture whose edge pixels go on for ever.
#pragma once

#include "platform/graphics/Image.h"

namespace quillomat {

/// A picture of the same pixel size at scale 1; the image itself when the radius is not positive; no picture for none.
/// `radius` is the Gaussian's standard deviation in pixels, as photo-filter libraries and the `stdDeviation` of the
/// W3C's Filter Effects count it. Computed as two passes of the sampled Gaussian cut at 4.5 deviations, premultiplied.
[[nodiscard]] Image gaussianBlurClamped(const Image& image, double radius);

} // namespace quillomat
