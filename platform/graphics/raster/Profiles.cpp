#include "platform/graphics/raster/Profiles.h"

#include <algorithm>
#include <cmath>

namespace quillomat::raster {

namespace {

/// The tent's integral from -1 to t.
double tentIntegral(double t) {
    if (t <= -1) {
        return 0;
    }
    if (t >= 1) {
        return 1;
    }
    return t < 0 ? (1 + t) * (1 + t) / 2 : 1 - (1 - t) * (1 - t) / 2;
}

/// The integral of tentIntegral.
double tentSecondIntegral(double t) {
    if (t <= -1) {
        return 0;
    }
    if (t >= 1) {
        return t;
    }
    const double from = 1 + t;
    const double to = 1 - t;
    return t < 0 ? from * from * from / 6 : t + to * to * to / 6;
}

} // namespace

double boxTent(double t, double width) {
    if (width < 1e-6) {
        return std::max(0.0, 1 - std::abs(t));
    }
    return (tentIntegral(t + width / 2) - tentIntegral(t - width / 2)) / width;
}

double boxBoxTent(double t, double width, double otherWidth) {
    if (std::min(width, otherWidth) < 1e-6) {
        return boxTent(t, std::max(width, otherWidth));
    }
    const double outer = (width + otherWidth) / 2;
    const double inner = (width - otherWidth) / 2;
    return (tentSecondIntegral(t + outer) - tentSecondIntegral(t + inner) - tentSecondIntegral(t - inner) +
            tentSecondIntegral(t - outer)) /
           (width * otherWidth);
}

} // namespace quillomat::raster
