// Fits a view to four corners: the Quadrilateral extension of View.
#pragma once

#include "geometry/Quad.h"
#include "platform/foundation/Log.h"
#include "platform/views/View.h"

namespace quillomat {

/// Places `view` at the corners' bounding box and sets the projective transform that takes its bounds' corners to them
/// (corners in the superview's coordinates). The view's anchor point must be (0, 0) beforehand. The box goes to the
/// log.
void transformToFitQuadTopLeft(View& view, Point topLeft, Point topRight, Point bottomLeft, Point bottomRight,
                               Log& log);

} // namespace quillomat
