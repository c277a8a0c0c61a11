#include "platform/foundation/Pages.h"

#include <memory>

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__)
#include <sys/mman.h>
#endif

namespace quillomat {

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__)

namespace {

constexpr std::size_t largePage = std::size_t{2} << 20;

std::size_t wholeLargePages(std::size_t size) {
    return (size + largePage - 1) / largePage * largePage;
}

} // namespace

bool isForLargePages(std::size_t size) {
    return size >= largePage / 2;
}

/// Maps a large page more than is needed, and gives back what lies before the first boundary and behind the last.
void* takeLargePages(std::size_t size) {
    const std::size_t whole = wholeLargePages(size);
    if (whole < size || whole + largePage < whole) {
        throw std::bad_alloc();
    }
    void* const mapped = mmap(nullptr, whole + largePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        throw std::bad_alloc();
    }
    void* data = mapped;
    std::size_t room = whole + largePage;
    std::align(largePage, whole, data, room);
    if (const std::size_t before = whole + largePage - room; before > 0) {
        static_cast<void>(munmap(mapped, before));
    }
    static_cast<void>(munmap(static_cast<std::byte*>(data) + whole, room - whole));
    static_cast<void>(madvise(data, whole, MADV_HUGEPAGE)); // only advice: a system without them hands out small ones
    return data;
}

void giveBackLargePages(void* data, std::size_t size) {
    static_cast<void>(munmap(data, wholeLargePages(size)));
}

#else

bool isForLargePages(std::size_t /*size*/) {
    return false;
}

void* takeLargePages(std::size_t /*size*/) {
    throw std::bad_alloc();
}

void giveBackLargePages(void* /*data*/, std::size_t /*size*/) {}

#endif

} // namespace quillomat
