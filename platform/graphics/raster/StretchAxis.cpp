#include "platform/graphics/raster/StretchAxis.h"

#include "platform/graphics/raster/Profiles.h"

#include <algorithm>
#include <cmath>
#include <limits>

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

/// The shortest period, where there is one. From a photograph's 4000 pixels to 1080 it is 27.
Period periodOf(double samplesPerPosition, const PlaneAxis& plane) {
    constexpr int longest = 512;
    constexpr double rounding = 1e-10; // errors of the map, far below what a weight shows
    constexpr double mostSamples = 16; // for a position: an axis at its level has half as many, or is out of all bounds
    for (int positions = 1; positions <= longest; ++positions) {
        const double samples = samplesPerPosition * positions;
        const double whole = std::round(samples);
        if (std::abs(samples - whole) < rounding && std::abs(whole) <= mostSamples * positions &&
            std::fmod(whole, plane.step) == 0) {
            return {positions, static_cast<int>(whole)};
        }
    }
    return {};
}

int lowestSample(const Reached& reached, int pixels, const PlaneAxis& plane) {
    return sharesOf(std::clamp(reached.lowest, 0, pixels - 1), plane).lowest();
}

/// Neither its pixels nor its taps, from the `lowest` sample on, meet the picture's edges.
bool liesInside(const Reached& reached, int pixels, int lowest, int taps, const PlaneAxis& plane) {
    return reached.lowest > 0 && reached.lowest + reached.count < pixels && lowest + taps <= plane.samples;
}

/// What lies beyond the taps goes to the last of them.
void addWeight(std::vector<double>& weights, int tap, double weight) {
    weights[static_cast<std::size_t>(std::clamp(tap, 0, static_cast<int>(weights.size()) - 1))] += weight;
}

} // namespace

Reached::Reached(double position, double spread)
    : lowest(static_cast<int>(std::floor(position - spread)) + 1)
    , count(static_cast<int>(std::ceil(position + spread)) - lowest)
    , begin(lowest - position) {}

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

/// Positions whole periods apart are all reckoned from the first of them, so that they differ by nothing, whichever of
/// them a table has.
Reached StretchAxis::reachedFrom(int at, int pixels, const Period& period) const {
    const double spread = reach();
    const int periods = period.positions > 0 ? at / period.positions : 0;
    const double first = ((at - periods * period.positions) + 0.5 - origin_) / scale_ / factor() - 0.5;
    const int moved = periods * period.samples;
    const double bounded = std::clamp(first + moved, -spread - 1, pixels + spread + 1);
    if (bounded != first + moved) {
        return {bounded, spread};
    }
    Reached reached(first, spread);
    reached.lowest += moved;
    return reached;
}

template <typename Weight>
AxisTable<Weight> StretchAxis::table(int from, int to, int pixels, const PlaneAxis& plane,
                                     const TableForm& form) const {
    AxisTable<Weight> result;
    result.start = from;
    const int needed = std::min(plane.samples, samplesOf(static_cast<int>(std::ceil(2 * reach())), plane));
    const int together = needed <= form.fewestTaps ? form.fewestTaps : form.tapsTogether;
    result.taps = (needed + together - 1) / together * together;
    const auto count = static_cast<std::size_t>(to - from);
    const auto taps = static_cast<std::size_t>(result.taps);
    result.first.resize(count);
    result.weights.resize(count * taps);
    std::vector<double> weights(taps);
    std::vector<double> shares(static_cast<std::size_t>(2 * reach()) + 2);

    const Period period = periodOf(1 / (scale_ * factor()), plane);
    // What the position a period before reached, where all of that lies inside.
    std::vector<Reached> before(static_cast<std::size_t>(period.positions < to - from ? period.positions : 0));
    std::size_t phase = 0;
    for (int at = from; at < to; ++at, phase = phase + 1 < before.size() ? phase + 1 : 0) {
        const std::size_t line = result.index(at);
        Weight* const out = result.weights.data() + line * taps;
        Reached* const like = before.empty() ? nullptr : &before[phase];
        if (like != nullptr && like->count > 0) {
            like->lowest += period.samples;
            const int first = result.first[line - before.size()] + period.samples / plane.step;
            if (liesInside(*like, pixels, first, result.taps, plane)) {
                result.first[line] = first;
                std::copy_n(result.line(at - period.positions), taps, out);
                continue;
            }
            like->count = 0;
        }
        const Reached reached = reachedFrom(at, pixels, period);
        const int lowest = lowestSample(reached, pixels, plane);
        if (like != nullptr && liesInside(reached, pixels, lowest, result.taps, plane)) {
            *like = reached;
        }
        const int first = std::clamp(lowest, 0, std::max(0, plane.samples - result.taps));
        writeShares(reached.begin, reached.count, shares.data());
        std::fill(weights.begin(), weights.end(), 0.0);
        for (int i = 0; i < reached.count; ++i) {
            const double share = shares[static_cast<std::size_t>(i)];
            const PixelShares samples = sharesOf(std::clamp(reached.lowest + i, 0, pixels - 1), plane);
            addWeight(weights, samples.nearest - first, share * samples.ofNearest);
            if (samples.ofNearest < 1) {
                addWeight(weights, samples.other - first, share * (1 - samples.ofNearest));
            }
        }
        result.first[line] = first;
        quantiseLine(weights, form.sum, out);
    }
    return result;
}

template AxisTable<std::int16_t> StretchAxis::table(int, int, int, const PlaneAxis&, const TableForm&) const;
template AxisTable<std::int8_t> StretchAxis::table(int, int, int, const PlaneAxis&, const TableForm&) const;

} // namespace quillomat::raster
