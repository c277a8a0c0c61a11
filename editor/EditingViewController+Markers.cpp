// The corner markers: making them, dragging them, and fitting the screens to their centres.
#include "editor/EditingViewController.h"

#include "geometry/fitting/Quadrilateral.h"
#include "platform/views/Platform.h"

namespace quillomat {

namespace {

constexpr double markerSide = 20;

Point centerOf(const std::shared_ptr<View>& marker) {
    return marker ? marker->center() : Point{};
}

std::string descriptionOf(const std::shared_ptr<View>& marker) {
    return marker ? marker->description() : "(null)";
}

} // namespace

std::shared_ptr<View> EditingViewController::addControl(Point addControl, const std::shared_ptr<View>& toView) {
    const auto marker = std::make_shared<View>(makeRect(addControl.x, addControl.y, markerSide, markerSide));
    marker->backgroundColor = Color::pureRed(state_.designMode ? 0.5 : 0.0);
    marker->userInteractionEnabled = state_.designMode;
    toView->addSubview(marker);
    marker->addGestureRecognizer(std::make_shared<PanGestureRecognizer>(
        [weak = std::weak_ptr<EditingViewController>(self())](PanGestureRecognizer& gesture) {
            if (const auto editor = weak.lock())
                editor->dragMarker(gesture);
        }));
    return marker;
}

void EditingViewController::dragMarker(PanGestureRecognizer& gesture) {
    // Measured in the root view and applied in the container: the two agree only while the container is not scaled.
    const Point translation = gesture.translation();
    if (const auto marker = gesture.view())
        marker->setCenter(marker->center() + translation);
    gesture.setTranslation({0, 0});
    updateTranform();
}

void EditingViewController::updateTranform() {
    const bool hasSecondScreen = definition().hasSecondScreen();
    if (state_.designMode) {
        log(cornerReport(markers_, ""));
        if (hasSecondScreen)
            log(cornerReport(markers2_, "2"));
    }
    fit(contentView_, markers_);
    if (hasSecondScreen)
        fit(contentView2_, markers2_);
    if (state_.designMode)
        updateButtons();
}

std::string EditingViewController::cornerReport(const MarkerSet& markers, std::string_view suffix) const {
    const auto line = [suffix](const char* corner, const std::shared_ptr<View>& marker) {
        return std::string("\r\r").append(corner).append(suffix).append(":").append(descriptionOf(marker));
    };
    return line("TOPLEFT", markers.topLeft) + "," + line("TOPRIGHT", markers.topRight) + "," +
           line("BOTTOMLEFT", markers.bottomLeft) + "," + line("BOTTOMRIGHT", markers.bottomRight);
}

void EditingViewController::fit(const std::shared_ptr<View>& view, const MarkerSet& markers) {
    if (view) {
        transformToFitQuadTopLeft(*view, centerOf(markers.topLeft), centerOf(markers.topRight),
                                  centerOf(markers.bottomLeft), centerOf(markers.bottomRight), platform().log);
    }
}

} // namespace quillomat
