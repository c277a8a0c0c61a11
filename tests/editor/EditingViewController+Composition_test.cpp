#include "EditorSession.h"

using namespace quillomat;
using namespace quillomat::testing;

namespace {

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

TEST(EditorComposition, whatThePreviewPutIntoTheSecondSlotIsWhatIsDrawnAsTheSecondScreen) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    const auto other = std::make_shared<ImageView>(pictureOf(4, 4, magenta));
    other->setAnchorPoint({0, 0});
    editor->setContentView2(other);
    editor->inside2()->setImage(pictureOf(4, 4, yellow));
    editor->generateImage();
    EXPECT_EQ(editor->contentView2(), other) << "a full-resolution placement never writes the second slot";
    EXPECT_EQ(pixelOf(session.state.pendingImage, 50, 60), magenta);
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

TEST(EditorComposition, frameFromTheResourcesIsReadOnceAndOneFromTheDocumentsIsReadAfresh) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    std::filesystem::remove(session.world.resourcesDirectory() + "/images/frame.png");
    editor->generateImage();
    EXPECT_EQ(pixelOf(session.state.pendingImage, 1, 1), green) << "the picture that the preview shows";

    session.catalogue({{"own.png", plainMockup()}});
    session.world.putDocument("own.png", tinyPng(60, 80, blue));
    const auto second = session.open("own.png");
    second->generateImage();
    EXPECT_EQ(pixelOf(session.state.pendingImage, 1, 1), blue);
    session.world.putDocument("own.png", tinyPng(60, 80, yellow));
    second->generateImage();
    EXPECT_EQ(pixelOf(session.state.pendingImage, 1, 1), yellow);
    std::filesystem::remove(session.world.document("own.png"));
    second->generateImage();
    EXPECT_EQ(pixelOf(session.state.pendingImage, 1, 1), clear);
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

} // namespace
