#include "platform/views/ViewMap.h"

#include <algorithm>

namespace quillomat {

Homography mapToSuperview(const View& view, Depth depth) {
    const Rect bounds = view.bounds();
    const Point anchor = view.anchorPoint();
    Point position = view.position();
    if (const auto above = view.superview())
        position = position - above->scrollOffset();
    const Homography toAnchor = Homography::fromAffine(AffineTransform::translation(
        -bounds.origin.x - anchor.x * bounds.size.width, -bounds.origin.y - anchor.y * bounds.size.height));
    const Homography transform = depth == Depth::honoured ? Homography::fromTransform3D(view.layerTransform())
                                                          : Homography::fromAffine(view.transform());
    return toAnchor.then(transform).then(Homography::fromAffine(AffineTransform::translation(position.x, position.y)));
}

Homography mapToRoot(const View& view) {
    Homography map;
    std::shared_ptr<View> above = view.superview();
    for (const View* at = &view; above; at = above.get(), above = above->superview())
        map = map.then(mapToSuperview(*at));
    return map;
}

std::optional<Point> convertToRoot(const View& view, Point point) {
    return mapToRoot(view).project(point);
}

namespace {

bool contains(const Rect& rect, Point p) {
    return p.x >= rect.minX() && p.x < rect.maxX() && p.y >= rect.minY() && p.y < rect.maxY();
}

} // namespace

std::shared_ptr<View> hitTest(const std::shared_ptr<View>& root, Point point) {
    if (!root || root->hidden || !root->userInteractionEnabled || !(root->alpha > 0) ||
        !contains(root->bounds(), point))
        return nullptr;
    const auto& subviews = root->subviews();
    for (auto view = subviews.rbegin(); view != subviews.rend(); ++view) {
        const auto back = mapToSuperview(**view).inverse();
        const auto inside = back ? back->project(point) : std::nullopt;
        if (!inside)
            continue;
        if (auto hit = hitTest(*view, *inside))
            return hit;
    }
    return root;
}

} // namespace quillomat
