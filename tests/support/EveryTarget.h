// Runs a check once for each kind of processor that this one can stand in for, the scalar one included; once, where the
// program is built for one kind alone.
#pragma once

#include "platform/graphics/ProcessorTarget.h"

namespace quillomat::testing {

template <typename Check> void onEveryTarget(const Check& check) {
    for (std::int64_t left = supportedTargets(); left != 0; left &= left - 1) {
        const ForcedTarget forced(left & -left);
        check(targetName(left & -left));
    }
}

} // namespace quillomat::testing
