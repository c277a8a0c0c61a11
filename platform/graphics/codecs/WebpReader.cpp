// WebP through libwebp; of an animation, the first frame on its canvas.
#include "platform/graphics/codecs/Codec.h"
#include "platform/graphics/codecs/ColorConversion.h"
#include "platform/graphics/codecs/Orientation.h"
#include "platform/graphics/codecs/PixelRows.h"

#include <webp/decode.h>
#include <webp/demux.h>

#include <algorithm>
#include <memory>

namespace quillomat::codecs {
namespace {

struct DeleteDemuxer {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, DeleteDemuxer>;

struct FrameIterator {
    WebPIterator value{};
    ~FrameIterator() { WebPDemuxReleaseIterator(&value); }
};

struct ChunkIterator {
    WebPChunkIterator value{};
    ~ChunkIterator() { WebPDemuxReleaseChunkIterator(&value); }
};

struct DecoderConfig {
    WebPDecoderConfig value{};
    bool isReady = WebPInitDecoderConfig(&value) != 0;
    ~DecoderConfig() { WebPFreeDecBuffer(&value.output); }
};

struct Container {
    Demuxer demuxer;
    PixelSize canvas;
    Orientation orientation = Orientation::upright;
    bool mayBeTransparent = false;
    bool isLossless = false;
};

ByteSpan chunkNamed(const WebPDemuxer* demuxer, const char* name, ChunkIterator& iterator) {
    if (WebPDemuxGetChunk(demuxer, name, 1, &iterator.value) == 0) {
        return {};
    }
    return std::as_bytes(std::span(iterator.value.chunk.bytes, iterator.value.chunk.size));
}

bool sniff(ByteSpan bytes) {
    return startsWith(bytes, "RIFF") && startsWith(bytes, "WEBP", 8);
}

/// Whether the file ends before its container says it does.
bool isCutShort(ByteSpan bytes) {
    if (bytes.size() < 12) {
        return true;
    }
    const unsigned char* p = asUnsignedChars(bytes) + 4;
    const std::uint64_t length =
        std::uint64_t{p[0]} | std::uint64_t{p[1]} << 8 | std::uint64_t{p[2]} << 16 | std::uint64_t{p[3]} << 24;
    return length + 8 > bytes.size();
}

Result<Container> open(ByteSpan bytes, const ImageLimits& limits) {
    if (isCutShort(bytes)) {
        return Failure{"truncated WebP"};
    }
    const WebPData data{asUnsignedChars(bytes), bytes.size()};
    Container container{Demuxer(WebPDemux(&data)), {}};
    if (!container.demuxer) {
        return Failure{"damaged WebP"};
    }
    const WebPDemuxer* demuxer = container.demuxer.get();
    const std::uint32_t width = WebPDemuxGetI(demuxer, WEBP_FF_CANVAS_WIDTH);
    const std::uint32_t height = WebPDemuxGetI(demuxer, WEBP_FF_CANVAS_HEIGHT);
    if (const Status size = checkSize(width, height, limits); !size) {
        return Failure{size.reason()};
    }
    container.canvas = {static_cast<int>(width), static_cast<int>(height)};
    FrameIterator frame;
    if (WebPDemuxGetFrame(demuxer, 1, &frame.value) == 0 || frame.value.complete == 0) {
        return Failure{"truncated WebP"};
    }
    container.mayBeTransparent = frame.value.has_alpha != 0 || frame.value.width != container.canvas.width ||
                                 frame.value.height != container.canvas.height;
    WebPBitstreamFeatures features{};
    constexpr int lossless = 2; // as the library numbers formats
    container.isLossless =
        WebPGetFeatures(frame.value.fragment.bytes, frame.value.fragment.size, &features) != VP8_STATUS_OK ||
        features.format == lossless;
    ChunkIterator exif;
    container.orientation = orientationFromExif(chunkNamed(demuxer, "EXIF", exif));
    return container;
}

/// What the library holds for each pixel: the picture once more as it was coded; or rows of it, and the alpha twice.
std::uint64_t bytesInLibrary(const Container& container) {
    return container.isLossless ? 5 : container.mayBeTransparent ? 3 : 1;
}

Result<ImageHeader> readHeader(ByteSpan bytes, const ImageLimits& limits) {
    const Result<Container> container = open(bytes, limits);
    if (!container) {
        return Failure{container.reason()};
    }
    return ImageHeader{ImageFormat::webp,
                       uprightSize(container->canvas, container->orientation),
                       !container->mayBeTransparent,
                       /*mayBeInRuns=*/false,
                       /*isHalvedWhileDecoding=*/false,
                       /*mayBeInRows=*/false,
                       decodingWhole(container->canvas, container->orientation != Orientation::upright,
                                     container->canvas.area() * bytesInLibrary(*container))};
}

/// The size of at least `minimum` in the picture's own proportions; the picture's size where that is no smaller.
PixelSize reducedSize(PixelSize size, PixelSize minimum) {
    const double scale =
        std::max(static_cast<double>(minimum.width) / size.width, static_cast<double>(minimum.height) / size.height);
    if (minimum.isEmpty() || scale >= 1) {
        return size;
    }
    const auto reduced = [&](int side, int least) {
        return std::clamp(static_cast<int>(side * scale + 0.5), std::min(least, side), side);
    };
    return {reduced(size.width, minimum.width), reduced(size.height, minimum.height)};
}

/// Decodes the first frame into its place on the canvas, as straight RGBA.
Status decodeFrame(const Container& container, PixelSize minimum, Bitmap& canvas) {
    FrameIterator frame;
    if (WebPDemuxGetFrame(container.demuxer.get(), 1, &frame.value) == 0) {
        return Failure{"damaged WebP"};
    }
    const WebPIterator& at = frame.value;
    const bool fillsCanvas = at.width == container.canvas.width && at.height == container.canvas.height;
    const bool fits = at.x_offset >= 0 && at.y_offset >= 0 && at.width > 0 && at.height > 0 &&
                      at.width <= container.canvas.width - at.x_offset &&
                      at.height <= container.canvas.height - at.y_offset;
    DecoderConfig config;
    if (!fits || !config.isReady) {
        return Failure{"damaged WebP"};
    }
    const PixelSize size = fillsCanvas ? reducedSize(container.canvas, minimum) : container.canvas;
    canvas = Bitmap(size);
    WebPBitstreamFeatures features{};
    // The frame's own header decides how much is written: it must agree with the place made for it.
    if (WebPGetFeatures(at.fragment.bytes, at.fragment.size, &features) != VP8_STATUS_OK ||
        features.width != at.width || features.height != at.height) {
        return Failure{"damaged WebP"};
    }
    if (size != container.canvas) {
        config.value.options.use_scaling = 1;
        config.value.options.scaled_width = size.width;
        config.value.options.scaled_height = size.height;
    }
    config.value.options.use_threads = 1;
    config.value.output.colorspace = MODE_RGBA;
    config.value.output.is_external_memory = 1;
    WebPRGBABuffer& out = config.value.output.u.RGBA;
    out.rgba = canvas.row(at.y_offset) + static_cast<std::size_t>(at.x_offset) * 4;
    out.stride = static_cast<int>(canvas.stride());
    out.size = canvas.bytes().size() - static_cast<std::size_t>(out.rgba - canvas.bytes().data());
    switch (WebPDecode(at.fragment.bytes, at.fragment.size, &config.value)) {
    case VP8_STATUS_OK:
        return {};
    case VP8_STATUS_OUT_OF_MEMORY:
        return Failure{"not enough memory for the picture"};
    case VP8_STATUS_SUSPENDED:
    case VP8_STATUS_NOT_ENOUGH_DATA:
        return Failure{"truncated WebP"};
    default:
        return Failure{"damaged WebP"};
    }
}

Result<Bitmap> decode(ByteSpan bytes, PixelSize minimum, const ImageLimits& limits) {
    const Result<Container> container = open(bytes, limits);
    if (!container) {
        return Failure{container.reason()};
    }
    Bitmap canvas;
    const PixelSize stored = minimum.isEmpty() ? minimum : uprightSize(minimum, container->orientation);
    if (const Status decoded = decodeFrame(*container, stored, canvas); !decoded) {
        return Failure{decoded.reason()};
    }
    ChunkIterator profile;
    const ColorConversion conversion =
        ColorConversion::fromProfile(chunkNamed(container->demuxer.get(), "ICCP", profile), ColorModel::rgb);
    const std::size_t pixels = canvas.size().area();
    conversion.convert(canvas.bytes().data(), pixels);
    std::uint8_t* data = canvas.bytes().data();
    if (container->mayBeTransparent) {
        premultiply(data, data, pixels);
    } else {
        // A lossless picture may hold alpha all the same; what its header says was told to others already.
        makeOpaque(data, data, pixels);
    }
    return turnUpright(std::move(canvas), container->orientation);
}

} // namespace

const Codec webpCodec{ImageFormat::webp, "WebP", sniff, readHeader, decode};

} // namespace quillomat::codecs
