#include "platform/graphics/ProcessorTarget.h"

#include <hwy/targets.h>

#include <array>
#include <atomic>
#include <bit>
#include <cassert>

#if HWY_ARCH_X86
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace quillomat {
namespace {

#if HWY_ARCH_X86

static_assert((HWY_TARGETS & ~(HWY_STATIC_TARGET | HWY_SSSE3 | HWY_SSE4 | HWY_AVX2 | HWY_AVX3 | HWY_AVX3_DL)) == 0,
              "what another target needs is not known here");

constexpr std::uint32_t keptXmm = 1U << 1;
constexpr std::uint32_t keptYmm = 1U << 2;
constexpr std::uint32_t keptMasks = 1U << 5;
constexpr std::uint32_t keptUpperHalvesOfZmm = 1U << 6;
constexpr std::uint32_t keptZmm16To31 = 1U << 7;

constexpr ProcessorFeatures operator|(const ProcessorFeatures& a, const ProcessorFeatures& b) {
    return {a.basic | b.basic, a.extended | b.extended, a.moreExtended | b.moreExtended,
            a.manufacturers | b.manufacturers, a.keptRegisters | b.keptRegisters};
}

constexpr bool has(const ProcessorFeatures& processor, const ProcessorFeatures& needed) {
    return (needed.basic & ~processor.basic) == 0 && (needed.extended & ~processor.extended) == 0 &&
           (needed.moreExtended & ~processor.moreExtended) == 0 &&
           (needed.manufacturers & ~processor.manufacturers) == 0 &&
           (needed.keptRegisters & ~processor.keptRegisters) == 0;
}

// Highway 1.0's own lists, which are at least what its headers ask the compiler for (HWY_TARGET_STR in
// ops/set_macros-inl.h), but for two. The compiler adds POPCNT to SSE4.2 by itself. AVX-VNNI is asked for, but some
// processors with all the rest lack it: no kernel uses it, only the AVX-512 instructions of the same name.
constexpr ProcessorFeatures ssse3{.basic = bit_SSE3 | bit_SSSE3};
constexpr ProcessorFeatures sse4 =
    ssse3 | ProcessorFeatures{.basic = bit_SSE4_1 | bit_SSE4_2 | bit_POPCNT | bit_PCLMUL | bit_AES};
constexpr ProcessorFeatures avx2 = sse4 | ProcessorFeatures{.basic = bit_OSXSAVE | bit_AVX | bit_FMA | bit_F16C,
                                                            .extended = bit_AVX2 | bit_BMI | bit_BMI2,
                                                            .manufacturers = bit_LZCNT,
                                                            .keptRegisters = keptXmm | keptYmm};
constexpr ProcessorFeatures avx3 =
    avx2 | ProcessorFeatures{.extended = bit_AVX512F | bit_AVX512VL | bit_AVX512DQ | bit_AVX512BW,
                             .keptRegisters = keptMasks | keptUpperHalvesOfZmm | keptZmm16To31};
constexpr ProcessorFeatures avx3Dl =
    avx3 | ProcessorFeatures{.moreExtended = bit_AVX512VNNI | bit_VPCLMULQDQ | bit_AVX512VBMI | bit_AVX512VBMI2 |
                                             bit_VAES | bit_AVX512VPOPCNTDQ | bit_AVX512BITALG};

struct Requirement {
    std::int64_t target;
    ProcessorFeatures needed;
};

constexpr std::array<Requirement, 5> requirements{
    {{HWY_SSSE3, ssse3}, {HWY_SSE4, sse4}, {HWY_AVX2, avx2}, {HWY_AVX3, avx3}, {HWY_AVX3_DL, avx3Dl}}};

/// Only for processors with OSXSAVE: the others do not know the instruction.
__attribute__((target("xsave"))) std::uint32_t readKeptRegisters() {
    return static_cast<std::uint32_t>(_xgetbv(0));
}

#else

static_assert(HWY_TARGETS == HWY_STATIC_TARGET, "how to choose among several targets is only known for x86: define "
                                                "HWY_COMPILE_ONLY_STATIC");

#endif

constexpr std::int64_t bestOf(std::int64_t targets) {
    return targets & -targets;
}

std::atomic<std::int64_t> forcedTarget{0}; // none

} // namespace

#if HWY_ARCH_X86

ProcessorFeatures ProcessorFeatures::ofThisOne() {
    ProcessorFeatures features;
    std::uint32_t eax = 0;
    std::uint32_t ebx = 0;
    std::uint32_t ecx = 0;
    std::uint32_t edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0) {
        features.basic = ecx;
    }
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0) {
        features.extended = ebx;
        features.moreExtended = ecx;
    }
    if (__get_cpuid(0x80000001U, &eax, &ebx, &ecx, &edx) != 0) {
        features.manufacturers = ecx;
    }
    if ((features.basic & bit_OSXSAVE) != 0) {
        features.keptRegisters = readKeptRegisters();
    }
    return features;
}

std::int64_t targetsRunBy(const ProcessorFeatures& processor) {
    std::int64_t targets = HWY_STATIC_TARGET; // what the whole program is compiled for
    for (const Requirement& requirement : requirements) {
        if (has(processor, requirement.needed)) {
            targets |= requirement.target;
        }
    }
    return targets & HWY_TARGETS;
}

#else

ProcessorFeatures ProcessorFeatures::ofThisOne() {
    return {};
}

std::int64_t targetsRunBy(const ProcessorFeatures& /*processor*/) {
    return HWY_STATIC_TARGET;
}

#endif

std::int64_t supportedTargets() {
    static const std::int64_t targets = targetsRunBy(ProcessorFeatures::ofThisOne());
    return targets;
}

std::int64_t chosenTarget() {
    const std::int64_t forced = forcedTarget.load(std::memory_order_relaxed);
    return forced != 0 ? forced : bestOf(supportedTargets());
}

const char* targetName(std::int64_t target) {
    return hwy::TargetName(target);
}

ForcedTarget::ForcedTarget(std::int64_t target) {
    assert(target == bestOf(target) && (target & supportedTargets()) != 0);
    forcedTarget = target;
}

ForcedTarget::~ForcedTarget() {
    forcedTarget = 0;
}

std::size_t chosenPlace() {
    // Highway's masks for its own tables, whose first entry is the one that calls its library; ours have none.
    const auto places =
        static_cast<std::uint64_t>(HWY_CHOSEN_TARGET_SHIFT(chosenTarget()) | HWY_CHOSEN_TARGET_MASK_SCALAR);
    return static_cast<std::size_t>(std::countr_zero(places)) - 1;
}

} // namespace quillomat
