#include "geometry/fitting/Quadrilateral.h"

namespace quillomat {

void transformToFitQuadTopLeft(View& view, Point topLeft, Point topRight, Point bottomLeft, Point bottomRight,
                               Log& log) {
    const Rect box = boundingBoxForQuadTR(topRight, topLeft, bottomLeft, bottomRight);
    log.write(stringFromRect(box));
    // Relative to the box, the entries stay as small as the box however far away it stands.
    const Rect bounds{view.bounds().origin, box.size};
    view.fitToBox(box, rectToQuad(bounds, topLeft - box.origin, topRight - box.origin, bottomLeft - box.origin,
                                  bottomRight - box.origin));
}

} // namespace quillomat
