#include "EditorSession.h"

using namespace quillomat;
using namespace quillomat::testing;

namespace {

/// A canvas of 40 x 3000 whose screen is 20 wide and as tall as asked for.
Value tallMockup(int height) {
    Value record = withSize(withSize(Value::object({}), "finalFrame", 40, 3000), "frame", 60, 80);
    return withCorners(std::move(record), "F", "", quadOf(5, 10, 20, height))
        .withMember("noCorner", Value::boolean(true));
}

Image stripes(int width, int height) {
    return pictureOf(width, height, [](int, int y) { return y % 2 == 0 ? red : blue; });
}

TEST(EditorFlattening, boxOf2730IsFlattenedAtFullSize) {
    EditorSession session;
    session.mockup(tallMockup(2730));
    const auto editor = session.open();
    editor->inside1()->setImage(stripes(20, 2730));
    editor->generateImage();
    EXPECT_FALSE(session.world.log.contains("RESET OVER A BUNCH"));
    for (const int y : {10, 1000, 2738})
        EXPECT_EQ(pixelOf(session.state.pendingImage, 15, y), y % 2 == 0 ? red : blue) << y;
}

TEST(EditorFlattening, boxOf2731GoesTheHalfSizeWay) {
    EditorSession session;
    session.mockup(tallMockup(2731));
    const auto editor = session.open();
    editor->inside1()->setImage(stripes(20, 2731));
    editor->generateImage();
    EXPECT_TRUE(session.world.log.contains("RESET OVER A BUNCH"));
    EXPECT_EQ(session.linesStartingWith("Width of screenshotView"), 0U);
    for (const int y : {100, 1001, 2500}) {
        const Rgba mixed = pixelOf(session.state.pendingImage, 15, y);
        EXPECT_NEAR(mixed[0], 128, 40) << "one-pixel stripes do not survive half resolution, row " << y;
        EXPECT_NEAR(mixed[2], 128, 40);
        EXPECT_EQ(mixed[3], 255);
    }
    EXPECT_EQ(pixelOf(session.state.pendingImage, 4, 1000), clear);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 15, 2741), clear);
}

TEST(EditorFlattening, halfSizeWayIsBlackWhereTheWarpedScreenDoesNotCoverItsBox) {
    for (const int height : {2700, 2800}) {
        EditorSession session;
        const double bottom = 10.0 + height;
        Value record = withCorners(tallMockup(height), "F", "", {{25, 10}, {35, 10}, {5, bottom}, {35, bottom}});
        session.mockup(std::move(record));
        const auto editor = session.open();
        editor->background()->setImage(pictureOf(4, 4, green));
        editor->inside1()->setImage(pictureOf(4, 4, red));
        editor->generateImage();
        EXPECT_EQ(pixelOf(session.state.pendingImage, 8, 200), height < 2731 ? green : black) << height;
        EXPECT_EQ(pixelOf(session.state.pendingImage, 31, 200), red);
        EXPECT_EQ(pixelOf(session.state.pendingImage, 38, 200), green) << "outside the box";
    }
}

TEST(EditorFlattening, halfSizeWayKeepsTheRadiusOfAnUprightScreen) {
    EditorSession session;
    Value record = withSize(withSize(Value::object({}), "finalFrame", 220, 3000), "frame", 60, 80);
    session.mockup(withCorners(std::move(record), "F", "", quadOf(10, 10, 200, 2900)));
    const auto editor = session.open();
    editor->inside1()->setImage(pictureOf(4, 4, red));
    editor->generateImage();
    ASSERT_TRUE(session.world.log.contains("RESET OVER A BUNCH"));
    // An arc of radius 30 passes 8.8 pixels from the corner on the diagonal, one of radius 60 would pass 17.6.
    EXPECT_EQ(pixelOf(session.state.pendingImage, 14, 14), black);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 24, 24), red);
}

TEST(EditorFlattening, flatteningWritesItsLinesInOrder) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    const std::size_t before = session.world.log.lines().size();
    editor->generateImage();
    const auto lines = session.world.log.lines();
    const std::vector<std::string> added(lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end());
    EXPECT_EQ(added, (std::vector<std::string>{
                         "{{10, 20}, {40, 40}}", "Width of screenshotView 40.000000",
                         "Height of screenshotView 40.000000", "Vantrel : drawViewHierarchyInRect",
                         "::::Vantrel : drawViewHierarchyInRect finished and it was a success", "SIZE {40, 40}"}));
}

TEST(EditorFlattening, halvingWritesItsLinesInOrder) {
    EditorSession session;
    session.mockup(tallMockup(2731));
    const auto editor = session.open();
    const std::size_t before = session.world.log.lines().size();
    editor->generateImage();
    const auto lines = session.world.log.lines();
    const std::vector<std::string> added(lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end());
    EXPECT_EQ(added,
              (std::vector<std::string>{"{{5, 10}, {20, 2731}}", "RESET OVER A BUNCH", "IMAGE {{0, 0}, {10, 1365.5}}",
                                        "WIDTH 0", "Height 0", "MoveFrameY 10", "MoveFrameX 5",
                                        "moveableview {{0, 0}, {10, 1365.5}}", "SIZE {10, 1365.5}"}));
}

TEST(EditorFlattening, negativeOriginsAreLoggedTruncatedTowardsZero) {
    EditorSession session;
    session.mockup(withCorners(tallMockup(2800), "F", "", quadOf(-6, -8, 20, 2800)));
    session.open()->generateImage();
    EXPECT_TRUE(session.world.log.contains("MoveFrameX -6"));
    EXPECT_TRUE(session.world.log.contains("MoveFrameY -8"));
}

TEST(EditorFlattening, boxAtTheOriginHasNothingToMove) {
    EditorSession session;
    session.mockup(withCorners(tallMockup(2800), "F", "", quadOf(0, 0, 20, 2800)));
    session.open()->generateImage();
    EXPECT_TRUE(session.world.log.contains("MoveFrameX 0"));
    EXPECT_TRUE(session.world.log.contains("MoveFrameY 0"));
}

TEST(EditorFlattening, failedDrawingIsLoggedAndChangesNothingElse) {
    EditorSession session;
    session.mockup(withCorners(plainMockup(), "F", "", quadOf(20, 20, 0, 0)));
    const auto editor = session.open();
    editor->background()->setImage(pictureOf(4, 4, blue));
    editor->generateImage();
    EXPECT_TRUE(session.world.log.contains("::::Vantrel : drawViewHierarchyInRect finished and failed"));
    EXPECT_EQ(pixelOf(session.state.pendingImage, 30, 40), blue);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 1, 1), green);
}

TEST(EditorFlattening, flatPictureIsHeldByNoViewAndTheScreensHaveLeftTheRoot) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    editor->generateImage();
    EXPECT_TRUE(std::dynamic_pointer_cast<ImageView>(editor->contentView()));
    EXPECT_FALSE(editor->contentView()->superview());
    EXPECT_FALSE(editor->inside1()->isDescendantOf(*editor->view()));
    EXPECT_FALSE(editor->inside2()->isDescendantOf(*editor->view()));
    EXPECT_EQ(editor->contentView()->frame(), makeRect(0, 0, 40, 40));
}

TEST(EditorFlattening, enormousScreenBoxIsLeftOutAndReported) {
    EditorSession session;
    session.mockup(withCorners(plainMockup(), "F", "", quadOf(-1e9, -1e9, 2e9, 2e9)));
    const auto editor = session.open();
    editor->background()->setImage(pictureOf(4, 4, blue));
    editor->generateImage();
    EXPECT_EQ(pixelOf(session.state.pendingImage, 30, 40), blue);
    EXPECT_NE(editor->compositionProblem().find("cannot be drawn"), std::string::npos);
}

TEST(EditorFlattening, screenScaleChangesIntermediatePicturesAndNotTheCanvas) {
    EditorSession session;
    session.world.platform.screen.scale = 2;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->inside1()->setImage(pictureOf(4, 4, red));
    editor->generateImage();
    EXPECT_EQ(session.state.pendingImage.pixelSize(), (PixelSize{60, 80}));
    EXPECT_EQ(pixelOf(session.state.pendingImage, 30, 40), red);
    EXPECT_EQ(editor->imageFromView(editor->phone()).pixelSize(), (PixelSize{450, 600}));
}

TEST(EditorFlattening, drawingAScreenWithoutAnOpenCanvasDoesNothing) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->drawerNewScreenImage(0, 0, 10, 10);
    EXPECT_TRUE(session.world.log.contains("SIZE {150, 150}"));
}

TEST(EditorFlattening, viewBecomesAPictureOfItsBoundsAboutItsOwnCentre) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    const auto view = std::make_shared<View>(makeRect(0, 0, 10, 8));
    view->backgroundColor = Color::pureRed();
    Image picture = editor->imageFromView(view);
    EXPECT_EQ(picture.pixelSize(), (PixelSize{10, 8}));
    EXPECT_EQ(pixelOf(picture, 0, 0), red);
    EXPECT_EQ(pixelOf(picture, 9, 7), red);
    EXPECT_TRUE(session.world.log.contains("SIZE {10, 8}"));

    view->setTransform(AffineTransform::scale(0.5, 0.5));
    picture = editor->imageFromView(view);
    EXPECT_EQ(pixelOf(picture, 1, 1), clear);
    EXPECT_EQ(pixelOf(picture, 5, 4), red);
}

TEST(EditorFlattening, noViewGivesNoPicture) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    EXPECT_TRUE(editor->imageFromView(nullptr).pixelSize().isEmpty());
    EXPECT_TRUE(session.world.log.contains("SIZE {0, 0}"));
}

TEST(EditorFlattening, testImageIsATenthOfTheCanvasOnRedAndStays) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    const std::size_t before = editor->view()->subviews().size();
    const Image picture = pictureOf(2, 2, blue);
    editor->showTestImage(picture);
    ASSERT_EQ(editor->view()->subviews().size(), before + 1);
    const auto preview = std::dynamic_pointer_cast<ImageView>(editor->view()->subviews().back());
    ASSERT_TRUE(preview);
    EXPECT_EQ(preview->image(), picture);
    EXPECT_EQ(preview->bounds().size, (Size{60, 80}));
    EXPECT_EQ(preview->center(), (Point{-970, -960})) << "scaled about its centre";
    EXPECT_EQ(preview->transform(), AffineTransform::scale(0.1, 0.1));
    EXPECT_EQ(preview->backgroundColor, Color::pureRed());
}

} // namespace
