#include "EditorSession.h"

#include "platform/views/Drawing.h"

using namespace quillomat;
using namespace quillomat::testing;

namespace {

Value withGlare(Value record, const std::string& name, const Rect& rect) {
    return record.withMember("overlay", Value::string(name))
        .withMember("glareX", Value::integer(static_cast<std::int64_t>(rect.origin.x)))
        .withMember("glareY", Value::integer(static_cast<std::int64_t>(rect.origin.y)))
        .withMember("glareWidth", Value::integer(static_cast<std::int64_t>(rect.size.width)))
        .withMember("glareHeight", Value::integer(static_cast<std::int64_t>(rect.size.height)));
}

/// A 200 x 200 canvas whose screen at (20, 20, 160, 160) is large enough for a radius of 30.
Value roomyMockup() {
    Value record = withSize(withSize(Value::object({}), "finalFrame", 200, 200), "frame", 60, 80);
    record = withCorners(std::move(record), "F", "2", quadOf(20, 20, 160, 160));
    return withCorners(std::move(record), "F", "", quadOf(20, 20, 160, 160));
}

/// A canvas of 40 x 3000 whose screen is 20 wide and as tall as asked for.
Value tallMockup(int height) {
    Value record = withSize(withSize(Value::object({}), "finalFrame", 40, 3000), "frame", 60, 80);
    return withCorners(std::move(record), "F", "", quadOf(5, 10, 20, height))
        .withMember("noCorner", Value::boolean(true));
}

Image stripes(int width, int height) {
    return pictureOf(width, height, [](int, int y) { return y % 2 == 0 ? red : blue; });
}

Image composed(EditorSession& session, const std::string& name = "frame.png") {
    session.open(name)->generateImage();
    return session.state.pendingImage;
}

TEST(EditorComposition, layersLieInOrderBackgroundScreenOneScreenTwoFrameGlare) {
    EditorSession session;
    Value record = withCorners(doubleMockup(), "F", "", quadOf(2, 20, 40, 40));
    session.mockup(withGlare(record, "glare.png", makeRect(0, 0, 3, 30)));
    session.world.putResourceImage("glare.png", tinyPng(3, 30, magenta));
    const auto editor = session.open();
    editor->background()->setImage(pictureOf(6, 8, blue));
    editor->inside1()->setImage(pictureOf(4, 4, red));
    editor->inside2()->setImage(pictureOf(4, 4, yellow));
    session.state.glareOn = true;
    editor->generateImage();
    const Image picture = session.state.pendingImage;
    EXPECT_EQ(picture.pixelSize(), (PixelSize{60, 80}));
    EXPECT_EQ(pixelOf(picture, 55, 75), blue) << "background";
    EXPECT_EQ(pixelOf(picture, 20, 40), red) << "screen 1 over the background";
    EXPECT_EQ(pixelOf(picture, 41, 55), yellow) << "screen 2 over screen 1";
    EXPECT_EQ(pixelOf(picture, 50, 60), yellow);
    EXPECT_EQ(pixelOf(picture, 3, 40), green) << "frame over screen 1";
    EXPECT_EQ(pixelOf(picture, 1, 1), magenta) << "glare over the frame";
    EXPECT_EQ(pixelOf(picture, 2, 29), magenta) << "glare over screen and frame";
    EXPECT_EQ(pixelOf(picture, 2, 30), green) << "and only in its rectangle";
}

TEST(EditorComposition, pixelsThatNoLayerCoversStayTransparent) {
    EditorSession session;
    session.mockup(plainMockup());
    const Image picture = composed(session);
    EXPECT_EQ(pixelOf(picture, 55, 75), clear);
    EXPECT_EQ(pixelOf(picture, 30, 40), black) << "a screen without a screenshot is black";
}

TEST(EditorComposition, backgroundIsStretchedOverTheCanvas) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->background()->setImage(pictureOf(60, 2, [](int x, int) { return x < 30 ? red : blue; }));
    editor->generateImage();
    EXPECT_EQ(pixelOf(session.state.pendingImage, 20, 79), red);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 40, 79), blue);
}

TEST(EditorComposition, screenshotFillsItsCornersExactly) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->inside1()->setImage(
        pictureOf(40, 40, [](int x, int y) { return x < 20 ? (y < 20 ? red : blue) : (y < 20 ? yellow : magenta); }));
    editor->generateImage();
    const Image picture = session.state.pendingImage;
    EXPECT_EQ(pixelOf(picture, 10, 20), red);
    EXPECT_EQ(pixelOf(picture, 49, 20), yellow);
    EXPECT_EQ(pixelOf(picture, 10, 59), blue);
    EXPECT_EQ(pixelOf(picture, 49, 59), magenta);
    EXPECT_EQ(pixelOf(picture, 29, 39), red);
    EXPECT_EQ(pixelOf(picture, 9, 20), clear);
    EXPECT_EQ(pixelOf(picture, 10, 19), clear);
    EXPECT_EQ(pixelOf(picture, 50, 59), clear);
    EXPECT_EQ(pixelOf(picture, 49, 60), clear);
}

TEST(EditorComposition, radiusIsThirtyWhenTheDefinitionHasNone) {
    EditorSession session;
    session.mockup(roomyMockup());
    const auto editor = session.open();
    editor->inside1()->setImage(pictureOf(4, 4, red));
    editor->generateImage();
    EXPECT_EQ(editor->inside1()->cornerRadius, 30);
    // The arc of radius 30 passes 8.8 pixels from the corner on the diagonal.
    EXPECT_EQ(pixelOf(session.state.pendingImage, 26, 26), clear);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 30, 30), red);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 52, 20), red) << "the straight edge begins";
    EXPECT_EQ(pixelOf(session.state.pendingImage, 22, 178), clear) << "every corner";
}

TEST(EditorComposition, presentRadiusOfZeroIsZero) {
    EditorSession session;
    session.mockup(roomyMockup().withMember("cornerRadius", Value::integer(0)));
    const auto editor = session.open();
    editor->inside1()->setImage(pictureOf(4, 4, red));
    editor->generateImage();
    EXPECT_EQ(pixelOf(session.state.pendingImage, 20, 20), red);
}

TEST(EditorComposition, noCornerKeepsSquareCornersAndTurnsTheFlagsOff) {
    EditorSession session;
    session.mockup(
        roomyMockup().withMember("noCorner", Value::boolean(true)).withMember("doubleImage", Value::boolean(true)));
    const auto editor = session.open();
    editor->inside1()->masksToBounds = true;
    editor->inside2()->masksToBounds = true;
    editor->inside1()->setImage(pictureOf(4, 4, red));
    editor->inside2()->setImage(pictureOf(4, 4, red));
    editor->generateImage();
    EXPECT_FALSE(editor->inside1()->masksToBounds);
    EXPECT_FALSE(editor->inside2()->masksToBounds);
    EXPECT_EQ(editor->inside1()->cornerRadius, 5) << "no radius is set: the preview's stays";
    EXPECT_EQ(pixelOf(session.state.pendingImage, 20, 20), red);
}

TEST(EditorComposition, oneScreenSwitchesTheSecondViewsClippingAndNotTheFirstsOnPurpose) {
    for (const bool cut : {false, true}) {
        EditorSession session;
        session.mockup(roomyMockup());
        const auto editor = session.open();
        editor->inside1()->masksToBounds = cut;
        editor->inside1()->setImage(pictureOf(4, 4, red));
        editor->generateImage();
        EXPECT_EQ(editor->inside1()->masksToBounds, cut) << "as it stood before the composition";
        EXPECT_EQ(editor->inside1()->cornerRadius, 30);
        EXPECT_TRUE(editor->inside2()->masksToBounds);
        EXPECT_EQ(editor->inside2()->cornerRadius, 0);
        EXPECT_EQ(pixelOf(session.state.pendingImage, 24, 24), cut ? clear : red);
    }
}

TEST(EditorComposition, oneScreenWithNoCornerLeavesTheFirstViewsClippingAlone) {
    EditorSession session;
    session.mockup(roomyMockup().withMember("noCorner", Value::boolean(true)));
    const auto editor = session.open();
    editor->inside1()->masksToBounds = true;
    editor->inside2()->masksToBounds = true;
    editor->generateImage();
    EXPECT_TRUE(editor->inside1()->masksToBounds);
    EXPECT_FALSE(editor->inside2()->masksToBounds);
}

TEST(EditorComposition, twoScreensAreBothRoundedAndCut) {
    EditorSession session;
    session.mockup(roomyMockup().withMember("doubleImage", Value::boolean(true)));
    const auto editor = session.open();
    editor->inside1()->masksToBounds = false;
    editor->generateImage();
    for (const auto& screen : {editor->inside1(), editor->inside2()}) {
        EXPECT_TRUE(screen->masksToBounds);
        EXPECT_EQ(screen->cornerRadius, 30);
    }
}

TEST(EditorComposition, secondScreenGoesThroughTheFirstSlotAndStaysInTheSecondFromThePreview) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    editor->generateImage();
    EXPECT_EQ(editor->contentView2(), editor->inside2());
    EXPECT_EQ(editor->inside2()->frame(), makeRect(40, 50, 20, 20));
    EXPECT_NE(editor->contentView(), editor->inside1()) << "flattened";
}

TEST(EditorComposition, secondScreenIsDrawnStraightWithoutAFlatteningOfItsOwn) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    editor->inside2()->setImage(pictureOf(20, 20, [](int x, int) { return x < 10 ? yellow : blue; }));
    editor->generateImage();
    EXPECT_EQ(session.linesStartingWith("Vantrel : drawViewHierarchyInRect"), 1U);
    EXPECT_EQ(session.linesStartingWith("SIZE"), 1U);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 49, 60), yellow);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 50, 60), blue);
    EXPECT_EQ(editor->inside2()->layerTransform(), Transform3D()) << "straight corners need no warp";
}

TEST(EditorComposition, warpedScreenLandsOnItsQuad) {
    EditorSession session;
    const Quad quad{{20, 40}, {160, 20}, {40, 180}, {180, 150}};
    session.mockup(withCorners(roomyMockup(), "F", "", quad).withMember("noCorner", Value::boolean(true)));
    const auto editor = session.open();
    editor->inside1()->setImage(
        pictureOf(40, 40, [](int x, int y) { return x < 20 ? (y < 20 ? red : blue) : (y < 20 ? yellow : magenta); }));
    editor->generateImage();
    const Image picture = session.state.pendingImage;
    const auto near = [&](Point corner) { // 8 % of the way to the quad's middle
        const Point middle{100, 97};
        return pixelOf(picture, static_cast<int>(corner.x + (middle.x - corner.x) * 0.08),
                       static_cast<int>(corner.y + (middle.y - corner.y) * 0.08));
    };
    EXPECT_EQ(near(quad.topLeft), red);
    EXPECT_EQ(near(quad.topRight), yellow);
    EXPECT_EQ(near(quad.bottomLeft), blue);
    EXPECT_EQ(near(quad.bottomRight), magenta);
    EXPECT_EQ(pixelOf(picture, 22, 22), clear) << "inside the box, outside the quad";
    EXPECT_EQ(pixelOf(picture, 176, 176), clear);
}

TEST(EditorComposition, boxOf2730IsFlattenedAtFullSize) {
    EditorSession session;
    session.mockup(tallMockup(2730));
    const auto editor = session.open();
    editor->inside1()->setImage(stripes(20, 2730));
    editor->generateImage();
    EXPECT_FALSE(session.world.log.contains("RESET OVER A BUNCH"));
    for (const int y : {10, 1000, 2738})
        EXPECT_EQ(pixelOf(session.state.pendingImage, 15, y), y % 2 == 0 ? red : blue) << y;
}

TEST(EditorComposition, boxOf2731GoesTheHalfSizeWay) {
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

TEST(EditorComposition, halfSizeWayIsBlackWhereTheWarpedScreenDoesNotCoverItsBox) {
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

TEST(EditorComposition, flatteningWritesItsLinesInOrder) {
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

TEST(EditorComposition, halvingWritesItsLinesInOrder) {
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

TEST(EditorComposition, nearlyEqualTakesTheSignedMaximumSoNegativeOriginsAlwaysDiffer) {
    EditorSession session;
    session.mockup(withCorners(tallMockup(2800), "F", "", quadOf(-6, -8, 20, 2800)));
    session.open()->generateImage();
    EXPECT_TRUE(session.world.log.contains("MoveFrameX -6"));
    EXPECT_TRUE(session.world.log.contains("MoveFrameY -8"));
}

TEST(EditorComposition, boxAtTheOriginHasNothingToMove) {
    EditorSession session;
    session.mockup(withCorners(tallMockup(2800), "F", "", quadOf(0, 0, 20, 2800)));
    session.open()->generateImage();
    EXPECT_TRUE(session.world.log.contains("MoveFrameX 0"));
    EXPECT_TRUE(session.world.log.contains("MoveFrameY 0"));
}

TEST(EditorComposition, failedDrawingIsLoggedAndChangesNothingElse) {
    EditorSession session;
    session.mockup(withCorners(plainMockup(), "F", "", quadOf(20, 20, 0, 0)));
    const auto editor = session.open();
    editor->background()->setImage(pictureOf(4, 4, blue));
    editor->generateImage();
    EXPECT_TRUE(session.world.log.contains("::::Vantrel : drawViewHierarchyInRect finished and failed"));
    EXPECT_EQ(pixelOf(session.state.pendingImage, 30, 40), blue);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 1, 1), green);
}

TEST(EditorComposition, frameSmallerThanTheCanvasLeavesBackgroundAtTheRightAndBelow) {
    EditorSession session;
    session.mockup(withSize(plainMockup(), "frame", 30, 40));
    session.world.putResourceImage("frame.png", tinyPng(60, 80, green));
    const auto editor = session.open();
    editor->background()->setImage(pictureOf(4, 4, blue));
    editor->generateImage();
    EXPECT_EQ(pixelOf(session.state.pendingImage, 29, 39), green) << "not stretched to the canvas";
    EXPECT_EQ(pixelOf(session.state.pendingImage, 30, 10), blue);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 2, 70), blue);
}

TEST(EditorComposition, frameLargerThanTheCanvasIsCutByIt) {
    EditorSession session;
    session.mockup(withSize(plainMockup(), "frame", 120, 160));
    const Image picture = composed(session);
    EXPECT_EQ(picture.pixelSize(), (PixelSize{60, 80}));
    EXPECT_EQ(pixelOf(picture, 5, 70), green) << "the four-pixel edge is eight wide now";
}

TEST(EditorComposition, largeNameDrawsThePlainFrameWithTheFullNamesDefinition) {
    EditorSession session;
    session.catalogue(
        {{"frame.png", plainMockup()}, {"frame-large.png", withSize(plainMockup(), "finalFrame", 90, 100)}});
    session.frame("frame.png");
    const Image picture = composed(session, "frame-large.png");
    EXPECT_EQ(picture.pixelSize(), (PixelSize{90, 100}));
    EXPECT_EQ(pixelOf(picture, 1, 1), green);
}

TEST(EditorComposition, emptyOrUnknownGlareNameDrawsNoGlare) {
    for (const char* name : {"", "unknown.png"}) {
        EditorSession session;
        session.mockup(withGlare(plainMockup(), name, makeRect(0, 0, 60, 80)));
        session.state.glareOn = true;
        const Image picture = composed(session);
        EXPECT_EQ(pixelOf(picture, 30, 5), clear) << name;
        EXPECT_EQ(pixelOf(picture, 1, 1), green) << name;
    }
}

TEST(EditorComposition, glareIsFoundInTheDocumentsDirectoryToo) {
    EditorSession session;
    session.mockup(withGlare(plainMockup(), "glare.png", makeRect(50, 70, 5, 5)));
    session.world.putDocument("glare.png", tinyPng(1, 1, magenta));
    session.state.glareOn = true;
    const Image picture = composed(session);
    EXPECT_EQ(pixelOf(picture, 52, 72), magenta);
    EXPECT_EQ(pixelOf(picture, 55, 75), clear);
}

TEST(EditorComposition, glareIsNotDrawnWhileTheSwitchIsOff) {
    EditorSession session;
    session.mockup(withGlare(plainMockup(), "glare.png", makeRect(50, 70, 5, 5)));
    session.world.putResourceImage("glare.png", tinyPng(1, 1, magenta));
    EXPECT_EQ(pixelOf(composed(session), 52, 72), clear);
}

TEST(EditorComposition, missingFrameIsNotDrawnAndTheRestIs) {
    EditorSession session;
    session.catalogue({{"frame.png", plainMockup()}});
    const auto editor = session.open();
    editor->inside1()->setImage(pictureOf(4, 4, red));
    editor->generateImage();
    EXPECT_EQ(pixelOf(session.state.pendingImage, 1, 1), clear);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 30, 40), red);
    EXPECT_FALSE(session.alert()) << "and nobody is told on the screen";
    EXPECT_NE(editor->compositionProblem().find("frame.png"), std::string::npos);
}

TEST(EditorComposition, generatedPictureWaitsAndStandsWhereTheFrameWas) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->generateImage();
    const Image first = session.state.pendingImage;
    EXPECT_TRUE(first);
    EXPECT_EQ(editor->phone()->image(), first);
    editor->generateImage();
    EXPECT_NE(session.state.pendingImage, first) << "a later one replaces it";
}

TEST(EditorComposition, flatPictureIsHeldByNoViewAndTheScreensHaveLeftTheRoot) {
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

TEST(EditorComposition, composingReadsTheDefinitionUnderTheNameAsItStands) {
    EditorSession session;
    session.mockup(plainMockup());
    EXPECT_EQ(composed(session, "frame-large.png").pixelSize(), PixelSize{}) << "there is no entry of that name";
}

TEST(EditorComposition, impossibleCanvasGivesNoPictureAndNoCrash) {
    const std::pair<int, int> sizes[] = {{0, 0}, {-60, 80}, {60, 0}, {2147483647, 2147483647}, {2000000000, 1}};
    for (const auto& [width, height] : sizes) {
        EditorSession session;
        session.mockup(withSize(doubleMockup(), "finalFrame", width, height));
        const auto editor = session.open();
        editor->inside1()->setImage(pictureOf(4, 4, red));
        session.state.glareOn = true;
        editor->generateImage();
        EXPECT_FALSE(session.state.pendingImage) << width << " x " << height;
        EXPECT_FALSE(editor->phone()->image());
        EXPECT_NE(editor->compositionProblem().find("cannot be made"), std::string::npos);
    }
}

TEST(EditorComposition, enormousScreenBoxIsLeftOutAndReported) {
    EditorSession session;
    session.mockup(withCorners(plainMockup(), "F", "", quadOf(-1e9, -1e9, 2e9, 2e9)));
    const auto editor = session.open();
    editor->background()->setImage(pictureOf(4, 4, blue));
    editor->generateImage();
    EXPECT_EQ(pixelOf(session.state.pendingImage, 30, 40), blue);
    EXPECT_NE(editor->compositionProblem().find("cannot be drawn"), std::string::npos);
}

TEST(EditorComposition, cornersThatEncloseNoConvexAreaAreReportedAndStillComposed) {
    const Quad quads[] = {{{10, 20}, {50, 60}, {10, 60}, {50, 20}},  // crossed
                          {{10, 20}, {50, 20}, {10, 60}, {20, 30}},  // a corner inside: it crosses its own horizon
                          {{10, 20}, {30, 20}, {10, 60}, {50, 20}},  // three corners on a line
                          {{10, 10}, {10, 10}, {10, 10}, {10, 10}}}; // none at all
    for (const Quad& quad : quads) {
        EditorSession session;
        session.mockup(withCorners(plainMockup(), "F", "", quad));
        const auto editor = session.open();
        editor->inside1()->setImage(pictureOf(4, 4, red));
        editor->generateImage();
        EXPECT_EQ(pixelOf(session.state.pendingImage, 1, 1), green) << "the frame is there";
        EXPECT_EQ(editor->compositionProblem(), "the corners of screen 1 do not enclose a convex area");
    }
}

TEST(EditorComposition, mirroredScreenIsNoProblem) {
    EditorSession session;
    session.mockup(withCorners(plainMockup(), "F", "", {{50, 20}, {10, 20}, {50, 60}, {10, 60}}));
    const auto editor = session.open();
    editor->inside1()->setImage(pictureOf(2, 2, [](int x, int) { return x == 0 ? red : blue; }));
    editor->generateImage();
    EXPECT_EQ(editor->compositionProblem(), "");
    EXPECT_EQ(pixelOf(session.state.pendingImage, 45, 40), red);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 15, 40), blue);
}

TEST(EditorComposition, wholeCompositionHasNoProblem) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    EXPECT_EQ(editor->compositionProblem(), "");
    editor->generateImage();
    EXPECT_EQ(editor->compositionProblem(), "");
}

TEST(EditorComposition, screenScaleChangesIntermediatePicturesAndNotTheCanvas) {
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

TEST(EditorDesignMode, compositionHoldsBackgroundFrameAndGlareOnly) {
    EditorSession session(/*designMode=*/true);
    session.mockup(withGlare(doubleMockup(), "glare.png", makeRect(50, 70, 5, 5)));
    session.world.putResourceImage("glare.png", tinyPng(1, 1, magenta));
    session.state.glareOn = true;
    const auto editor = session.open();
    editor->background()->setImage(pictureOf(4, 4, blue));
    editor->inside1()->setImage(pictureOf(4, 4, red));
    editor->inside2()->setImage(pictureOf(4, 4, red));
    editor->generateImage();
    EXPECT_EQ(pixelOf(session.state.pendingImage, 30, 40), blue);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 1, 1), green);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 52, 72), magenta);
    EXPECT_EQ(session.linesStartingWith("Vantrel"), 0U) << "nothing was flattened";
}

TEST(EditorDesignMode, screensArePlacedInAScrollViewUnderAFreshPanel) {
    EditorSession session(/*designMode=*/true);
    session.mockup(doubleMockup());
    const auto editor = session.open();
    const auto formerButton = session.state.cornerRadiusButton;
    editor->generateImage();
    const auto scrollView = session.state.designScrollView;
    ASSERT_TRUE(scrollView);
    EXPECT_EQ(scrollView->frame(), makeRect(0, 0, 60, 80));
    EXPECT_EQ(scrollView->contentSize, (Size{2000, 2000}));
    EXPECT_FALSE(scrollView->canCancelContentTouches);
    EXPECT_EQ(scrollView->backgroundColor, Color::pureRed());
    EXPECT_EQ(scrollView->superview(), editor->view());
    EXPECT_EQ(editor->inside1()->superview(), scrollView);
    EXPECT_EQ(editor->inside2()->superview(), scrollView);
    EXPECT_NE(session.state.cornerRadiusButton, formerButton);
    EXPECT_EQ(session.state.cornerRadiusButton->superview(), editor->view()->subviews().back());
}

TEST(EditorDesignMode, contentGrowsFromACanvasHeightOf1081) {
    for (const int height : {1080, 1081}) {
        EditorSession session(/*designMode=*/true);
        session.mockup(withSize(plainMockup(), "finalFrame", 60, height));
        session.open()->generateImage();
        EXPECT_EQ(session.state.designScrollView->contentSize,
                  height == 1080 ? (Size{2000, 2000}) : (Size{8000, 8000}));
    }
}

TEST(EditorDesignMode, laterCompositionReplacesTheScrollView) {
    EditorSession session(/*designMode=*/true);
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->generateImage();
    const auto former = session.state.designScrollView;
    editor->generateImage();
    EXPECT_NE(session.state.designScrollView, former);
}

TEST(EditorDesignMode, firstScreenItselfIsRoundedAndCutInsteadOfTheSecond) {
    EditorSession session(/*designMode=*/true);
    session.mockup(roomyMockup());
    const auto editor = session.open();
    editor->inside1()->masksToBounds = false;
    editor->generateImage();
    EXPECT_TRUE(editor->inside1()->masksToBounds);
    EXPECT_EQ(editor->inside1()->cornerRadius, 30);
    EXPECT_FALSE(editor->inside2()->masksToBounds);
}

TEST(EditorDesignMode, noCornerTurnsTheFirstScreensClippingOff) {
    EditorSession session(/*designMode=*/true);
    session.mockup(roomyMockup().withMember("noCorner", Value::boolean(true)));
    const auto editor = session.open();
    editor->inside1()->masksToBounds = true;
    editor->generateImage();
    EXPECT_FALSE(editor->inside1()->masksToBounds);
    EXPECT_EQ(editor->inside1()->cornerRadius, 5);
}

TEST(EditorDesignMode, previewOfTheCompositeLiesInTheRootViewAndTakesNoTouches) {
    EditorSession session;
    session.state.previewComposite = true;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->generateImage();
    const auto preview = std::dynamic_pointer_cast<ImageView>(editor->view()->subviews().back());
    ASSERT_TRUE(preview);
    EXPECT_EQ(preview->image(), session.state.pendingImage);
    EXPECT_EQ(preview->frame(), makeRect(0, 0, 1080, 1080));
    EXPECT_FALSE(preview->userInteractionEnabled);
}

TEST(EditorDesignMode, withoutTheSwitchNoPreviewOfTheCompositeIsAdded) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->generateImage();
    for (const auto& view : editor->view()->subviews())
        EXPECT_NE(view->bounds().size, (Size{1080, 1080}));
    EXPECT_FALSE(session.state.designScrollView);
}

} // namespace
