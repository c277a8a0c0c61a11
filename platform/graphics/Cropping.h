// Cutting a rectangle of whole pixels out of a picture, without decoding it yet.
#pragma once

#include "platform/graphics/Image.h"

namespace quillomat {

/// The largest rectangle of the shape width : height about the picture's centre, at least one pixel on each side; the
/// whole picture when the shape has no extent.
[[nodiscard]] PixelRect centredCrop(PixelSize picture, PixelSize shape);

/// Whether the rectangle has an extent and lies inside the picture.
[[nodiscard]] bool liesInside(const PixelRect& rect, PixelSize picture);

/// The cut picture, pixel for pixel, decoded when it is drawn, and then no more of it than is kept; the picture itself
/// for its whole rectangle, no picture for a rectangle that does not lie inside.
[[nodiscard]] Image croppedImage(const Image& image, const PixelRect& rect);

} // namespace quillomat
