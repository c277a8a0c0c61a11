// The pixels of the commonest PNG files, faster than libpng: 8-bit RGB and RGBA without interlacing or transparent
// color.
#pragma once

#include "platform/graphics/Bitmap.h"
#include "platform/graphics/SparsePicture.h"
#include "platform/graphics/codecs/ColorConversion.h"
#include "platform/graphics/codecs/PngChunks.h"

#include <memory>
#include <optional>

namespace quillomat::codecs {

[[nodiscard]] constexpr bool hasPlainPixels(const PngHeader& header) {
    return header.bitDepth == 8 && (header.colorType == 2 || header.colorType == 6) && !header.isInterlaced &&
           !header.hasTransparency;
}

/// The whole picture, converted and premultiplied; for files with plain pixels only. Nothing for a file that is in any
/// way out of the ordinary, which is for libpng to judge.
[[nodiscard]] std::optional<Bitmap> decodePlainPixels(ByteSpan bytes, const PngHeader& header,
                                                      const ColorConversion& conversion);

/// The same in runs, never there as a whole in any other way.
[[nodiscard]] std::shared_ptr<const SparsePicture> decodeSparsePixels(ByteSpan bytes, const PngHeader& header,
                                                                      const ColorConversion& conversion);

} // namespace quillomat::codecs
