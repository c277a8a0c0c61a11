// One layer made ready for drawing: its coverages, its colours, and where its picture's pixels come from.
#pragma once

#include "platform/graphics/Recording.h"
#include "platform/graphics/raster/Coverage.h"
#include "platform/graphics/raster/Sampler.h"
#include "platform/graphics/raster/StreamedPicture.h"

#include <array>
#include <optional>

namespace quillomat::raster {

using Pixel = std::array<std::uint8_t, 4>;

/// Premultiplied, components cut to 0 ... 1; NaN counts as 0.
[[nodiscard]] Pixel premultiplied(const Color& color);

/// Working memory of one thread, grown as it is needed.
struct LayerScratch {
    CoverageScratch shape;
    CoverageScratch inner;
    CoverageScratch picture;
    CoverageScratch pictureInner;
    std::vector<std::uint8_t> pixels;
    std::vector<std::uint8_t> mixed;
    SamplerScratch sampler;
};

class Layer {
public:
    /// Nothing where the layer cannot be seen. A picture is decoded only when some of it can be. `stream` is its
    /// picture where that is decoded while it is drawn, and outlives the layer.
    [[nodiscard]] static std::optional<Layer> make(const LayerDraw& draw, PixelSize canvas, const Kernels& kernels,
                                                   Pyramids& pyramids, const StreamedPicture* stream = nullptr);

    /// What it may touch.
    [[nodiscard]] const SampledArea& area() const { return area_; }
    /// From now on, pixels that had to be worked out are kept, for a layer that will be drawn again.
    void keepPixels();
    /// The pixels of row y that the layer replaces, whatever lies below.
    [[nodiscard]] Span hiddenBelow(int y, LayerScratch& scratch) const;
    /// Draws the part of row y in `window` over the canvas's row, `hidden` apart: what a layer above replaces need not
    /// be drawn.
    void drawRow(int y, const Span& window, const Span& hidden, std::uint8_t* canvasRow, LayerScratch& scratch) const;

private:
    Layer() = default;
    void makePicture(const LayerDraw& draw, const Polygon& outline, PixelSize canvas, Pyramids& pyramids,
                     const StreamedPicture* stream);
    [[nodiscard]] bool isOpaqueInside() const;
    void drawPlainRow(int y, const CoverageRow& row, const Span& part, std::uint8_t* canvasRow,
                      LayerScratch& scratch) const;
    void drawSparseRow(int y, const CoverageRow& row, const Span& part, std::uint8_t* canvasRow,
                       LayerScratch& scratch) const;
    void drawMixedRow(int y, const CoverageRow& row, const Span& part, std::uint8_t* canvasRow,
                      LayerScratch& scratch) const;
    [[nodiscard]] const std::uint8_t* pixelsOfRow(int y, int left, int right, LayerScratch& scratch) const;

    const Kernels* kernels_ = nullptr;
    SampledArea area_;
    Coverage shape_;
    std::optional<Coverage> inner_;        // within the border, where there is one
    std::optional<Coverage> picture_;      // where the picture leaves parts of the shape free
    std::optional<Coverage> pictureInner_; // both
    std::optional<Pixel> fill_;
    Pixel border_{};
    std::unique_ptr<Sampler> sampler_;
    const SparseRows* sparse_ = nullptr; // the sampler's, where the layer is nothing but its picture
    SampledArea sampled_;
    bool pictureIsOpaque_ = false;
    bool keepsPixels_ = false;
};

} // namespace quillomat::raster
