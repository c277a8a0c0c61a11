#include "EditorSession.h"

using namespace quillomat;
using namespace quillomat::testing;

namespace {

using std::chrono::milliseconds;

/// An editor in design mode with the first screen's marker corners at (65, 65) to (215, 215).
class EditorPanel : public ::testing::Test {
protected:
    EditorPanel() {
        session.mockup(plainMockup());
        editor = session.open();
    }

    std::shared_ptr<View> panel() {
        std::shared_ptr<View> found;
        for (const auto& view : editor->view()->subviews()) {
            if (view->frame() == makeRect(0, 0, 55, 640))
                found = view;
        }
        return found;
    }
    std::shared_ptr<Button> button(std::size_t index) {
        return std::dynamic_pointer_cast<Button>(panel()->subviews().at(index));
    }
    std::shared_ptr<Button> titled(const std::string& start) {
        for (const auto& view : panel()->subviews()) {
            const auto candidate = std::dynamic_pointer_cast<Button>(view);
            if (candidate && candidate->title().starts_with(start))
                return candidate;
        }
        return nullptr;
    }
    void enter(const std::shared_ptr<Button>& pressed, const std::string& text) {
        ASSERT_TRUE(pressed);
        pressed->press();
        session.press("OK", text);
    }

    EditorSession session{/*designMode=*/true};
    std::shared_ptr<EditingViewController> editor;
};

TEST_F(EditorPanel, isABlackColumnAtTheLeftOfTheScreensHeightLessAHundred) {
    ASSERT_TRUE(panel());
    EXPECT_EQ(panel()->backgroundColor, Color::black());
    EXPECT_EQ(panel()->frame(), makeRect(0, 0, 55, session.world.platform.screen.size.height - 100));
}

TEST_F(EditorPanel, buttonsHaveTheTableOfTitlesPlacesTagsAndSizes) {
    struct Row {
        const char* title;
        double y;
        int tag;
        double fontSize;
    };
    const Row rows[] = {{"frame.png", 90, 1, 8}, {"C", 120, 1, 10},    {"TLX", 150, 2, 10},    {"TLX", 180, 3, 10},
                        {"TLX", 210, 7, 10},     {"TLX", 240, 6, 10},  {"TLX", 270, 4, 10},    {"TLX", 300, 5, 10},
                        {"TLX", 330, 8, 10},     {"TLX", 360, 11, 10}, {"Scale", 660, 12, 10}, {"Opacity", 680, 13, 10},
                        {"Border", 700, 14, 10}};
    editor->createEdits(); // a panel whose titles nobody has refreshed yet
    const auto fresh = editor->view()->subviews().back();
    ASSERT_EQ(fresh->subviews().size(), std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const auto found = std::dynamic_pointer_cast<Button>(fresh->subviews()[i]);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->title(), rows[i].title) << i;
        EXPECT_EQ(found->frame(), makeRect(0, rows[i].y, 50, 20)) << i;
        EXPECT_EQ(found->tag, rows[i].tag) << i;
        EXPECT_EQ(found->font, (Font{rows[i].fontSize, false})) << i;
        EXPECT_EQ(found->alignment, TextAlignment::left) << i;
    }
}

TEST_F(EditorPanel, nineButtonsAreKeptProcessWide) {
    editor->createEdits();
    const auto fresh = editor->view()->subviews().back();
    const std::shared_ptr<Button> kept[] = {
        session.state.cornerRadiusButton, session.state.topLeftXButton,     session.state.topLeftYButton,
        session.state.topRightXButton,    session.state.topRightYButton,    session.state.bottomLeftXButton,
        session.state.bottomLeftYButton,  session.state.bottomRightXButton, session.state.bottomRightYButton};
    for (std::size_t i = 0; i < std::size(kept); ++i)
        EXPECT_EQ(kept[i], fresh->subviews()[i + 1]) << i;
}

TEST_F(EditorPanel, freshTitlesAreStaleForHalfASecond) {
    editor->createEdits();
    session.wait(milliseconds(499));
    EXPECT_EQ(session.state.topRightYButton->title(), "TLX");
    EXPECT_EQ(session.state.cornerRadiusButton->title(), "C");
    session.wait(milliseconds(1));
    EXPECT_EQ(session.state.topRightYButton->title(), "TRY: 65");
    EXPECT_EQ(session.state.cornerRadiusButton->title(), "C: 5");
}

TEST_F(EditorPanel, titlesShowTheMarkersOriginsAndNotTheirCentres) {
    session.wait(milliseconds(500));
    EXPECT_EQ(session.state.topLeftXButton->title(), "TX: 65");
    EXPECT_EQ(session.state.topLeftYButton->title(), "TY: 65");
    EXPECT_EQ(session.state.topRightXButton->title(), "TRX: 215");
    EXPECT_EQ(session.state.topRightYButton->title(), "TRY: 65");
    EXPECT_EQ(session.state.bottomLeftXButton->title(), "BX: 65");
    EXPECT_EQ(session.state.bottomLeftYButton->title(), "BY: 215");
    EXPECT_EQ(session.state.bottomRightXButton->title(), "BRX: 215");
    EXPECT_EQ(session.state.bottomRightYButton->title(), "BRY: 215");
}

TEST_F(EditorPanel, halvesAreRoundedAwayFromZero) {
    editor->topLeftControl()->setFrame(makeRect(12.5, -12.5, 20, 20));
    editor->updateButtons();
    EXPECT_EQ(session.state.topLeftXButton->title(), "TX: 13");
    EXPECT_EQ(session.state.topLeftYButton->title(), "TY: -13");
}

TEST_F(EditorPanel, valuesOutOfAllBoundsSaturate) {
    editor->topLeftControl()->setFrame(makeRect(1e30, -1e30, 20, 20));
    editor->updateButtons();
    EXPECT_EQ(session.state.topLeftXButton->title(), "TX: 9223372036854775807");
    EXPECT_EQ(session.state.topLeftYButton->title(), "TY: -9223372036854775808");
}

TEST_F(EditorPanel, pressAsksForANumber) {
    button(2)->press();
    const auto question = session.alert();
    ASSERT_TRUE(question);
    EXPECT_EQ(question->title(), "Adding A Row");
    EXPECT_EQ(question->message(), "Enter A Number");
    EXPECT_EQ(question->style(), AlertStyle::alert);
    ASSERT_EQ(question->textFields().size(), 1U);
    EXPECT_EQ(question->textFields()[0].placeholder, "");
    ASSERT_EQ(question->actions().size(), 2U);
    EXPECT_EQ(question->actions()[0].title, "Cancel");
    EXPECT_EQ(question->actions()[1].title, "OK");
    EXPECT_EQ(question->actions()[0].style, ActionStyle::normal);
    EXPECT_EQ(question->actions()[1].style, ActionStyle::normal);
}

TEST_F(EditorPanel, cancelChangesNothingAndRefreshesNothing) {
    editor->createEdits();
    const auto fresh = editor->view()->subviews().back();
    dynamic_cast<Button&>(*fresh->subviews()[2]).press();
    session.press("Cancel", "30");
    EXPECT_EQ(editor->topLeftControl()->frame().origin.x, 65);
    EXPECT_EQ(session.state.topLeftXButton->title(), "TLX");
}

TEST_F(EditorPanel, nameButtonSetsTheRadiusAsWellBecauseItSharesTheTag) {
    enter(button(0), "12");
    for (const auto& screen : {editor->inside1(), editor->inside2()}) {
        EXPECT_EQ(screen->cornerRadius, 12);
        EXPECT_TRUE(screen->masksToBounds);
    }
    EXPECT_EQ(session.state.cornerRadiusButton->title(), "C: 12");
    EXPECT_EQ(session.state.lastCornerRadius, 12);
}

TEST_F(EditorPanel, radiusButtonSetsTheRadiusOfBothScreens) {
    enter(button(1), "-7");
    EXPECT_EQ(editor->inside1()->cornerRadius, -7) << "nothing is clamped";
    EXPECT_EQ(editor->inside2()->cornerRadius, -7);
    EXPECT_EQ(session.state.lastCornerRadius, -7);
}

TEST_F(EditorPanel, everyCornerButtonMovesItsOwnCoordinateAndRefits) {
    enter(button(2), "30");
    enter(button(3), "31");
    enter(button(4), "232");
    enter(button(5), "33");
    enter(button(6), "34");
    enter(button(7), "235");
    enter(button(8), "236");
    enter(button(9), "237");
    EXPECT_EQ(editor->topLeftControl()->frame(), makeRect(30, 31, 20, 20));
    EXPECT_EQ(editor->topRightControl()->frame(), makeRect(232, 33, 20, 20));
    EXPECT_EQ(editor->bottomLeftControl()->frame(), makeRect(34, 235, 20, 20));
    EXPECT_EQ(editor->bottomRightControl()->frame(), makeRect(236, 237, 20, 20));
    EXPECT_EQ(editor->inside1()->frame(), makeRect(40, 41, 206, 206));
    EXPECT_EQ(session.state.topRightYButton->title(), "TRY: 33");
    EXPECT_EQ(session.state.bottomRightYButton->title(), "BRY: 237");
}

TEST_F(EditorPanel, cornersTakeIntegersAndScaleTakesFractions) {
    enter(button(2), "30.7");
    EXPECT_EQ(editor->topLeftControl()->frame().origin.x, 30);
    enter(titled("Scale"), "0.5");
    EXPECT_EQ(editor->phone()->transform(), AffineTransform::scale(0.5, 0.5));
}

TEST_F(EditorPanel, scaleIsAbsoluteNotCumulative) {
    enter(titled("Scale"), "2");
    enter(titled("Scale"), "2");
    EXPECT_EQ(editor->phone()->transform(), AffineTransform::scale(2, 2));
    EXPECT_EQ(session.state.previewContainer->transform(), AffineTransform::scale(2, 2));
    enter(titled("Scale"), "1");
    EXPECT_EQ(editor->phone()->transform(), AffineTransform());
}

TEST_F(EditorPanel, scalingIsFollowedByARefitSoTheFirstScreensOwnScaleDoesNotLast) {
    const Transform3D fitted = editor->inside1()->layerTransform();
    editor->scaleUP(3);
    EXPECT_EQ(editor->inside1()->transform(), AffineTransform::scale(3, 3));
    enter(titled("Scale"), "3");
    EXPECT_EQ(editor->inside1()->layerTransform(), fitted);
}

TEST_F(EditorPanel, secondScreenBackgroundAndOverlayAreNeverScaled) {
    const Transform3D second = editor->inside2()->layerTransform();
    editor->scaleUP(3);
    EXPECT_EQ(editor->inside2()->layerTransform(), second);
    EXPECT_EQ(editor->background()->transform(), AffineTransform());
    EXPECT_EQ(editor->overlay()->transform(), AffineTransform());
}

TEST_F(EditorPanel, opacityIsTheFramesAlone) {
    enter(titled("Opacity"), "0.25");
    EXPECT_EQ(editor->phone()->alpha, 0.25);
    EXPECT_EQ(editor->inside1()->alpha, 1);
    EXPECT_EQ(editor->overlay()->alpha, 1);
}

TEST_F(EditorPanel, borderIsWhiteOnTheFirstScreenOnlyAndMayBeNegative) {
    enter(titled("Border"), "-1");
    EXPECT_EQ(editor->inside1()->borderWidth, -1);
    EXPECT_EQ(editor->inside1()->borderColor, Color::white());
    EXPECT_EQ(editor->inside2()->borderWidth, 0);
    enter(titled("Border"), "2.5");
    EXPECT_EQ(editor->inside1()->borderWidth, 2.5);
}

TEST_F(EditorPanel, textThatIsNoNumberIsZero) {
    enter(button(2), "abc");
    EXPECT_EQ(editor->topLeftControl()->frame().origin.x, 0);
    enter(titled("Scale"), "");
    EXPECT_EQ(editor->phone()->transform(), AffineTransform::scale(0, 0))
        << "the frame vanishes until a new scale comes";
    enter(titled("Scale"), "1");
    EXPECT_EQ(editor->phone()->transform(), AffineTransform());
}

TEST_F(EditorPanel, tagNineDoesNothingAtAll) {
    Button unused;
    unused.tag = 9;
    editor->editPressed(unused);
    EXPECT_FALSE(session.alert());
}

TEST_F(EditorPanel, unmatchedTagStillRefreshesTheTitles) {
    editor->createEdits();
    Button unused;
    unused.tag = 10;
    editor->editPressed(unused);
    session.press("OK", "77");
    EXPECT_EQ(session.state.topLeftXButton->title(), "TX: 65") << "refreshed, though nothing changed";
    EXPECT_EQ(editor->inside1()->cornerRadius, 5);
}

TEST_F(EditorPanel, markerMovesThroughUpdateTranformRefreshTheTitles) {
    editor->topLeftControl()->setFrame(makeRect(40, 65, 20, 20));
    editor->updateTranform();
    EXPECT_EQ(session.state.topLeftXButton->title(), "TX: 40");
}

TEST_F(EditorPanel, laterPanelsAreStackedAndOnlyTheNewestIsRefreshed) {
    session.wait(milliseconds(500));
    const auto former = panel();
    const auto formerButton = session.state.topLeftXButton;
    editor->generateImage();
    EXPECT_EQ(former->superview(), editor->view()) << "the earlier panel stays";
    EXPECT_NE(session.state.topLeftXButton, formerButton);
    EXPECT_EQ(formerButton->title(), "TX: 65") << "with its last titles";
    EXPECT_EQ(session.state.topLeftXButton->title(), "TX: 0");
}

TEST_F(EditorPanel, refreshOfADiscardedEditorTouchesNothing) {
    std::weak_ptr<EditingViewController> gone = editor;
    editor->createEdits();
    editor.reset();
    session.navigation.pop();
    EXPECT_TRUE(gone.expired());
    session.wait(milliseconds(1000));
    EXPECT_EQ(session.state.topLeftXButton->title(), "TLX");
}

TEST_F(EditorPanel, previewCornersAreReadAndWrittenInTheUnitsOfTheDefinition) {
    EXPECT_EQ(MockupDefinition(plainMockup()).integer("topLeftX"), 65);
    EXPECT_EQ(titled("TX")->title(), "TX: 65") << "the stored value, not the corner at 75";
}

TEST(EditorWithoutPanel, designModeOffHasNoPanelAndNoButtonForTheAids) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    session.wait(milliseconds(1000));
    EXPECT_FALSE(session.state.cornerRadiusButton);
    EXPECT_EQ(session.world.queue.pending(), 0U);
    for (const auto& view : editor->view()->subviews())
        EXPECT_NE(view->bounds().size.width, 55);
}

} // namespace
