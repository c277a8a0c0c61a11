#include "EditorSession.h"

#include "platform/graphics/PngWriter.h"

#include <algorithm>

using namespace quillomat;
using namespace quillomat::testing;

namespace {

Value glaring(Value record = plainMockup()) {
    return withSize(record.withMember("overlay", Value::string("glare.png"))
                        .withMember("glareX", Value::integer(50))
                        .withMember("glareY", Value::integer(70)),
                    "glare", 5, 5);
}

void putGlare(EditorSession& session) {
    session.world.putResourceImage("glare.png", tinyPng(1, 1, magenta));
}

Value creatorMockup() {
    return plainMockup().withMember("creator", Value::string(" Mockup created by Ada"));
}

TEST(EditorSaving, composesWritesAndConfirmsOnTheSpot) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    session.pickLeft(*editor, pictureOf(4, 4, red));
    session.pickBackground(*editor, pictureOf(4, 4, blue));
    editor->saveButton()->press();
    EXPECT_TRUE(session.world.log.contains("SSTest 1"));
    ASSERT_EQ(session.world.photos.written.size(), 1U);
    EXPECT_EQ(session.saved().pixelSize(), (PixelSize{60, 80}));
    EXPECT_EQ(pixelOf(session.saved(), 30, 40), red);
    EXPECT_EQ(pixelOf(session.saved(), 55, 75), blue);
    EXPECT_EQ(pixelOf(session.saved(), 1, 1), green);
    ASSERT_TRUE(session.alert());
    EXPECT_EQ(session.alert()->title(), "Screenshot");
    EXPECT_EQ(session.message(), "Image saved to camera roll \n\n");
    ASSERT_EQ(session.alert()->actions().size(), 1U);
    EXPECT_EQ(session.alert()->actions()[0].title, "Thanks!");
    EXPECT_EQ(session.alert()->actions()[0].style, ActionStyle::normal);
    EXPECT_EQ(editor->compositionProblem(), "");
}

TEST(EditorSaving, handsOverTheEncodedDocumentSoThatItsBytesCanBeKept) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->generateImage();
    const Image pending = session.state.pendingImage;
    editor->save();
    EXPECT_EQ(session.saved(), pending) << "encoded once";
    const SharedDocument handed = session.saved().source()->document();
    ASSERT_TRUE(handed);
    EXPECT_EQ(*handed, encodePng(*pending.bitmap()).value());
}

TEST(EditorSaving, pendingPictureHoldsNothingOfWhatItWasComposedFrom) {
    EditorSession session;
    session.catalogue({{"one.png", creatorMockup()}});
    session.frame("one.png");
    std::weak_ptr<const ImageSource> screenshot;
    std::weak_ptr<const ImageSource> frame;
    {
        const auto editor = session.open("one.png");
        frame = editor->phone()->image().source();
        const Image picked = pictureOf(4, 4, red);
        screenshot = picked.source();
        session.pickLeft(*editor, picked);
        EXPECT_FALSE(screenshot.expired()) << "the editor shows it";
    }
    session.navigation.pop();
    EXPECT_TRUE(screenshot.expired());
    EXPECT_TRUE(frame.expired());
    EXPECT_EQ(pixelOf(session.state.pendingImage, 30, 40), red);
}

TEST(EditorSaving, savingOnTheSpotGivesThePictureThatComposingGives) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto first = session.open();
    first->inside1()->setImage(pictureOf(7, 9, [](int x, int y) { return (x + y) % 2 == 0 ? red : yellow; }));
    first->generateImage();
    const auto expected = session.state.pendingImage.bitmap();
    session.state.pendingImage = {};
    const auto second = session.open();
    second->inside1()->setImage(pictureOf(7, 9, [](int x, int y) { return (x + y) % 2 == 0 ? red : yellow; }));
    second->save();
    EXPECT_EQ(*session.saved().bitmap(), *expected);
}

TEST(EditorSaving, onTheSpotClearsOverlayAndBackgroundAndTouchesNeitherPhoneNorPendingNorGlare) {
    EditorSession session;
    session.mockup(glaring());
    putGlare(session);
    const auto editor = session.open();
    session.pickBackground(*editor, pictureOf(4, 4, blue));
    editor->addGlareButton()->press();
    const Image frame = editor->phone()->image();
    editor->save();
    EXPECT_FALSE(editor->overlay()->image());
    EXPECT_FALSE(editor->background()->image());
    EXPECT_EQ(editor->phone()->image(), frame);
    EXPECT_FALSE(session.state.pendingImage);
    EXPECT_TRUE(session.state.glareOn);
    EXPECT_EQ(pixelOf(session.saved(), 52, 72), magenta);
}

TEST(EditorSaving, thanksLeadsToTheListAndDiscardsTheEditor) {
    EditorSession session;
    session.mockup(plainMockup());
    std::weak_ptr<EditingViewController> gone;
    {
        const auto editor = session.open();
        gone = editor;
        editor->save();
    }
    session.press("Thanks!");
    EXPECT_TRUE(session.isAtTheList());
    EXPECT_TRUE(gone.expired());
}

TEST(EditorSaving, thanksDismissesWhateverElseTheEditorPresents) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->save();
    editor->createActionSheet();
    session.press("Thanks!");
    EXPECT_TRUE(session.isAtTheList());
    EXPECT_FALSE(editor->presented());
}

TEST(EditorSaving, creatorMockupWritesThePictureOfThePickEvenIfGlareAndPicturesChangedSince) {
    EditorSession session;
    session.mockup(glaring(creatorMockup()));
    putGlare(session);
    const auto editor = session.open();
    session.pickLeft(*editor, pictureOf(4, 4, red));
    editor->inside1()->setImage(pictureOf(4, 4, yellow));
    editor->background()->setImage(pictureOf(4, 4, blue));
    editor->addGlare();
    editor->save();
    EXPECT_EQ(pixelOf(session.saved(), 30, 40), red);
    EXPECT_EQ(pixelOf(session.saved(), 52, 72), clear);
    EXPECT_TRUE(editor->overlay()->image()) << "a pending save clears neither overlay";
    EXPECT_TRUE(editor->background()->image()) << "nor background";
    EXPECT_FALSE(session.state.pendingImage);
}

TEST(EditorSaving, creditStandsTwoLinesBelowWithItsLeadingBlank) {
    EditorSession session;
    session.mockup(creatorMockup());
    const auto editor = session.open();
    session.pickLeft(*editor, pictureOf(4, 4, red));
    editor->save();
    EXPECT_EQ(session.message(), "Image saved to camera roll \n\n Mockup created by Ada");
}

TEST(EditorSaving, importedMockupRunsFromPickToCredit) {
    EditorSession session;
    session.world.putDocument("own.cfg", R"({"left_top_x": 10, "left_top_y": 20, "right_top_x": 50, "right_top_y": 20,
        "left_bottom_x": 10, "left_bottom_y": 60, "right_bottom_x": 50, "right_bottom_y": 60, "corner_radius": 0,
        "template_width": 60, "template_height": 80, "author": "Grace"})");
    session.world.putDocument("own.png", tinyPng(60, 80, [](int x, int) { return x < 4 ? green : clear; }));
    const auto editor = session.open("own.png");
    session.pickLeft(*editor, pictureOf(4, 4, red));
    editor->save();
    EXPECT_EQ(session.saved().pixelSize(), (PixelSize{60, 80}));
    EXPECT_EQ(pixelOf(session.saved(), 10, 20), red) << "the full-resolution corners land on the file's coordinates";
    EXPECT_EQ(pixelOf(session.saved(), 9, 20), clear);
    EXPECT_EQ(pixelOf(session.saved(), 49, 59), red);
    EXPECT_EQ(pixelOf(session.saved(), 1, 40), green);
    EXPECT_EQ(session.message(), "Image saved to camera roll \n\n Mockup created by Grace");
}

TEST(EditorSaving, importWithoutAnAuthorIsComposedOnTheSpot) {
    EditorSession session;
    session.world.putDocument("own.cfg", R"({"template_width": 60, "template_height": 80})");
    session.world.putDocument("own.png", tinyPng(60, 80, green));
    const auto editor = session.open("own.png");
    session.pickLeft(*editor, pictureOf(4, 4, red));
    EXPECT_FALSE(session.state.pendingImage);
    editor->save();
    EXPECT_EQ(pixelOf(session.saved(), 30, 40), green);
    EXPECT_EQ(session.message(), "Image saved to camera roll \n\n");
}

TEST(EditorSaving, alertStandsBeforeThePendingPictureIsCleared) {
    EditorSession session;
    session.mockup(creatorMockup());
    const auto editor = session.open();
    session.pickLeft(*editor, pictureOf(4, 4, red));
    bool pendingAtTheAlert = false;
    editor->presentationChanged = [&] { pendingAtTheAlert = static_cast<bool>(session.state.pendingImage); };
    editor->save();
    editor->presentationChanged = {};
    EXPECT_TRUE(pendingAtTheAlert);
    EXPECT_FALSE(session.state.pendingImage);
}

TEST(EditorSaving, pendingPictureOfAnEditorThatWasLeftIsWrittenByTheNextOneWithItsOwnCreditAsItStands) {
    EditorSession session;
    session.catalogue({{"one.png", creatorMockup()},
                       {"two.png", plainMockup().withMember("creator", Value::string(" Mockup created by Bo"))}});
    session.frame("one.png");
    session.frame("two.png");
    const auto first = session.open("one.png");
    session.pickLeft(*first, pictureOf(4, 4, red));
    session.navigation.pop();
    const auto second = session.open("two.png");
    second->save();
    EXPECT_EQ(pixelOf(session.saved(), 30, 40), red);
    EXPECT_EQ(session.message(), "Image saved to camera roll \n\n Mockup created by Bo");
    EXPECT_FALSE(session.state.pendingImage);
    session.press("Thanks!");
    session.open("two.png")->save();
    EXPECT_EQ(pixelOf(session.saved(), 30, 40), black) << "the save after that composes again";
}

TEST(EditorSaving, creditThatIsNoTextIsStillShown) {
    EditorSession session;
    session.mockup(plainMockup().withMember("creator", Value::integer(7)));
    session.open()->showSavedAlert();
    EXPECT_EQ(session.message(), "Image saved to camera roll \n\n7");
}

TEST(EditorSaving, refusedLibraryIsNotNoticed) {
    class Refusing final : public PhotoLibrary {
    public:
        void requestAuthorization(std::function<void(PhotoAuthorization)> answer) override {
            answer(PhotoAuthorization::denied);
        }
        void writeToSavedPhotosAlbum(const Image&) override { ++refused; }
        int refused = 0;
    };
    EditorSession session;
    session.mockup(plainMockup());
    Refusing photos;
    Platform platform = session.platformWith(photos);
    const auto editor = std::make_shared<EditingViewController>(platform, session.storyboard, session.state);
    editor->setImageInfo("frame.png");
    session.navigation.push(editor);
    editor->save();
    EXPECT_EQ(photos.refused, 1) << "asked without a look at the authorisation";
    EXPECT_EQ(session.message(), "Image saved to camera roll \n\n");
}

TEST(EditorSaving, impossibleCanvasWritesNothingAndShowsTheAlertAsEver) {
    for (const bool creator : {false, true}) {
        EditorSession session;
        session.mockup(withSize(creator ? creatorMockup() : plainMockup(), "finalFrame", 0, 0));
        const auto editor = session.open();
        session.pickLeft(*editor, pictureOf(4, 4, red));
        editor->save();
        EXPECT_TRUE(session.world.photos.written.empty());
        ASSERT_TRUE(session.alert());
        EXPECT_EQ(session.alert()->title(), "Screenshot");
        EXPECT_NE(editor->compositionProblem(), "");
    }
}

TEST(EditorSaving, unknownMockupWritesNothingAndShowsTheAlertAsEver) {
    EditorSession session;
    const auto editor = session.open("unknown.png");
    editor->save();
    EXPECT_TRUE(session.world.photos.written.empty());
    EXPECT_TRUE(session.alert());
    EXPECT_EQ(editor->compositionProblem(), "there is no definition of unknown.png");
}

TEST(EditorSaving, screenshotThatCannotBeDecodedIsReportedOnceItWasDrawn) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    // A sound header, and pixels cut off in the middle.
    Bytes broken = tinyPng(64, 64, red);
    broken.resize(broken.size() / 2);
    session.pickLeft(*editor, imageFromBytes(broken).value());
    editor->save();
    EXPECT_EQ(editor->compositionProblem().find("screenshot 1: "), 0U) << editor->compositionProblem();
    EXPECT_TRUE(session.alert());
    EXPECT_EQ(session.message(), "Image saved to camera roll \n\n") << "the screen stays silent";
}

TEST(EditorSaving, designModeShowsThePictureInTheScrollViewInsteadOfSaving) {
    EditorSession session(/*designMode=*/true);
    session.mockup(doubleMockup());
    const auto editor = session.open();
    editor->background()->setImage(pictureOf(4, 4, blue));
    editor->save();
    EXPECT_TRUE(session.world.photos.written.empty());
    EXPECT_FALSE(session.alert());
    const auto& layers = session.state.designScrollView->subviews();
    ASSERT_GE(layers.size(), 3U);
    EXPECT_EQ(layers[layers.size() - 3], editor->contentView());
    EXPECT_EQ(layers[layers.size() - 2], editor->contentView2());
    const auto composed = std::dynamic_pointer_cast<ImageView>(layers.back());
    ASSERT_TRUE(composed);
    EXPECT_EQ(composed->frame(), makeRect(0, 0, 60, 80));
    EXPECT_EQ(composed->alpha, 0.9);
    EXPECT_FALSE(composed->userInteractionEnabled);
    EXPECT_EQ(pixelOf(composed->image(), 55, 75), blue);
    EXPECT_FALSE(editor->background()->image()) << "cleared in design mode too";
}

TEST(EditorSaving, designModeStillWritesAPendingPicture) {
    EditorSession session(/*designMode=*/true);
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->generateImage();
    editor->save();
    EXPECT_EQ(session.world.photos.written.size(), 1U);
}

TEST(EditorSaving, previewOfTheCompositeIsAddedOnce) {
    EditorSession session;
    session.state.previewComposite = true;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->save();
    const auto& layers = editor->view()->subviews();
    EXPECT_EQ(std::count_if(layers.begin(), layers.end(),
                            [](const auto& layer) { return layer->frame() == makeRect(0, 0, 1080, 1080); }),
              1);
    EXPECT_EQ(session.world.photos.written.size(), 1U) << "and the picture is saved as ever";
}

TEST(EditorGlare, switchShowsAndHidesTheGlarePicture) {
    EditorSession session;
    session.mockup(glaring());
    putGlare(session);
    const auto editor = session.open();
    editor->addGlareButton()->press();
    EXPECT_TRUE(session.state.glareOn);
    EXPECT_EQ(pixelOf(editor->overlay()->image(), 0, 0), magenta);
    editor->addGlareButton()->press();
    EXPECT_FALSE(session.state.glareOn);
    EXPECT_FALSE(editor->overlay()->image());
}

TEST(EditorGlare, glareComesFromTheDocumentsDirectoryWhenTheResourcesHaveNone) {
    EditorSession session;
    session.mockup(glaring());
    session.world.putDocument("glare.png", tinyPng(1, 1, yellow));
    const auto editor = session.open();
    editor->addGlare();
    EXPECT_EQ(pixelOf(editor->overlay()->image(), 0, 0), yellow);
}

TEST(EditorGlare, missingGlareLeavesTheOverlayEmptyWhileTheSwitchIsOn) {
    for (const char* name : {"", "unknown.png", "../outside.png"}) {
        EditorSession session;
        session.mockup(plainMockup().withMember("overlay", Value::string(name)));
        FakePlatform::put(session.world.directory.path() + "/outside.png", tinyPng(1, 1));
        const auto editor = session.open();
        editor->addGlare();
        EXPECT_TRUE(session.state.glareOn) << name;
        EXPECT_FALSE(editor->overlay()->image()) << name;
    }
}

TEST(EditorGlare, carriedOverGlareIsInvisibleYetComposedAndTheFirstPressTurnsItOffAsItStands) {
    EditorSession session;
    session.mockup(glaring());
    putGlare(session);
    session.open()->addGlare();
    session.navigation.pop();
    const auto later = session.open();
    EXPECT_TRUE(session.state.glareOn) << "closing an editor does not reset it";
    EXPECT_FALSE(later->overlay()->image());
    later->generateImage();
    EXPECT_EQ(pixelOf(session.state.pendingImage, 52, 72), magenta);
    later->addGlareButton()->press();
    EXPECT_FALSE(session.state.glareOn);
    EXPECT_FALSE(later->overlay()->image());
}

TEST(EditorGlare, creatorMockupHasNoGlareButton) {
    EditorSession session;
    session.mockup(glaring(creatorMockup()));
    putGlare(session);
    const auto editor = session.open();
    editor->addGlareButton()->press();
    EXPECT_FALSE(session.state.glareOn);
}

} // namespace
