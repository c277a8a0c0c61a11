// The retained tree: a view knows its geometry, its layer's look, and its subviews; nothing about drawing.
#pragma once

#include "platform/foundation/Color.h"
#include "platform/foundation/Geometry.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillomat {

class GestureRecognizer;

enum class ContentMode { scaleToFill, scaleAspectFit, scaleAspectFill };

/// Owned by its superview (and by whoever holds it); a child holds a weak link up. One thread.
///
/// Geometry: `position` is where the anchor point (in units of the bounds, default the middle) stands in the
/// superview; the layer's 4 x 4 transform acts about it. The 2-D transform is the affine reading of that one store:
/// setting either replaces the other.
class View : public std::enable_shared_from_this<View> {
public:
    View() = default;
    explicit View(const Rect& frame) { setFrame(frame); }
    virtual ~View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    [[nodiscard]] virtual std::string className() const { return "UIView"; }

    // Geometry ------------------------------------------------------------------------------------------------------
    [[nodiscard]] Rect bounds() const { return bounds_; }
    void setBounds(const Rect& bounds);
    [[nodiscard]] Point position() const { return position_; }
    [[nodiscard]] Point center() const { return position_; }
    void setCenter(Point center);
    [[nodiscard]] Point anchorPoint() const { return anchorPoint_; }
    /// Changes the anchor point alone: the position stays, so an untransformed view moves.
    void setAnchorPoint(Point anchorPoint);
    [[nodiscard]] const Transform3D& layerTransform() const { return transform_; }
    void setLayerTransform(const Transform3D& transform);
    [[nodiscard]] AffineTransform transform() const { return transform_.affine(); }
    void setTransform(const AffineTransform& transform);

    /// The bounding box of the transformed bounds, in the superview; of a warped view, that of its corners in front of
    /// the viewer. Exactly the box last given to `fitToBox` or `moveBoundingBox` while nothing else touched the
    /// geometry.
    [[nodiscard]] Rect frame() const;
    /// Bounds size and position of an untransformed view, whose frame it then is exactly. On a transformed view it
    /// still sets bounds size and position as if there were no transform; warped views are placed by the two operations
    /// below.
    void setFrame(const Rect& frame);
    /// Bounds size and anchored position from `box`, then the transform: the transformed corners are the caller's
    /// business, `box` is their bounding box and is kept as the frame exactly.
    void fitToBox(const Rect& box, const Transform3D& transform);
    /// Moves and stretches the view as it stands transformed, so that its bounding box becomes `box`; the bounds stay.
    /// A view whose box has no extent on an axis is only moved along it.
    void moveBoundingBox(const Rect& box);

    // Layer ---------------------------------------------------------------------------------------------------------
    double alpha = 1;
    std::optional<Color> backgroundColor;
    double cornerRadius = 0;
    bool masksToBounds = false;
    double borderWidth = 0;
    Color borderColor = Color::black();
    bool hidden = false;

    // Everything else -----------------------------------------------------------------------------------------------
    ContentMode contentMode = ContentMode::scaleToFill;
    bool userInteractionEnabled = true;
    bool translatesAutoresizingMaskIntoConstraints = true;
    int tag = 0;
    std::string accessibilityIdentifier;
    std::vector<std::shared_ptr<GestureRecognizer>> gestureRecognizers;
    /// A recogniser stands on one view: it leaves its former one.
    void addGestureRecognizer(const std::shared_ptr<GestureRecognizer>& recognizer);
    /// Whether touches reach it: interaction is enabled and nothing is hidden, here and everywhere above.
    [[nodiscard]] bool takesInteraction() const;
    /// How far the subviews are scrolled up and to the left inside the bounds.
    [[nodiscard]] virtual Point scrollOffset() const { return {}; }

    // Hierarchy -----------------------------------------------------------------------------------------------------
    [[nodiscard]] std::shared_ptr<View> superview() const { return superview_.lock(); }
    [[nodiscard]] const std::vector<std::shared_ptr<View>>& subviews() const { return subviews_; }
    /// Topmost; leaves any former superview first. Adding a view to itself or below itself does nothing.
    void addSubview(const std::shared_ptr<View>& view);
    void insertSubviewBelow(const std::shared_ptr<View>& view, const std::shared_ptr<View>& sibling);
    void removeFromSuperview();
    [[nodiscard]] bool isDescendantOf(const View& other) const;

    /// "<UIView: 0x...; frame = {{x, y}, {w, h}}; ...>": the frame is always part of it.
    [[nodiscard]] std::string description() const;

private:
    void place(const Rect& frame);

    Rect bounds_;
    Point position_;
    Point anchorPoint_{0.5, 0.5};
    Transform3D transform_;
    std::optional<Rect> box_; // the frame exactly as it was given
    std::weak_ptr<View> superview_;
    std::vector<std::shared_ptr<View>> subviews_;
};

/// A point of `view`'s bounds in the coordinates of the tree's root; nothing where a transform has no image for it.
[[nodiscard]] std::optional<Point> convertToRoot(const View& view, Point point);

} // namespace quillomat
