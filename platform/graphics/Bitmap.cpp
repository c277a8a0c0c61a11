#include "platform/graphics/Bitmap.h"

#include "platform/foundation/Pages.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace quillomat {
namespace {

constexpr std::size_t roomBehind = 64;

} // namespace

PixelMemory::PixelMemory(std::size_t size) : size_(size) {
    if (size == 0) {
        return;
    }
    // Unlike a vector's, the zeros of a large block are the system's own, made when a page is first touched.
    if (isForLargePages(size)) {
        data_ = {static_cast<std::uint8_t*>(takeLargePages(size)), Free{size}};
        return;
    }
    data_.reset(static_cast<std::uint8_t*>(std::calloc(size, 1))); // NOLINT(cppcoreguidelines-no-malloc)
    if (!data_) {
        throw std::bad_alloc();
    }
}

PixelMemory::PixelMemory(const PixelMemory& other) : PixelMemory(other.size_) {
    if (size_ > 0) {
        std::memcpy(data_.get(), other.data_.get(), size_);
    }
}

void PixelMemory::Free::operator()(std::uint8_t* data) const {
    if (pagesOf > 0) {
        giveBackLargePages(data, pagesOf);
        return;
    }
    std::free(data); // NOLINT(cppcoreguidelines-no-malloc)
}

Bitmap::Bitmap(PixelSize size)
    : size_(size.isEmpty() ? PixelSize{} : size)
    , memory_(size_.isEmpty() ? 0 : byteCount() + static_cast<std::size_t>(size_.height) + roomBehind) {}

Bitmap partOf(const Bitmap& bitmap, const PixelRect& part) {
    Bitmap cut({part.width, part.height});
    for (int y = 0; y < cut.height(); ++y) {
        std::memcpy(cut.row(y), bitmap.row(part.y + y) + static_cast<std::ptrdiff_t>(part.x) * 4, cut.stride());
    }
    return cut;
}

bool operator==(const Bitmap& a, const Bitmap& b) {
    return a.size_ == b.size_ && std::ranges::equal(a.bytes(), b.bytes());
}

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
