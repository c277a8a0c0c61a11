// Any bytes are a picture or are refused in words; and the PNG pixels of our own are those of libpng.
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/SparsePicture.h"
#include "platform/graphics/codecs/Codec.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace quillomat;

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::byte> bytes = std::as_bytes(std::span(data, size));
    ImageLimits limits;
    limits.pixels = 1 << 20;
    limits.side = 4096;
    const Result<ImageHeader> header = readImageHeader(bytes, limits);
    const Result<Bitmap> whole = decodeImage(bytes, limits);
    require(whole || (!whole.reason().empty() && whole.reason().find('\n') == std::string::npos));
    if (whole) {
        require(header && header->size == whole->size());
        require(!header->isKnownOpaque || whole->isOpaque());
        require(whole->size().area() <= limits.pixels);
        if (header->format == ImageFormat::png) {
            const Result<Bitmap> judge = codecs::decodePngByLibpng(bytes, limits);
            require(judge && *judge == *whole);
            const auto sparse = codecs::pngCodec.decodeSparse(bytes, limits);
            require(!sparse || sparse->size() == whole->size());
            Bitmap inRuns(sparse ? whole->size() : PixelSize{});
            for (int y = 0; y < inRuns.height(); ++y) {
                sparse->copy(y, 0, inRuns.width(), inRuns.row(y));
            }
            require(!sparse || inRuns == *whole);
        }
    }
    const Result<Bitmap> reduced = decodeImageReduced(bytes, {16, 16}, limits);
    require(!reduced || (header && reduced->width() <= header->size.width && reduced->height() <= header->size.height));
    return 0;
}
