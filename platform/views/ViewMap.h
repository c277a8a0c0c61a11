// Where a view's bounds land: the projective maps from a view to its superview and up to its root.
#pragma once

#include "geometry/Homography.h"
#include "platform/views/View.h"

namespace quillomat {

enum class Depth {
    honoured, // the whole 4 x 4 transform, seen without its depth
    ignored,  // its affine part only
};

/// From the view's bounds to its superview's bounds, a scrolled superview's offset included. The view's own place
/// counts whether it has a superview or not.
[[nodiscard]] Homography mapToSuperview(const View& view, Depth depth = Depth::honoured);

/// From the view's bounds to the bounds of the tree's root; the root's own transform and position do not count.
[[nodiscard]] Homography mapToRoot(const View& view);

/// The innermost visible view under a point of the root's bounds that takes touches, topmost first; null when none
/// does.
[[nodiscard]] std::shared_ptr<View> hitTest(const std::shared_ptr<View>& root, Point point);

} // namespace quillomat
