#include "platform/graphics/raster/MixTable.h"

#include <algorithm>
#include <cstring>

namespace quillomat::raster {

MixTable::MixTable(AxisTable<std::int8_t> axis, int samples)
    : axis_(std::move(axis)), room_(std::max(samples, axis_.taps)) {
    repeatPairs();
    groupColumns(samples);
}

MixedColumns MixTable::view() const {
    MixedColumns columns{axis_.taps, axis_.first.data(), repeated_.data()};
    if (!groups_.empty()) {
        columns.groups = groups_.data();
        columns.groupWeights = groupWeights_.data();
        columns.tapsAtOnce = tapsAtOnce_;
        columns.steps = steps_;
    }
    return columns;
}

/// Of each two weights the pair, four times over.
void MixTable::repeatPairs() {
    repeated_.resize(axis_.weights.size() * 4);
    for (std::size_t i = 0; i < axis_.weights.size(); i += 2) {
        for (std::size_t channel = 0; channel < 4; ++channel) {
            std::memcpy(repeated_.data() + i * 4 + channel * 2, axis_.weights.data() + i, 2);
        }
    }
}

void MixTable::groupColumns(int samples) {
    int taps = 1;
    for (std::size_t column = 0; column < axis_.first.size(); ++column) {
        taps = std::max(taps, UsedTaps(axis_, column).count());
    }
    if (!groupTaps(2, taps, samples) && !groupTaps(4, taps, samples)) {
        groups_.clear();
    }
}

/// Near the picture's right edge a column's weights stand behind zeros; groups leave those out, so that they need no
/// more taps there than elsewhere.
bool MixTable::groupTaps(int tapsAtOnce, int taps, int samples) {
    tapsAtOnce_ = tapsAtOnce;
    steps_ = (taps + tapsAtOnce - 1) / tapsAtOnce;
    groups_.clear();
    if (steps_ > mostGroupSteps) {
        return false;
    }
    std::vector<std::int32_t> firsts(axis_.first);
    for (std::size_t column = 0; column < firsts.size(); ++column) {
        firsts[column] += std::max(0, UsedTaps(axis_, column).to - steps_ * tapsAtOnce);
    }
    for (std::size_t from = 0; from < firsts.size(); from += columnsTogether()) {
        if (!addGroup(firsts, from, samples)) {
            return false;
        }
    }
    groupWeights_.assign(groups_.size() * static_cast<std::size_t>(groupBytes * steps_) + beyondGroupWeights, 0);
    for (std::size_t from = 0; from < firsts.size(); from += columnsTogether()) {
        addGroupWeights(firsts, from);
    }
    return true;
}

/// Whether what the columns take at once lies within a window, which the row's end may push back.
bool MixTable::addGroup(const std::vector<std::int32_t>& firsts, std::size_t from, int samples) {
    const std::size_t to = std::min(from + columnsTogether(), firsts.size());
    const auto at = [&](std::size_t column) { return firsts.begin() + static_cast<std::ptrdiff_t>(column); };
    const auto [lowest, highest] = std::minmax_element(at(from), at(to));
    // Pairs share one window, while that of quadruples moves on with them.
    const int moved = tapsAtOnce_ == 2 ? 0 : tapsAtOnce_ * (steps_ - 1);
    const int taken = tapsAtOnce_ * steps_ - moved;
    ColumnGroup group;
    group.base = std::clamp(samples - groupWindow - moved, 0, *lowest);
    if (*highest - group.base + taken > groupWindow) {
        return false;
    }
    for (std::size_t column = from; column < to; ++column) {
        group.offsets[column - from] = static_cast<std::uint8_t>((firsts[column] - group.base) * 4);
    }
    groups_.push_back(group);
    room_ = std::max(room_, group.base + groupWindow + moved);
    return true;
}

void MixTable::addGroupWeights(const std::vector<std::int32_t>& firsts, std::size_t from) {
    const auto atOnce = static_cast<std::size_t>(tapsAtOnce_);
    const auto taps = static_cast<std::size_t>(axis_.taps);
    const std::size_t group = from / columnsTogether();
    std::int8_t* const out = groupWeights_.data() + group * static_cast<std::size_t>(groupBytes * steps_);
    for (std::size_t column = from; column < std::min(from + columnsTogether(), firsts.size()); ++column) {
        const auto skipped = static_cast<std::size_t>(firsts[column] - axis_.first[column]);
        const std::size_t kept = std::min(static_cast<std::size_t>(steps_) * atOnce, taps - skipped);
        for (std::size_t tap = 0; tap < kept; ++tap) {
            const std::size_t place = tap / atOnce * groupBytes + (column - from) * atOnce + tap % atOnce;
            out[place] = axis_.weights[column * taps + skipped + tap];
        }
    }
}

} // namespace quillomat::raster
