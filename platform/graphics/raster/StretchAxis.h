// One axis of a stretch along the axes: which samples each canvas column (or row) takes, and their weights.
#pragma once

#include "platform/graphics/Recording.h"
#include "platform/graphics/raster/Kernels.h"

#include <cstdint>
#include <vector>

namespace quillomat::raster {

/// For each canvas column (or row) the samples that it takes and their weights. Samples have `taps` neighbours within
/// the picture; where it has fewer than that, the last weights are 0 and their pixels are made up.
template <typename Weight> struct AxisTable {
    int start = 0;
    int taps = 1;
    std::vector<std::int32_t> first;
    std::vector<Weight> weights;

    [[nodiscard]] std::size_t index(int at) const { return static_cast<std::size_t>(at - start); }
    [[nodiscard]] const Weight* line(int at) const {
        return weights.data() + index(at) * static_cast<std::size_t>(taps);
    }
};

/// The taps [from, to) of a column that weigh anything.
struct UsedTaps {
    int from = 0;
    int to = 0;

    UsedTaps(const AxisTable<std::int8_t>& axis, std::size_t column) : to(axis.taps) {
        const std::int8_t* weights = axis.weights.data() + column * static_cast<std::size_t>(axis.taps);
        while (to > 1 && weights[to - 1] == 0) {
            --to;
        }
        while (from + 1 < to && weights[from] == 0) {
            ++from;
        }
    }
    [[nodiscard]] int count() const { return to - from; }
};

struct TableForm {
    int sum = 0;          // of a line's weights
    int fewestTaps = 1;   // where that many do,
    int tapsTogether = 1; // else a multiple of this
};

/// Of the rows that are mixed in bytes.
constexpr TableForm mixedRowForm{mixedWhole, 1, 1};

/// One side of a plane of samples in which a picture's pixels lie: pixel 0 is the plane's position `shift`, and each
/// sample stands for `step` positions, one or two. Between samples that stand for two the plane runs straight.
struct PlaneAxis {
    int samples = 0;
    int shift = 0;
    int step = 1;
};

/// After so many canvas positions an axis has gone on by exactly so many samples: positions that lie whole periods
/// apart take their samples alike.
struct Period {
    int positions = 0; // none
    int samples = 0;
};

/// The pixels that a canvas position reaches.
struct Reached {
    int lowest = 0;
    int count = 0;
    double begin = 0; // of the lowest, from the position on

    Reached() = default;
    Reached(double position, double spread);
};

/// How many times an axis is halved beforehand, and which filter follows.
class StretchAxis {
public:
    /// Canvas position = origin + scale x picture position.
    StretchAxis(double origin, double scale, PictureFilter filter);

    [[nodiscard]] int level() const { return level_; }
    /// For the canvas positions [from, to), over a picture of that many samples at the level.
    template <typename Weight>
    [[nodiscard]] AxisTable<Weight> table(int from, int to, int samples, const TableForm& form) const {
        return table<Weight>(from, to, samples, PlaneAxis{samples}, form);
    }
    /// The same in samples of a plane for which so many pixels stand.
    template <typename Weight>
    [[nodiscard]] AxisTable<Weight> table(int from, int to, int pixels, const PlaneAxis& plane,
                                          const TableForm& form) const;

private:
    [[nodiscard]] double factor() const { return 1 << level_; }
    [[nodiscard]] double width() const;
    [[nodiscard]] double reach() const;
    [[nodiscard]] Reached reachedFrom(int at, int pixels, const Period& period) const;
    void writeShares(double t, int count, double* shares) const;

    double origin_ = 0;
    double scale_ = 1;
    PictureFilter filter_ = PictureFilter::area;
    int level_ = 0;
};

} // namespace quillomat::raster
