// Runs a check once for each kind of processor that this one can stand in for, the scalar one included; once, where the
// program is built for one kind alone.
#pragma once

#ifndef HWY_COMPILE_ONLY_STATIC
#include <hwy/targets.h>
#endif

#include <cstdint>

namespace quillomat::testing {

template <typename Check> void onEveryTarget(const Check& check) {
#ifdef HWY_COMPILE_ONLY_STATIC
    check("the only kind");
#else
    for (std::int64_t left = hwy::SupportedTargets(); left != 0; left &= left - 1) {
        hwy::SetSupportedTargetsForTest(left & -left);
        check(hwy::TargetName(left & -left));
    }
    hwy::SetSupportedTargetsForTest(0);
#endif
}

} // namespace quillomat::testing
