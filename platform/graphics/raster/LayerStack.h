// Layers over one another on one canvas: any box of its pixels can be drawn on its own.
#pragma once

#include "platform/graphics/raster/Layer.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quillomat::raster {

class LayerStack {
public:
    LayerStack() = default;
    explicit LayerStack(PixelSize canvas) : canvas_(canvas) {}

    [[nodiscard]] PixelSize canvas() const { return canvas_; }
    /// On top of the others.
    void add(std::shared_ptr<const Layer> layer) { layers_.push_back(std::move(layer)); }

    /// Replaces columns [left, right) of rows [first, first + count) in `out`, which begins with row `first` and holds
    /// whole rows of the canvas. May be called from several threads at once, for different rows, each
    /// with scratch memory that has served no other stack.
    void drawRows(int first, int count, const Span& columns, std::uint8_t* out, LayerScratch& scratch) const;
    /// Replaces the area's pixels in a picture of the whole canvas; `threads` 0 means one per core.
    void drawOn(Bitmap& picture, const SampledArea& area, int threads) const;

private:
    PixelSize canvas_;
    std::vector<std::shared_ptr<const Layer>> layers_;
};

} // namespace quillomat::raster
