// The library reports errors with longjmp, so each function that calls setjmp holds plain data only.
#include "platform/graphics/codecs/JpegLibrary.h"

// After <jpeglib.h>: the codes of its warnings.
#include <jerror.h>

#include <algorithm>
#include <optional>
#include <string>

namespace quillomat::codecs::jpeg {
namespace {

// No encoder writes more scans than this; each of them costs a pass over the whole picture, however few bytes it has.
constexpr int mostScans = 100;
constexpr int mostScansOfTheLargest = 20;
constexpr std::uint64_t mostScannedPixels = std::uint64_t{4} * 1000 * 1000 * 1000;

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

bool openHeader(Reader* reader, const unsigned char* data, std::size_t size) {
    if (setjmp(reader->errors.jump) != 0) { // NOLINT(cert-err52-cpp): the library's only way to report
        return false;
    }
    jpeg_create_decompress(&reader->info);
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

std::span<const std::byte> contentsOf(const jpeg_marker_struct& marker) {
    return std::as_bytes(std::span(marker.data, marker.data_length));
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

/// Where a stretch of one side comes to lie when the side is reduced by eighths; nothing where that would cut a pixel.
std::optional<Columns> reducedBy(unsigned int eighths, int begin, int length, int side) {
    const std::int64_t left = std::int64_t{begin} * eighths;
    const std::int64_t right = (std::int64_t{begin} + length) * eighths;
    if (left % 8 != 0 || (right % 8 != 0 && begin + length != side)) {
        return std::nullopt;
    }
    return Columns{static_cast<int>(left / 8), static_cast<int>((right + 7) / 8)};
}

} // namespace

Reader::Reader() {
    info.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = keepError;
    errors.base.emit_message = keepWarning;
    progress.base.progress_monitor = countScans;
    progress.mostScans = mostScans;
}

bool findSizes(Reader* reader) {
    if (setjmp(reader->errors.jump) != 0) { // NOLINT(cert-err52-cpp)
        return false;
    }
    jpeg_calc_output_dimensions(&reader->info);
    return true;
}

bool startDecoding(Reader* reader) {
    if (setjmp(reader->errors.jump) != 0) { // NOLINT(cert-err52-cpp)
        return false;
    }
    jpeg_start_decompress(&reader->info);
    return true;
}

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

bool readPlanes(Reader* reader, JSAMPIMAGE out, JDIMENSION rows) {
    if (setjmp(reader->errors.jump) != 0) { // NOLINT(cert-err52-cpp)
        return false;
    }
    return jpeg_read_raw_data(&reader->info, out, rows) == rows;
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

} // namespace quillomat::codecs::jpeg
