#include "platform/graphics/Bitmap.h"

namespace quillomat {

Bitmap::Bitmap(PixelSize size) : size_(size.isEmpty() ? PixelSize{} : size), bytes_(size_.area() * 4) {}

bool Bitmap::isOpaque() const {
    // Anding a row's pixels together lets the compiler look at many at once, and a row is soon told apart.
    for (int y = 0; y < size_.height; ++y) {
        const std::uint8_t* pixels = row(y);
        std::uint8_t all = 255;
        for (int x = 0; x < size_.width; ++x) {
            all = static_cast<std::uint8_t>(all & pixels[static_cast<std::size_t>(x) * 4 + 3]);
        }
        if (all != 255) {
            return false;
        }
    }
    return true;
}

} // namespace quillomat
