#include "platform/graphics/raster/Profiles.h"
#include "platform/graphics/raster/Pyramid.h"
#include "platform/graphics/raster/Sampler.h"

#include <algorithm>
#include <cmath>

namespace quillomat::raster {

namespace {

constexpr int segmentLength = 64;

// A pixel's square goes to a parallelogram on the picture, whose box profile convolved with the bilinear
// reconstruction is the ideal footprint. Its second moments C (in units in which a box of width s has s²) are kept by a
// sheared separable filter: rows weighted by a box of width √Cvv and a tent, shifted by Cuv / (Cvv + 2) columns a row
// (the tent has a moment of 2), columns by a box of what is left of Cuu and a tent.
struct Moments {
    double uu = 0;
    double uv = 0;
    double vv = 0;
};

/// What a box of squared width `squared` leaves for a picture halved to 1/`factor`: halving has averaged `factor`
/// samples already, and the tent is as much wider.
double squaredWidthAtLevel(double squared, double factor) {
    return factor == 1 ? squared : std::max(0.0, squared + 3 - 3 * factor * factor) / (factor * factor);
}

int levelForWidth(double width) {
    int level = 0;
    while (width > widest && level < 20) {
        width /= 2;
        ++level;
    }
    return level;
}

class WarpSampler final : public Sampler {
public:
    WarpSampler(SharedBitmap picture, const Homography& canvasToPicture, const Kernels& kernels)
        : size_(picture->size()), pyramid_(std::move(picture)), map_(canvasToPicture), kernels_(kernels) {}

    void row(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const override {
        scratch.u.resize(segmentLength);
        scratch.v.resize(segmentLength);
        while (left < right) {
            // Stretches end at fixed columns, so that what a pixel looks like does not depend on its row's extent.
            const int end = std::min(right, (left / segmentLength + 1) * segmentLength);
            segment(y, left, end, out, scratch);
            out += static_cast<std::ptrdiff_t>(end - left) * 4;
            left = end;
        }
    }

private:
    struct Level {
        Footprint footprint;
        double scaleU = 1;
        double scaleV = 1;
    };

    [[nodiscard]] Moments momentsAt(double x, double y) const {
        const auto& m = map_.m;
        const double w = x * m[2] + y * m[5] + m[8];
        const double u = (x * m[0] + y * m[3] + m[6]) / w;
        const double v = (x * m[1] + y * m[4] + m[7]) / w;
        const double ux = (m[0] - u * m[2]) / w;
        const double uy = (m[3] - u * m[5]) / w;
        const double vx = (m[1] - v * m[2]) / w;
        const double vy = (m[4] - v * m[5]) / w;
        const double most = 4.0 * std::max(size_.width, size_.height);
        const auto bounded = [most](double value) {
            return value > -most ? (value < most ? value : most) : -most; // NaN becomes -most
        };
        const double a = bounded(ux), b = bounded(uy), c = bounded(vx), d = bounded(vy);
        return {a * a + b * b, a * c + b * d, c * c + d * d};
    }

    [[nodiscard]] Level levelAt(double x, double y) const {
        const Moments moments = momentsAt(x, y);
        const int levelV = levelForWidth(std::sqrt(moments.vv));
        const double factorV = 1 << levelV;
        const double vv = squaredWidthAtLevel(moments.vv, factorV);
        const double shear = moments.uv / factorV / (vv + 2);
        const double uu = std::max(0.0, moments.uu - moments.uv / factorV * shear);
        const int levelU = levelForWidth(std::sqrt(uu));
        const double factorU = 1 << levelU;

        Level level;
        level.scaleU = 1 / factorU;
        level.scaleV = 1 / factorV;
        level.footprint.picture = pyramid_.level(levelU, levelV);
        const PhaseTable columns = phaseTable(std::sqrt(squaredWidthAtLevel(uu, factorU)));
        const PhaseTable rows = phaseTable(std::sqrt(vv));
        level.footprint.columnWeights = columns.columns;
        level.footprint.columnTaps = columns.taps;
        level.footprint.rowWeights = rows.rows;
        level.footprint.rowTaps = rows.taps;
        // Beyond 32 columns a row nothing is told apart that 12 rows of taps could show.
        level.footprint.shear =
            static_cast<std::int32_t>(std::lround(std::clamp(shear / factorU, -32.0, 32.0) * 65536));
        return level;
    }

    void segment(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const {
        const double centerY = y + 0.5;
        const Level level = levelAt((left + right) / 2.0, centerY);
        const auto& m = map_.m;
        const double rowU = centerY * m[3] + m[6];
        const double rowV = centerY * m[4] + m[7];
        const double rowW = centerY * m[5] + m[8];
        const auto position = [](double value, double scale, int extent) {
            // Far outside, all taps read the edge: 32 pixels suffice for any footprint. NaN goes to the start.
            const double highest = (extent + 32) * 64.0;
            const double at = std::floor((value * scale - 0.5) * 64 + 0.5);
            return static_cast<std::int32_t>(at > -32 * 64.0 ? (at < highest ? at : highest) : -32 * 64.0);
        };
        for (int x = left; x < right; ++x) {
            const double centerX = x + 0.5;
            const double inverse = 1 / (centerX * m[2] + rowW);
            const auto i = static_cast<std::size_t>(x - left);
            scratch.u[i] = position((centerX * m[0] + rowU) * inverse, level.scaleU, level.footprint.picture.width);
            scratch.v[i] = position((centerX * m[1] + rowV) * inverse, level.scaleV, level.footprint.picture.height);
        }
        kernels_.filterFootprint(level.footprint, scratch.u.data(), scratch.v.data(), right - left, out);
    }

    PixelSize size_;
    Pyramid pyramid_;
    Homography map_;
    const Kernels& kernels_;
};

} // namespace

std::unique_ptr<Sampler> makeWarpSampler(SharedBitmap picture, const Homography& canvasToPicture,
                                         const Kernels& kernels) {
    return std::make_unique<WarpSampler>(std::move(picture), canvasToPicture, kernels);
}

} // namespace quillomat::raster
