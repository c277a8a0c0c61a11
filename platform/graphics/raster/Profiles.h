// The shapes of filters: a box convolved with a tent, and the cubic; and the 64-phase tables of small weights.
#pragma once

#include "platform/graphics/raster/Kernels.h"

namespace quillomat::raster {

/// The weight that a sample at distance t gets under a box of that width over the linear reconstruction; of sum 1 over
/// all samples. With a width of 0 it is the tent itself.
[[nodiscard]] double boxTent(double t, double width);
/// R. Keys's cubic convolution (1981) with a = -1/2.
[[nodiscard]] double keysCubic(double t);

/// Widths in the tables: sixteenths of a pixel, up to `widest`.
constexpr int widthSteps = 16;
constexpr int widest = 10;

/// Tables for one box width: 64 lines of 16 weights, of which the first `taps` count (see Footprint).
struct PhaseTable {
    const std::uint8_t* columns = nullptr;
    const std::int16_t* rows = nullptr;
    int taps = 4;
};
[[nodiscard]] PhaseTable phaseTable(double boxWidth);

} // namespace quillomat::raster
