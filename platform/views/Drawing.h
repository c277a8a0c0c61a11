// Draws a view tree into a bitmap context: one road for the preview and for the finished picture.
#pragma once

#include "platform/graphics/BitmapContext.h"
#include "platform/views/View.h"

namespace quillomat {

// What is drawn: background colours, pictures, borders. Texts of labels, buttons and text views are not: a host lays
// them over the picture in its own type. A border lies inside the bounds and above the subviews. The corner radius
// always rounds the background and the border; picture and subviews are cut by it, and by the bounds, only with
// `masksToBounds`. Hidden and wholly transparent views draw nothing; a translucent view fades as one picture with
// everything below it.

/// Draws `view` and everything below it, stretched from its bounds to `rect` (user units of the context), honouring the
/// 4 x 4 transforms of the views below; the view's own transform and position do not count. True when the view has an
/// extent and could be drawn; false for empty or endless bounds, rectangles and canvases, and then nothing is drawn.
bool drawViewHierarchy(const View& view, const Rect& rect, BitmapContext& context);

/// Draws the view's layer tree at the context's current transform, in bounds coordinates, ignoring 3-D transforms:
/// layers below are placed by the affine part of theirs.
void renderInContext(const View& view, BitmapContext& context);

} // namespace quillomat
