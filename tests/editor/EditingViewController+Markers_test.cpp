#include "EditorSession.h"

using namespace quillomat;
using namespace quillomat::testing;

namespace {

PanGestureRecognizer& panOf(const View& marker) {
    return dynamic_cast<PanGestureRecognizer&>(*marker.gestureRecognizers.at(0));
}

TEST(EditorMarkers, markersCentreIsTenPointsInFromItsStoredCorner) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    const auto container = std::make_shared<View>();
    const auto marker = editor->addControl({100, 40}, container);
    EXPECT_EQ(marker->frame(), makeRect(100, 40, 20, 20));
    EXPECT_EQ(marker->center(), (Point{110, 50}));
    EXPECT_EQ(container->subviews().back(), marker);
    ASSERT_EQ(marker->gestureRecognizers.size(), 1U);
}

TEST(EditorMarkers, outsideDesignModeMarkersAreInvisibleAndIgnoreTouches) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    const auto marker = editor->topLeftControl();
    EXPECT_EQ(marker->backgroundColor, Color::pureRed(0));
    EXPECT_FALSE(marker->userInteractionEnabled);
    panOf(*marker).move({5, 5});
    EXPECT_EQ(marker->center(), (Point{75, 75}));
}

TEST(EditorMarkers, outsideDesignModeTheCoordinateReportNeverAppears) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    editor->updateTranform();
    EXPECT_EQ(session.linesStartingWith("\r\rTOPLEFT"), 0U);
}

TEST(EditorMarkers, inDesignModeMarkersAreRedAndTakeTouches) {
    EditorSession session(/*designMode=*/true);
    session.mockup(plainMockup());
    const auto marker = session.open()->topLeftControl();
    EXPECT_EQ(marker->backgroundColor, Color::pureRed(0.5));
    EXPECT_TRUE(marker->userInteractionEnabled);
}

TEST(EditorMarkers, draggingMovesTheMarkerAndRefitsTheScreen) {
    EditorSession session(/*designMode=*/true);
    session.mockup(plainMockup());
    const auto editor = session.open();
    panOf(*editor->topLeftControl()).move({-15, -5});
    panOf(*editor->topLeftControl()).move({-10, 0});
    EXPECT_EQ(editor->topLeftControl()->center(), (Point{50, 70}));
    EXPECT_EQ(panOf(*editor->topLeftControl()).translation(), (Point{0, 0}))
        << "each call applies only the movement since";
    EXPECT_EQ(editor->inside1()->frame(), makeRect(50, 70, 175, 155));
}

TEST(EditorMarkers, dragMeasuredInTheRootIsAppliedUnscaledInAScaledContainerAsItStands) {
    EditorSession session(/*designMode=*/true);
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->scaleUP(2);
    panOf(*editor->topLeftControl()).move({10, 10});
    EXPECT_EQ(editor->topLeftControl()->center(), (Point{85, 85}))
        << "ten container points, though they look like twenty";
}

TEST(EditorMarkers, draggingASecondScreensMarkerRefitsTheSecondScreen) {
    EditorSession session(/*designMode=*/true);
    session.mockup(doubleMockup());
    const auto editor = session.open();
    panOf(*editor->bottomRightControl2()).move({10, 20});
    EXPECT_EQ(editor->inside2()->frame(), makeRect(200, 200, 60, 70));
}

TEST(EditorMarkers, reportListsTheFourMarkersWithTheirFrames) {
    EditorSession session(/*designMode=*/true);
    session.mockup(plainMockup());
    const auto editor = session.open();
    const std::string expected = "\r\rTOPLEFT:" + editor->topLeftControl()->description() +
                                 ",\r\rTOPRIGHT:" + editor->topRightControl()->description() +
                                 ",\r\rBOTTOMLEFT:" + editor->bottomLeftControl()->description() +
                                 ",\r\rBOTTOMRIGHT:" + editor->bottomRightControl()->description();
    EXPECT_TRUE(session.world.log.contains(expected));
    EXPECT_NE(expected.find("{{65, 65}, {20, 20}}"), std::string::npos);
    EXPECT_EQ(session.linesStartingWith("\r\rTOPLEFT2:"), 0U);
}

TEST(EditorMarkers, twoScreensReportTwoLines) {
    EditorSession session(/*designMode=*/true);
    session.mockup(doubleMockup());
    const auto editor = session.open();
    const std::string expected = "\r\rTOPLEFT2:" + editor->topLeftControl2()->description() +
                                 ",\r\rTOPRIGHT2:" + editor->topRightControl2()->description() +
                                 ",\r\rBOTTOMLEFT2:" + editor->bottomLeftControl2()->description() +
                                 ",\r\rBOTTOMRIGHT2:" + editor->bottomRightControl2()->description();
    EXPECT_TRUE(session.world.log.contains(expected));
}

TEST(EditorMarkers, fittingAgainWithTheSameMarkersChangesNothing) {
    EditorSession session;
    session.mockup(withCorners(plainMockup(), "", "", {{40, 30}, {220, 60}, {60, 250}, {200, 210}}));
    const auto editor = session.open();
    const Rect box = editor->inside1()->frame();
    const Transform3D transform = editor->inside1()->layerTransform();
    editor->updateTranform();
    EXPECT_EQ(editor->inside1()->frame(), box);
    EXPECT_EQ(editor->inside1()->layerTransform(), transform);
}

TEST(EditorMarkers, dragOfAMarkerWhoseEditorHasGoneDoesNothing) {
    EditorSession session(/*designMode=*/true);
    session.mockup(plainMockup());
    const auto marker = session.open()->topLeftControl();
    session.navigation.pop();
    panOf(*marker).move({5, 5});
    EXPECT_EQ(marker->center(), (Point{75, 75}));
}

} // namespace
