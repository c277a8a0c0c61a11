// The chunks of a PNG file, walked without inflating anything: what the header needs to know.
#pragma once

#include "platform/graphics/codecs/Codec.h"
#include "platform/graphics/codecs/Orientation.h"

#include <optional>

namespace quillomat::codecs {

struct PngHeader {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int bitDepth = 0;
    int colorType = 0;
    bool isInterlaced = false;
    bool hasTransparency = false; // a tRNS chunk
    Orientation orientation = Orientation::upright;

    [[nodiscard]] bool hasColor() const { return (colorType & 2) != 0; }
    [[nodiscard]] bool hasPalette() const { return colorType == 3; }
    [[nodiscard]] bool hasAlpha() const { return (colorType & 4) != 0; }
};

struct PngChunk {
    std::string_view type;
    ByteSpan data;
    std::size_t next = 0; // where the chunk after it begins
    std::uint32_t checksum = 0;
};

/// The chunk at `offset`; nothing where the file ends before the chunk does.
[[nodiscard]] std::optional<PngChunk> pngChunkAt(ByteSpan bytes, std::size_t offset);
[[nodiscard]] std::optional<PngChunk> firstPngChunk(ByteSpan bytes);
/// Whether the chunk's checksum is right.
[[nodiscard]] bool isIntact(const PngChunk& chunk);

[[nodiscard]] bool isPng(ByteSpan bytes);
/// Fails for a header that is cut short, whose checksum is wrong or whose values PNG does not have, and over the
/// limits.
[[nodiscard]] Result<PngHeader> readPngHeader(ByteSpan bytes, const ImageLimits& limits);

} // namespace quillomat::codecs
