// The columns of a picture stretched in bytes, as the kernels read them: one by one, and several at a time.
#pragma once

#include "platform/graphics/raster/Kernels.h"
#include "platform/graphics/raster/StretchAxis.h"

#include <vector>

namespace quillomat::raster {

class MixTable {
public:
    /// Of rows of so many samples; a column's taps are 4 or a multiple of 8.
    MixTable(AxisTable<std::int8_t> axis, int samples);

    [[nodiscard]] MixedColumns view() const;
    [[nodiscard]] int columns() const { return static_cast<int>(axis_.first.size()); }
    /// How many pixels a row needs room for: more than it has where it is narrower than what is read at once. What the
    /// others hold does not matter.
    [[nodiscard]] int roomOfRow() const { return room_; }

private:
    void repeatPairs();
    void groupColumns(int samples);
    [[nodiscard]] bool groupTaps(int tapsAtOnce, int taps, int samples);
    [[nodiscard]] bool addGroup(const std::vector<std::int32_t>& firsts, std::size_t from, int samples);
    void addGroupWeights(const std::vector<std::int32_t>& firsts, std::size_t from);
    [[nodiscard]] std::size_t columnsTogether() const { return static_cast<std::size_t>(groupBytes / tapsAtOnce_); }

    AxisTable<std::int8_t> axis_;
    std::vector<std::int8_t> repeated_;
    std::vector<ColumnGroup> groups_;
    std::vector<std::int8_t> groupWeights_;
    int tapsAtOnce_ = 0;
    int steps_ = 0;
    int room_ = 0;
};

} // namespace quillomat::raster
