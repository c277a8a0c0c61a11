#include "EditorSession.h"

#include "platform/graphics/Blur.h"
#include "platform/views/Drawing.h"

#include <cmath>

using namespace quillomat;
using namespace quillomat::testing;

namespace {

using std::chrono::milliseconds;

TEST(EditorPicking, buttonsSetTheirFlagAndOpenThePhotoLibraryAndOnlyTheBackgroundCrops) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    const auto left = [&] { return session.state.pickingLeft; };
    const auto right = [&] { return session.state.pickingRight; };
    const auto back = [&] { return session.state.pickingBackground; };

    editor->addLeftButton()->press();
    ASSERT_TRUE(session.picker());
    EXPECT_FALSE(session.picker()->allowsEditing);
    EXPECT_EQ(session.picker()->sourceType, ImagePickerSource::photoLibrary);
    EXPECT_EQ(session.picker()->delegate.lock().get(), editor.get());
    EXPECT_TRUE(left() && !right() && !back());
    session.cancelPick();

    editor->addRightButton()->press();
    ASSERT_TRUE(session.picker());
    EXPECT_FALSE(session.picker()->allowsEditing);
    EXPECT_TRUE(left() && right() && !back()) << "the other flags are not touched";
    session.cancelPick();

    editor->addBGButton()->press();
    ASSERT_TRUE(session.picker());
    EXPECT_TRUE(session.picker()->allowsEditing);
    EXPECT_TRUE(left() && right() && back());
}

TEST(EditorPicking, leftRightAndBackgroundPicksLandInTheirViewsAndEndTheirFlags) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    const Image left = pictureOf(1, 1, red);
    const Image right = pictureOf(1, 1, yellow);
    const Image full = pictureOf(2, 2, blue);
    const Image cropped = pictureOf(1, 1, blue);
    session.pickLeft(*editor, left);
    session.pickRight(*editor, right);
    editor->addBGButton()->press();
    session.pick({full, cropped});
    EXPECT_EQ(editor->inside1()->image(), left);
    EXPECT_EQ(editor->inside2()->image(), right);
    EXPECT_EQ(editor->background()->image(), cropped) << "the cropped picture, not the full one";
    EXPECT_FALSE(session.state.pickingLeft || session.state.pickingRight || session.state.pickingBackground);
}

TEST(EditorPicking, screenshotsTakeTheFullPictureEvenWhenACroppedOneCame) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    const Image full = pictureOf(2, 2, red);
    editor->addLeft();
    session.pick({full, pictureOf(1, 1, blue)});
    EXPECT_EQ(editor->inside1()->image(), full);
}

TEST(EditorPicking, pickerIsDismissedByTheDelivery) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->addLeft();
    editor->answerImagePicker(session.picker()->id(), {pictureOf(1, 1, red), {}});
    EXPECT_TRUE(editor->isDismissing());
    session.settle();
    EXPECT_FALSE(editor->presented());
}

TEST(EditorPicking, cancelledPickLeavesItsFlagSet) {
    EditorSession session;
    session.mockup(plainMockup());
    session.open()->addLeft();
    session.cancelPick();
    EXPECT_TRUE(session.state.pickingLeft);
    EXPECT_FALSE(session.navigation.top()->presented());
}

TEST(EditorPicking, staleBackgroundFlagSendsALeftPickToTheBackgroundWhichBecomesEmpty) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    session.pickBackground(*editor, pictureOf(1, 1, blue));
    editor->addBG();
    session.cancelPick();
    session.pickLeft(*editor, pictureOf(1, 1, red));
    EXPECT_FALSE(editor->background()->image()) << "a left pick comes without a cropped picture";
    EXPECT_FALSE(editor->inside1()->image());
    EXPECT_FALSE(session.state.pickingBackground);
    EXPECT_TRUE(session.state.pickingLeft);
    session.wait(milliseconds(100));
    EXPECT_EQ(session.message(), "Blur background Image?") << "asked although there is nothing to blur";
}

TEST(EditorPicking, staleLeftFlagTakesTheRightPickAndTheNextRightPickLandsRight) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    editor->addLeft();
    session.cancelPick();
    const Image first = pictureOf(1, 1, red);
    session.pickRight(*editor, first);
    EXPECT_EQ(editor->inside1()->image(), first);
    EXPECT_FALSE(session.state.pickingLeft);
    EXPECT_TRUE(session.state.pickingRight);
    const Image second = pictureOf(1, 1, yellow);
    session.pickRight(*editor, second);
    EXPECT_EQ(editor->inside2()->image(), second);
    EXPECT_FALSE(session.state.pickingRight);
}

TEST(EditorPicking, staleLeftFlagAfterABackgroundDetourSendsTheNextRightPickLeft) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    session.state.pickingBackground = true;
    session.pickLeft(*editor, pictureOf(1, 1, red));
    session.wait(milliseconds(100));
    session.press("No");
    const Image right = pictureOf(1, 1, yellow);
    session.pickRight(*editor, right);
    EXPECT_EQ(editor->inside1()->image(), right);
}

TEST(EditorPicking, deliveryThatNobodyAskedForLandsInTheSecondScreen) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    ImagePickerController picker;
    const Image shot = pictureOf(1, 1, red);
    editor->imagePickerControllerDidFinishPickingMediaWithInfo(picker, {shot, {}});
    EXPECT_EQ(editor->inside2()->image(), shot);
}

TEST(EditorPicking, staleFlagsCarryOverIntoTheNextEditor) {
    EditorSession session;
    session.mockup(plainMockup());
    session.open()->addBG();
    session.cancelPick();
    session.navigation.pop();
    const auto later = session.open();
    session.pickLeft(*later, pictureOf(1, 1, red));
    EXPECT_FALSE(later->inside1()->image());
    EXPECT_TRUE(session.state.pickingLeft);
}

TEST(EditorPicking, nothingIsWrittenToDisk) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    session.pickLeft(*editor, pictureOf(1, 1, red));
    session.pickBackground(*editor, pictureOf(1, 1, blue), "Yes");
    EXPECT_TRUE(session.world.journal.empty());
    EXPECT_TRUE(session.world.photos.written.empty());
}

TEST(EditorPicking, creatorMockupComposesAtThePickAndTakesNoSecondOne) {
    EditorSession session;
    session.mockup(plainMockup().withMember("creator", Value::null()));
    const auto editor = session.open();
    session.pickLeft(*editor, pictureOf(4, 4, red));
    EXPECT_FALSE(editor->addLeftButton()->enabled);
    EXPECT_EQ(pixelOf(session.state.pendingImage, 30, 40), red);
    EXPECT_EQ(editor->phone()->image(), session.state.pendingImage);
    editor->addLeftButton()->press();
    EXPECT_FALSE(session.picker());
}

TEST(EditorPicking, builtInMockupDoesNotComposeAtThePick) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    session.pickLeft(*editor, pictureOf(4, 4, red));
    EXPECT_FALSE(session.state.pendingImage);
    EXPECT_TRUE(editor->addLeftButton()->enabled);
}

TEST(EditorPicking, staleBackgroundFlagSpendsACreatorMockupsOnlyPickOnAnEmptyBackgroundAsItStands) {
    EditorSession session;
    session.mockup(plainMockup().withMember("creator", Value::string("x")));
    session.state.pickingBackground = true;
    const auto editor = session.open();
    session.pickLeft(*editor, pictureOf(4, 4, red));
    EXPECT_EQ(pixelOf(session.state.pendingImage, 30, 40), black) << "composed without the screenshot";
    EXPECT_FALSE(editor->background()->image());
    EXPECT_FALSE(editor->addLeftButton()->enabled);
}

TEST(EditorBlurQuestion, comesATenthOfASecondLaterWithNoBeforeYes) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->addBG();
    session.pick({pictureOf(1, 1, blue), pictureOf(1, 1, blue)});
    EXPECT_TRUE(editor->background()->image()) << "shown without waiting for the answer";
    session.wait(milliseconds(99));
    EXPECT_FALSE(session.alert());
    session.wait(milliseconds(1));
    ASSERT_TRUE(session.alert());
    EXPECT_EQ(session.alert()->title(), "Option");
    EXPECT_EQ(session.alert()->message(), "Blur background Image?");
    EXPECT_EQ(session.alert()->style(), AlertStyle::alert);
    ASSERT_EQ(session.alert()->actions().size(), 2U);
    EXPECT_EQ(session.alert()->actions()[0].title, "No");
    EXPECT_EQ(session.alert()->actions()[1].title, "Yes");
    EXPECT_EQ(session.alert()->actions()[0].style, ActionStyle::normal);
    EXPECT_EQ(session.alert()->actions()[1].style, ActionStyle::normal);
}

TEST(EditorBlurQuestion, comesUpAfterThePickerThoughItsDismissalHasOnlyBegun) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->addBG();
    editor->answerImagePicker(session.picker()->id(), {pictureOf(1, 1, blue), pictureOf(1, 1, blue)});
    session.wait(milliseconds(100));
    EXPECT_TRUE(editor->isDismissing());
    session.settle();
    EXPECT_EQ(session.message(), "Blur background Image?");
}

TEST(EditorBlurQuestion, isNotAskedForScreenshots) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    session.pickLeft(*editor, pictureOf(1, 1, red));
    session.pickRight(*editor, pictureOf(1, 1, red));
    EXPECT_EQ(session.world.queue.pending(), 0U);
}

TEST(EditorBlurQuestion, noKeepsTheCroppedBackground) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    const Image cropped = pictureOf(3, 3, blue);
    session.pickBackground(*editor, cropped, "No");
    EXPECT_EQ(editor->background()->image(), cropped);
    EXPECT_FALSE(editor->presented());
}

TEST(EditorBlurQuestion, discardedEditorIsNotAskedAnything) {
    EditorSession session;
    session.mockup(plainMockup());
    std::weak_ptr<EditingViewController> gone;
    {
        const auto editor = session.open();
        gone = editor;
        editor->addBG();
        session.pick({pictureOf(1, 1, blue), pictureOf(1, 1, blue)});
    }
    session.navigation.pop();
    EXPECT_TRUE(gone.expired()) << "the waiting question does not keep the editor";
    session.wait(milliseconds(200));
    EXPECT_FALSE(session.list->presented());
}

TEST(EditorBlur, backgroundHasTheViewsPointSizeAtScaleOneWhateverThePictureOrTheScreen) {
    EditorSession session;
    session.world.platform.screen.scale = 3;
    session.mockup(plainMockup());
    const auto editor = session.open();
    session.pickBackground(*editor, pictureOf(700, 500, blue), "Yes");
    EXPECT_EQ(editor->background()->image().pixelSize(), (PixelSize{225, 300}));
    EXPECT_EQ(editor->background()->image().scale(), 1);
}

TEST(EditorBlur, edgesAreNotDarkened) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    session.pickBackground(*editor, pictureOf(4, 4, blue), "Yes");
    const Image blurred = editor->background()->image();
    for (const auto& [x, y] : {std::pair{0, 0}, {224, 0}, {0, 299}, {224, 299}, {100, 0}, {112, 150}})
        EXPECT_EQ(pixelOf(blurred, x, y), blue) << x << ", " << y;
}

TEST(EditorBlur, stepBecomesTheGaussianOfDeviationFour) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    // 225 pixels: the step lies on the pixel boundary at 112.
    session.pickBackground(*editor, pictureOf(225, 300, [](int x, int) { return x < 112 ? black : red; }), "Yes");
    const Image blurred = editor->background()->image();
    for (int x = 96; x < 128; ++x) {
        const double expected = 255 * 0.5 * std::erfc(-(x + 0.5 - 112) / (4 * std::sqrt(2.0)));
        EXPECT_NEAR(pixelOf(blurred, x, 150)[0], expected, 2.0) << x;
    }
}

TEST(EditorBlur, sourceIsTheBackgroundAsTheViewShowsIt) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    const Image photo = pictureOf(450, 300, [](int x, int y) { return (x / 30 + y / 30) % 2 == 0 ? red : blue; });
    session.pickBackground(*editor, photo, "No");
    BitmapContext context(editor->background()->bounds().size, 1);
    renderInContext(*editor->background(), context);
    const Image expected = gaussianBlurClamped(context.makeImage(), 4);
    editor->blurBackground();
    EXPECT_EQ(*editor->background()->image().bitmap(), *expected.bitmap());
}

TEST(EditorBlur, yesBlursWhateverTheBackgroundShowsWhenItIsAnswered) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->addBG();
    session.pick({pictureOf(1, 1, blue), pictureOf(1, 1, blue)});
    session.wait(milliseconds(100));
    editor->background()->setImage(pictureOf(1, 1, yellow));
    session.press("Yes");
    EXPECT_EQ(pixelOf(editor->background()->image(), 100, 100), yellow);
}

TEST(EditorBlur, compositionEnlargesTheBlurredBackground) {
    EditorSession session;
    session.mockup(withSize(plainMockup(), "finalFrame", 900, 1200));
    const auto editor = session.open();
    session.pickBackground(*editor, pictureOf(4, 4, blue), "Yes");
    editor->generateImage();
    EXPECT_EQ(session.state.pendingImage.pixelSize(), (PixelSize{900, 1200}));
    EXPECT_EQ(pixelOf(session.state.pendingImage, 899, 1199), blue);
}

TEST(EditorBlur, emptyBackgroundIsBlurredIntoNothingVisible) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->blurBackground();
    EXPECT_EQ(pixelOf(editor->background()->image(), 100, 100), clear);
}

} // namespace
