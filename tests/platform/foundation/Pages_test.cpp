// Pages that are asked for ahead are there, and what lies on them stays.
#include "platform/foundation/Pages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace quillomat {
namespace {

TEST(Pages, takingThemKeepsWhatLiesThere) {
    std::vector<unsigned char> bytes(1000003, 7);
    takePages(bytes.data(), bytes.size());
    preferLargePages(bytes.data(), bytes.size());
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 7), 1000003);
}

TEST(Pages, memorySmallerThanAPageIsLeftAlone) {
    unsigned char few[3] = {1, 2, 3};
    takePages(few, sizeof few);
    takePages(nullptr, 0);
    preferLargePages(few, sizeof few);
    EXPECT_EQ(few[1], 2);
}

#if defined(__linux__) && defined(MADV_POPULATE_WRITE)

long faultsSoFar() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

TEST(Pages, takenOnesAreThereBeforeTheyAreTouched) {
    constexpr std::size_t size = std::size_t{1} << 20;
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    if (madvise(memory, page, MADV_POPULATE_WRITE) != 0) {
        munmap(memory, size);
        GTEST_SKIP() << "this system hands out no pages ahead";
    }
    takePages(memory, size);
    const long before = faultsSoFar();
    for (std::size_t at = 0; at < size; at += page) {
        static_cast<volatile unsigned char*>(memory)[at] = 1;
    }
    const long faults = faultsSoFar() - before;
    munmap(memory, size);
    EXPECT_LT(faults, static_cast<long>(size / page / 2));
}

#endif

} // namespace
} // namespace quillomat
