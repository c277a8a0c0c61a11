// Which of the kinds of processor that the kernels are compiled for runs them here, and the call that goes there.
// Highway's own library knows as well, but costs every start two milliseconds; of Highway only the headers are used
// (decision 9).
#pragma once

#include <cstddef>
#include <cstdint>

namespace quillomat {

/// What an x86 processor says of itself, and its operating system of it: words of bits, all clear on other processors.
struct ProcessorFeatures {
    std::uint32_t basic = 0;         ///< ECX of CPUID's leaf 1
    std::uint32_t extended = 0;      ///< EBX of leaf 7
    std::uint32_t moreExtended = 0;  ///< ECX of leaf 7
    std::uint32_t manufacturers = 0; ///< ECX of leaf 0x80000001
    std::uint32_t keptRegisters = 0; ///< XCR0: what the operating system keeps when it turns to another thread

    [[nodiscard]] static ProcessorFeatures ofThisOne();
};

/// Of Highway's targets (one bit each, the best is the lowest) those that are compiled and that such a processor runs;
/// there is always one.
[[nodiscard]] std::int64_t targetsRunBy(const ProcessorFeatures& processor);

/// Those of this processor.
[[nodiscard]] std::int64_t supportedTargets();

/// The target whose kernels are called: the best supported one, unless one is forced.
[[nodiscard]] std::int64_t chosenTarget();

/// What Highway calls one target.
[[nodiscard]] const char* targetName(std::int64_t target);

/// For tests: as long as it lives, kernels of that supported target are called, on every thread.
class ForcedTarget {
public:
    explicit ForcedTarget(std::int64_t target);
    ~ForcedTarget();
    ForcedTarget(const ForcedTarget&) = delete;
    ForcedTarget& operator=(const ForcedTarget&) = delete;
};

/// Where a function of the chosen target stands in Highway's list of targets, behind which the fallback follows.
[[nodiscard]] std::size_t chosenPlace();

} // namespace quillomat

/// The chosen target's FUNCTION: `QUILLOMAT_DISPATCH(Filter)(row, out)`, in a source that includes itself for each
/// target, behind HWY_ONCE. HWY_DYNAMIC_DISPATCH does the same, but its tables begin with a call of Highway's library.
#define QUILLOMAT_DISPATCH(FUNCTION)                                                                                   \
    ([] {                                                                                                              \
        static constexpr decltype(&HWY_STATIC_DISPATCH(FUNCTION)) ofTargets[HWY_MAX_DYNAMIC_TARGETS + 1] = {           \
            HWY_CHOOSE_TARGET_LIST(FUNCTION), HWY_CHOOSE_FALLBACK(FUNCTION)};                                          \
        return ofTargets[quillomat::chosenPlace()];                                                                    \
    }())
