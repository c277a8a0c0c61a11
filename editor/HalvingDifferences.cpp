#include "editor/HalvingDifferences.h"

#include "editor/MockupDefinition.h"

#include <cmath>
#include <limits>

namespace quillomat {

namespace {

float single(double number) {
    return static_cast<float>(number);
}

std::int32_t truncated(float number) {
    return truncatedInteger(static_cast<double>(number));
}

} // namespace

bool nearlyEqual(float a, float b) {
    const float larger = a > b ? a : b;
    return a == b || std::fabs(a - b) < std::numeric_limits<float>::epsilon() * larger;
}

HalvingDifferences halvingDifferences(const Rect& former, const Rect& now) {
    const float x = single(former.origin.x);
    const float y = single(former.origin.y);
    const float width = single(former.size.width);
    HalvingDifferences differences;

    const std::int32_t moveX = truncatedInteger(static_cast<double>(x) - now.origin.x);
    if (!nearlyEqual(x * 0.5F, single(now.origin.x)) || x * 0.5F != single(std::trunc(now.origin.x)))
        differences.moveFrameX = moveX;
    const float nowY = single(now.origin.y);
    if (!nearlyEqual(y * 0.5F, nowY) || y * 0.5F != single(std::trunc(now.origin.y)))
        differences.moveFrameY = truncated(y - nowY);

    // One test for both, on the widths.
    if (!nearlyEqual(width * 0.5F, single(now.size.width))) {
        differences.width = truncated(width - single(now.size.width));
        differences.height = truncated(single(former.size.height) - single(now.size.height));
    }
    return differences;
}

} // namespace quillomat
