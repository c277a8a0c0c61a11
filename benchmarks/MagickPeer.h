// ImageMagick, wrapped: the steps that compose, for the composing benchmark and for the whole job.
#pragma once

#include "geometry/Quad.h"

// Its headers are not written for our warnings.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wuseless-cast"
#include <Magick++.h>
#pragma GCC diagnostic pop

namespace quillomat::benchmarks::magick {

inline void warp(Magick::Image& image, const Quad& quad, int side) {
    const auto w = static_cast<double>(image.columns());
    const auto h = static_cast<double>(image.rows());
    const double corners[16] = {
        0, 0, quad.topLeft.x,    quad.topLeft.y,    w, 0, quad.topRight.x,    quad.topRight.y,
        0, h, quad.bottomLeft.x, quad.bottomLeft.y, w, h, quad.bottomRight.x, quad.bottomRight.y};
    image.virtualPixelMethod(Magick::TransparentVirtualPixelMethod);
    image.artifact("distort:viewport", std::to_string(side) + "x" + std::to_string(side) + "+0+0");
    image.alphaChannel(Magick::SetAlphaChannel);
    image.distort(Magick::PerspectiveDistortion, 16, corners, /*bestfit=*/false);
}

inline void compose(Magick::Image& canvas, Magick::Image screenshot, const Magick::Image& frame,
                    const Magick::Image& glare, const Quad& quad, int side) {
    Magick::Geometry size(static_cast<std::size_t>(side), static_cast<std::size_t>(side));
    size.aspect(true);
    canvas.filterType(Magick::TriangleFilter);
    canvas.resize(size);
    warp(screenshot, quad, side);
    canvas.composite(screenshot, 0, 0, Magick::OverCompositeOp);
    canvas.composite(frame, 0, 0, Magick::OverCompositeOp);
    canvas.composite(glare, 0, 0, Magick::OverCompositeOp);
}

} // namespace quillomat::benchmarks::magick
