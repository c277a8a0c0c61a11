#include "platform/graphics/raster/Sampler.h"

#include "platform/graphics/raster/Pyramid.h"

#include <cmath>

namespace quillomat::raster {

namespace {

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

std::unique_ptr<Sampler> makeSampler(const SharedBitmap& picture, const LayerDraw& draw, const SampledArea& area,
                                     const Kernels& kernels, Pyramids& pyramids) {
    if (!picture || picture->size().isEmpty() || area.left >= area.right || area.top >= area.bottom) {
        return nullptr;
    }
    const Homography toCanvas = pictureToCanvas(draw, picture->size());
    if (const auto along = axisMap(toCanvas)) {
        if (along->isWholePixelShift(picture->size())) {
            return makeCopySampler(PictureRows(picture), *along);
        }
        return makeStretchSampler(pyramids.of(picture), *along, draw.filter, area, kernels);
    }
    const auto toPicture = toCanvas.inverse();
    return toPicture ? makeWarpSampler(pyramids.of(picture), *toPicture, area, kernels) : nullptr;
}

} // namespace quillomat::raster
