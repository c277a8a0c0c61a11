#include "platform/graphics/raster/Profiles.h"
#include "platform/graphics/raster/Pyramid.h"
#include "platform/graphics/raster/Sampler.h"

#include <algorithm>
#include <cmath>

namespace quillomat::raster {

namespace {

constexpr int shortestSegment = 4;
constexpr double largestChange = 0.04;

// A pixel's square goes to a parallelogram on the picture, spanned by where a step right and a step down lead: r and d.
// Convolved with the bilinear reconstruction's tents it is the ideal footprint. What is drawn is a sheared separable
// filter with its exact profiles: rows are weighted by two boxes, as wide as the rows that r and d cross, and a tent;
// each row is shifted by k columns per row, k = Cuv / (Cvv + 2), which makes columns and rows uncorrelated (C being
// r rT + d dT, in units in which a box of width s has s² and a tent 2); columns by what the shear leaves of r and d.
struct Steps {
    double rightU = 0;
    double rightV = 0;
    double downU = 0;
    double downV = 0;
};

/// Two box widths.
struct Boxes {
    double a = 0;
    double b = 0;

    [[nodiscard]] double squared() const { return a * a + b * b; }
    [[nodiscard]] Boxes scaledTo(double squares) const {
        const double now = squared();
        const double scale = now > 0 ? std::sqrt(squares / now) : 0;
        return {a * scale, b * scale};
    }
};

/// What a box of squared width `squared` leaves for a picture halved to 1/`factor`: halving has averaged `factor`
/// samples already, and the tent is as much wider.
double squaredWidthAtLevel(double squared, double factor) {
    return factor == 1 ? squared : std::max(0.0, squared + 3 - 3 * factor * factor) / (factor * factor);
}

int levelForWidth(double width) {
    int level = 0;
    while (width > widestBoxes && level < 20) {
        width /= 2;
        ++level;
    }
    return level;
}

class WarpSampler final : public Sampler {
public:
    WarpSampler(std::shared_ptr<const Pyramid> picture, const Homography& canvasToPicture, const Kernels& kernels)
        : size_(picture->picture()->size()), pyramid_(std::move(picture)), map_(canvasToPicture), kernels_(kernels) {}

    void row(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const override {
        scratch.u.resize(longestSegment);
        scratch.v.resize(longestSegment);
        while (left < right) {
            const int length = lengthAt(y, left);
            const int block = left / length * length;
            const int end = std::min(right, block + length);
            segment(levelAt(block + length / 2.0, y + 0.5), y, left, end, out, scratch);
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

    /// How many pixels may share a footprint, which grows as w falls: over them w changes by a few hundredths. Blocks
    /// begin at multiples of their lengths, so that a pixel's block does not depend on how much of its row is drawn.
    [[nodiscard]] int lengthAt(int y, int x) const {
        const double rowW = (y + 0.5) * map_.m[5] + map_.m[8];
        int length = longestSegment;
        while (length > shortestSegment) {
            const double middle = x / length * length + length / 2;
            const double change = std::abs(map_.m[2] / (middle * map_.m[2] + rowW)) * length;
            if (change < largestChange) {
                break;
            }
            length /= 2;
        }
        return length;
    }

    [[nodiscard]] Steps stepsAt(double x, double y) const {
        const auto& m = map_.m;
        const double w = x * m[2] + y * m[5] + m[8];
        const double u = (x * m[0] + y * m[3] + m[6]) / w;
        const double v = (x * m[1] + y * m[4] + m[7]) / w;
        const double most = 4.0 * std::max(size_.width, size_.height);
        const auto bounded = [most](double value) {
            return value > -most ? (value < most ? value : most) : -most; // NaN becomes -most
        };
        return {bounded((m[0] - u * m[2]) / w), bounded((m[1] - v * m[2]) / w), bounded((m[3] - u * m[5]) / w),
                bounded((m[4] - v * m[5]) / w)};
    }

    [[nodiscard]] Level levelAt(double x, double y) const {
        const Steps step = stepsAt(x, y);
        const Boxes fullRows{std::abs(step.rightV), std::abs(step.downV)};
        const int levelV = levelForWidth(fullRows.a + fullRows.b);
        const double factorV = 1 << levelV;
        const Boxes rows = fullRows.scaledTo(squaredWidthAtLevel(fullRows.squared(), factorV));
        const double covariance = (step.rightU * step.rightV + step.downU * step.downV) / factorV;
        const double shear = covariance / (rows.squared() + 2);

        const Boxes sheared{std::abs(step.rightU - shear * step.rightV / factorV),
                            std::abs(step.downU - shear * step.downV / factorV)};
        const double squares = std::max(0.0, step.rightU * step.rightU + step.downU * step.downU - covariance * shear);
        const Boxes fullColumns = sheared.scaledTo(squares);
        const int levelU = levelForWidth(fullColumns.a + fullColumns.b);
        const double factorU = 1 << levelU;
        const Boxes columns = fullColumns.scaledTo(squaredWidthAtLevel(squares, factorU));

        Level level;
        level.scaleU = 1 / factorU;
        level.scaleV = 1 / factorV;
        level.footprint.picture = pyramid_->level(levelU, levelV);
        level.footprint.columns = &phaseTable(columns.a, columns.b);
        level.footprint.rows = &phaseTable(rows.a, rows.b);
        // Beyond 16 columns a row nothing is told apart that so few rows of taps could show.
        level.footprint.shear =
            static_cast<std::int32_t>(std::lround(std::clamp(shear / factorU, -16.0, 16.0) * 65536));
        return level;
    }

    void segment(const Level& level, int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const {
        const double centerY = y + 0.5;
        const auto& m = map_.m;
        const double toU = level.scaleU * phases;
        const double toV = level.scaleV * phases;
        ProjectedRow row;
        row.wStep = m[2];
        row.w0 = centerY * m[5] + m[8];
        // The centre of the first pixel, half a pixel from the edge, is position 0.
        row.uStep = m[0] * toU - row.wStep * (phases / 2);
        row.u0 = (centerY * m[3] + m[6]) * toU - row.w0 * (phases / 2);
        row.vStep = m[1] * toV - row.wStep * (phases / 2);
        row.v0 = (centerY * m[4] + m[7]) * toV - row.w0 * (phases / 2);
        // 32 pixels outside, any footprint sees the edge alone.
        row.highestU = (level.footprint.picture.width + 32.0) * phases;
        row.highestV = (level.footprint.picture.height + 32.0) * phases;
        kernels_.projectPositions(row, left, right - left, scratch.u.data(), scratch.v.data());
        kernels_.filterFootprint(level.footprint, scratch.u.data(), scratch.v.data(), right - left, out);
    }

    PixelSize size_;
    std::shared_ptr<const Pyramid> pyramid_;
    Homography map_;
    const Kernels& kernels_;
};

} // namespace

std::unique_ptr<Sampler> makeWarpSampler(std::shared_ptr<const Pyramid> picture, const Homography& canvasToPicture,
                                         const Kernels& kernels) {
    return std::make_unique<WarpSampler>(std::move(picture), canvasToPicture, kernels);
}

} // namespace quillomat::raster
