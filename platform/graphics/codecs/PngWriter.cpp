#include "platform/graphics/PngWriter.h"

#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/codecs/PixelRows.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <functional>
#include <span>
#include <vector>

namespace quillomat {
namespace {

constexpr int bandRows = 64;

/// Where the writer takes its premultiplied rows from.
struct RowSource {
    PixelSize size;
    bool isOpaque = false;
    std::function<void(int first, int count, std::span<std::uint8_t> out)> rows;
};

void append(png_structp png, png_bytep data, std::size_t count) {
    Bytes* out = static_cast<Bytes*>(png_get_io_ptr(png));
    const auto* begin = reinterpret_cast<const std::byte*>(data);
    out->insert(out->end(), begin, begin + count);
}

void flush(png_structp) {}

void ignoreWarning(png_structp, png_const_charp) {}

struct Writer {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, ignoreWarning);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;

    Writer() = default;
    ~Writer() { png_destroy_write_struct(&png, &info); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
};

bool writeHeader(png_structp png, png_infop info, Bytes* out, PixelSize size, bool isOpaque, int level) {
    if (setjmp(png_jmpbuf(png)) != 0) { // NOLINT(cert-err52-cpp): libpng's only way to report
        return false;
    }
    png_set_write_fn(png, out, append, flush);
    const auto width = static_cast<png_uint_32>(size.width);
    const auto height = static_cast<png_uint_32>(size.height);
    png_set_IHDR(png, info, width, height, 8, isOpaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    png_set_compression_level(png, level);
    png_write_info(png, info);
    return true;
}

bool writeRow(png_structp png, const std::uint8_t* row) {
    if (setjmp(png_jmpbuf(png)) != 0) { // NOLINT(cert-err52-cpp)
        return false;
    }
    png_write_row(png, row);
    return true;
}

bool writeEnd(png_structp png, png_infop info) {
    if (setjmp(png_jmpbuf(png)) != 0) { // NOLINT(cert-err52-cpp)
        return false;
    }
    png_write_end(png, info);
    return true;
}

Result<Bytes> encode(const RowSource& source, PngEffort effort) {
    if (source.size.isEmpty()) {
        return Failure{"a picture without pixels"};
    }
    Bytes out;
    const Writer writer;
    const int level = effort == PngEffort::best ? 9 : 1;
    if (writer.info == nullptr || !writeHeader(writer.png, writer.info, &out, source.size, source.isOpaque, level)) {
        return Failure{"the PNG writer failed"};
    }
    const std::size_t width = static_cast<std::size_t>(source.size.width);
    std::vector<std::uint8_t> band(width * 4 * bandRows);
    std::vector<std::uint8_t> row(width * 4);
    for (int first = 0; first < source.size.height; first += bandRows) {
        const int count = std::min(bandRows, source.size.height - first);
        source.rows(first, count, std::span(band).first(width * 4 * static_cast<std::size_t>(count)));
        for (int y = 0; y < count; ++y) {
            const std::uint8_t* from = band.data() + width * 4 * static_cast<std::size_t>(y);
            if (source.isOpaque) {
                codecs::dropAlpha(from, row.data(), width);
            } else {
                codecs::unpremultiply(from, row.data(), width);
            }
            if (!writeRow(writer.png, row.data())) {
                return Failure{"the PNG writer failed"};
            }
        }
    }
    if (!writeEnd(writer.png, writer.info)) {
        return Failure{"the PNG writer failed"};
    }
    return out;
}

RowSource rowsOf(const Bitmap& bitmap, bool isOpaque) {
    return {bitmap.size(), isOpaque, [&bitmap](int first, int count, std::span<std::uint8_t> out) {
                std::copy_n(bitmap.row(first), static_cast<std::size_t>(count) * bitmap.stride(), out.begin());
            }};
}

} // namespace

Result<Bytes> encodePng(const Bitmap& bitmap, PngEffort effort) {
    return encode(rowsOf(bitmap, codecs::allOpaque(bitmap.bytes().data(), bitmap.size().area())), effort);
}

Result<Bytes> encodePng(const Image& image, PngEffort effort) {
    if (!image) {
        return Failure{"no picture"};
    }
    const ImageSource& source = *image.source();
    if (const Recording* recording = source.recording()) {
        const Rasterizer rasterizer(*recording);
        return encode(
            {recording->size(), source.isKnownOpaque(),
             [&rasterizer](int first, int count, std::span<std::uint8_t> out) { rasterizer.rows(first, count, out); }},
            effort);
    }
    const SharedBitmap bitmap = source.bitmap();
    if (!bitmap) {
        const std::string reason = source.failure();
        return Failure{reason.empty() ? "a picture without pixels" : reason};
    }
    return encode(rowsOf(*bitmap, source.isKnownOpaque() || bitmap->isOpaque()), effort);
}

} // namespace quillomat
