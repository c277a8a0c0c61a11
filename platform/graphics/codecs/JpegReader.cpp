// JPEG to RGBA while it is decoded; press pictures through their inks.
#include "platform/graphics/codecs/JpegLibrary.h"
#include "platform/graphics/codecs/JpegPlanes.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

namespace quillomat::codecs {
namespace {

using namespace jpeg;

PixelRect wholeOf(PixelSize size) {
    return {0, 0, size.width, size.height};
}

bool sniff(ByteSpan bytes) {
    return startsWith(bytes, "\xff\xd8\xff");
}

Result<ImageHeader> readHeader(ByteSpan bytes, const ImageLimits& limits) {
    Reader reader;
    if (const Status opened = open(reader, bytes, limits); !opened) {
        return Failure{opened.reason()};
    }
    const Orientation orientation = orientationOf(reader);
    const PixelSize size = uprightSize(storedSize(reader), orientation);
    const bool isUpright = orientation == Orientation::upright;
    const std::uint64_t coefficients = coefficientBytes(reader);
    const DecodingBytes decoding =
        isUpright ? DecodingBytes{coefficients, coefficients} : decodingWhole(size, /*isTurned=*/true, coefficients);
    return ImageHeader{ImageFormat::jpeg,
                       size,
                       /*isKnownOpaque=*/true,
                       /*mayBeInRuns=*/false,
                       /*isHalvedWhileDecoding=*/isUpright,
                       /*mayBeInRows=*/isUpright,
                       decoding,
                       /*mayBeInPlanes=*/isStoredInPlanes(reader)};
}

/// The rows of a part of the picture as it is stored. Its reader outlives it.
class StoredRows {
public:
    explicit StoredRows(Reader& reader) : reader_(reader), conversion_(conversionOf(reader)) {}

    /// `part` and `minimum` are meant for the picture as it is stored.
    [[nodiscard]] bool start(const PixelRect& part, PixelSize minimum) {
        const Reduction reduction = reductionFor(storedSize(reader_), part, minimum);
        jpeg_decompress_struct& info = reader_.info;
        info.out_color_space = hasInks(reader_) ? JCS_CMYK : JCS_EXT_RGBA;
        info.scale_num = reduction.eighths;
        info.scale_denom = 8;
        part_ = reduction.part;
        if (!startDecoding(&reader_) || !cut()) {
            return false;
        }
        row_.resize(std::size_t{info.output_width} * 4);
        return true;
    }

    [[nodiscard]] PixelSize size() const { return {part_.width, part_.height}; }

    /// Rows above the part are passed over.
    [[nodiscard]] bool read(std::uint8_t* out) {
        const jpeg_decompress_struct& info = reader_.info;
        while (info.output_scanline < static_cast<JDIMENSION>(part_.y)) {
            if (!readRow(&reader_, row_.data())) {
                return false;
            }
        }
        const std::size_t bytes = static_cast<std::size_t>(part_.width) * 4;
        const bool isCut = bytes < row_.size();
        if (!readRow(&reader_, isCut ? row_.data() : out)) {
            return false;
        }
        if (isCut) {
            std::memcpy(out, row_.data() + skippedBytes_, bytes);
        }
        convertColors(out);
        return true;
    }

    /// All rows are read, so that a damaged one is noticed whether it is kept or not.
    [[nodiscard]] bool finish() {
        while (reader_.info.output_scanline < reader_.info.output_height) {
            if (!readRow(&reader_, row_.data())) {
                return false;
            }
        }
        return finishDecoding(&reader_);
    }

private:
    /// Colours are recovered from neighbouring blocks, so that the edges of what is cut are never those of the part.
    static constexpr JDIMENSION widestBlock = 32;

    /// Pictures of several scans are left whole: what they cost is their scans.
    [[nodiscard]] bool cut() {
        const JDIMENSION whole = reader_.info.output_width;
        const auto partLeft = static_cast<JDIMENSION>(part_.x);
        JDIMENSION left = partLeft - std::min(partLeft, widestBlock);
        JDIMENSION width = std::min(partLeft + static_cast<JDIMENSION>(part_.width) + widestBlock, whole) - left;
        if (width == whole || jpeg_has_multiple_scans(&reader_.info) != FALSE) {
            left = 0;
        } else if (!cutColumns(&reader_, &left, &width)) {
            return false;
        }
        skippedBytes_ = std::size_t{partLeft - left} * 4;
        return true;
    }

    void convertColors(std::uint8_t* row) const {
        const auto pixels = static_cast<std::size_t>(part_.width);
        if (hasInks(reader_) && conversion_.isIdentity()) {
            convertInksWithoutProfile(row, pixels, modelOf(reader_) == ColorModel::invertedCmyk);
        } else {
            conversion_.convert(row, pixels);
        }
    }

    Reader& reader_;
    ColorConversion conversion_;
    PixelRect part_; // of the reduced picture
    std::size_t skippedBytes_ = 0;
    std::vector<unsigned char> row_;
};

Result<Bitmap> decodeStored(Reader& reader, const PixelRect& part, PixelSize minimum) {
    StoredRows rows(reader);
    if (!rows.start(part, minimum)) {
        return failureOf(reader);
    }
    Bitmap bitmap(rows.size());
    for (int y = 0; y < bitmap.height(); ++y) {
        if (!rows.read(bitmap.row(y))) {
            return failureOf(reader);
        }
    }
    return rows.finish() ? Result<Bitmap>(std::move(bitmap)) : failureOf(reader);
}

Result<Bitmap> decode(ByteSpan bytes, PixelSize minimum, const ImageLimits& limits) {
    Reader reader;
    if (const Status opened = open(reader, bytes, limits); !opened) {
        return Failure{opened.reason()};
    }
    // Asked for now: the library lets go of the markers when the last row has been read.
    const Orientation orientation = orientationOf(reader);
    Result<Bitmap> stored = decodeStored(reader, wholeOf(storedSize(reader)), uprightSize(minimum, orientation));
    return stored ? turnUpright(std::move(stored).value(), orientation) : std::move(stored);
}

Result<Bitmap> decodePart(ByteSpan bytes, const PixelRect& part, PixelSize minimum, const ImageLimits& limits) {
    Reader reader;
    if (const Status opened = open(reader, bytes, limits); !opened) {
        return Failure{opened.reason()};
    }
    if (orientationOf(reader) == Orientation::upright) {
        return decodeStored(reader, part, minimum);
    }
    const Result<Bitmap> whole = decode(bytes, {}, limits);
    return whole ? Result<Bitmap>(partOf(*whole, part)) : whole;
}

class JpegRowReader final : public RowReader {
public:
    explicit JpegRowReader(SharedDocument document) : document_(std::move(document)) {}

    [[nodiscard]] bool start(const PixelRect& part, PixelSize minimum, const ImageLimits& limits) {
        if (!open(reader_, *document_, limits) || orientationOf(reader_) != Orientation::upright) {
            return false;
        }
        rows_.emplace(reader_);
        return rows_->start(part, minimum);
    }

    [[nodiscard]] PixelSize size() const override { return rows_->size(); }
    [[nodiscard]] bool read(std::uint8_t* out) override { return rows_->read(out); }
    [[nodiscard]] bool finish() override { return rows_->finish(); }

private:
    SharedDocument document_;
    Reader reader_;
    std::optional<StoredRows> rows_;
};

std::unique_ptr<RowReader> readRows(SharedDocument document, const PixelRect& part, PixelSize minimum,
                                    const ImageLimits& limits) {
    auto reader = std::make_unique<JpegRowReader>(std::move(document));
    return reader->start(part, minimum, limits) ? std::move(reader) : nullptr;
}

} // namespace

const Codec jpegCodec{ImageFormat::jpeg, "JPEG",  sniff,    readHeader,    decode,
                      decodePart,        nullptr, readRows, readJpegPlanes};

} // namespace quillomat::codecs
