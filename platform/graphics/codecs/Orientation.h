// The eight ways a camera can have been held, and turning a decoded picture upright.
#pragma once

#include "platform/graphics/Bitmap.h"

#include <span>

namespace quillomat::codecs {

/// Exif's numbers: where row 0 and column 0 of what is stored lie in the upright picture.
enum class Orientation {
    upright = 1,
    mirrored = 2,
    upsideDown = 3,
    flipped = 4,
    transposed = 5,
    turnedLeft = 6, // a quarter turn clockwise makes it upright
    transversed = 7,
    turnedRight = 8, // a quarter turn anticlockwise makes it upright
};

/// Reads the orientation from an Exif block, with or without its "Exif" header; upright when there is none, or none
/// that is valid.
[[nodiscard]] Orientation orientationFromExif(std::span<const std::byte> exif);

[[nodiscard]] constexpr bool swapsSides(Orientation orientation) {
    return orientation >= Orientation::transposed;
}

[[nodiscard]] constexpr PixelSize uprightSize(PixelSize stored, Orientation orientation) {
    return swapsSides(orientation) ? PixelSize{stored.height, stored.width} : stored;
}

[[nodiscard]] Bitmap turnUpright(Bitmap stored, Orientation orientation);

} // namespace quillomat::codecs
