// For a bitmap, the whole stream is inflated by libdeflate into the end of the bitmap's own memory. Then a few rows at
// a time are taken out, recovered, converted and premultiplied, and put at the front, which has been read by then. For
// a picture in runs, ISA-L inflates a few rows at a time into a buffer that stays in the cache.
#include "platform/graphics/codecs/PngPixels.h"

#include "platform/graphics/codecs/PixelRows.h"
#include "platform/graphics/codecs/Unfilter.h"

#include <isa-l/igzip_lib.h>
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

    [[nodiscard]] const std::vector<ByteSpan>& pieces() const { return pieces_; }

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

/// Inflates a stream piece by piece.
class StreamInflater {
public:
    explicit StreamInflater(const std::vector<ByteSpan>& pieces)
        : state_(std::make_unique<inflate_state>()), next_(pieces.begin()), end_(pieces.end()) {
        isal_inflate_init(state_.get());
        state_->crc_flag = ISAL_ZLIB; // the stream's own checksum is looked at
    }

    /// The next bytes, as many as there is room for; false when they do not come.
    [[nodiscard]] bool read(std::span<std::uint8_t> out) {
        state_->next_out = out.data();
        state_->avail_out = static_cast<std::uint32_t>(out.size());
        while (state_->avail_out > 0) {
            const std::uint32_t before = state_->avail_out;
            if (!step() || (state_->avail_out == before && isFinished())) {
                return false;
            }
        }
        return true;
    }

    /// Whether the stream ends here, with the right checksum.
    [[nodiscard]] bool isAtEnd() {
        std::uint8_t beyond = 0;
        state_->next_out = &beyond;
        state_->avail_out = 1;
        while (!isFinished()) {
            if (!step() || state_->avail_out == 0) {
                return false;
            }
        }
        return state_->avail_out == 1;
    }

private:
    [[nodiscard]] bool isFinished() const { return state_->block_state == ISAL_BLOCK_FINISH; }

    /// False for damage and where there is nothing left to read.
    [[nodiscard]] bool step() {
        if (state_->avail_in == 0 && next_ != end_) {
            state_->next_in = const_cast<std::uint8_t*>(asUnsignedChars(*next_)); // NOLINT: the library only reads it
            state_->avail_in = static_cast<std::uint32_t>(next_->size());
            ++next_;
        }
        const std::uint32_t in = state_->avail_in;
        const std::uint32_t out = state_->avail_out;
        if (isal_inflate(state_.get()) != ISAL_DECOMP_OK) {
            return false;
        }
        return isFinished() || state_->avail_in != in || state_->avail_out != out || next_ != end_;
    }

    std::unique_ptr<inflate_state> state_;
    std::vector<ByteSpan>::const_iterator next_;
    std::vector<ByteSpan>::const_iterator end_;
};

bool isZero(const std::uint8_t* bytes, std::size_t count) {
    return bytes[0] == 0 && std::memcmp(bytes, bytes + 1, count - 1) == 0;
}

using FinishedRows = std::array<std::uint8_t*, rowsAtOnce>;

/// Takes filtered rows in groups and gives finished pixels.
class RowFinisher {
public:
    RowFinisher(int width, std::size_t pixelBytes, const ColorConversion& conversion)
        : conversion_(conversion)
        , width_(static_cast<std::size_t>(width))
        , pixelBytes_(pixelBytes)
        , stride_(width_ * 4 + 2 * unfilterPadding)
        , filtered_(stride_ * rowsAtOnce)
        , pixels_(stride_ * (rowsAtOnce + 1)) {}

    /// `rows` begin with their filters; false for a filter that PNG does not have.
    [[nodiscard]] bool finish(int count, const std::uint8_t* rows, const FinishedRows& out) {
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
            finishRow(pixelRow(static_cast<std::size_t>(i) + 1), out[static_cast<std::size_t>(i)]);
        }
        std::memcpy(pixelRow(0), pixelRow(rowsAtOnce), width_ * 4);
        isAboveEmpty_ = false;
        return true;
    }

    /// Whether the rows are those above again: they differ by nothing, from the row above each or from nothing at all.
    [[nodiscard]] bool areRepeated(int count, const std::uint8_t* rows) {
        const std::size_t length = width_ * pixelBytes_;
        for (int i = 0; i < count; ++i, rows += length + 1) {
            const bool isUnderNothing = isAboveEmpty_ && *rows <= 4;
            if (!(*rows == 2 || isUnderNothing) || !isZero(rows + 1, length)) {
                return false;
            }
        }
        return true;
    }

    /// To be asked after rows whose finished pixels are empty: what was stored may still have had a color.
    void lookAbove() { isAboveEmpty_ = isZero(pixelRow(0), width_ * 4); }

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

    const ColorConversion& conversion_;
    std::size_t width_;
    std::size_t pixelBytes_;
    std::size_t stride_;
    std::vector<std::uint8_t> filtered_;
    std::vector<std::uint8_t> pixels_;
    bool isAboveEmpty_ = true;
};

constexpr int groupRows = static_cast<int>(rowsAtOnce);
constexpr std::size_t streamedBytes = std::size_t{256} << 10;

/// Finished rows one after the other, of which no more than a few are there at a time. A sink takes rows, and is told
/// of those that are the row before again.
template <typename Sink>
[[nodiscard]] bool streamRows(const std::vector<ByteSpan>& compressed, const PngHeader& header,
                              const ColorConversion& conversion, Sink& sink) {
    const auto height = static_cast<int>(header.height);
    const std::size_t pixelBytes = header.hasAlpha() ? 4 : 3;
    const std::size_t rowBytes = std::size_t{header.width} * pixelBytes + 1;
    const int buffered = groupRows * std::max(1, static_cast<int>(streamedBytes / (rowBytes * rowsAtOnce)));
    std::vector<std::uint8_t> filtered(rowBytes * static_cast<std::size_t>(std::min(buffered, height)));
    std::vector<std::uint8_t> finished(std::size_t{header.width} * 4 * rowsAtOnce);
    FinishedRows rows{};
    for (std::size_t i = 0; i < rowsAtOnce; ++i) {
        rows[i] = finished.data() + i * header.width * 4;
    }
    StreamInflater inflater(compressed);
    RowFinisher finisher(static_cast<int>(header.width), pixelBytes, conversion);
    const auto take = [&](int count, const std::uint8_t* group) {
        if (finisher.areRepeated(count, group)) {
            sink.repeat(count);
            return true;
        }
        if (!finisher.finish(count, group, rows)) {
            return false;
        }
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            sink.take(rows[i]);
        }
        if (sink.lastRowIsEmpty()) {
            finisher.lookAbove();
        }
        return true;
    };
    for (int first = 0; first < height; first += buffered) {
        const int count = std::min(buffered, height - first);
        if (!inflater.read(std::span(filtered).first(rowBytes * static_cast<std::size_t>(count)))) {
            return false;
        }
        for (int y = 0; y < count; y += groupRows) {
            if (!take(std::min(groupRows, count - y), filtered.data() + rowBytes * static_cast<std::size_t>(y))) {
                return false;
            }
        }
    }
    return inflater.isAtEnd();
}

class RunSink {
public:
    explicit RunSink(PixelSize size) : maker_(size) {}

    void take(const std::uint8_t* row) { maker_.addRow(row); }
    void repeat(int count) {
        for (int i = 0; i < count; ++i) {
            maker_.repeatRow();
        }
    }
    [[nodiscard]] bool lastRowIsEmpty() const { return maker_.lastRowIsEmpty(); }
    [[nodiscard]] std::shared_ptr<const SparsePicture> finish() { return maker_.finish(); }

private:
    SparsePictureMaker maker_;
};

/// Averages boxes of pixels: down into sums of columns first, then across.
class BoxSink {
public:
    BoxSink(PixelSize size, int factor)
        : factor_(factor)
        , bitmap_({size.width / factor, size.height / factor})
        , last_(static_cast<std::size_t>(size.width) * 4)
        , sums_(last_.size()) {}

    void take(const std::uint8_t* row) {
        add(row);
        std::copy_n(row, last_.size(), last_.begin());
        isEmpty_ = isZero(row, last_.size());
    }
    void repeat(int count) {
        for (int i = 0; i < count; ++i) {
            add(last_.data());
        }
    }
    [[nodiscard]] bool lastRowIsEmpty() const { return isEmpty_; }
    [[nodiscard]] Bitmap finish() { return std::move(bitmap_); }

private:
    void add(const std::uint8_t* row) {
        addBytes(row, sums_.data(), sums_.size());
        if (++rows_ % factor_ == 0) {
            emit(bitmap_.row(rows_ / factor_ - 1));
        }
    }

    /// A pixel's four sums are added as one number: none of them grows beyond its 16 bits.
    void emit(std::uint8_t* out) {
        const auto count = static_cast<std::uint32_t>(factor_ * factor_);
        const std::uint32_t reciprocal = (1U << 24) / count + 1;
        const std::uint16_t* sum = sums_.data();
        for (int x = 0; x < bitmap_.width(); ++x, out += 4) {
            std::uint64_t box = 0;
            for (int i = 0; i < factor_; ++i, sum += 4) {
                std::uint64_t pixel = 0;
                std::memcpy(&pixel, sum, sizeof pixel);
                box += pixel;
            }
            std::array<std::uint16_t, 4> channels{};
            std::memcpy(channels.data(), &box, sizeof box);
            for (std::size_t channel = 0; channel < 4; ++channel) {
                const std::uint64_t rounded = channels[channel] + count / 2;
                out[channel] = static_cast<std::uint8_t>(rounded * reciprocal >> 24);
            }
        }
        std::fill(sums_.begin(), sums_.end(), std::uint16_t{0});
    }

    int factor_;
    Bitmap bitmap_;
    std::vector<std::uint8_t> last_;
    std::vector<std::uint16_t> sums_;
    int rows_ = 0;
    bool isEmpty_ = true;
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
    RowFinisher finisher(bitmap.width(), pixelBytes, conversion);
    for (int first = 0; first < bitmap.height(); first += groupRows) {
        const int count = std::min(groupRows, bitmap.height() - first);
        FinishedRows rows{};
        for (int i = 0; i < count; ++i) {
            rows[static_cast<std::size_t>(i)] = bitmap.row(first + i);
        }
        if (!finisher.finish(count, filtered.data() + rowBytes * static_cast<std::size_t>(first), rows)) {
            return std::nullopt;
        }
    }
    return bitmap;
}

std::shared_ptr<const SparsePicture> decodeSparsePixels(ByteSpan bytes, const PngHeader& header,
                                                        const ColorConversion& conversion) {
    const std::optional<CompressedPixels> compressed = CompressedPixels::find(bytes);
    if (!compressed) {
        return nullptr;
    }
    RunSink sink({static_cast<int>(header.width), static_cast<int>(header.height)});
    return streamRows(compressed->pieces(), header, conversion, sink) ? sink.finish() : nullptr;
}

int reductionFor(PixelSize size, PixelSize minimum) {
    if (minimum.isEmpty()) {
        return 1;
    }
    int factor = std::min({size.width / minimum.width, size.height / minimum.height, largestReduction});
    while (factor > 1 && (size.width % factor != 0 || size.height % factor != 0)) {
        --factor;
    }
    return std::max(factor, 1);
}

std::optional<Bitmap> decodeReducedPixels(ByteSpan bytes, const PngHeader& header, const ColorConversion& conversion,
                                          int factor) {
    const std::optional<CompressedPixels> compressed = CompressedPixels::find(bytes);
    if (!compressed) {
        return std::nullopt;
    }
    BoxSink sink({static_cast<int>(header.width), static_cast<int>(header.height)}, factor);
    return streamRows(compressed->pieces(), header, conversion, sink) ? std::optional(sink.finish()) : std::nullopt;
}

} // namespace quillomat::codecs
