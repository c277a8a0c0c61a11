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

/// The sum of a box's bytes stays below 2^16.
constexpr int largestReduction = 16;
/// The most pixels a side whose average may stand for them: `minimum` remains, and no pixel is left over at an edge.
[[nodiscard]] int reductionFor(PixelSize size, PixelSize minimum);
/// The whole picture, each square of `factor` x `factor` premultiplied pixels averaged; `factor` divides both sides.
[[nodiscard]] std::optional<Bitmap> decodeReducedPixels(ByteSpan bytes, const PngHeader& header,
                                                        const ColorConversion& conversion, int factor);

} // namespace quillomat::codecs
