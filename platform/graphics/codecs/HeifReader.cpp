// HEIC and AVIF through libheif, which turns and mirrors the picture itself: Exif's orientation is not applied again.
#include "platform/foundation/SystemLibrary.h"
#include "platform/graphics/codecs/Codec.h"
#include "platform/graphics/codecs/ColorConversion.h"
#include "platform/graphics/codecs/PixelRows.h"

#include <libheif/heif.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace quillomat::codecs {
namespace {

/// libheif, which brings several decoders and encoders along, is opened with the first HEIF picture.
const SystemLibrary library{QUILLOMAT_LIBHEIF};

namespace lib {
const SystemFunction<decltype(::heif_check_filetype)> check_filetype{library, "heif_check_filetype"};
const SystemFunction<decltype(::heif_context_alloc)> context_alloc{library, "heif_context_alloc"};
const SystemFunction<decltype(::heif_context_free)> context_free{library, "heif_context_free"};
const SystemFunction<decltype(::heif_context_get_primary_image_handle)> context_get_primary_image_handle{
    library, "heif_context_get_primary_image_handle"};
const SystemFunction<decltype(::heif_context_read_from_memory_without_copy)> context_read_from_memory_without_copy{
    library, "heif_context_read_from_memory_without_copy"};
const SystemFunction<decltype(::heif_context_set_maximum_image_size_limit)> context_set_maximum_image_size_limit{
    library, "heif_context_set_maximum_image_size_limit"};
const SystemFunction<decltype(::heif_decode_image)> decode_image{library, "heif_decode_image"};
const SystemFunction<decltype(::heif_decoding_options_alloc)> decoding_options_alloc{library,
                                                                                     "heif_decoding_options_alloc"};
const SystemFunction<decltype(::heif_decoding_options_free)> decoding_options_free{library,
                                                                                   "heif_decoding_options_free"};
const SystemFunction<decltype(::heif_image_get_height)> image_get_height{library, "heif_image_get_height"};
const SystemFunction<decltype(::heif_image_get_plane_readonly)> image_get_plane_readonly{
    library, "heif_image_get_plane_readonly"};
const SystemFunction<decltype(::heif_image_get_width)> image_get_width{library, "heif_image_get_width"};
const SystemFunction<decltype(::heif_image_handle_get_color_profile_type)> image_handle_get_color_profile_type{
    library, "heif_image_handle_get_color_profile_type"};
const SystemFunction<decltype(::heif_image_handle_get_height)> image_handle_get_height{library,
                                                                                       "heif_image_handle_get_height"};
const SystemFunction<decltype(::heif_image_handle_get_ispe_height)> image_handle_get_ispe_height{
    library, "heif_image_handle_get_ispe_height"};
const SystemFunction<decltype(::heif_image_handle_get_ispe_width)> image_handle_get_ispe_width{
    library, "heif_image_handle_get_ispe_width"};
const SystemFunction<decltype(::heif_image_handle_get_luma_bits_per_pixel)> image_handle_get_luma_bits_per_pixel{
    library, "heif_image_handle_get_luma_bits_per_pixel"};
const SystemFunction<decltype(::heif_image_handle_get_nclx_color_profile)> image_handle_get_nclx_color_profile{
    library, "heif_image_handle_get_nclx_color_profile"};
const SystemFunction<decltype(::heif_image_handle_get_raw_color_profile)> image_handle_get_raw_color_profile{
    library, "heif_image_handle_get_raw_color_profile"};
const SystemFunction<decltype(::heif_image_handle_get_raw_color_profile_size)> image_handle_get_raw_color_profile_size{
    library, "heif_image_handle_get_raw_color_profile_size"};
const SystemFunction<decltype(::heif_image_handle_get_width)> image_handle_get_width{library,
                                                                                     "heif_image_handle_get_width"};
const SystemFunction<decltype(::heif_image_handle_has_alpha_channel)> image_handle_has_alpha_channel{
    library, "heif_image_handle_has_alpha_channel"};
const SystemFunction<decltype(::heif_image_handle_is_premultiplied_alpha)> image_handle_is_premultiplied_alpha{
    library, "heif_image_handle_is_premultiplied_alpha"};
const SystemFunction<decltype(::heif_image_handle_release)> image_handle_release{library, "heif_image_handle_release"};
const SystemFunction<decltype(::heif_image_release)> image_release{library, "heif_image_release"};
const SystemFunction<decltype(::heif_nclx_color_profile_free)> nclx_color_profile_free{library,
                                                                                       "heif_nclx_color_profile_free"};
} // namespace lib

struct FreeContext {
    void operator()(heif_context* context) const { lib::context_free(context); }
};
struct ReleaseHandle {
    void operator()(heif_image_handle* handle) const { lib::image_handle_release(handle); }
};
struct ReleaseImage {
    void operator()(heif_image* image) const { lib::image_release(image); }
};
struct FreeOptions {
    void operator()(heif_decoding_options* options) const { lib::decoding_options_free(options); }
};
struct FreeNclx {
    void operator()(heif_color_profile_nclx* nclx) const { lib::nclx_color_profile_free(nclx); }
};

using Handle = std::unique_ptr<heif_image_handle, ReleaseHandle>;
using HeifImage = std::unique_ptr<heif_image, ReleaseImage>;

struct Container {
    std::unique_ptr<heif_context, FreeContext> context;
    Handle primary;
    PixelSize size;
    PixelSize stored;
};

bool sniff(ByteSpan bytes) {
    if (!startsWith(bytes, "ftyp", 4)) {
        return false;
    }
    if (!library.isThere()) {
        return true; // and that is the reason
    }
    const auto length = static_cast<int>(std::min<std::size_t>(bytes.size(), 512));
    const heif_filetype_result type = lib::check_filetype(asUnsignedChars(bytes), length);
    // Brands that libheif does not know still get their reason from it rather than "not a picture".
    return type != heif_filetype_no;
}

Failure failureOf(const heif_error& error) {
    switch (error.code) {
    case heif_error_Memory_allocation_error:
        return {error.subcode == heif_suberror_Security_limit_exceeded ? "HEIF picture over the limits"
                                                                       : "not enough memory for the picture"};
    case heif_error_Unsupported_filetype:
    case heif_error_Unsupported_feature:
    case heif_error_Decoder_plugin_error:
        return {"HEIF picture of an unsupported kind"};
    default:
        return {error.subcode == heif_suberror_End_of_data ? "truncated HEIF" : "damaged HEIF"};
    }
}

bool failed(const heif_error& error) {
    return error.code != heif_error_Ok;
}

/// Every box at the top level must end within the file. Seen here, it does not depend on which decoder stands behind.
bool isCutShort(ByteSpan bytes) {
    std::size_t offset = 0;
    while (offset < bytes.size()) {
        const std::size_t left = bytes.size() - offset;
        if (left < 8) {
            return true;
        }
        std::uint64_t length = bigEndian32(bytes, offset);
        if (length == 0) {
            return false; // to the end of the file
        }
        if (length == 1) {
            if (left < 16) {
                return true;
            }
            length = std::uint64_t{bigEndian32(bytes, offset + 8)} << 32 | bigEndian32(bytes, offset + 12);
        }
        if (length < 8 || length > left) {
            return true;
        }
        offset += length;
    }
    return false;
}

Result<Container> open(ByteSpan bytes, const ImageLimits& limits) {
    if (!library.isThere()) {
        return Failure{"HEIF picture, which needs " QUILLOMAT_LIBHEIF};
    }
    if (isCutShort(bytes)) {
        return Failure{"truncated HEIF"};
    }
    Container container;
    container.context.reset(lib::context_alloc());
    if (!container.context) {
        return Failure{"not enough memory for the picture"};
    }
    lib::context_set_maximum_image_size_limit(container.context.get(), limits.side);
    if (const heif_error read =
            lib::context_read_from_memory_without_copy(container.context.get(), bytes.data(), bytes.size(), nullptr);
        failed(read)) {
        return failureOf(read);
    }
    heif_image_handle* primary = nullptr;
    if (const heif_error found = lib::context_get_primary_image_handle(container.context.get(), &primary);
        failed(found)) {
        return failureOf(found);
    }
    container.primary.reset(primary);
    const int width = std::max(lib::image_handle_get_width(primary), 0);
    const int height = std::max(lib::image_handle_get_height(primary), 0);
    // The stored picture can be larger than what is shown of it.
    const int storedWidth = std::max(lib::image_handle_get_ispe_width(primary), width);
    const int storedHeight = std::max(lib::image_handle_get_ispe_height(primary), height);
    for (const auto& [w, h] : {std::pair{width, height}, std::pair{storedWidth, storedHeight}}) {
        if (const Status size = checkSize(static_cast<std::uint64_t>(w), static_cast<std::uint64_t>(h), limits);
            !size) {
            return Failure{size.reason()};
        }
    }
    container.size = {width, height};
    container.stored = {storedWidth, storedHeight};
    return container;
}

/// What the library and the decoder behind it hold for each pixel: planes as they were coded, planes on their way to
/// RGBA, and RGBA.
std::uint64_t bytesInLibrary(const heif_image_handle* handle) {
    return lib::image_handle_get_luma_bits_per_pixel(handle) > 8 ? 16 : 8;
}

Result<ImageHeader> readHeader(ByteSpan bytes, const ImageLimits& limits) {
    const Result<Container> container = open(bytes, limits);
    if (!container) {
        return Failure{container.reason()};
    }
    const heif_image_handle* primary = container->primary.get();
    return ImageHeader{
        ImageFormat::heif,
        container->size,
        lib::image_handle_has_alpha_channel(primary) == 0,
        /*mayBeInRuns=*/false,
        /*isHalvedWhileDecoding=*/false,
        /*mayBeInRows=*/false,
        decodingWhole(container->size, /*isTurned=*/false, container->stored.area() * bytesInLibrary(primary))};
}

ColorConversion conversionFromNclx(const heif_image_handle* handle) {
    heif_color_profile_nclx* raw = nullptr;
    const heif_error read = lib::image_handle_get_nclx_color_profile(handle, &raw);
    // Held before the error is looked at: for values it does not know the library gives both.
    const std::unique_ptr<heif_color_profile_nclx, FreeNclx> nclx(raw);
    if (failed(read) || !nclx) {
        return {};
    }
    // Primaries 1 (as sRGB's) and 2 (not said) need nothing; curves other than a plain power are taken for sRGB's.
    if (nclx->color_primaries == heif_color_primaries_ITU_R_BT_709_5 ||
        nclx->color_primaries == heif_color_primaries_unspecified) {
        return {};
    }
    const auto value = [](float f) { return static_cast<double>(f); };
    const Chromaticities c{value(nclx->color_primary_white_x), value(nclx->color_primary_white_y),
                           value(nclx->color_primary_red_x),   value(nclx->color_primary_red_y),
                           value(nclx->color_primary_green_x), value(nclx->color_primary_green_y),
                           value(nclx->color_primary_blue_x),  value(nclx->color_primary_blue_y)};
    if (!(c.redX > 0 && c.greenX > 0 && c.blueX > 0 && c.whiteY > 0)) {
        return {};
    }
    std::optional<double> exponent;
    if (nclx->transfer_characteristics == heif_transfer_characteristic_ITU_R_BT_470_6_System_M) {
        exponent = 2.2;
    } else if (nclx->transfer_characteristics == heif_transfer_characteristic_ITU_R_BT_470_6_System_B_G) {
        exponent = 2.8;
    } else if (nclx->transfer_characteristics == heif_transfer_characteristic_linear) {
        exponent = 1.0;
    }
    return ColorConversion::fromPrimaries(exponent, c, ColorModel::rgb);
}

ColorConversion conversionOf(const heif_image_handle* handle) {
    const heif_color_profile_type type = lib::image_handle_get_color_profile_type(handle);
    if (type == heif_color_profile_type_nclx) {
        return conversionFromNclx(handle);
    }
    if (type == heif_color_profile_type_not_present) {
        return {};
    }
    std::vector<std::byte> profile(lib::image_handle_get_raw_color_profile_size(handle));
    if (profile.empty() || failed(lib::image_handle_get_raw_color_profile(handle, profile.data()))) {
        return {};
    }
    return ColorConversion::fromProfile(profile, ColorModel::rgb);
}

Result<HeifImage> decodeToRgba(const Container& container) {
    const std::unique_ptr<heif_decoding_options, FreeOptions> options(lib::decoding_options_alloc());
    if (!options) {
        return Failure{"not enough memory for the picture"};
    }
    options->convert_hdr_to_8bit = 1;
    options->strict_decoding = 1;
    heif_image* raw = nullptr;
    const heif_error decoded = lib::decode_image(container.primary.get(), &raw, heif_colorspace_RGB,
                                                 heif_chroma_interleaved_RGBA, options.get());
    HeifImage image(raw);
    if (failed(decoded)) {
        return failureOf(decoded);
    }
    const bool asAnnounced = lib::image_get_width(raw, heif_channel_interleaved) == container.size.width &&
                             lib::image_get_height(raw, heif_channel_interleaved) == container.size.height;
    if (!asAnnounced) {
        return Failure{"damaged HEIF"};
    }
    return image;
}

Result<Bitmap> decode(ByteSpan bytes, PixelSize /*minimum*/, const ImageLimits& limits) {
    const Result<Container> container = open(bytes, limits);
    if (!container) {
        return Failure{container.reason()};
    }
    Result<HeifImage> image = decodeToRgba(*container);
    if (!image) {
        return Failure{image.reason()};
    }
    int stride = 0;
    const std::uint8_t* from = lib::image_get_plane_readonly(image->get(), heif_channel_interleaved, &stride);
    Bitmap bitmap(container->size);
    if (from == nullptr || stride < 0 || static_cast<std::size_t>(stride) < bitmap.stride()) {
        return Failure{"damaged HEIF"};
    }
    for (int y = 0; y < bitmap.height(); ++y) {
        std::memcpy(bitmap.row(y), from + static_cast<std::size_t>(y) * static_cast<std::size_t>(stride),
                    bitmap.stride());
    }
    const heif_image_handle* handle = container->primary.get();
    const bool isPremultiplied = lib::image_handle_is_premultiplied_alpha(handle) != 0;
    const std::size_t pixels = bitmap.size().area();
    std::uint8_t* data = bitmap.bytes().data();
    if (isPremultiplied) {
        unpremultiply(data, data, pixels);
    }
    conversionOf(handle).convert(data, pixels);
    if (lib::image_handle_has_alpha_channel(handle) != 0) {
        premultiply(data, data, pixels);
    } else {
        makeOpaque(data, data, pixels);
    }
    return bitmap;
}

} // namespace

const Codec heifCodec{ImageFormat::heif, "HEIF", sniff, readHeader, decode};

} // namespace quillomat::codecs
