// The whole stream is inflated by libdeflate into the end of the bitmap's own memory. Then four rows at a time are
// taken out, recovered, converted and premultiplied, and put at the front, which has been read by then.
#include "platform/graphics/codecs/PngPixels.h"

#include "platform/graphics/codecs/PixelRows.h"
#include "platform/graphics/codecs/Unfilter.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace quillomat::codecs {
namespace {

constexpr std::array<std::string_view, 5> harmlessBehindPixels{"tEXt", "zTXt", "iTXt", "tIME", "eXIf"};

struct FreeDecompressor {
    void operator()(libdeflate_decompressor* decompressor) const { libdeflate_free_decompressor(decompressor); }
};

/// The compressed pixels, in one piece or joined; nothing unless they stand together, every checksum is right and the
/// file ends as it should.
class CompressedPixels {
public:
    [[nodiscard]] static std::optional<CompressedPixels> find(ByteSpan bytes) {
        CompressedPixels found;
        bool isBehind = false;
        for (auto chunk = firstPngChunk(bytes); chunk; chunk = pngChunkAt(bytes, chunk->next)) {
            if (chunk->type == "IDAT") {
                if (isBehind || !isIntact(*chunk)) {
                    return std::nullopt;
                }
                found.pieces_.push_back(chunk->data);
            } else if (chunk->type == "IEND") {
                const bool isWhole = !found.pieces_.empty() && chunk->data.empty() && isIntact(*chunk);
                return isWhole ? std::optional(std::move(found)) : std::nullopt;
            } else if (!found.pieces_.empty()) {
                isBehind = true;
                if (std::find(harmlessBehindPixels.begin(), harmlessBehindPixels.end(), chunk->type) ==
                    harmlessBehindPixels.end()) {
                    return std::nullopt;
                }
            }
        }
        return std::nullopt;
    }

    [[nodiscard]] ByteSpan inOnePiece() {
        if (pieces_.size() == 1) {
            return pieces_.front();
        }
        if (joined_.empty()) {
            std::size_t length = 0;
            for (const ByteSpan piece : pieces_) {
                length += piece.size();
            }
            joined_.reserve(length);
            for (const ByteSpan piece : pieces_) {
                joined_.insert(joined_.end(), piece.begin(), piece.end());
            }
        }
        return joined_;
    }

private:
    std::vector<ByteSpan> pieces_;
    Bytes joined_;
};

bool inflate(ByteSpan compressed, std::span<std::uint8_t> out) {
    const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(libdeflate_alloc_decompressor());
    // Exactly as many bytes as the rows have, and the right checksum.
    return decompressor && libdeflate_zlib_decompress(decompressor.get(), compressed.data(), compressed.size(),
                                                      out.data(), out.size(), nullptr) == LIBDEFLATE_SUCCESS;
}

/// Takes filtered rows in groups and gives finished pixels.
class RowFinisher {
public:
    RowFinisher(Bitmap& bitmap, std::size_t pixelBytes, const ColorConversion& conversion)
        : bitmap_(bitmap)
        , conversion_(conversion)
        , width_(static_cast<std::size_t>(bitmap.width()))
        , pixelBytes_(pixelBytes)
        , stride_(width_ * 4 + 2 * unfilterPadding)
        , filtered_(stride_ * rowsAtOnce)
        , pixels_(stride_ * (rowsAtOnce + 1)) {}

    /// `rows` begin with their filters; false for a filter that PNG does not have.
    [[nodiscard]] bool finish(int first, int count, const std::uint8_t* rows) {
        RowGroup group;
        for (std::size_t i = 0; i < rowsAtOnce; ++i) {
            std::uint8_t* filtered = filtered_.data() + i * stride_ + unfilterPadding;
            if (i < static_cast<std::size_t>(count)) {
                const std::uint8_t* row = rows + i * (width_ * pixelBytes_ + 1);
                group.filters[i] = *row;
                std::memcpy(filtered, row + 1, width_ * pixelBytes_);
            }
            if (group.filters[i] > 4) {
                return false;
            }
            group.filtered[i] = filtered;
            group.pixels[i] = pixelRow(i + 1);
        }
        group.above = pixelRow(0);
        unfilter(group, width_, pixelBytes_);
        for (int i = 0; i < count; ++i) {
            finishRow(pixelRow(static_cast<std::size_t>(i) + 1), bitmap_.row(first + i));
        }
        std::memcpy(pixelRow(0), pixelRow(rowsAtOnce), width_ * 4);
        return true;
    }

private:
    /// Row 0 is the last one of the group before.
    [[nodiscard]] std::uint8_t* pixelRow(std::size_t i) { return pixels_.data() + i * stride_ + unfilterPadding; }

    void finishRow(const std::uint8_t* row, std::uint8_t* out) const {
        if (pixelBytes_ == 3) {
            makeOpaque(row, out, width_);
            conversion_.convert(out, width_);
        } else if (conversion_.isIdentity()) {
            premultiply(row, out, width_);
        } else {
            std::memcpy(out, row, width_ * 4);
            conversion_.convert(out, width_);
            premultiply(out, out, width_);
        }
    }

    Bitmap& bitmap_;
    const ColorConversion& conversion_;
    std::size_t width_;
    std::size_t pixelBytes_;
    std::size_t stride_;
    std::vector<std::uint8_t> filtered_;
    std::vector<std::uint8_t> pixels_;
};

} // namespace

std::optional<Bitmap> decodePlainPixels(ByteSpan bytes, const PngHeader& header, const ColorConversion& conversion) {
    std::optional<CompressedPixels> compressed = CompressedPixels::find(bytes);
    if (!compressed) {
        return std::nullopt;
    }
    Bitmap bitmap(PixelSize{static_cast<int>(header.width), static_cast<int>(header.height)});
    const std::size_t pixelBytes = header.hasAlpha() ? 4 : 3;
    const std::size_t rowBytes = std::size_t{header.width} * pixelBytes + 1;
    const std::size_t length = rowBytes * header.height;
    const std::size_t behindPixels = bitmap.bytes().size() + (header.hasAlpha() ? header.height : 0);
    // Rows are never shorter at the front than they were at the end, except where a row is a single pixel.
    if (behindPixels < length || behindPixels > bitmap.bytesWithRoom().size()) {
        return std::nullopt;
    }
    const std::span<std::uint8_t> filtered = bitmap.bytesWithRoom().subspan(behindPixels - length, length);
    if (!inflate(compressed->inOnePiece(), filtered)) {
        return std::nullopt;
    }
    RowFinisher finisher(bitmap, pixelBytes, conversion);
    constexpr int group = static_cast<int>(rowsAtOnce);
    for (int first = 0; first < bitmap.height(); first += group) {
        const int count = std::min(group, bitmap.height() - first);
        if (!finisher.finish(first, count, filtered.data() + rowBytes * static_cast<std::size_t>(first))) {
            return std::nullopt;
        }
    }
    return bitmap;
}

} // namespace quillomat::codecs
