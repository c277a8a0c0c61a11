// Memory in large pages: a fraction of what the first touch of every small one costs.
#pragma once

#include <cstddef>
#include <limits>
#include <new>

namespace quillomat {

/// Whether so much memory should lie in large pages of its own, which the system hands out several times faster: not
/// where most of a page would be wasted, nor where a sanitizer should see each block's ends.
[[nodiscard]] bool isForLargePages(std::size_t size);
/// Such memory, zeroed. Throws `std::bad_alloc` where there is not that much.
[[nodiscard]] void* takeLargePages(std::size_t size);
void giveBackLargePages(void* data, std::size_t size);

/// Gives a container large pages where it is large.
template <typename T> struct PageAllocator {
    using value_type = T;

    PageAllocator() = default;
    template <typename U> constexpr PageAllocator(const PageAllocator<U>& /*other*/) noexcept {} // NOLINT: implicit

    [[nodiscard]] T* allocate(std::size_t count) {
        if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) {
            throw std::bad_alloc();
        }
        const std::size_t size = count * sizeof(T);
        return static_cast<T*>(isForLargePages(size) ? takeLargePages(size) : ::operator new(size));
    }
    void deallocate(T* data, std::size_t count) noexcept {
        if (isForLargePages(count * sizeof(T))) {
            giveBackLargePages(data, count * sizeof(T));
        } else {
            ::operator delete(data);
        }
    }
    friend bool operator==(const PageAllocator& /*a*/, const PageAllocator& /*b*/) { return true; }
};

} // namespace quillomat
