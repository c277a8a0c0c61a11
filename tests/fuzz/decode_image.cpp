// Any bytes are a picture or are refused in words; the PNG pixels of our own are those of libpng; and a photograph has
// planes if it has pixels, which any part of it can be stretched out of.
#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/Cropping.h"
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/PlanarPicture.h"
#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/SparsePicture.h"
#include "platform/graphics/codecs/Codec.h"

#include <algorithm>
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

/// At most three fifths of it, so that it is drawn out of its planes.
void drawSmall(const Image& image) {
    const PixelSize size = image.pixelSize();
    const double width = std::max(size.width * 3 / 5, 1);
    const double height = std::max(size.height * 3 / 5, 1);
    BitmapContext context({width, height});
    context.drawImage(image, makeRect(0, 0, width, height));
    const Bitmap whole = rasterize(context.recording(), 1);
    const Rasterizer streamed(context.recording(), RowUse::once, 1);
    Bitmap inRows(whole.size());
    streamed.rows(0, inRows.height(), inRows.bytes());
    require(!streamed.finish() || inRows == whole);
}

void requirePlanes(const Image& image, bool hasPixels) {
    const PixelSize size = image.pixelSize();
    const PixelRect part{size.width / 3, size.height / 3, size.width - size.width / 3, size.height - size.height / 3};
    const auto planes = image.source()->planarPartOfAtLeast({0, 0, size.width, size.height}, size);
    require(!planes || (hasPixels && planes->size() == size));
    drawSmall(image);
    drawSmall(croppedImage(image, part));
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
    if (header && header->mayBeInPlanes) {
        requirePlanes(imageFromBytes(Bytes(bytes.begin(), bytes.end()), limits).value(), bool{whole});
    }
    const Result<Bitmap> reduced = decodeImageReduced(bytes, {16, 16}, limits);
    require(!reduced || (header && reduced->width() <= header->size.width && reduced->height() <= header->size.height));
    return 0;
}
