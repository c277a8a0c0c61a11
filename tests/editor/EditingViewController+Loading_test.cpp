#include "EditorSession.h"

using namespace quillomat;
using namespace quillomat::testing;

namespace {

using std::chrono::milliseconds;

std::string importOf(const std::string& extra = "") {
    return R"({"left_top_x": 20, "left_top_y": 30, "right_top_x": 50, "right_top_y": 30, "left_bottom_x": 20,
        "left_bottom_y": 70, "right_bottom_x": 50, "right_bottom_y": 70, "template_width": 60,
        "template_height": 80)" +
           extra + "}";
}

TEST(EditorLoading, catalogueDefinitionsAndImportsTogetherAreEditInfo) {
    EditorSession session;
    session.mockup(plainMockup());
    session.world.putDocument("abc.cfg", importOf());
    const auto editor = session.open();
    EXPECT_EQ(editor->editInfo()["frame.png"], plainMockup());
    EXPECT_EQ(editor->editInfo()["abc.png"]["FtopLeftX"], Value::string("10"));
    EXPECT_EQ(editor->editInfo().count(), 2U);
}

TEST(EditorLoading, everyNameThatContainsCfgAnywhereIsAnImport) {
    EditorSession session;
    session.mockup(plainMockup());
    session.world.putDocument("abc.cfg.bak", importOf());
    session.world.putDocument("a.cfg.cfg", importOf());
    session.world.putDocument("abc.CFG", importOf());
    const auto editor = session.open();
    EXPECT_TRUE(editor->editInfo().contains("abc.png.bak"));
    EXPECT_TRUE(editor->editInfo().contains("a.png.png"));
    EXPECT_EQ(editor->editInfo().count(), 3U);
}

TEST(EditorLoading, importCoordinatesAreLoweredInTheFullSetAndKeptInThePreview) {
    EditorSession session;
    session.world.putDocument("abc.cfg", R"({"left_top_x": 100, "right_top_x": "37.9"})");
    const auto editor = session.open();
    EXPECT_EQ(editor->editInfo()["abc.png"]["FtopLeftX"], Value::string("90"));
    EXPECT_EQ(editor->editInfo()["abc.png"]["topLeftX"], Value::integer(100));
    EXPECT_EQ(editor->editInfo()["abc.png"]["FtopRightX"], Value::string("27"));
}

TEST(EditorLoading, unreadableDefinitionFileStillGivesARecordWithoutALogLine) {
    EditorSession session;
    session.world.putDocument("broken.cfg", "{\"left_top_x\": ");
    session.world.putDocument("deep.cfg", std::string(100000, '['));
    session.world.putDocument("list.cfg", "[1]");
    const auto lines = session.world.log.lines();
    const auto editor = session.open();
    for (const char* name : {"broken.png", "deep.png", "list.png"}) {
        EXPECT_EQ(editor->editInfo()[name]["FbottomRightY"], Value::string("-10")) << name;
        EXPECT_EQ(editor->editInfo()[name]["cornerRadius"], Value::string("10")) << name;
        EXPECT_FALSE(editor->editInfo()[name].contains("topLeftX")) << name;
        EXPECT_FALSE(editor->editInfo()[name].contains("creator")) << name;
    }
    EXPECT_EQ(session.linesStartingWith("{{"), session.world.log.lines().size() - lines.size() - 1)
        << "boxes and the photo library's answer, nothing else";
}

TEST(EditorLoading, importNamedLikeABuiltInReplacesItsDefinitionButNotItsPicture) {
    EditorSession session;
    session.mockup(plainMockup());
    session.world.putDocument("frame.cfg", importOf(R"(, "author": "Ada")"));
    session.world.putDocument("frame.png", tinyPng(60, 80, blue));
    const auto editor = session.open();
    EXPECT_EQ(editor->definition().text("creator"), " Mockup created by Ada");
    EXPECT_EQ(editor->editInfo().count(), 1U);
    EXPECT_EQ(pixelOf(editor->phone()->image(), 0, 0), green) << "resources come before documents";
}

TEST(EditorLoading, largeNameShowsThePlainPictureButReadsItsFlagsUnderTheFullName) {
    EditorSession session;
    session.catalogue(
        {{"phone.png", plainMockup()}, {"phone-large.png", doubleMockup().withMember("creator", Value::string("x"))}});
    session.frame("phone.png");
    const auto editor = session.open("phone-large.png");
    EXPECT_EQ(session.state.frameImageName, "phone.png");
    EXPECT_EQ(pixelOf(editor->phone()->image(), 0, 0), green);
    EXPECT_TRUE(editor->addRightButton()->enabled);
    EXPECT_FALSE(editor->addBGButton()->enabled);
    EXPECT_EQ(editor->imageInfo(), "phone-large.png");
}

TEST(EditorLoading, importedFrameComesFromTheDocumentsDirectory) {
    EditorSession session;
    session.world.putDocument("abc.cfg", importOf());
    session.world.putDocument("abc.png", tinyPng(60, 80, blue));
    EXPECT_EQ(pixelOf(session.open("abc.png")->phone()->image(), 0, 0), blue);
}

TEST(EditorLoading, missingFramePictureLeavesThePhoneEmpty) {
    EditorSession session;
    session.catalogue({{"frame.png", plainMockup()}});
    EXPECT_FALSE(session.open()->phone()->image());
}

TEST(EditorLoading, nameThatLeavesTheDocumentsDirectoryIsNotRead) {
    EditorSession session;
    session.catalogue({{"../outside.png", plainMockup()}});
    FakePlatform::put(session.world.directory.path() + "/outside.png", tinyPng(60, 80, blue));
    EXPECT_FALSE(session.open("../outside.png")->phone()->image());
}

TEST(EditorLoading, withoutACatalogueEverythingReadsZeroAndImportsStillWork) {
    EditorSession session;
    session.world.putDocument("abc.cfg", importOf());
    const auto editor = session.open("unknown.png");
    EXPECT_EQ(editor->editInfo().count(), 1U);
    EXPECT_EQ(editor->topLeftControl()->frame(), makeRect(0, 0, 20, 20));
    EXPECT_FALSE(editor->addRightButton()->enabled);
    EXPECT_TRUE(editor->addBGButton()->enabled);
}

TEST(EditorLoading, storedCatalogueWinsEvenWhenItIsBroken) {
    EditorSession session;
    session.mockup(plainMockup());
    session.world.putDocument("main.json", catalogueOf({{"other.png", plainMockup()}}));
    EXPECT_TRUE(session.open()->editInfo().contains("other.png"));
    session.world.putDocument("main.json", "{");
    EXPECT_FALSE(session.open()->editInfo().isPresent());
}

TEST(EditorLoading, catalogueWhoseDefinitionsAreNoObjectGivesNone) {
    EditorSession session;
    session.world.putResource("main.json", R"({"editInfo": [1, 2, 3]})");
    session.world.putDocument("abc.cfg", importOf());
    EXPECT_EQ(session.open()->editInfo().count(), 1U);
}

TEST(EditorLoading, failedListingAddsNothing) {
    EditorSession session;
    session.mockup(plainMockup());
    session.world.putDocument("abc.cfg", importOf());
    session.world.files.failListings = true;
    EXPECT_EQ(session.open()->editInfo().count(), 1U);
}

TEST(EditorLoading, definitionsAreReadAfreshByEveryEditorAndNeverWrittenBack) {
    EditorSession session;
    session.mockup(plainMockup());
    EXPECT_EQ(session.open()->editInfo().count(), 1U);
    session.world.putDocument("abc.cfg", importOf());
    EXPECT_EQ(session.open()->editInfo().count(), 2U);
    EXPECT_TRUE(session.world.journal.empty()) << "nothing was written, copied or removed";
    EXPECT_EQ(session.world.documentNames(), std::vector<std::string>{"abc.cfg"});
}

TEST(EditorLoading, frameImageNameSurvivesUntilAnotherEditorOverwritesIt) {
    EditorSession session;
    session.mockup(plainMockup());
    session.open("first-large.png");
    session.navigation.pop();
    EXPECT_EQ(session.state.frameImageName, "first.png");
    session.open("frame.png");
    EXPECT_EQ(session.state.frameImageName, "frame.png");
}

TEST(EditorLoading, optionsButtonStandsOnTheRight) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    ASSERT_TRUE(editor->navigationItem.rightBarButtonItem);
    EXPECT_EQ(editor->navigationItem.rightBarButtonItem->title, "Options");
    EXPECT_EQ(editor->navigationItem.rightBarButtonItem->style, BarButtonStyle::done);
    editor->navigationItem.rightBarButtonItem->action();
    ASSERT_TRUE(session.alert());
    EXPECT_EQ(session.alert()->title(), "Options");
}

TEST(EditorLoading, oneScreenSwitchesTheRightButtonOffAndTakesTheSecondViewAway) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    EXPECT_FALSE(editor->addRightButton()->enabled);
    EXPECT_FALSE(editor->inside2()->superview());
    EXPECT_EQ(editor->inside1()->backgroundColor, Color::black());
    EXPECT_FALSE(editor->inside2()->backgroundColor);
}

TEST(EditorLoading, twoScreensSwitchTheRightButtonOnAndBlackenBothViews) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    EXPECT_TRUE(editor->addRightButton()->enabled);
    EXPECT_TRUE(editor->inside2()->superview());
    EXPECT_EQ(editor->inside1()->backgroundColor, Color::black());
    EXPECT_EQ(editor->inside2()->backgroundColor, Color::black());
}

TEST(EditorLoading, creatorSwitchesBackgroundAndGlareOffWhateverItsValue) {
    for (const Value& creator : {Value::string(" Mockup created by Ada"), Value::null(), Value::boolean(false)}) {
        EditorSession session;
        session.mockup(plainMockup().withMember("creator", creator));
        const auto editor = session.open();
        EXPECT_TRUE(session.world.log.contains("CREATOR"));
        EXPECT_FALSE(editor->addBGButton()->enabled);
        EXPECT_FALSE(editor->addGlareButton()->enabled);
        EXPECT_TRUE(editor->addLeftButton()->enabled);
    }
}

TEST(EditorLoading, builtInMockupKeepsItsButtonsAndLogsNoCreator) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    EXPECT_FALSE(session.world.log.contains("CREATOR"));
    EXPECT_TRUE(editor->addBGButton()->enabled);
    EXPECT_TRUE(editor->addGlareButton()->enabled);
}

TEST(EditorLoading, frameIsTranslucentInDesignModeOnly) {
    for (const bool designMode : {false, true}) {
        EditorSession session(designMode);
        session.mockup(plainMockup());
        EXPECT_EQ(session.open()->phone()->alpha, designMode ? 0.9 : 1.0);
    }
}

TEST(EditorLoading, deliveredBuildHasDesignModeOff) {
    if (isDesignBuild())
        GTEST_SKIP() << "this build was configured with its design aids on";
    EXPECT_FALSE(EditorState().designMode);
    EXPECT_FALSE(EditorState().previewComposite);
}

TEST(EditorLoading, stateStartsWithEverythingOff) {
    const EditorState state;
    EXPECT_FALSE(state.pickingLeft || state.pickingRight || state.pickingBackground || state.glareOn);
    EXPECT_FALSE(state.pendingImage);
    EXPECT_EQ(state.lastCornerRadius, 0);
    EXPECT_EQ(state.frameImageName, "");
    EXPECT_FALSE(state.previewContainer || state.designScrollView || state.cornerRadiusButton);
}

TEST(EditorLoading, answerAboutThePhotoLibraryWritesItsLine) {
    const std::pair<PhotoAuthorization, const char*> answers[] = {
        {PhotoAuthorization::notDetermined, "AuthTest PHAuthorizationStatusNotDetermined"},
        {PhotoAuthorization::restricted, "AuthTest PHAuthorizationStatusRestricted"},
        {PhotoAuthorization::denied, "AuthTest PHAuthorizationStatusDenied"},
        {PhotoAuthorization::authorized, "AuthTest PHAuthorizationStatusAuthorized"}};
    for (const auto& [answer, line] : answers) {
        EditorSession session;
        session.mockup(plainMockup());
        session.world.photos.answer = answer;
        session.open();
        EXPECT_TRUE(session.world.log.contains(line)) << line;
        EXPECT_EQ(session.linesStartingWith("AuthTest"), 1U);
        EXPECT_EQ(session.world.photos.requests, 1);
    }
}

TEST(EditorLoading, answerOfAnUnknownKindWritesNothing) {
    EditorSession session;
    session.mockup(plainMockup());
    session.world.photos.answer = static_cast<PhotoAuthorization>(4);
    session.open();
    EXPECT_EQ(session.linesStartingWith("AuthTest"), 0U);
}

TEST(EditorLoading, answerMayComeFromAnotherThreadAfterTheEditorHasGone) {
    EditorSession session;
    session.mockup(plainMockup());
    session.world.photos.answerOnAnotherThread = true;
    session.open();
    session.navigation.pop();
    session.world.photos.join();
    EXPECT_TRUE(session.world.log.contains("AuthTest PHAuthorizationStatusAuthorized"));
}

TEST(EditorLoading, loadingDoesNotWaitForTheAnswer) {
    class NeverAnswers final : public PhotoLibrary {
    public:
        void requestAuthorization(std::function<void(PhotoAuthorization)> answer) override { kept = std::move(answer); }
        void writeToSavedPhotosAlbum(const Image&) override {}
        std::function<void(PhotoAuthorization)> kept;
    };
    EditorSession session;
    session.mockup(plainMockup());
    NeverAnswers photos;
    Platform platform = session.platformWith(photos);
    const auto editor = std::make_shared<EditingViewController>(platform, session.storyboard, session.state);
    editor->setImageInfo("frame.png");
    editor->view();
    EXPECT_TRUE(editor->topLeftControl()) << "the editor stands";
    EXPECT_EQ(session.linesStartingWith("AuthTest"), 0U);
    photos.kept(PhotoAuthorization::denied);
    EXPECT_TRUE(session.world.log.contains("AuthTest PHAuthorizationStatusDenied"));
}

TEST(EditorLoading, deniedLibraryDoesNotKeepThePickerFromOpening) {
    EditorSession session;
    session.mockup(plainMockup());
    session.world.photos.answer = PhotoAuthorization::denied;
    session.open()->addLeft();
    EXPECT_TRUE(session.picker());
}

TEST(EditorLayout, frameBackgroundAndOverlayTakeTheCanvasShapeAroundOneCentre) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    EXPECT_EQ(editor->background()->bounds().size, (Size{225, 300}));
    for (const auto& view : {editor->phone(), editor->overlay()}) {
        EXPECT_EQ(view->frame(), editor->background()->frame());
        EXPECT_EQ(view->contentMode, ContentMode::scaleToFill);
    }
    EXPECT_EQ(session.state.previewContainer->center(), editor->background()->center());
}

TEST(EditorLayout, overlayStandsWhereTheCompositionDrawsTheGlare) {
    EditorSession session;
    session.mockup(withGlare(plainMockup(), "glare.png", makeRect(15, 20, 30, 40)));
    const auto editor = session.open();
    const Rect canvas = editor->background()->frame();
    EXPECT_EQ(editor->overlay()->frame(), makeRect(canvas.origin.x + 56.25, canvas.origin.y + 75, 112.5, 150));
}

TEST(EditorLayout, canvasWithoutAnExtentGetsTheWholeSquare) {
    EditorSession session;
    session.mockup(withSize(plainMockup(), "finalFrame", 0, -5));
    EXPECT_EQ(session.open()->background()->bounds().size, (Size{300, 300}));
}

TEST(EditorLayout, hairThinCanvasStillHasAPoint) {
    EditorSession session;
    session.mockup(withSize(plainMockup(), "finalFrame", 1, 100000));
    EXPECT_EQ(session.open()->background()->bounds().size, (Size{1, 300}));
}

TEST(EditorLayout, layersStandInTheOrderOfTheComposition) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    const auto& layers = editor->view()->subviews();
    ASSERT_GE(layers.size(), 4U);
    EXPECT_EQ(layers[0], editor->background());
    EXPECT_EQ(layers[1], session.state.previewContainer);
    EXPECT_EQ(layers[2], editor->phone());
    EXPECT_EQ(layers[3], editor->overlay());
}

TEST(EditorLayout, firstScreenIsCutFromTheStartUnlessCornersStaySquare) {
    for (const bool noCorner : {false, true}) {
        EditorSession session;
        session.mockup(plainMockup().withMember("noCorner", Value::boolean(noCorner)));
        EXPECT_EQ(session.open()->inside1()->masksToBounds, !noCorner);
    }
}

TEST(EditorLayout, rootViewIsPhoneSizedAndHoldsTheTools) {
    EditorSession session;
    session.mockup(doubleMockup());
    const auto editor = session.open();
    EXPECT_EQ(editor->view()->bounds().size, session.world.platform.screen.size);
    for (const auto& tool : {editor->addLeftButton(), editor->addRightButton(), editor->addBGButton(),
                             editor->addGlareButton(), editor->saveButton()}) {
        EXPECT_EQ(tool->superview(), editor->view());
        EXPECT_GE(tool->frame().size.width, 44);
        EXPECT_GE(tool->frame().size.height, 44);
        EXPECT_LE(tool->frame().maxX(), editor->view()->bounds().maxX());
    }
}

} // namespace
