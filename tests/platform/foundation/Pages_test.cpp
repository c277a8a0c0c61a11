#include "platform/foundation/Pages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <limits>
#include <new>
#include <string>
#include <vector>

#if defined(__linux__)
#include <sys/resource.h>
#endif

namespace quillomat {
namespace {

TEST(Pages, largeOnesAreZeroAndOnesOwn) {
    constexpr std::size_t size = (std::size_t{5} << 20) + 3;
    if (!isForLargePages(size)) {
        GTEST_SKIP() << "no large pages here";
    }
    auto* const first = static_cast<unsigned char*>(takeLargePages(size));
    auto* const second = static_cast<unsigned char*>(takeLargePages(size));
    EXPECT_EQ(std::count(first, first + size, 0), static_cast<std::ptrdiff_t>(size));
    std::fill_n(first, size, static_cast<unsigned char>(7));
    EXPECT_EQ(std::count(second, second + size, 0), static_cast<std::ptrdiff_t>(size));
    giveBackLargePages(first, size);
    giveBackLargePages(second, size);
}

TEST(Pages, moreThanThereIsIsRefused) {
    for (const std::size_t size :
         {std::numeric_limits<std::size_t>::max(), std::numeric_limits<std::size_t>::max() - (std::size_t{2} << 20),
          std::numeric_limits<std::size_t>::max() / 4}) {
        EXPECT_THROW(static_cast<void>(takeLargePages(size)), std::bad_alloc) << size;
    }
    EXPECT_THROW(static_cast<void>(PageAllocator<int>().allocate(std::numeric_limits<std::size_t>::max() / 2)),
                 std::bad_alloc);
}

TEST(Pages, containersKeepWhatTheyHoldAsTheyGrowLarge) {
    std::vector<int, PageAllocator<int>> numbers;
    for (int i = 0; i < 2'000'000; ++i) { // in and out of large pages
        numbers.push_back(i);
    }
    for (int i = 0; i < 2'000'000; ++i) {
        ASSERT_EQ(numbers[static_cast<std::size_t>(i)], i);
    }
    numbers.resize(10);
    numbers.shrink_to_fit();
    EXPECT_EQ(numbers[9], 9);
}

// The thread sanitizer's own pages are touched with each of ours.
#if defined(__linux__) && !defined(__SANITIZE_THREAD__)

long faultsSoFar() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

/// Whether the system has them at all, and hands them out to who asks.
bool areHandedOut() {
    std::ifstream settings("/sys/kernel/mm/transparent_hugepage/enabled");
    std::string said;
    std::getline(settings, said);
    return said.find("[madvise]") != std::string::npos || said.find("[always]") != std::string::npos;
}

TEST(Pages, largeOnesAreTouchedSeldom) {
    constexpr std::size_t size = std::size_t{8} << 20;
    constexpr std::size_t smallPage = 4096;
    if (!isForLargePages(size) || !areHandedOut()) {
        GTEST_SKIP() << "no large pages here";
    }
    auto* const memory = static_cast<volatile unsigned char*>(takeLargePages(size));
    const long before = faultsSoFar();
    for (std::size_t at = 0; at < size; at += smallPage) {
        memory[at] = 1;
    }
    const long faults = faultsSoFar() - before;
    giveBackLargePages(const_cast<unsigned char*>(memory), size); // NOLINT: it is this test's own
    EXPECT_LT(faults, static_cast<long>(size / smallPage / 2));
}

#endif

} // namespace
} // namespace quillomat
