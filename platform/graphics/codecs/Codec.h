// One picture format: how it is recognised, measured and decoded.
#pragma once

#include "platform/graphics/ImageFile.h"
#include "platform/graphics/PlanarPicture.h"
#include "platform/graphics/RowReader.h"
#include "platform/graphics/SparsePicture.h"

#include <memory>
#include <string_view>

namespace quillomat::codecs {

using ByteSpan = std::span<const std::byte>;

struct Codec {
    ImageFormat format;
    std::string_view name;
    /// Looks at the first bytes only.
    bool (*sniff)(ByteSpan bytes);
    Result<ImageHeader> (*readHeader)(ByteSpan bytes, const ImageLimits& limits);
    /// The whole picture where `minimum` is empty; otherwise a reduction at least that large on both sides, where the
    /// format can reduce while decoding.
    Result<Bitmap> (*decode)(ByteSpan bytes, PixelSize minimum, const ImageLimits& limits);
    /// A part of the picture, as it stands upright, or a reduction of that very part; null where the format cannot.
    Result<Bitmap> (*decodePart)(ByteSpan bytes, const PixelRect& part, PixelSize minimum,
                                 const ImageLimits& limits) = nullptr;
    /// The whole picture in runs, where the format can decode so and this picture allows it; null for any reason not
    /// to.
    std::shared_ptr<const SparsePicture> (*decodeSparse)(ByteSpan bytes, const ImageLimits& limits) = nullptr;
    /// The rows of what `decodePart` would give; null for any reason not to.
    std::unique_ptr<RowReader> (*readRows)(SharedDocument document, const PixelRect& part, PixelSize minimum,
                                           const ImageLimits& limits) = nullptr;
    /// The planes of the same; null for any reason not to.
    std::unique_ptr<PlaneReader> (*readPlanes)(SharedDocument document, const PixelRect& part, PixelSize minimum,
                                               const ImageLimits& limits) = nullptr;
};

extern const Codec pngCodec;
extern const Codec jpegCodec;
extern const Codec webpCodec;
extern const Codec heifCodec;

/// As the codec does, but with no code of our own on the pixels: the judge of that code.
[[nodiscard]] Result<Bitmap> decodePngByLibpng(ByteSpan bytes, const ImageLimits& limits = {});

/// Of a picture that is decoded whole as it is stored, and turned upright and cut afterwards.
[[nodiscard]] inline DecodingBytes decodingWhole(PixelSize size, bool isTurned, std::uint64_t libraryBytes) {
    const std::uint64_t pixels = size.area() * 4;
    const std::uint64_t whole = libraryBytes + (isTurned ? pixels : 0);
    return {whole, whole + pixels};
}

/// Refuses an empty size and one over the limits; takes wide integers, since headers can announce anything.
[[nodiscard]] Status checkSize(std::uint64_t width, std::uint64_t height, const ImageLimits& limits);

[[nodiscard]] inline const unsigned char* asUnsignedChars(ByteSpan bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

/// Unsigned big-endian number of four bytes; the caller has checked that they are there.
[[nodiscard]] inline std::uint32_t bigEndian32(ByteSpan bytes, std::size_t offset) {
    const unsigned char* p = asUnsignedChars(bytes) + offset;
    return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) | p[3];
}

[[nodiscard]] inline bool startsWith(ByteSpan bytes, std::string_view prefix, std::size_t offset = 0) {
    if (bytes.size() < offset || bytes.size() - offset < prefix.size()) {
        return false;
    }
    return std::string_view(reinterpret_cast<const char*>(bytes.data()) + offset, prefix.size()) == prefix;
}

} // namespace quillomat::codecs
