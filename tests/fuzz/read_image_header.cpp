// A header is read within the limits, or refused in words.
#include "platform/graphics/ImageFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const quillomat::ImageLimits limits;
    const auto header = quillomat::readImageHeader(std::as_bytes(std::span(data, size)), limits);
    const bool holds = header ? !header->size.isEmpty() && header->size.area() <= limits.pixels &&
                                    header->size.width <= limits.side && header->size.height <= limits.side
                              : !header.reason().empty();
    if (!holds) {
        std::abort();
    }
    return 0;
}
