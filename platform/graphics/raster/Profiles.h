// The shapes of filters: a box convolved with a tent, and the cubic; and the 64-phase tables of small weights.
#pragma once

#include "platform/graphics/raster/Kernels.h"

#include <array>

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

/// Tables for one pair of boxes: 64 lines of 16 weights, of which the first `taps` count (see Footprint).
struct PhaseTable {
    std::array<std::uint8_t, std::size_t{phases} * weightLine> columns{};
    std::array<std::int16_t, std::size_t{phases} * weightLine> rows{};
    int taps = 4;
};
/// The widths are rounded to sixteenths below 2, to eighths above. Each table is made when it is first asked for and
/// kept; asking is safe from any thread.
[[nodiscard]] const PhaseTable& phaseTable(double boxWidth, double otherWidth);

} // namespace quillomat::raster
