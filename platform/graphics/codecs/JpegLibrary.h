// libjpeg-turbo as the readers of JPEG see it: a document opened within its limits, and calls that fail instead of
// jumping.
#pragma once

#include "platform/graphics/codecs/Codec.h"
#include "platform/graphics/codecs/ColorConversion.h"
#include "platform/graphics/codecs/Orientation.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
// After <cstdio>, which it needs and does not include.
#include <jpeglib.h>

#include <array>

namespace quillomat::codecs::jpeg {

struct Errors {
    jpeg_error_mgr base{};
    std::jmp_buf jump{};
    int warning = 0; // one that means damage
    std::array<char, JMSG_LENGTH_MAX> message{};
};

struct Progress {
    jpeg_progress_mgr base{};
    int mostScans = 0;
    bool hasTooManyScans = false;
};

struct Reader {
    jpeg_decompress_struct info{};
    Errors errors;
    Progress progress;

    Reader();
    ~Reader() { jpeg_destroy_decompress(&info); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
};

/// Reads the header and checks it against the limits.
[[nodiscard]] Status open(Reader& reader, ByteSpan bytes, const ImageLimits& limits);
/// Why a call has failed.
[[nodiscard]] Failure failureOf(const Reader& reader);

[[nodiscard]] PixelSize storedSize(const Reader& reader);
[[nodiscard]] Orientation orientationOf(const Reader& reader);
[[nodiscard]] bool hasInks(const Reader& reader);
[[nodiscard]] ColorModel modelOf(const Reader& reader);
[[nodiscard]] ColorConversion conversionOf(Reader& reader);
/// A picture of several scans is kept whole as coefficients of two bytes.
[[nodiscard]] std::uint64_t coefficientBytes(const Reader& reader);

struct Reduction {
    unsigned int eighths = 8;
    PixelRect part;
};

/// The smallest reduction that still has `minimum`, of those that spare work: the library has fast code for these
/// alone, and by 5, 6 or 7 eighths it takes half as long again as for the whole picture.
[[nodiscard]] Reduction reductionFor(PixelSize stored, const PixelRect& part, PixelSize minimum);

/// Works out how large the planes and the picture will be.
[[nodiscard]] bool findSizes(Reader* reader);
[[nodiscard]] bool startDecoding(Reader* reader);
/// Of each row, no more than these columns and those that complete a block are recovered; says which they are then.
[[nodiscard]] bool cutColumns(Reader* reader, JDIMENSION* left, JDIMENSION* width);
[[nodiscard]] bool readRow(Reader* reader, unsigned char* out);
/// So many rows of the picture, as the planes that they are stored in.
[[nodiscard]] bool readPlanes(Reader* reader, JSAMPIMAGE out, JDIMENSION rows);
[[nodiscard]] bool finishDecoding(Reader* reader);

} // namespace quillomat::codecs::jpeg
