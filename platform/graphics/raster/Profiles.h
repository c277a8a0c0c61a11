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

/// The tables of one pair of boxes and a tent. The widths are rounded to 32nds below 6 and to
/// sixteenths above. Column tables have room for the boxes' and the tent's reach and `slack` more columns on each side,
/// as far as `mostTaps` allow. Each table is made when it is first asked for and kept; asking is safe from any thread.
[[nodiscard]] const ColumnTable& columnTable(double boxWidth, double otherWidth, double slack = 0);
[[nodiscard]] const RowTable& rowTable(double boxWidth, double otherWidth);
/// The `steadyLines` of a footprint with these columns, four of them, whose rows' phases differ by `step`; kept as
/// well.
[[nodiscard]] const std::uint8_t* steadyLines(const ColumnTable& columns, int step);

} // namespace quillomat::raster
