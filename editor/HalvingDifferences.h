// How far halving a warped view's bounding box missed half of it: diagnostic numbers for the log, used for nothing
// else.
#pragma once

#include "platform/foundation/Geometry.h"

#include <cstdint>

namespace quillomat {

/// Whether two numbers are equal, or differ by less than single precision's epsilon times the larger of them. Larger by
/// sign and not by magnitude, so that two different negative numbers never are.
[[nodiscard]] bool nearlyEqual(float a, float b);

struct HalvingDifferences {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t moveFrameX = 0;
    std::int32_t moveFrameY = 0;
};

/// In single precision, as the log shows them. Both sizes depend on the widths alone: a height that was not halved goes
/// unnoticed as long as the width was.
[[nodiscard]] HalvingDifferences halvingDifferences(const Rect& former, const Rect& now);

} // namespace quillomat
