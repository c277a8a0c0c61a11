#include "platform/foundation/Pages.h"

#include <memory>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace quillomat {

namespace {

#if defined(__linux__)
/// Only advice: what a system answers that does not know it changes nothing.
void adviseWithin(void* data, std::size_t size, std::size_t page, int advice) {
    void* begin = data;
    std::size_t left = size;
    if (std::align(page, page, begin, left) != nullptr) {
        static_cast<void>(madvise(begin, left / page * page, advice));
    }
}
#endif

} // namespace

void preferLargePages([[maybe_unused]] void* data, [[maybe_unused]] std::size_t size) {
#if defined(__linux__)
    constexpr std::size_t largePage = std::size_t{2} << 20;
    adviseWithin(data, size, largePage, MADV_HUGEPAGE);
#endif
}

void takePages([[maybe_unused]] void* data, [[maybe_unused]] std::size_t size) {
#if defined(__linux__) && defined(MADV_POPULATE_WRITE)
    static const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    adviseWithin(data, size, page, MADV_POPULATE_WRITE);
#endif
}

} // namespace quillomat
