// Photographs as the planes that JPEG stores, for whoever stretches those before they become colours.
#pragma once

#include "platform/graphics/codecs/Codec.h"
#include "platform/graphics/codecs/JpegLibrary.h"

#include <memory>

namespace quillomat::codecs {

/// Whether it is upright, its luma and chroma sampled as cameras do. Its planes are still not to be had where its
/// colours are to be converted.
[[nodiscard]] bool isStoredInPlanes(const jpeg::Reader& reader);

/// The planes of what `decodePart` would give; null for any reason not to.
[[nodiscard]] std::unique_ptr<PlaneReader> readJpegPlanes(SharedDocument document, const PixelRect& part,
                                                          PixelSize minimum, const ImageLimits& limits);

} // namespace quillomat::codecs
