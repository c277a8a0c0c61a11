// Pictures from outside: recognised by content, measured from the header, decoded when first drawn.
#pragma once

#include "platform/foundation/FileManager.h"
#include "platform/foundation/Result.h"
#include "platform/graphics/Image.h"

#include <cstdint>
#include <span>
#include <string>

namespace quillomat {

/// What a picture from outside may cost. Checked from the header before any pixel is allocated.
struct ImageLimits {
    std::uint64_t pixels = std::uint64_t{256} * 1000 * 1000;
    int side = 30000;
    std::uint64_t fileBytes = std::uint64_t{1} << 30;
};

enum class ImageFormat { png, jpeg, webp, heif };

/// What the header says; `size` is upright, after the orientation is applied.
struct ImageHeader {
    ImageFormat format = ImageFormat::png;
    PixelSize size;
    bool isKnownOpaque = false;
};

/// Reads the header only. Fails for what is no picture of a known format, is broken, or is over the limits.
[[nodiscard]] Result<ImageHeader> readImageHeader(std::span<const std::byte> bytes, const ImageLimits& limits = {});

/// Decodes the whole picture: upright (all eight orientations), converted to sRGB from its embedded profile (PNG
/// precedence: iCCP, sRGB, gAMA with cHRM), 8-bit premultiplied RGBA. A truncated or damaged picture is refused.
[[nodiscard]] Result<Bitmap> decodeImage(std::span<const std::byte> bytes, const ImageLimits& limits = {});

/// Decodes at a reduced size for thumbnails: at least `minimum` on both sides where the picture has it, never larger
/// than the picture; the reduction is done while decoding where the format can.
[[nodiscard]] Result<Bitmap> decodeImageReduced(std::span<const std::byte> bytes, PixelSize minimum,
                                                const ImageLimits& limits = {});

/// A picture over an encoded document: header checked now, decoded at the first draw, once.
[[nodiscard]] Result<Image> imageFromBytes(Bytes bytes, const ImageLimits& limits = {});
[[nodiscard]] Result<Image> imageFromFile(const FileManager& files, const std::string& path, const ImageLimits& limits = {});

/// The format as a word for messages: "PNG", "JPEG", "WebP", "HEIF".
[[nodiscard]] std::string describeFormat(ImageFormat format);

} // namespace quillomat
