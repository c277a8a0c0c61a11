// What a bitmap context records: draws as plain values, rasterised later, row band by row band.
#pragma once

#include "geometry/Homography.h"
#include "platform/foundation/Color.h"
#include "platform/foundation/Geometry.h"
#include "platform/graphics/Image.h"

#include <optional>
#include <vector>

namespace quillomat {

/// A rectangle whose corners are circular arcs of `radius`, in its own units. A negative radius counts as 0, one above
/// half the shorter side as that half.
struct RoundedRect {
    Rect rect;
    double radius = 0;

    friend bool operator==(const RoundedRect&, const RoundedRect&) = default;
};

/// A shape that cuts what is drawn; `map` takes its units to canvas pixels.
struct ClipShape {
    Homography map;
    RoundedRect shape;

    friend bool operator==(const ClipShape&, const ClipShape&) = default;
};

/// How a picture that does not lie on the canvas's pixels is filtered.
enum class PictureFilter {
    area,  // the average over the canvas pixel's square of the linearly interpolated picture
    smooth // along the axes: cubic interpolation, widened when shrinking; under any other map as `area`
};

/// One layer, drawn with one coverage: fill, then picture, then border, all cut to the same anti-aliased shape, the
/// whole at `opacity`. Everything is in layer units; `map` takes them to canvas pixels (y down, pixel centres at .5).
struct LayerDraw {
    Homography map;
    RoundedRect shape;
    std::optional<Color> fill;
    Image picture;
    Rect pictureRect; // where the whole picture lies, stretched; only the part inside `shape` shows
    PictureFilter filter = PictureFilter::area;
    double borderWidth = 0;
    Color borderColor;
    double opacity = 1;
    std::vector<ClipShape> clips;
};

/// The draws of one canvas, bottom to top. Immutable once its image is made.
class Recording {
public:
    Recording() = default;
    explicit Recording(PixelSize size) : size_(size) {}

    [[nodiscard]] PixelSize size() const { return size_; }
    [[nodiscard]] const std::vector<LayerDraw>& draws() const { return draws_; }
    void add(LayerDraw draw) { draws_.push_back(std::move(draw)); }
    /// Whether the draws prove, without rasterising, that every pixel of the canvas ends opaque.
    [[nodiscard]] bool provesOpaque() const;

private:
    PixelSize size_;
    std::vector<LayerDraw> draws_;
};

/// The same canvas with the draws of recordings inside recordings pulled out, where that changes nothing but the work:
/// a picture of a recording that lies on the canvas's pixels, is opaque as a layer and is cut along pixel edges.
[[nodiscard]] Recording flattened(const Recording& recording);

/// A picture of a recording: rasterised when its rows are asked for.
[[nodiscard]] Image imageOfRecording(Recording recording, double scale = 1);

} // namespace quillomat
