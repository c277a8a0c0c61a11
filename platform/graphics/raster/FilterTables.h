// Profiles as tables of small weights, one line for each phase: made when they are first asked for, and kept.
#pragma once

#include "platform/graphics/raster/Kernels.h"

#include <cstddef>

namespace quillomat::raster {

/// The widths of two boxes together that the tables hold.
constexpr double widestBoxes = 14;

/// While one of these lives, no table is dropped: whoever asks for tables has one for as long as it reads them.
class TablesInUse {
public:
    TablesInUse();
    ~TablesInUse();
    TablesInUse(const TablesInUse&) = delete;
    TablesInUse& operator=(const TablesInUse&) = delete;
};

/// When the last user ends, tables of more bytes than these are dropped.
constexpr std::size_t mostTableBytes = std::size_t{16} << 20;
[[nodiscard]] std::size_t keptTableBytes();

/// The tables of one pair of boxes and a tent. The widths are rounded to 32nds below 6 and to sixteenths above. Column
/// tables have room for the boxes' and the tent's reach and `slack` more columns on each side, as far as `mostTaps`
/// allow. Asking is safe from any thread.
[[nodiscard]] const ColumnTable& columnTable(double boxWidth, double otherWidth, double slack = 0);
[[nodiscard]] const RowTable& rowTable(double boxWidth, double otherWidth);
/// The tables of one box and a tent for footprints along a line, no wider than `widestLineRows` and
/// `widestLineColumns`; of two parts each has half the box.
[[nodiscard]] const LineRows& lineRows(double boxWidth, int parts);
[[nodiscard]] const LineColumns& lineColumns(double boxWidth);
constexpr double widestLineRows = mostLineRows - 2;
constexpr double widestLineColumns = LineColumns::taps - 3;
/// The `steadyLines` of a footprint with these columns, four of them, whose rows' phases differ by `step`.
[[nodiscard]] const std::uint8_t* steadyLines(const ColumnTable& columns, int step);

} // namespace quillomat::raster
