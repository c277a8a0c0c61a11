#include "platform/graphics/codecs/PngChunks.h"

#include <isa-l/crc.h>

namespace quillomat::codecs {
namespace {

constexpr std::string_view signature{"\x89PNG\r\n\x1a\n", 8};
constexpr std::size_t chunkFrame = 12; // length, type, checksum
constexpr std::uint32_t largestLength = 0x7fffffff;

bool isDepthOfColorType(int depth, int colorType) {
    switch (colorType) {
    case 0:
        return depth == 1 || depth == 2 || depth == 4 || depth == 8 || depth == 16;
    case 3:
        return depth == 1 || depth == 2 || depth == 4 || depth == 8;
    case 2:
    case 4:
    case 6:
        return depth == 8 || depth == 16;
    default:
        return false;
    }
}

Result<PngHeader> parseHeader(const PngChunk& chunk, const ImageLimits& limits) {
    if (chunk.type != "IHDR" || chunk.data.size() != 13) {
        return Failure{"damaged PNG (no header)"};
    }
    if (!isIntact(chunk)) {
        return Failure{"damaged PNG (wrong checksum of the header)"};
    }
    const unsigned char* fields = asUnsignedChars(chunk.data) + 8;
    PngHeader header{bigEndian32(chunk.data, 0), bigEndian32(chunk.data, 4), fields[0], fields[1], fields[4] == 1};
    if (!isDepthOfColorType(header.bitDepth, header.colorType)) {
        return Failure{"damaged PNG (" + std::to_string(header.bitDepth) + " bits of colour type " +
                       std::to_string(header.colorType) + ")"};
    }
    if (fields[2] != 0 || fields[3] != 0 || fields[4] > 1) {
        return Failure{"damaged PNG (unknown method in the header)"};
    }
    if (const Status size = checkSize(header.width, header.height, limits); !size) {
        return Failure{size.reason()};
    }
    return header;
}

} // namespace

std::optional<PngChunk> pngChunkAt(ByteSpan bytes, std::size_t offset) {
    if (bytes.size() < chunkFrame || offset > bytes.size() - chunkFrame) {
        return std::nullopt;
    }
    const std::uint32_t length = bigEndian32(bytes, offset);
    if (length > largestLength || length > bytes.size() - chunkFrame - offset) {
        return std::nullopt;
    }
    const char* type = reinterpret_cast<const char*>(bytes.data()) + offset + 4;
    return PngChunk{{type, 4},
                    bytes.subspan(offset + 8, length),
                    offset + chunkFrame + length,
                    bigEndian32(bytes, offset + 8 + length)};
}

std::optional<PngChunk> firstPngChunk(ByteSpan bytes) {
    return pngChunkAt(bytes, signature.size());
}

bool isIntact(const PngChunk& chunk) {
    // The checksum covers the type too, which lies right before the data.
    const unsigned char* begin = asUnsignedChars(chunk.data) - 4;
    return crc32_gzip_refl(0, begin, chunk.data.size() + 4) == chunk.checksum;
}

bool isPng(ByteSpan bytes) {
    return startsWith(bytes, signature);
}

Result<PngHeader> readPngHeader(ByteSpan bytes, const ImageLimits& limits) {
    std::optional<PngChunk> chunk = firstPngChunk(bytes);
    if (!chunk) {
        return Failure{"truncated PNG"};
    }
    Result<PngHeader> parsed = parseHeader(*chunk, limits);
    if (!parsed) {
        return parsed;
    }
    PngHeader header = *parsed;
    // An eXIf chunk may stand on either side of the pixels.
    for (chunk = pngChunkAt(bytes, chunk->next); chunk && chunk->type != "IEND";
         chunk = pngChunkAt(bytes, chunk->next)) {
        if (chunk->type == "tRNS") {
            header.hasTransparency = true;
        } else if (chunk->type == "eXIf" && isIntact(*chunk)) {
            header.orientation = orientationFromExif(chunk->data);
        }
    }
    return header;
}

} // namespace quillomat::codecs
