// The shapes of filters: a box convolved with a tent, and the cubic.
#pragma once

namespace quillomat::raster {

/// The weight that a sample at distance t gets under a box of that width over the linear reconstruction; of sum 1 over
/// all samples. With a width of 0 it is the tent itself.
[[nodiscard]] double boxTent(double t, double width);
/// R. Keys's cubic convolution (1981) with a = -1/2.
[[nodiscard]] constexpr double keysCubic(double t) {
    const double x = t < 0 ? -t : t;
    const double inner = (1.5 * x - 2.5) * x * x + 1;
    const double outer = ((-0.5 * x + 2.5) * x - 4) * x + 2;
    return x < 1 ? inner : x < 2 ? outer : 0;
}

/// Two boxes and a tent, convolved.
[[nodiscard]] double boxBoxTent(double t, double width, double otherWidth);

} // namespace quillomat::raster
