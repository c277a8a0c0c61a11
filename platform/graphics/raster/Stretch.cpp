#include "platform/graphics/raster/Profiles.h"
#include "platform/graphics/raster/Pyramid.h"
#include "platform/graphics/raster/Sampler.h"

#include <algorithm>
#include <cmath>

namespace quillomat::raster {

namespace {

constexpr double widestStretch = 8;

/// For each canvas column (or row) the samples that it takes and their weights, of sum 16384.
struct AxisTable {
    int start = 0;
    int taps = 1;
    std::vector<std::int32_t> first;
    std::vector<std::int16_t> weights;

    [[nodiscard]] std::size_t index(int at) const { return static_cast<std::size_t>(at - start); }
    [[nodiscard]] const std::int16_t* line(int at) const {
        return weights.data() + index(at) * static_cast<std::size_t>(taps);
    }
};

/// One axis of a stretch: how many times the samples are halved beforehand, and which filter follows.
struct Axis {
    double origin = 0;
    double scale = 1;
    PictureFilter filter = PictureFilter::area;
    int level = 0;

    Axis(double from, double by, PictureFilter how) : origin(from), scale(by), filter(how) {
        for (double width = 1 / std::abs(scale); width > widestStretch && level < 20; width /= 2) {
            ++level;
        }
    }

    [[nodiscard]] double factor() const { return 1 << level; }
    /// Samples per canvas pixel at the level.
    [[nodiscard]] double width() const {
        const double full = std::min(1 / std::abs(scale), 1e9);
        const double f = factor();
        if (filter == PictureFilter::smooth || level == 0) {
            return full / f;
        }
        return std::sqrt(std::max(0.0, full * full + 3 - 3 * f * f)) / f;
    }
    [[nodiscard]] double reach() const {
        return filter == PictureFilter::smooth ? 2 * std::max(1.0, width()) : width() / 2 + 1;
    }
    [[nodiscard]] double weight(double t) const {
        return filter == PictureFilter::smooth ? keysCubic(t / std::max(1.0, width())) : boxTent(t, width());
    }

    [[nodiscard]] AxisTable table(int from, int to, int samples) const;
};

void quantiseLine(const std::vector<double>& weights, std::int16_t* out) {
    double sum = 0;
    for (const double weight : weights) {
        sum += weight;
    }
    int total = 0;
    std::size_t largest = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        out[i] = static_cast<std::int16_t>(std::lround(weights[i] / sum * 16384));
        total += out[i];
        largest = out[i] > out[largest] ? i : largest;
    }
    out[largest] = static_cast<std::int16_t>(out[largest] + 16384 - total);
}

AxisTable Axis::table(int from, int to, int samples) const {
    const double spread = reach();
    AxisTable result;
    result.start = from;
    // Pairs of taps: where the picture has but one sample, the second one's weight is 0 and its pixel is made up.
    const int needed = std::min(samples, static_cast<int>(std::ceil(2 * spread)));
    result.taps = needed + needed % 2;
    const auto count = static_cast<std::size_t>(to - from);
    result.first.resize(count);
    result.weights.resize(count * static_cast<std::size_t>(result.taps));
    std::vector<double> weights(static_cast<std::size_t>(result.taps));
    for (int at = from; at < to; ++at) {
        const double center = (at + 0.5 - origin) / scale / factor() - 0.5;
        const double bounded = std::clamp(center, -spread - 1, samples + spread + 1);
        const int lowest = static_cast<int>(std::floor(bounded - spread)) + 1;
        const int highest = static_cast<int>(std::ceil(bounded + spread)) - 1;
        const int first = std::clamp(lowest, 0, std::max(0, samples - result.taps));
        std::fill(weights.begin(), weights.end(), 0.0);
        for (int sample = lowest; sample <= highest; ++sample) {
            const int inside = std::clamp(std::clamp(sample, 0, samples - 1) - first, 0, result.taps - 1);
            weights[static_cast<std::size_t>(inside)] += weight(sample - bounded);
        }
        result.first[result.index(at)] = first;
        quantiseLine(weights, result.weights.data() + result.index(at) * static_cast<std::size_t>(result.taps));
    }
    return result;
}

/// Rows are combined first, then columns: no row is kept, so bands need not know each other.
class StretchSampler final : public Sampler {
public:
    StretchSampler(std::shared_ptr<const Pyramid> picture, const Axis& across, const Axis& down,
                   const SampledArea& area, const Kernels& kernels)
        : pyramid_(std::move(picture))
        , view_(pyramid_->level(across.level, down.level))
        , columns_(across.table(area.left, area.right, view_.width))
        , rows_(down.table(area.top, area.bottom, view_.height))
        , kernels_(kernels) {}

    void row(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const override {
        if (left >= right) {
            return;
        }
        const std::int32_t* first = columns_.first.data() + columns_.index(left);
        const std::int32_t* last = columns_.first.data() + columns_.index(right - 1);
        const int from = std::min(*first, *last);
        const int to = std::min(std::max(*first, *last) + columns_.taps, view_.width);
        const int count = (to - from) * 4;
        // One pixel more than the picture has, for the taps that are made up.
        scratch.combined.resize((static_cast<std::size_t>(view_.width) + 1) * 4);
        scratch.rows.clear();
        scratch.weights.clear();
        for (int tap = 0; tap < rows_.taps; ++tap) {
            if (rows_.line(y)[tap] != 0) {
                const auto row = static_cast<std::size_t>(rows_.first[rows_.index(y)] + tap);
                scratch.rows.push_back(view_.pixels + row * view_.stride + static_cast<std::size_t>(from) * 4);
                scratch.weights.push_back(rows_.line(y)[tap]);
            }
        }
        kernels_.combineRows(scratch.rows.data(), scratch.weights.data(), static_cast<int>(scratch.rows.size()), count,
                             scratch.combined.data() + static_cast<std::size_t>(from) * 4);
        kernels_.combineColumns(scratch.combined.data(), first, columns_.line(left), columns_.taps, right - left, out);
    }

private:
    std::shared_ptr<const Pyramid> pyramid_;
    PixelView view_;
    AxisTable columns_;
    AxisTable rows_;
    const Kernels& kernels_;
};

bool isNearWhole(double value) {
    return std::abs(value - std::round(value)) < 1e-3;
}

} // namespace

bool AxisMap::isWholePixelShift(PixelSize picture) const {
    return std::abs(originX) < 1e6 && std::abs(originY) < 1e6 && isNearWhole(originX) && isNearWhole(originY) &&
           std::abs((scaleX - 1) * picture.width) < 1e-3 && std::abs((scaleY - 1) * picture.height) < 1e-3;
}

Homography pictureToCanvas(const LayerDraw& draw, PixelSize picture) {
    const Rect& rect = draw.pictureRect;
    const AffineTransform placed{
        rect.size.width / picture.width, 0, 0, rect.size.height / picture.height, rect.origin.x, rect.origin.y};
    return Homography::fromAffine(placed).then(draw.map);
}

std::optional<AxisMap> axisMap(const Homography& pictureToCanvas) {
    const auto& m = pictureToCanvas.m;
    const AxisMap map{m[6] / m[8], m[7] / m[8], m[0] / m[8], m[4] / m[8]};
    const bool alongAxes = m[1] == 0 && m[2] == 0 && m[3] == 0 && m[5] == 0;
    if (!alongAxes || !pictureToCanvas.isFinite() || !std::isfinite(map.originX) || !std::isfinite(map.originY) ||
        !std::isnormal(map.scaleX) || !std::isnormal(map.scaleY)) {
        return std::nullopt;
    }
    return map;
}

std::unique_ptr<Sampler> makeStretchSampler(std::shared_ptr<const Pyramid> picture, const AxisMap& map,
                                            PictureFilter filter, const SampledArea& area, const Kernels& kernels) {
    return std::make_unique<StretchSampler>(std::move(picture), Axis(map.originX, map.scaleX, filter),
                                            Axis(map.originY, map.scaleY, filter), area, kernels);
}

std::unique_ptr<Sampler> makeSampler(const SharedBitmap& picture, const LayerDraw& draw, const SampledArea& area,
                                     const Kernels& kernels, Pyramids& pyramids) {
    if (!picture || picture->size().isEmpty() || area.left >= area.right || area.top >= area.bottom) {
        return nullptr;
    }
    const Homography toCanvas = pictureToCanvas(draw, picture->size());
    if (const auto along = axisMap(toCanvas)) {
        if (along->isWholePixelShift(picture->size())) {
            return makeCopySampler(picture, *along);
        }
        return makeStretchSampler(pyramids.of(picture), *along, draw.filter, area, kernels);
    }
    const auto toPicture = toCanvas.inverse();
    return toPicture ? makeWarpSampler(pyramids.of(picture), *toPicture, area, kernels) : nullptr;
}

} // namespace quillomat::raster
