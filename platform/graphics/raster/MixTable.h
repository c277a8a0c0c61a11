// The columns of a picture stretched in bytes, as the kernels read them: one by one, and eight at a time.
#pragma once

#include "platform/graphics/raster/Kernels.h"
#include "platform/graphics/raster/StretchAxis.h"

#include <vector>

namespace quillomat::raster {

class MixTable {
public:
    /// Of rows of so many samples; a column's taps are 4 or a multiple of 8.
    MixTable(AxisTable<std::int8_t> axis, int samples);

    [[nodiscard]] const AxisTable<std::int8_t>& axis() const { return axis_; }
    [[nodiscard]] MixedColumns view() const;
    /// How many pixels a row needs room for: more than it has where it is narrower than what is read at once. What the
    /// others hold does not matter.
    [[nodiscard]] int roomOfRow() const { return room_; }

private:
    void repeatPairs();
    void groupColumns(int samples);
    [[nodiscard]] bool groupWithin(int window, int pairs, int samples);
    [[nodiscard]] bool addGroup(const std::vector<std::int32_t>& firsts, std::size_t from, int samples);
    void addGroupWeights(const std::vector<std::int32_t>& firsts, std::size_t from);

    AxisTable<std::int8_t> axis_;
    std::vector<std::int8_t> repeated_;
    std::vector<ColumnGroup> groups_;
    std::vector<std::int8_t> groupWeights_;
    int pairs_ = 0;
    int window_ = 0;
    int room_ = 0;
};

} // namespace quillomat::raster
