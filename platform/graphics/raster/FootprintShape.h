// What is drawn for the square of a pixel that has been projected onto a picture.
#pragma once

#include "platform/graphics/raster/Kernels.h"

#include <optional>

namespace quillomat::raster {

/// Where a step right and a step down on the canvas lead on the picture, in its pixels.
///
/// A pixel's square goes to a parallelogram on the picture, spanned by where a step right and a step down lead: r and
/// d. Convolved with the bilinear reconstruction's tents it is the ideal footprint. What is drawn is a sheared
/// separable filter with its exact profiles: rows are weighted by two boxes, as wide as the rows that r and d cross,
/// and a tent; each row is shifted by k columns per row, k = Cuv / (Cvv + 2), which makes columns and rows uncorrelated
/// (C being r rT + d dT, in units in which a box of width s has s² and a tent 2); columns by what the shear leaves of r
/// and d.
struct Steps {
    double rightU = 0;
    double rightV = 0;
    double downU = 0;
    double downV = 0;

    [[nodiscard]] double covariance() const { return rightU * rightV + downU * downV; }
    [[nodiscard]] double shear() const { return covariance() / (rightV * rightV + downV * downV + 2); }
    [[nodiscard]] Steps ofParts(PixelParts parts) const {
        return {rightU / parts.across, rightV / parts.across, downU / parts.down, downV / parts.down};
    }
};

/// The parts that a pixel is averaged from; as few as do.
[[nodiscard]] PixelParts partsFor(const Steps& whole);

/// A footprint along the line of the pixels' row; null where the picture is to be filtered otherwise. Its columns, its
/// picture, and what is to be fetched ahead, are left open.
[[nodiscard]] std::optional<LineFootprint> lineFootprintFor(const Steps& step);
/// The columns of such a footprint of so many parts.
[[nodiscard]] LineFootprint::Columns lineColumnsFor(const Steps& step, int parts);

} // namespace quillomat::raster
