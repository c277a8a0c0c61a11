#include "platform/foundation/Geometry.h"

#include "platform/foundation/Conversions.h"

namespace quillomat {

namespace {

std::string pairText(double first, double second) {
    return "{" + numberText(first) + ", " + numberText(second) + "}";
}

} // namespace

std::string stringFromRect(const Rect& rect) {
    return "{" + stringFromPoint(rect.origin) + ", " + stringFromSize(rect.size) + "}";
}

std::string stringFromSize(const Size& size) {
    return pairText(size.width, size.height);
}

std::string stringFromPoint(const Point& point) {
    return pairText(point.x, point.y);
}

} // namespace quillomat
