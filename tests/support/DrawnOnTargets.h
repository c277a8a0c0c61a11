// Draws a recording by plain loops and by the kernels of every kind of processor that this one can stand in for.
#pragma once

#include "DrawnRecordings.h"
#include "EveryTarget.h"
#include "platform/graphics/DrawnPictures.h"
#include "platform/graphics/raster/LayerStack.h"

namespace quillomat::testing {

inline Bitmap drawnWith(const raster::Kernels& kernels, const Recording& recording) {
    const PixelSize canvas = recording.size();
    raster::LayerStack stack(canvas);
    raster::Pyramids pyramids;
    const Recording plain = withDecodedPictures(flattened(recording), 1);
    for (const LayerDraw& draw : plain.draws()) {
        if (auto layer = raster::Layer::make(draw, canvas, kernels, pyramids)) {
            stack.add(std::make_shared<const raster::Layer>(std::move(*layer)));
        }
    }
    Bitmap bitmap(canvas);
    stack.drawOn(bitmap, {0, 0, canvas.width, canvas.height}, 1);
    return bitmap;
}

/// `take` gets the kind's name and the picture.
template <typename Take> void drawOnEveryTarget(const Recording& recording, const Take& take) {
    take("plain loops", drawnWith(raster::scalarKernels(), recording));
    onEveryTarget([&](const char* target) { take(target, rasterize(recording, 1)); });
}

} // namespace quillomat::testing
