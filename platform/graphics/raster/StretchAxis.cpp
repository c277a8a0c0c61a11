#include "platform/graphics/raster/StretchAxis.h"

#include "platform/graphics/raster/Profiles.h"

#include <algorithm>
#include <cmath>

namespace quillomat::raster {

namespace {

constexpr double widestStretch = 8;

/// Rounds weights to integers of that sum by rounding what they come to so far: an edge, which is where errors are
/// seen, errs by half a step of a weight at most, wherever it lies.
template <typename Weight> void quantiseLine(const std::vector<double>& weights, int whole, Weight* out) {
    double sum = 0;
    for (const double weight : weights) {
        sum += weight;
    }
    const double scale = whole / sum;
    // Far enough above zero to be rounded by cutting: overshoots come to less than the whole.
    double exact = whole + 0.5;
    int rounded = whole;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        exact += weights[i] * scale;
        const auto next = static_cast<int>(exact);
        out[i] = static_cast<Weight>(next - rounded);
        rounded = next;
    }
}

/// The samples of a plane that one pixel takes.
struct PixelShares {
    int nearest = 0;
    int other = 0;
    double ofNearest = 1;

    [[nodiscard]] int lowest() const { return std::min(nearest, other); }
};

PixelShares sharesOf(int pixel, const PlaneAxis& plane) {
    const int position = pixel + plane.shift;
    if (plane.step == 1) {
        return {position, position, 1};
    }
    const int nearest = position / 2;
    const int other = position % 2 == 0 ? nearest - 1 : nearest + 1;
    return {nearest, std::clamp(other, 0, plane.samples - 1), 0.75};
}

/// How many of a plane's samples so many pixels take at most.
int samplesOf(int pixels, const PlaneAxis& plane) {
    return plane.step == 1 ? pixels : pixels / 2 + 2;
}

} // namespace

StretchAxis::StretchAxis(double origin, double scale, PictureFilter filter)
    : origin_(origin), scale_(scale), filter_(filter) {
    for (double width = 1 / std::abs(scale); width > widestStretch && level_ < 20; width /= 2) {
        ++level_;
    }
}

/// Samples per canvas pixel at the level.
double StretchAxis::width() const {
    const double full = std::min(1 / std::abs(scale_), 1e9);
    const double f = factor();
    if (filter_ == PictureFilter::smooth || level_ == 0) {
        return full / f;
    }
    return std::sqrt(std::max(0.0, full * full + 3 - 3 * f * f)) / f;
}

double StretchAxis::reach() const {
    return filter_ == PictureFilter::smooth ? 2 * std::max(1.0, width()) : width() / 2 + 1;
}

/// The filter's profile at `count` neighbouring samples, the first of which lies `t` from its middle.
void StretchAxis::writeShares(double t, int count, double* shares) const {
    if (filter_ == PictureFilter::smooth) {
        const double perSample = 1 / std::max(1.0, width());
        for (int i = 0; i < count; ++i) {
            shares[i] = keysCubic((t + i) * perSample);
        }
    } else {
        for (int i = 0; i < count; ++i) {
            shares[i] = boxTent(t + i, width());
        }
    }
}

template <typename Weight>
AxisTable<Weight> StretchAxis::table(int from, int to, int pixels, const PlaneAxis& plane,
                                     const TableForm& form) const {
    const double spread = reach();
    AxisTable<Weight> result;
    result.start = from;
    const int needed = std::min(plane.samples, samplesOf(static_cast<int>(std::ceil(2 * spread)), plane));
    const int together = needed <= form.fewestTaps ? form.fewestTaps : form.tapsTogether;
    result.taps = (needed + together - 1) / together * together;
    const auto count = static_cast<std::size_t>(to - from);
    result.first.resize(count);
    result.weights.resize(count * static_cast<std::size_t>(result.taps));
    const auto taps = static_cast<std::size_t>(result.taps);
    std::vector<double> weights(taps);
    std::vector<double> shares(static_cast<std::size_t>(2 * spread) + 2);
    for (int at = from; at < to; ++at) {
        const double center = (at + 0.5 - origin_) / scale_ / factor() - 0.5;
        const double bounded = std::clamp(center, -spread - 1, pixels + spread + 1);
        const int lowest = static_cast<int>(std::floor(bounded - spread)) + 1;
        const int highest = static_cast<int>(std::ceil(bounded + spread)) - 1;
        const int reached = highest + 1 - lowest;
        writeShares(lowest - bounded, reached, shares.data());
        const int lowestSample = sharesOf(std::clamp(lowest, 0, pixels - 1), plane).lowest();
        const int first = std::clamp(lowestSample, 0, std::max(0, plane.samples - result.taps));
        std::fill(weights.begin(), weights.end(), 0.0);
        const auto add = [&](int sample, double weight) {
            weights[static_cast<std::size_t>(std::clamp(sample - first, 0, result.taps - 1))] += weight;
        };
        for (int i = 0; i < reached; ++i) {
            const double share = shares[static_cast<std::size_t>(i)];
            const PixelShares samples = sharesOf(std::clamp(lowest + i, 0, pixels - 1), plane);
            add(samples.nearest, share * samples.ofNearest);
            if (samples.ofNearest < 1) {
                add(samples.other, share * (1 - samples.ofNearest));
            }
        }
        result.first[result.index(at)] = first;
        quantiseLine(weights, form.sum, result.weights.data() + result.index(at) * taps);
    }
    return result;
}

template AxisTable<std::int16_t> StretchAxis::table(int, int, int, const PlaneAxis&, const TableForm&) const;
template AxisTable<std::int8_t> StretchAxis::table(int, int, int, const PlaneAxis&, const TableForm&) const;

} // namespace quillomat::raster
