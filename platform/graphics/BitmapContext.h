// A bitmap context: a canvas in points at a scale that records what is drawn into it.
#pragma once

#include "platform/foundation/Geometry.h"
#include "platform/graphics/Image.h"
#include "platform/graphics/Recording.h"

#include <vector>

namespace quillomat {

class BitmapContext {
public:
    /// A canvas of `size` points at `scale` pixels a point, transparent. Fractional pixel sizes are rounded up; zero,
    /// negative, NaN and over-limit sizes make an empty canvas whose image is no picture.
    explicit BitmapContext(Size size, double scale = 1);

    [[nodiscard]] PixelSize pixelSize() const { return recording_.size(); }
    [[nodiscard]] double scale() const { return scale_; }

    void saveGState();
    void restoreGState();
    void translateCTM(double x, double y);
    void concatCTM(const AffineTransform& transform);
    /// The map from user units to canvas pixels.
    [[nodiscard]] Homography userToPixels() const;

    /// Stretches the whole picture over `rect` (user units).
    void drawImage(const Image& image, const Rect& rect);
    /// Records a layer whose maps already end in user units.
    void drawLayer(LayerDraw draw);

    [[nodiscard]] const Recording& recording() const { return recording_; }
    [[nodiscard]] Image makeImage() const;

private:
    double scale_ = 1;
    AffineTransform ctm_;
    std::vector<AffineTransform> saved_;
    Recording recording_;
};

/// Canvases that are open, innermost last: drawing goes into the current one.
class ContextStack {
public:
    void begin(Size size, double scale = 1);
    [[nodiscard]] BitmapContext& current();
    /// The current canvas's image, without closing it.
    [[nodiscard]] Image imageFromCurrent();
    void end();
    [[nodiscard]] bool isEmpty() const { return open_.empty(); }

private:
    std::vector<BitmapContext> open_;
};

} // namespace quillomat
