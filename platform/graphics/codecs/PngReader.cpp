// PNG through libpng: every colour type, depth and interlacing, to 8-bit straight RGBA, then to sRGB. The pixels of the
// commonest kinds are read by faster code of our own, which leaves every odd file to libpng.
//
// libpng reports errors with longjmp, so each function that calls setjmp holds plain data only.
#include "platform/graphics/codecs/Codec.h"
#include "platform/graphics/codecs/ColorConversion.h"
#include "platform/graphics/codecs/Orientation.h"
#include "platform/graphics/codecs/PixelRows.h"
#include "platform/graphics/codecs/PngChunks.h"
#include "platform/graphics/codecs/PngPixels.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

namespace quillomat::codecs {
namespace {

// One chunk that is not pixels may take this much once it is inflated, and so many chunks are kept.
constexpr png_alloc_size_t largestChunk = 16U << 20;
constexpr png_uint_32 mostKeptChunks = 1000;
// A gamma this near to 1/2.2 is what programs write that mean sRGB; the same margin tells primaries apart.
constexpr double gammaMargin = 0.001;
constexpr double primariesMargin = 0.001;

struct Input {
    const unsigned char* data = nullptr;
    std::size_t left = 0;
    bool isTruncated = false;
    std::array<char, 80> message{};
};

void readInput(png_structp png, png_bytep to, std::size_t count) {
    Input* input = static_cast<Input*>(png_get_io_ptr(png));
    if (count > input->left) {
        input->isTruncated = true;
        png_error(png, "truncated");
    }
    std::memcpy(to, input->data, count);
    input->data += count;
    input->left -= count;
}

[[noreturn]] void keepError(png_structp png, png_const_charp message) {
    Input* input = static_cast<Input*>(png_get_error_ptr(png));
    std::strncpy(input->message.data(), message, input->message.size() - 1);
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

struct Reader {
    png_structp png = nullptr;
    png_infop info = nullptr;

    explicit Reader(Input& input)
        : png(png_create_read_struct(PNG_LIBPNG_VER_STRING, &input, keepError, ignoreWarning))
        , info(png != nullptr ? png_create_info_struct(png) : nullptr) {}
    ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
};

/// Reads up to the pixels and asks for 8-bit RGBA.
bool readInfo(png_structp png, png_infop info, Input* input, const ImageLimits* limits) {
    if (setjmp(png_jmpbuf(png)) != 0) { // NOLINT(cert-err52-cpp): libpng's only way to report
        return false;
    }
    png_set_read_fn(png, input, readInput);
    const auto side = static_cast<png_uint_32>(limits->side);
    png_set_user_limits(png, side, side);
    png_set_chunk_malloc_max(png, largestChunk);
    png_set_chunk_cache_max(png, mostKeptChunks);
    png_set_option(png, PNG_MAXIMUM_INFLATE_WINDOW, PNG_OPTION_ON);
    png_read_info(png, info);
    png_set_scale_16(png);
    png_set_expand(png);
    png_set_gray_to_rgb(png);
    png_set_add_alpha(png, 0xff, PNG_FILLER_AFTER);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    return true;
}

bool readRows(png_structp png, png_bytepp rows) {
    if (setjmp(png_jmpbuf(png)) != 0) { // NOLINT(cert-err52-cpp)
        return false;
    }
    png_read_image(png, rows);
    png_read_end(png, nullptr);
    return true;
}

Failure failureOf(const Input& input) {
    if (input.isTruncated) {
        return {"truncated PNG"};
    }
    std::string message = input.message.data();
    std::transform(message.begin(), message.end(), message.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : (c < ' ' || c > '~' ? '?' : c);
    });
    return {"damaged PNG (" + message + ")"};
}

bool isNear(double a, double b, double margin) {
    return std::abs(a - b) <= margin;
}

bool arePrimariesOfSrgb(const Chromaticities& c) {
    constexpr Chromaticities srgb;
    return isNear(c.whiteX, srgb.whiteX, primariesMargin) && isNear(c.whiteY, srgb.whiteY, primariesMargin) &&
           isNear(c.redX, srgb.redX, primariesMargin) && isNear(c.redY, srgb.redY, primariesMargin) &&
           isNear(c.greenX, srgb.greenX, primariesMargin) && isNear(c.greenY, srgb.greenY, primariesMargin) &&
           isNear(c.blueX, srgb.blueX, primariesMargin) && isNear(c.blueY, srgb.blueY, primariesMargin);
}

/// gAMA and cHRM, each of which may be missing.
ColorConversion conversionFromGamma(png_structp png, png_infop info, ColorModel model) {
    double fileGamma = 0;
    const bool hasGamma = png_get_gAMA(png, info, &fileGamma) != 0 && fileGamma > 0;
    Chromaticities c;
    const bool hasPrimaries =
        png_get_cHRM(png, info, &c.whiteX, &c.whiteY, &c.redX, &c.redY, &c.greenX, &c.greenY, &c.blueX, &c.blueY) != 0;
    const bool isSrgbCurve = !hasGamma || isNear(fileGamma, 1 / 2.2, gammaMargin);
    if (isSrgbCurve && (!hasPrimaries || arePrimariesOfSrgb(c))) {
        return {};
    }
    const std::optional<double> exponent = isSrgbCurve ? std::nullopt : std::optional<double>(1 / fileGamma);
    return ColorConversion::fromPrimaries(exponent, c, model);
}

ColorConversion conversionOf(png_structp png, png_infop info, ColorModel model) {
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 length = 0;
    if (png_get_iCCP(png, info, &name, &compression, &profile, &length) != 0) {
        return ColorConversion::fromProfile(std::as_bytes(std::span(profile, length)), model);
    }
    if (png_get_valid(png, info, PNG_INFO_sRGB) != 0) {
        return {};
    }
    return conversionFromGamma(png, info, model);
}

bool sniff(ByteSpan bytes) {
    return isPng(bytes);
}

bool isOpaque(const PngHeader& header) {
    return !header.hasAlpha() && !header.hasTransparency;
}

bool canBeInRuns(const PngHeader& header) {
    return hasPlainPixels(header) && header.hasAlpha() && header.orientation == Orientation::upright;
}

Result<ImageHeader> readHeader(ByteSpan bytes, const ImageLimits& limits) {
    const Result<PngHeader> header = readPngHeader(bytes, limits);
    if (!header) {
        return Failure{header.reason()};
    }
    const PixelSize stored{static_cast<int>(header->width), static_cast<int>(header->height)};
    const bool isTurned = header->orientation != Orientation::upright;
    // The compressed pixels are joined where they lie in pieces.
    return ImageHeader{ImageFormat::png,
                       uprightSize(stored, header->orientation),
                       isOpaque(*header),
                       /*mayBeInRuns=*/canBeInRuns(*header),
                       /*isHalvedWhileDecoding=*/false,
                       /*mayBeInRows=*/false,
                       decodingWhole(stored, isTurned, bytes.size())};
}

Result<Bitmap> decodeByLibpng(const Reader& reader, const Input& input, const PngHeader& header,
                              const ColorConversion& conversion) {
    Bitmap bitmap(PixelSize{static_cast<int>(header.width), static_cast<int>(header.height)});
    if (png_get_rowbytes(reader.png, reader.info) != bitmap.stride()) {
        return Failure{"damaged PNG (rows of an unexpected length)"};
    }
    std::vector<png_bytep> rows;
    rows.reserve(header.height);
    for (int y = 0; y < bitmap.height(); ++y) {
        rows.push_back(bitmap.row(y));
    }
    if (!readRows(reader.png, rows.data())) {
        return failureOf(input);
    }
    const std::size_t pixels = bitmap.size().area();
    std::uint8_t* data = bitmap.bytes().data();
    conversion.convert(data, pixels);
    if (!isOpaque(header)) {
        premultiply(data, data, pixels);
    }
    return bitmap;
}

Result<Bitmap> decodeWith(ByteSpan bytes, PixelSize minimum, const ImageLimits& limits, bool libpngAlone) {
    const Result<PngHeader> header = readPngHeader(bytes, limits);
    if (!header) {
        return Failure{header.reason()};
    }
    Input input{asUnsignedChars(bytes), bytes.size(), false, {}};
    const Reader reader(input);
    if (reader.info == nullptr) {
        return Failure{"not enough memory for the picture"};
    }
    if (!readInfo(reader.png, reader.info, &input, &limits)) {
        return failureOf(input);
    }
    const ColorConversion conversion =
        conversionOf(reader.png, reader.info, header->hasColor() ? ColorModel::rgb : ColorModel::gray);
    if (!libpngAlone && hasPlainPixels(*header)) {
        const PixelSize size{static_cast<int>(header->width), static_cast<int>(header->height)};
        const int factor = reductionFor(size, uprightSize(minimum, header->orientation));
        if (std::optional<Bitmap> bitmap = factor > 1 ? decodeReducedPixels(bytes, *header, conversion, factor)
                                                      : decodePlainPixels(bytes, *header, conversion)) {
            return turnUpright(std::move(*bitmap), header->orientation);
        }
    }
    Result<Bitmap> bitmap = decodeByLibpng(reader, input, *header, conversion);
    if (!bitmap) {
        return bitmap;
    }
    return turnUpright(std::move(bitmap).value(), header->orientation);
}

Result<Bitmap> decode(ByteSpan bytes, PixelSize minimum, const ImageLimits& limits) {
    return decodeWith(bytes, minimum, limits, /*libpngAlone=*/false);
}

std::shared_ptr<const SparsePicture> decodeSparse(ByteSpan bytes, const ImageLimits& limits) {
    const Result<PngHeader> header = readPngHeader(bytes, limits);
    if (!header || !hasPlainPixels(*header) || header->orientation != Orientation::upright) {
        return nullptr;
    }
    Input input{asUnsignedChars(bytes), bytes.size(), false, {}};
    const Reader reader(input);
    if (reader.info == nullptr || !readInfo(reader.png, reader.info, &input, &limits)) {
        return nullptr;
    }
    return decodeSparsePixels(bytes, *header, conversionOf(reader.png, reader.info, ColorModel::rgb));
}

} // namespace

Result<Bitmap> decodePngByLibpng(ByteSpan bytes, const ImageLimits& limits) {
    return decodeWith(bytes, {}, limits, /*libpngAlone=*/true);
}

const Codec pngCodec{ImageFormat::png, "PNG", sniff, readHeader, decode, nullptr, decodeSparse};

} // namespace quillomat::codecs
