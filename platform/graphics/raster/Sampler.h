// Where a layer's picture pixels come from: a copy, a stretch along the axes, or a projected footprint.
#pragma once

#include "geometry/Homography.h"
#include "platform/graphics/Recording.h"
#include "platform/graphics/raster/Kernels.h"
#include "platform/graphics/raster/Pyramid.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quillomat::raster {

/// Working memory of one thread, grown as samplers need it.
struct SamplerScratch {
    std::vector<std::int16_t> combined;
    std::vector<const std::uint8_t*> rows;
    std::vector<std::int16_t> weights;
    std::vector<std::int32_t> u;
    std::vector<std::int32_t> v;
};

/// Pixels of canvas rows, premultiplied, as if the picture went on beyond its edges for ever. Thread-safe.
class Sampler {
public:
    virtual ~Sampler() = default;
    /// Writes canvas pixels [left, right) of row y.
    virtual void row(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const = 0;
    /// The pixels in place, where no arithmetic is needed and all of them exist; null otherwise.
    [[nodiscard]] virtual const std::uint8_t* direct(int, int, int) const { return nullptr; }
};

/// A map along the axes: canvas position = origin + scale x picture position, per axis, in pixels.
struct AxisMap {
    double originX = 0;
    double originY = 0;
    double scaleX = 1;
    double scaleY = 1;

    /// The map is the identity but for a whole-pixel shift, to a thousandth of a pixel over the whole picture.
    [[nodiscard]] bool isWholePixelShift(PixelSize picture) const;
};

/// How picture pixels come to lie on the canvas.
[[nodiscard]] Homography pictureToCanvas(const LayerDraw& draw, PixelSize picture);
/// That map, where it runs along the axes.
[[nodiscard]] std::optional<AxisMap> axisMap(const Homography& pictureToCanvas);

/// The canvas columns and rows that the sampler will be asked for.
struct SampledArea {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

[[nodiscard]] std::unique_ptr<Sampler> makeCopySampler(SharedBitmap picture, const AxisMap& map);
[[nodiscard]] std::unique_ptr<Sampler> makeStretchSampler(std::shared_ptr<const Pyramid> picture, const AxisMap& map,
                                                          PictureFilter filter, const SampledArea& area,
                                                          const Kernels& kernels);
[[nodiscard]] std::unique_ptr<Sampler> makeWarpSampler(std::shared_ptr<const Pyramid> picture,
                                                       const Homography& canvasToPicture, const Kernels& kernels);
/// The cheapest of them that draws the picture right; null where nothing can be seen of it.
[[nodiscard]] std::unique_ptr<Sampler> makeSampler(const SharedBitmap& picture, const LayerDraw& draw,
                                                   const SampledArea& area, const Kernels& kernels, Pyramids& pyramids);
/// Keeps what `sampler` gave for the area, and gives it again. One row is for one thread at a time.
[[nodiscard]] std::unique_ptr<Sampler> makeKeepingSampler(std::unique_ptr<Sampler> sampler, const SampledArea& area);

} // namespace quillomat::raster
