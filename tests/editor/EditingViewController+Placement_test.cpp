#include "EditorSession.h"

using namespace quillomat;
using namespace quillomat::testing;

namespace {

std::shared_ptr<View> plainContainer() {
    return std::make_shared<View>(makeRect(0, 0, 1000, 1000));
}

std::vector<Point> originsOf(const std::vector<std::shared_ptr<View>>& views) {
    std::vector<Point> origins;
    for (const auto& view : views)
        origins.push_back(view->frame().origin);
    return origins;
}

Point cornerOf(const View& view, Point inBounds) {
    const auto corner = convertToRoot(view, inBounds);
    return corner ? *corner : Point{-1, -1};
}

TEST(EditorPlacement, placingStretchesTheViewAnchorsItAtItsCornerAndPutsItIntoTheContainer) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    const auto container = plainContainer();
    const auto existing = std::make_shared<View>();
    container->addSubview(existing);
    const auto shot = std::make_shared<ImageView>();
    shot->contentMode = ContentMode::scaleAspectFit;
    editor->view()->addSubview(shot);
    editor->performTransformForView(shot, "", container, "", "F", /*isLarge=*/true);
    EXPECT_EQ(shot->contentMode, ContentMode::scaleToFill);
    EXPECT_EQ(shot->anchorPoint(), (Point{0, 0}));
    EXPECT_EQ(shot->superview(), container);
    EXPECT_EQ(container->subviews()[1], shot) << "above what was there, below its markers";
    EXPECT_EQ(shot->frame(), makeRect(10, 20, 40, 40));
}

TEST(EditorPlacement, slotTwoIsTheSecondContentViewAndEveryOtherOneTheFirst) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    for (const char* slot : {"1", "", "x"}) {
        const auto shot = std::make_shared<ImageView>();
        editor->performTransformForView(shot, slot, plainContainer(), "", "", /*isLarge=*/true);
        EXPECT_EQ(editor->contentView(), shot) << slot;
        EXPECT_EQ(editor->contentView2(), editor->inside2()) << slot;
    }
    const auto second = std::make_shared<ImageView>();
    editor->performTransformForView(second, "2", plainContainer(), "", "", /*isLarge=*/true);
    EXPECT_EQ(editor->contentView2(), second);
}

TEST(EditorPlacement, markersAreMadeInTheOrderTopLeftTopRightBottomLeftBottomRight) {
    EditorSession session;
    session.mockup(withCorners(plainMockup(), "F", "", {{10, 11}, {30, 12}, {13, 40}, {35, 44}}));
    const auto editor = session.open();
    const auto container = plainContainer();
    editor->performTransformForView(editor->inside1(), "", container, "", "F", /*isLarge=*/true);
    EXPECT_EQ(originsOf({container->subviews().begin() + 1, container->subviews().end()}),
              (std::vector<Point>{{0, 1}, {20, 2}, {3, 30}, {25, 34}}));
    EXPECT_EQ(container->subviews()[1], editor->topLeftControl());
    EXPECT_EQ(container->subviews()[2], editor->topRightControl());
    EXPECT_EQ(container->subviews()[3], editor->bottomLeftControl());
    EXPECT_EQ(container->subviews()[4], editor->bottomRightControl());
}

TEST(EditorPlacement, markersOfAnEarlierPlacementStayInTheirContainer) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    const auto container = plainContainer();
    editor->performTransformForView(editor->inside1(), "", container, "", "F", /*isLarge=*/true);
    const auto former = editor->topLeftControl();
    editor->performTransformForView(editor->inside1(), "", container, "", "F", /*isLarge=*/true);
    EXPECT_NE(editor->topLeftControl(), former);
    EXPECT_EQ(former->superview(), container);
    EXPECT_EQ(container->subviews().size(), 9U);
}

TEST(EditorPlacement, largeFlagDecidesBetweenTheFullAndTheStrippedEntry) {
    EditorSession session;
    session.catalogue({{"phone.png", withCorners(plainMockup(), "", "", quadOf(50, 50, 100, 100))},
                       {"phone-large.png", withCorners(plainMockup(), "", "", quadOf(70, 70, 100, 100))}});
    const auto editor = session.open("phone-large.png");
    editor->performTransformForView(editor->inside1(), "1", plainContainer(), "", "", /*isLarge=*/false);
    EXPECT_EQ(editor->topLeftControl()->center(), (Point{50, 50}));
    editor->performTransformForView(editor->inside1(), "1", plainContainer(), "", "", /*isLarge=*/true);
    EXPECT_EQ(editor->topLeftControl()->center(), (Point{70, 70}));
}

TEST(EditorPlacement, nameWithoutLargeIsTheSameForBothFlags) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    for (const bool isLarge : {false, true}) {
        editor->performTransformForView(editor->inside1(), "1", plainContainer(), "", "F", isLarge);
        EXPECT_EQ(editor->inside1()->frame(), makeRect(10, 20, 40, 40));
    }
}

TEST(EditorPlacement, fractionsOfCornersAreDropped) {
    EditorSession session;
    session.mockup(
        plainMockup().withMember("topLeftX", Value::string("50.9")).withMember("topLeftY", Value::real(60.9)));
    EXPECT_EQ(session.open()->topLeftControl()->frame().origin, (Point{50, 60}));
}

TEST(EditorPlacement, secondSideThroughTheFirstSlotIsFittedToTheFirstScreensMarkersAsItStands) {
    EditorSession session;
    // One screen, so that the second slot is not fitted afterwards.
    session.mockup(doubleMockup().withMember("doubleImage", Value::boolean(false)));
    const auto editor = session.open();
    const Rect firstScreen = editor->inside1()->frame();
    const auto shot = std::make_shared<ImageView>();
    editor->performTransformForView(shot, "", plainContainer(), "2", "", /*isLarge=*/true);
    EXPECT_EQ(editor->contentView(), shot);
    EXPECT_EQ(editor->topLeftControl2()->center(), (Point{200, 200}));
    EXPECT_EQ(shot->frame(), firstScreen);
}

TEST(EditorPlacement, screenIsMappedOntoItsFourCorners) {
    EditorSession session;
    const Quad quad{{40, 30}, {220, 60}, {60, 250}, {200, 210}};
    session.mockup(withCorners(plainMockup(), "", "", quad));
    const auto editor = session.open();
    const View& shot = *editor->inside1();
    const Point shift = session.state.previewContainer->frame().origin;
    const Size size = shot.bounds().size;
    EXPECT_EQ(size, (Size{180, 220})) << "the corners' bounding box";
    const std::pair<Point, Point> corners[] = {{{0, 0}, quad.topLeft},
                                               {{size.width, 0}, quad.topRight},
                                               {{0, size.height}, quad.bottomLeft},
                                               {{size.width, size.height}, quad.bottomRight}};
    for (const auto& [inBounds, expected] : corners) {
        const Point found = cornerOf(shot, inBounds);
        EXPECT_NEAR(found.x, expected.x + shift.x, 1e-9);
        EXPECT_NEAR(found.y, expected.y + shift.y, 1e-9);
    }
}

TEST(EditorPreview, containerIsA300SquareBelowTheFrameAroundTheBackgroundsCentre) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    const auto& container = session.state.previewContainer;
    EXPECT_EQ(container->bounds().size, (Size{300, 300}));
    EXPECT_EQ(container->center(), editor->background()->center());
    EXPECT_EQ(container->backgroundColor, Color::clear());
    EXPECT_FALSE(container->translatesAutoresizingMaskIntoConstraints);
    const auto& layers = editor->view()->subviews();
    const auto place = std::find(layers.begin(), layers.end(), container);
    ASSERT_NE(place, layers.end());
    EXPECT_EQ(*(place + 1), editor->phone());
}

TEST(EditorPreview, onlyTheFirstScreenIsRoundedInThePreview) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    EXPECT_EQ(editor->inside1()->cornerRadius, 5);
    EXPECT_EQ(editor->inside2()->cornerRadius, 0);
    EXPECT_FALSE(editor->inside2()->masksToBounds);
}

TEST(EditorPreview, previewCornersAreNotScaledFromTheFramesSize) {
    EditorSession session;
    session.mockup(withSize(plainMockup(), "finalFrame", 6000, 8000));
    EXPECT_EQ(session.open()->inside1()->frame(), makeRect(75, 75, 150, 150));
}

TEST(EditorPreview, secondScreenIsPlacedOnlyInATwoScreenMockup) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto one = session.open();
    EXPECT_FALSE(one->topLeftControl2());
    EXPECT_FALSE(one->contentView2());
    session.mockup(doubleMockup());
    const auto two = session.open();
    EXPECT_EQ(two->inside2()->frame(), makeRect(200, 200, 50, 50));
    EXPECT_EQ(two->contentView2(), two->inside2());
    EXPECT_EQ(two->contentView(), two->inside1());
}

TEST(EditorPreview, largeMockupTakesItsFirstScreenFromTheStrippedEntryAndItsSecondFromItsOwnAsItStands) {
    EditorSession session;
    const Value plain =
        withCorners(withCorners(doubleMockup(), "", "", quadOf(30, 30, 40, 40)), "", "2", quadOf(31, 31, 40, 40));
    const Value large =
        withCorners(withCorners(doubleMockup(), "", "", quadOf(90, 90, 40, 40)), "", "2", quadOf(91, 91, 40, 40));
    session.catalogue({{"duo.png", plain}, {"duo-large.png", large}});
    const auto editor = session.open("duo-large.png");
    EXPECT_EQ(editor->inside1()->frame(), makeRect(30, 30, 40, 40));
    EXPECT_EQ(editor->inside2()->frame(), makeRect(91, 91, 40, 40));
}

TEST(EditorPreview, formerContainerIsLetGoButStaysInItsRootView) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    const auto former = session.state.previewContainer;
    editor->setupPreviewTransforms();
    EXPECT_NE(session.state.previewContainer, former);
    EXPECT_EQ(former->superview(), editor->view());
}

TEST(EditorPreview, containerOfAGoneEditorPersistsUntilTheNextOneReplacesIt) {
    EditorSession session;
    session.mockup(plainMockup());
    session.open();
    const auto former = session.state.previewContainer;
    session.navigation.pop();
    EXPECT_EQ(session.state.previewContainer, former);
    session.open();
    EXPECT_NE(session.state.previewContainer, former);
}

TEST(EditorPreview, missingDefinitionPutsEveryMarkerAtZero) {
    EditorSession session;
    const auto editor = session.open("unknown.png");
    for (const auto& marker : {editor->topLeftControl(), editor->topRightControl(), editor->bottomLeftControl(),
                               editor->bottomRightControl()}) {
        EXPECT_EQ(marker->frame(), makeRect(0, 0, 20, 20));
        EXPECT_EQ(marker->center(), (Point{10, 10}));
    }
    EXPECT_EQ(editor->inside1()->frame(), makeRect(10, 10, 0, 0));
}

TEST(EditorPreview, secondScreenWithoutItsKeysCollapsesToAPoint) {
    EditorSession session;
    session.mockup(plainMockup().withMember("doubleImage", Value::string("true")));
    EXPECT_EQ(session.open()->inside2()->frame(), makeRect(10, 10, 0, 0));
}

TEST(EditorPreview, designModePaintsTheContainerBlueAndBuildsThePanel) {
    EditorSession session(/*designMode=*/true);
    session.mockup(plainMockup());
    session.open();
    EXPECT_EQ(session.state.previewContainer->backgroundColor, Color::pureBlue());
    EXPECT_TRUE(session.state.cornerRadiusButton);
}

TEST(EditorPreview, everyFitWritesItsBoxToTheLog) {
    EditorSession session;
    session.mockup(plainMockup());
    session.open();
    EXPECT_TRUE(session.world.log.contains("{{75, 75}, {150, 150}}"));
}

} // namespace
