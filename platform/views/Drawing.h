// Draws a view tree into a bitmap context: one road for the preview and for the finished picture.
#pragma once

#include "platform/graphics/BitmapContext.h"
#include "platform/views/View.h"

namespace quillomat {

/// Draws `view` and everything below it, stretched from its bounds to `rect` (user units of the context), honouring the
/// 4 x 4 transforms of the views below; the view's own transform and position do not count. True when the view has an
/// extent and could be drawn.
bool drawViewHierarchy(const View& view, const Rect& rect, BitmapContext& context);

/// Draws the view's layer tree at the context's current transform, in bounds coordinates, ignoring 3-D transforms:
/// layers below are placed by the affine part of theirs.
void renderInContext(const View& view, BitmapContext& context);

} // namespace quillomat
