// The shapes of filters: a box convolved with a tent, and the cubic; and the phase tables of small weights.
#pragma once

#include "platform/graphics/raster/Kernels.h"

namespace quillomat::raster {

/// The weight that a sample at distance t gets under a box of that width over the linear reconstruction; of sum 1 over
/// all samples. With a width of 0 it is the tent itself.
[[nodiscard]] double boxTent(double t, double width);
/// R. Keys's cubic convolution (1981) with a = -1/2.
[[nodiscard]] double keysCubic(double t);

/// Two boxes and a tent, convolved.
[[nodiscard]] double boxBoxTent(double t, double width, double otherWidth);

/// The widths of two boxes together that the tables hold.
constexpr double widestBoxes = 14;

/// The table of one pair of boxes and a tent. The widths are rounded to sixteenths below 2, to eighths up to 6 and to
/// quarters above. Each table is made when it is first asked for and
/// kept; asking is safe from any thread.
[[nodiscard]] const PhaseTable& phaseTable(double boxWidth, double otherWidth);

} // namespace quillomat::raster
