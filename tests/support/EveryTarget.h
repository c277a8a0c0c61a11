// Runs a check once for each kind of processor that this one can stand in for, the scalar one included.
#pragma once

#include <hwy/targets.h>

#include <cstdint>

namespace quillomat::testing {

template <typename Check> void onEveryTarget(const Check& check) {
    for (std::int64_t left = hwy::SupportedTargets(); left != 0; left &= left - 1) {
        hwy::SetSupportedTargetsForTest(left & -left);
        check(hwy::TargetName(left & -left));
    }
    hwy::SetSupportedTargetsForTest(0);
}

} // namespace quillomat::testing
