#include "platform/graphics/raster/MixTable.h"

#include <algorithm>
#include <cstring>

namespace quillomat::raster {

namespace {

constexpr std::size_t together = columnsTogether;

/// The taps [from, to) of a column that weigh anything; `from` is even, so that pairs stay pairs.
struct UsedTaps {
    int from = 0;
    int to = 0;

    UsedTaps(const std::int8_t* weights, int taps) : to(taps) {
        while (from + 2 < taps && weights[from] == 0 && weights[from + 1] == 0) {
            from += 2;
        }
        while (to > from && weights[to - 1] == 0) {
            --to;
        }
    }
    [[nodiscard]] int pairs() const { return (to - from + 1) / 2; }
    /// How many of the first taps stay out, where no more than so many pairs are taken.
    [[nodiscard]] int skipped(int most) const { return std::max(0, (to + 1) / 2 - most) * 2; }
};

UsedTaps usedTaps(const AxisTable<std::int8_t>& axis, std::size_t column) {
    return {axis.weights.data() + column * static_cast<std::size_t>(axis.taps), axis.taps};
}

} // namespace

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
        columns.pairs = pairs_;
        columns.window = window_;
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
    int needed = 1;
    for (std::size_t column = 0; column < axis_.first.size(); ++column) {
        needed = std::max(needed, usedTaps(axis_, column).pairs());
    }
    const bool isNarrow = needed <= mostNarrowPairs && groupWithin(narrowWindow, needed, samples);
    const bool isWide = !isNarrow && needed >= fewestWidePairs && needed <= mostWidePairs;
    if (!isNarrow && !(isWide && groupWithin(wideWindow, needed, samples))) {
        groups_.clear();
    }
}

/// Near the picture's right edge a column's weights stand behind zeros; groups leave those out, so that they need no
/// more pairs there than elsewhere.
bool MixTable::groupWithin(int window, int pairs, int samples) {
    window_ = window;
    pairs_ = pairs;
    groups_.clear();
    std::vector<std::int32_t> firsts(axis_.first);
    for (std::size_t column = 0; column < firsts.size(); ++column) {
        firsts[column] += usedTaps(axis_, column).skipped(pairs);
    }
    for (std::size_t from = 0; from < firsts.size(); from += together) {
        if (!addGroup(firsts, from, samples)) {
            return false;
        }
    }
    // Behind the last weights something is read, too.
    groupWeights_.assign(groups_.size() * together * 2 * static_cast<std::size_t>(pairs) + 64, 0);
    for (std::size_t from = 0; from < firsts.size(); from += together) {
        addGroupWeights(firsts, from);
    }
    return true;
}

/// Whether the columns' pixels lie within the window, which the row's end may push back.
bool MixTable::addGroup(const std::vector<std::int32_t>& firsts, std::size_t from, int samples) {
    const std::size_t to = std::min(from + together, firsts.size());
    const auto at = [&](std::size_t column) { return firsts.begin() + static_cast<std::ptrdiff_t>(column); };
    const auto [lowest, highest] = std::minmax_element(at(from), at(to));
    // All pairs lie within one narrow window, while wide ones move on from pair to pair.
    const int read = window_ == narrowWindow ? window_ : window_ + 2 * (pairs_ - 1);
    const int taken = window_ == narrowWindow ? 2 * pairs_ : 2;
    ColumnGroup group;
    group.base = std::clamp(samples - read, 0, *lowest);
    if (*highest - group.base + taken > window_) {
        return false;
    }
    for (std::size_t column = from; column < to; ++column) {
        group.offsets[column - from] = static_cast<std::uint8_t>((firsts[column] - group.base) * 4);
    }
    groups_.push_back(group);
    room_ = std::max(room_, group.base + read);
    return true;
}

void MixTable::addGroupWeights(const std::vector<std::int32_t>& firsts, std::size_t from) {
    const auto pairs = static_cast<std::size_t>(pairs_);
    const auto taps = static_cast<std::size_t>(axis_.taps);
    std::int8_t* const out = groupWeights_.data() + from * 2 * pairs;
    for (std::size_t column = from; column < std::min(from + together, firsts.size()); ++column) {
        const auto skipped = static_cast<std::size_t>(firsts[column] - axis_.first[column]);
        for (std::size_t tap = 0; tap < std::min(2 * pairs, taps - skipped); ++tap) {
            out[(tap / 2 * together + column - from) * 2 + tap % 2] = axis_.weights[column * taps + skipped + tap];
        }
    }
}

} // namespace quillomat::raster
