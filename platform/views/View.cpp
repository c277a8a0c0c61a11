#include "platform/views/View.h"

#include "platform/foundation/Conversions.h"
#include "platform/views/GestureRecognizer.h"
#include "platform/views/ViewMap.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <limits>
#include <sstream>

namespace quillomat {

namespace {

/// The box of the rectangle's corners under a map; nothing when none of them has an image.
std::optional<Rect> boxOf(const Rect& rect, const Homography& map) {
    constexpr double endless = std::numeric_limits<double>::infinity();
    double minX = endless, minY = endless, maxX = -endless, maxY = -endless;
    const std::array<Point, 4> corners{Point{rect.minX(), rect.minY()}, Point{rect.maxX(), rect.minY()},
                                       Point{rect.minX(), rect.maxY()}, Point{rect.maxX(), rect.maxY()}};
    for (const Point corner : corners) {
        const auto image = map.project(corner);
        if (!image)
            continue;
        minX = std::min(minX, image->x), maxX = std::max(maxX, image->x);
        minY = std::min(minY, image->y), maxY = std::max(maxY, image->y);
    }
    if (!(minX <= maxX))
        return std::nullopt;
    return makeRect(minX, minY, maxX - minX, maxY - minY);
}

/// The transform followed by a stretch of what it gives.
Transform3D stretched(const Transform3D& t, double sx, double sy) {
    Transform3D r = t;
    r.m11 *= sx, r.m21 *= sx, r.m31 *= sx, r.m41 *= sx;
    r.m12 *= sy, r.m22 *= sy, r.m32 *= sy, r.m42 *= sy;
    return r;
}

} // namespace

void View::setBounds(const Rect& bounds) {
    bounds_ = bounds;
    box_.reset();
}

void View::setCenter(Point center) {
    position_ = center;
    box_.reset();
}

void View::setAnchorPoint(Point anchorPoint) {
    anchorPoint_ = anchorPoint;
    box_.reset();
}

void View::setLayerTransform(const Transform3D& transform) {
    transform_ = transform;
    box_.reset();
}

void View::setTransform(const AffineTransform& transform) {
    setLayerTransform(Transform3D::fromAffine(transform));
}

Rect View::frame() const {
    if (box_)
        return *box_;
    const Point origin{position_.x - anchorPoint_.x * bounds_.size.width,
                       position_.y - anchorPoint_.y * bounds_.size.height};
    if (transform_ == Transform3D{})
        return {origin, bounds_.size};
    // In the superview's coordinates whether it is scrolled or not, as the position is.
    const Rect aboutAnchor{{origin.x - position_.x, origin.y - position_.y}, bounds_.size};
    const auto box = boxOf(aboutAnchor, Homography::fromTransform3D(transform_));
    if (!box)
        return {position_, {}};
    return {box->origin + position_, box->size};
}

/// Bounds size and anchored position, whatever the transform.
void View::place(const Rect& frame) {
    bounds_.size = frame.size;
    position_ = {frame.origin.x + anchorPoint_.x * frame.size.width,
                 frame.origin.y + anchorPoint_.y * frame.size.height};
}

void View::setFrame(const Rect& frame) {
    place(frame);
    box_.reset();
    if (transform_ == Transform3D{})
        box_ = frame;
}

void View::fitToBox(const Rect& box, const Transform3D& transform) {
    place(box);
    transform_ = transform;
    box_ = box;
}

void View::moveBoundingBox(const Rect& box) {
    const Rect old = frame();
    const bool wide = old.size.width > 0;
    const bool tall = old.size.height > 0;
    const double sx = wide ? box.size.width / old.size.width : 1;
    const double sy = tall ? box.size.height / old.size.height : 1;
    // A point of the superview goes to (point - old origin) * s + new origin; the stretch goes behind the transform,
    // the rest into the position.
    position_ = {(position_.x - old.origin.x) * sx + box.origin.x, (position_.y - old.origin.y) * sy + box.origin.y};
    transform_ = stretched(transform_, sx, sy);
    box_ = Rect{box.origin, {wide ? box.size.width : old.size.width, tall ? box.size.height : old.size.height}};
}

void View::addGestureRecognizer(const std::shared_ptr<GestureRecognizer>& recognizer) {
    if (!recognizer)
        return;
    if (const auto former = recognizer->view())
        std::erase(former->gestureRecognizers, recognizer);
    recognizer->view_ = weak_from_this();
    gestureRecognizers.push_back(recognizer);
}

bool View::takesInteraction() const {
    if (!userInteractionEnabled || hidden)
        return false;
    const auto above = superview();
    return !above || above->takesInteraction();
}

void View::addSubview(const std::shared_ptr<View>& view) {
    assert(!weak_from_this().expired() && "a superview is owned by a shared_ptr");
    if (!view || isDescendantOf(*view))
        return;
    view->removeFromSuperview();
    subviews_.push_back(view);
    view->superview_ = weak_from_this();
}

void View::insertSubviewBelow(const std::shared_ptr<View>& view, const std::shared_ptr<View>& sibling) {
    if (!view || view == sibling)
        return;
    const auto kept = view; // `view` and `sibling` may be elements of `subviews_`
    const auto siblingKept = sibling;
    addSubview(kept);
    if (subviews_.empty() || subviews_.back() != kept)
        return;
    const auto place = std::find(subviews_.begin(), subviews_.end(), siblingKept);
    if (place != subviews_.end())
        std::rotate(place, subviews_.end() - 1, subviews_.end());
}

void View::removeFromSuperview() {
    const auto above = superview();
    if (!above)
        return;
    const auto self = shared_from_this(); // the superview may be the last owner
    superview_.reset();
    std::erase(above->subviews_, self);
}

bool View::isDescendantOf(const View& other) const {
    if (this == &other)
        return true;
    const auto above = superview();
    return above && above->isDescendantOf(other);
}

std::string View::description() const {
    std::ostringstream text;
    text << '<' << className() << ": 0x" << std::hex << reinterpret_cast<std::uintptr_t>(this) << std::dec
         << "; frame = " << stringFromRect(frame());
    if (!(transform_ == Transform3D{}))
        text << "; transformed";
    if (alpha != 1)
        text << "; alpha = " << numberText(alpha);
    if (hidden)
        text << "; hidden";
    if (!userInteractionEnabled)
        text << "; no interaction";
    if (tag != 0)
        text << "; tag = " << tag;
    if (!accessibilityIdentifier.empty())
        text << "; identifier = " << accessibilityIdentifier;
    text << '>';
    return text.str();
}

} // namespace quillomat
