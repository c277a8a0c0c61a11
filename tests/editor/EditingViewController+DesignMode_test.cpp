#include "EditorSession.h"

using namespace quillomat;
using namespace quillomat::testing;

namespace {

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
