// JPEG through libjpeg-turbo, to RGBA while decoding; press pictures through their inks.
//
// The library reports errors with longjmp, so each function that calls setjmp holds plain data only.
#include "platform/graphics/codecs/Codec.h"
#include "platform/graphics/codecs/ColorConversion.h"
#include "platform/graphics/codecs/Orientation.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
// After <cstdio>, which it needs and does not include.
#include <jpeglib.h>
// After <jpeglib.h>: the codes of its warnings.
#include <jerror.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace quillomat::codecs {
namespace {

// No encoder writes more scans than this; each of them costs a pass over the whole picture, however few bytes it has.
constexpr int mostScans = 100;
constexpr int mostScansOfTheLargest = 20;
constexpr std::uint64_t mostScannedPixels = std::uint64_t{4} * 1000 * 1000 * 1000;

struct Errors {
    jpeg_error_mgr base{};
    std::jmp_buf jump{};
    int warning = 0; // one that means damage
    std::array<char, JMSG_LENGTH_MAX> message{};
};

struct Progress {
    jpeg_progress_mgr base{};
    int mostScans = quillomat::codecs::mostScans;
    bool hasTooManyScans = false;
};

Errors& errorsOf(j_common_ptr info) {
    return *reinterpret_cast<Errors*>(info->err);
}

[[noreturn]] void keepError(j_common_ptr info) {
    info->err->format_message(info, errorsOf(info).message.data());
    std::longjmp(errorsOf(info).jump, 1);
}

/// Warnings are where the library reports a file that ends early: it would invent the rest. Bytes too many between
/// markers are harmless, as are odd version numbers.
void keepWarning(j_common_ptr info, int level) {
    if (level >= 0) {
        return;
    }
    switch (info->err->msg_code) {
    case JWRN_JPEG_EOF:
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_ARITH_BAD_CODE:
    case JWRN_MUST_RESYNC:
    case JWRN_BOGUS_PROGRESSION:
    case JWRN_NOT_SEQUENTIAL:
        errorsOf(info).warning = info->err->msg_code;
        std::longjmp(errorsOf(info).jump, 1);
    default:
        break;
    }
}

void countScans(j_common_ptr info) {
    const auto* decompress = reinterpret_cast<j_decompress_ptr>(info);
    auto* progress = reinterpret_cast<Progress*>(info->progress);
    if (decompress->input_scan_number > progress->mostScans) {
        progress->hasTooManyScans = true;
        ERREXIT(info, JERR_BAD_PROGRESSION);
    }
}

struct Reader {
    jpeg_decompress_struct info{};
    Errors errors;
    Progress progress;

    Reader() {
        info.err = jpeg_std_error(&errors.base);
        errors.base.error_exit = keepError;
        errors.base.emit_message = keepWarning;
    }
    ~Reader() { jpeg_destroy_decompress(&info); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
};

bool openHeader(Reader* reader, const unsigned char* data, std::size_t size) {
    if (setjmp(reader->errors.jump) != 0) { // NOLINT(cert-err52-cpp): the library's only way to report
        return false;
    }
    jpeg_create_decompress(&reader->info);
    reader->progress.base.progress_monitor = countScans;
    reader->info.progress = &reader->progress.base;
    jpeg_mem_src(&reader->info, data, size);
    jpeg_save_markers(&reader->info, JPEG_APP0 + 1, 0xffff);
    jpeg_save_markers(&reader->info, JPEG_APP0 + 2, 0xffff);
    jpeg_read_header(&reader->info, TRUE);
    return true;
}

bool readProfile(Reader* reader, JOCTET** profile, unsigned int* length) {
    if (setjmp(reader->errors.jump) != 0) { // NOLINT(cert-err52-cpp)
        return false;
    }
    return jpeg_read_icc_profile(&reader->info, profile, length) != 0;
}

bool startDecoding(Reader* reader) {
    if (setjmp(reader->errors.jump) != 0) { // NOLINT(cert-err52-cpp)
        return false;
    }
    jpeg_start_decompress(&reader->info);
    return true;
}

/// Of each row, no more than these columns and those that complete a block are recovered; says which they are then.
bool cutColumns(Reader* reader, JDIMENSION* left, JDIMENSION* width) {
    if (setjmp(reader->errors.jump) != 0) { // NOLINT(cert-err52-cpp)
        return false;
    }
    jpeg_crop_scanline(&reader->info, left, width);
    return true;
}

bool readRow(Reader* reader, unsigned char* out) {
    if (setjmp(reader->errors.jump) != 0) { // NOLINT(cert-err52-cpp)
        return false;
    }
    JSAMPROW row = out;
    return jpeg_read_scanlines(&reader->info, &row, 1) == 1;
}

bool finishDecoding(Reader* reader) {
    if (setjmp(reader->errors.jump) != 0) { // NOLINT(cert-err52-cpp)
        return false;
    }
    return jpeg_finish_decompress(&reader->info) != FALSE;
}

bool hasInks(const Reader& reader) {
    return reader.info.jpeg_color_space == JCS_CMYK || reader.info.jpeg_color_space == JCS_YCCK;
}

ColorModel modelOf(const Reader& reader) {
    if (hasInks(reader)) {
        return reader.info.saw_Adobe_marker != 0 ? ColorModel::invertedCmyk : ColorModel::cmyk;
    }
    return reader.info.jpeg_color_space == JCS_GRAYSCALE ? ColorModel::gray : ColorModel::rgb;
}

std::span<const std::byte> contentsOf(const jpeg_marker_struct& marker) {
    return std::as_bytes(std::span(marker.data, marker.data_length));
}

Orientation orientationOf(const Reader& reader) {
    for (const jpeg_marker_struct* marker = reader.info.marker_list; marker != nullptr; marker = marker->next) {
        if (marker->marker == JPEG_APP0 + 1 && startsWith(contentsOf(*marker), {"Exif\0\0", 6})) {
            return orientationFromExif(contentsOf(*marker));
        }
    }
    return Orientation::upright;
}

ColorConversion conversionOf(Reader& reader) {
    JOCTET* profile = nullptr;
    unsigned int length = 0;
    if (!readProfile(&reader, &profile, &length)) {
        return {};
    }
    ColorConversion conversion =
        ColorConversion::fromProfile(std::as_bytes(std::span(profile, length)), modelOf(reader));
    std::free(profile); // NOLINT: the library allocates it with malloc
    return conversion;
}

Failure failureOf(const Reader& reader) {
    if (reader.progress.hasTooManyScans) {
        return {"JPEG of more than " + std::to_string(reader.progress.mostScans) + " scans"};
    }
    if (reader.errors.warning != 0) {
        const bool endsEarly = reader.errors.warning == JWRN_JPEG_EOF || reader.errors.warning == JWRN_HIT_MARKER;
        return {endsEarly ? "truncated JPEG" : "damaged JPEG"};
    }
    std::string message = reader.errors.message.data();
    std::transform(message.begin(), message.end(), message.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : (c < ' ' || c > '~' ? '?' : c);
    });
    return {"damaged JPEG (" + message + ")"};
}

/// A picture of several scans is kept whole as coefficients of two bytes.
std::uint64_t coefficientBytes(const Reader& reader) {
    const jpeg_decompress_struct& info = reader.info;
    if (jpeg_has_multiple_scans(const_cast<j_decompress_ptr>(&info)) == FALSE) { // NOLINT: it only reads
        return 0;
    }
    std::uint64_t bytes = 0;
    for (int i = 0; i < info.num_components; ++i) {
        const jpeg_component_info& component = info.comp_info[i];
        bytes += std::uint64_t{component.width_in_blocks} * component.height_in_blocks * DCTSIZE2 * sizeof(JCOEF);
    }
    return bytes;
}

/// That must not cost more than the pixels may.
Status checkCoefficients(const Reader& reader, const ImageLimits& limits) {
    const std::uint64_t bytes = coefficientBytes(reader);
    if (bytes > limits.pixels * 4) {
        return Failure{"progressive JPEG needs " + std::to_string(bytes >> 20) + " MiB, over the limit of " +
                       std::to_string((limits.pixels * 4) >> 20) + " MiB"};
    }
    return {};
}

Status open(Reader& reader, ByteSpan bytes, const ImageLimits& limits) {
    if (!openHeader(&reader, asUnsignedChars(bytes), bytes.size())) {
        return failureOf(reader);
    }
    if (const Status size = checkSize(reader.info.image_width, reader.info.image_height, limits); !size) {
        return size;
    }
    const std::uint64_t pixels = std::uint64_t{reader.info.image_width} * reader.info.image_height;
    reader.progress.mostScans =
        static_cast<int>(std::clamp<std::uint64_t>(mostScannedPixels / pixels, mostScansOfTheLargest, mostScans));
    return checkCoefficients(reader, limits);
}

PixelSize storedSize(const Reader& reader) {
    return {static_cast<int>(reader.info.image_width), static_cast<int>(reader.info.image_height)};
}

PixelRect wholeOf(PixelSize size) {
    return {0, 0, size.width, size.height};
}

/// Where a stretch of one side comes to lie when the side is reduced by eighths; nothing where that would cut a pixel.
std::optional<Columns> reducedBy(unsigned int eighths, int begin, int length, int side) {
    const std::int64_t left = std::int64_t{begin} * eighths;
    const std::int64_t right = (std::int64_t{begin} + length) * eighths;
    if (left % 8 != 0 || (right % 8 != 0 && begin + length != side)) {
        return std::nullopt;
    }
    return Columns{static_cast<int>(left / 8), static_cast<int>((right + 7) / 8)};
}

struct Reduction {
    unsigned int eighths = 8;
    PixelRect part;
};

/// The smallest reduction that still has `minimum`, of those that spare work: the library has fast code for these
/// alone, and by 5, 6 or 7 eighths it takes half as long again as for the whole picture.
Reduction reductionFor(PixelSize stored, const PixelRect& part, PixelSize minimum) {
    for (unsigned int eighths = minimum.isEmpty() ? 8 : 1; eighths < 8; eighths *= 2) {
        const auto across = reducedBy(eighths, part.x, part.width, stored.width);
        const auto down = reducedBy(eighths, part.y, part.height, stored.height);
        if (across && down && across->length() >= minimum.width && down->length() >= minimum.height) {
            return {eighths, {across->left, down->left, across->length(), down->length()}};
        }
    }
    return {8, part};
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
                       decoding};
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

const Codec jpegCodec{ImageFormat::jpeg, "JPEG", sniff, readHeader, decode, decodePart, nullptr, readRows};

} // namespace quillomat::codecs
