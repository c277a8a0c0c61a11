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

/// What decoding takes at most beside the document and the pixels that come of it, told before it begins.
struct DecodingBytes {
    std::uint64_t whole = 0;
    std::uint64_t part = 0; // for pixels of a part alone
};

/// What the header says; `size` is upright, after the orientation is applied.
struct ImageHeader {
    ImageFormat format = ImageFormat::png;
    PixelSize size;
    bool isKnownOpaque = false;
    /// Whether the pixels can be had in runs, unless the file turns out to be odd.
    bool mayBeInRuns = false;
    /// Whether a part whose edges fall on even pixels is decoded at half its size where that is enough, and so on down
    /// to an eighth.
    bool isHalvedWhileDecoding = false;
    /// Whether rows of a part can be had one after another, so that they need not be there together.
    bool mayBeInRows = false;
    DecodingBytes decoding;
    /// Whether its planes can be had, unless its colours are to be converted.
    bool mayBeInPlanes = false;
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

/// A picture over an encoded document, which is kept: header checked now, decoded when it is drawn. The pixels are kept
/// as long as somebody holds them, and made again when they are wanted again.
[[nodiscard]] Result<Image> imageFromBytes(Bytes bytes, const ImageLimits& limits = {});
/// The same over the bytes that the file has now, whatever becomes of it.
[[nodiscard]] Result<Image> imageFromFile(const FileManager& files, const std::string& path,
                                          const ImageLimits& limits = {});

/// A picture over a file that is read again each time its pixels are wanted: until then it costs no memory, so there
/// may be hundreds of them. It stays the picture of the bytes that the file has now: once the file has gone, cannot be
/// read or holds any other bytes, there are no pixels and `failure` says why; with its bytes back, it has its pixels
/// again. For pictures that are looked at and not worked with. `files` must outlive the picture.
[[nodiscard]] Result<Image> imageReadWhenDrawn(const FileManager& files, const std::string& path,
                                               const ImageLimits& limits = {});
/// The same picture with its document in memory from now on; no picture when its document cannot be had any more. A
/// picture that is in memory already is given back as it is.
[[nodiscard]] Image heldInMemory(const Image& image);

/// The format as a word for messages: "PNG", "JPEG", "WebP", "HEIF".
[[nodiscard]] std::string describeFormat(ImageFormat format);

} // namespace quillomat
