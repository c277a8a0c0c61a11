#include "platform/graphics/ProcessorTarget.h"

#include "platform/graphics/raster/Kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>

namespace quillomat {
namespace {

using Names = std::set<std::string>;

Names namesOf(std::int64_t targets) {
    Names names;
    for (; targets != 0; targets &= targets - 1) {
        names.insert(targetName(targets & -targets));
    }
    return names;
}

TEST(ProcessorTarget, theBestSupportedOneIsChosen) {
    EXPECT_EQ(chosenTarget(), supportedTargets() & -supportedTargets());
    EXPECT_NE(chosenTarget(), 0);
}

TEST(ProcessorTarget, everySupportedOneCanBeForcedAndIsThenCalled) {
    const std::int64_t best = chosenTarget();
    std::set<const raster::Kernels*> called;
    std::set<std::size_t> places;
    for (std::int64_t left = supportedTargets(); left != 0; left &= left - 1) {
        const ForcedTarget forced(left & -left);
        EXPECT_EQ(chosenTarget(), left & -left);
        called.insert(&raster::bestKernels());
        places.insert(chosenPlace());
    }
    EXPECT_EQ(chosenTarget(), best);
    EXPECT_EQ(called.size(), namesOf(supportedTargets()).size());
    EXPECT_EQ(places.size(), called.size());
}

#if defined(__x86_64__)

/// One thing that a target and all better ones need: where CPUID and XCR0 say so, by the manual's numbers, and what
/// Linux calls it.
struct Need {
    const char* name;
    std::uint32_t ProcessorFeatures::*word;
    int bit;
    const char* target;
};

// Those of lower targets come first.
constexpr Need needs[] = {
    {"pni", &ProcessorFeatures::basic, 0, "SSSE3"},
    {"ssse3", &ProcessorFeatures::basic, 9, "SSSE3"},
    {"pclmulqdq", &ProcessorFeatures::basic, 1, "SSE4"},
    {"sse4_1", &ProcessorFeatures::basic, 19, "SSE4"},
    {"sse4_2", &ProcessorFeatures::basic, 20, "SSE4"},
    {"popcnt", &ProcessorFeatures::basic, 23, "SSE4"},
    {"aes", &ProcessorFeatures::basic, 25, "SSE4"},
    {"fma", &ProcessorFeatures::basic, 12, "AVX2"},
    {"xsave", &ProcessorFeatures::basic, 27, "AVX2"},
    {"avx", &ProcessorFeatures::basic, 28, "AVX2"},
    {"f16c", &ProcessorFeatures::basic, 29, "AVX2"},
    {"bmi1", &ProcessorFeatures::extended, 3, "AVX2"},
    {"avx2", &ProcessorFeatures::extended, 5, "AVX2"},
    {"bmi2", &ProcessorFeatures::extended, 8, "AVX2"},
    {"abm", &ProcessorFeatures::manufacturers, 5, "AVX2"},
    {"avx", &ProcessorFeatures::keptRegisters, 1, "AVX2"},
    {"avx", &ProcessorFeatures::keptRegisters, 2, "AVX2"},
    {"avx512f", &ProcessorFeatures::extended, 16, "AVX3"},
    {"avx512dq", &ProcessorFeatures::extended, 17, "AVX3"},
    {"avx512bw", &ProcessorFeatures::extended, 30, "AVX3"},
    {"avx512vl", &ProcessorFeatures::extended, 31, "AVX3"},
    {"avx512f", &ProcessorFeatures::keptRegisters, 5, "AVX3"},
    {"avx512f", &ProcessorFeatures::keptRegisters, 6, "AVX3"},
    {"avx512f", &ProcessorFeatures::keptRegisters, 7, "AVX3"},
    {"avx512vbmi", &ProcessorFeatures::moreExtended, 1, "AVX3_DL"},
    {"avx512_vbmi2", &ProcessorFeatures::moreExtended, 6, "AVX3_DL"},
    {"vaes", &ProcessorFeatures::moreExtended, 9, "AVX3_DL"},
    {"vpclmulqdq", &ProcessorFeatures::moreExtended, 10, "AVX3_DL"},
    {"avx512_vnni", &ProcessorFeatures::moreExtended, 11, "AVX3_DL"},
    {"avx512_bitalg", &ProcessorFeatures::moreExtended, 12, "AVX3_DL"},
    {"avx512_vpopcntdq", &ProcessorFeatures::moreExtended, 14, "AVX3_DL"},
};

constexpr ProcessorFeatures everything{~0U, ~0U, ~0U, ~0U, ~0U};

/// What is left of the compiled targets where `target` and all better ones are not run.
Names compiledBelow(const std::string& target) {
    Names names = namesOf(targetsRunBy({})); // what runs on every processor
    for (const char* const each : {"SSSE3", "SSE4", "AVX2", "AVX3", "AVX3_DL"}) {
        if (each == target) {
            break;
        }
        names.insert(each);
    }
    return names;
}

TEST(ProcessorTarget, aProcessorThatHasEverythingRunsAllThatIsCompiled) {
    EXPECT_EQ(namesOf(targetsRunBy(everything)), compiledBelow("none"));
    EXPECT_EQ(namesOf(targetsRunBy({})).size(), 1U);
}

TEST(ProcessorTarget, withoutAnyOneOfItsNeedsNeitherATargetNorABetterOneIsRun) {
    for (const Need& need : needs) {
        ProcessorFeatures processor = everything;
        processor.*need.word &= ~(1U << need.bit);
        EXPECT_EQ(namesOf(targetsRunBy(processor)), compiledBelow(need.target)) << need.name << " " << need.bit;
    }
}

TEST(ProcessorTarget, nothingElseIsNeeded) {
    ProcessorFeatures processor;
    for (const Need& need : needs) {
        processor.*need.word |= 1U << need.bit;
    }
    EXPECT_EQ(targetsRunBy(processor), targetsRunBy(everything));
}

TEST(ProcessorTarget, theSupportedOnesAreThoseOfWhichTheSystemNamesEveryNeed) {
    std::ifstream file("/proc/cpuinfo");
    std::string line;
    while (std::getline(file, line) && !line.starts_with("flags")) {
    }
    if (!file) {
        GTEST_SKIP() << "the system does not say";
    }
    std::istringstream words(line);
    const Names flags{std::istream_iterator<std::string>(words), {}};
    const auto* const missing =
        std::find_if(std::begin(needs), std::end(needs), [&](const Need& need) { return !flags.contains(need.name); });
    EXPECT_EQ(namesOf(supportedTargets()), compiledBelow(missing == std::end(needs) ? "none" : missing->target));
}

#endif

} // namespace
} // namespace quillomat
