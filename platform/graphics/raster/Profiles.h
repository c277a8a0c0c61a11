// The shapes of filters: a box convolved with a tent, and the cubic.
#pragma once

namespace quillomat::raster {

/// The weight that a sample at distance t gets under a box of that width over the linear reconstruction; of sum 1 over
/// all samples. With a width of 0 it is the tent itself.
[[nodiscard]] double boxTent(double t, double width);
/// R. Keys's cubic convolution (1981) with a = -1/2.
[[nodiscard]] double keysCubic(double t);

/// Two boxes and a tent, convolved.
[[nodiscard]] double boxBoxTent(double t, double width, double otherWidth);

} // namespace quillomat::raster
