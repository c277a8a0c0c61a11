#include "app/Application.h"

#include "ApplicationTest.h"

#include <gmock/gmock.h>

#include <chrono>

namespace quillomat::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(ApplicationTest, launchShowsTheCatalogueListAtTheRoot) {
    launch();
    ASSERT_TRUE(application->delegate().window());
    EXPECT_EQ(navigation().stack().size(), 1U);
    EXPECT_EQ(list().title, "Selection");
    EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 2U);
}

TEST_F(ApplicationTest, beforeTheLaunchNothingIsReadOrFetched) {
    application = std::make_unique<Application>(fake.platform);
    EXPECT_FALSE(application->delegate().window());
    EXPECT_THAT(fake.web.requests, IsEmpty());
}

TEST_F(ApplicationTest, launchComparesRevisionsAtEveryStart) {
    fake.web.replies["https://maker.test/quillomat/updates/main.json"] = bytesOf(R"({"version": "1.10"})");
    launch();
    ASSERT_TRUE(list().navigationItem.rightBarButtonItem);
    launch();
    ASSERT_TRUE(list().navigationItem.rightBarButtonItem);
    EXPECT_EQ(fake.web.requests.size(), 2U);
}

TEST_F(ApplicationTest, threeScreensFollowOneAnotherOnOneStack) {
    launch();
    chooseRow(0);
    ASSERT_TRUE(top<ScrollerViewController>());
    EXPECT_EQ(top<ScrollerViewController>()->contentInfo(), "Phones");
    tapFrame("phone.png");
    ASSERT_TRUE(top<EditingViewController>());
    EXPECT_EQ(top<EditingViewController>()->imageInfo(), "phone.png");
    EXPECT_EQ(navigation().stack().size(), 3U);
}

TEST_F(ApplicationTest, backLeadsThroughTheSameScreensAndDiscardsThem) {
    launch();
    chooseRow(0);
    const auto gallery = navigation().top();
    tapFrame("phone.png");
    const std::weak_ptr<ViewController> editor = navigation().top();
    navigation().pop();
    EXPECT_EQ(navigation().top(), gallery);
    EXPECT_TRUE(editor.expired());
    navigation().pop();
    EXPECT_EQ(navigation().top().get(), &list());
    navigation().pop();
    EXPECT_EQ(navigation().stack().size(), 1U);
}

TEST_F(ApplicationTest, largeMarkerReachesTheEditorUnchangedAndOnlyThePictureLosesIt) {
    launch();
    chooseRow(0);
    tapFrame("phone-large.png");
    const auto editor = top<EditingViewController>();
    ASSERT_TRUE(editor);
    EXPECT_EQ(editor->imageInfo(), "phone-large.png");
    EXPECT_EQ(editor->definition().canvasSize().width, 80);
    EXPECT_EQ(editor->phone()->image().pixelSize().width, 3);
    EXPECT_EQ(application->editorState().frameImageName, "phone.png");
}

TEST_F(ApplicationTest, sameRowTwiceMakesTwoGalleriesFromTheDocumentAsItIsThen) {
    launch();
    chooseRow(0);
    const auto first = navigation().top();
    navigation().pop();
    fake.putDocument("main.json", R"({"viewInfo": {"Phones": {"images": ["other.png"]}}})");
    chooseRow(0);
    EXPECT_NE(navigation().top(), first);
    EXPECT_THAT(frames(), ElementsAre("other.png"));
}

TEST_F(ApplicationTest, listIsNeverMadeAgain) {
    launch();
    const auto root = navigation().root();
    chooseRow(0);
    tapFrame("phone.png");
    navigation().popToRoot();
    EXPECT_EQ(navigation().root(), root);
}

TEST_F(ApplicationTest, unknownTypeLabelGivesAnEmptyGallery) {
    fake.putResource("main.json", R"({"tableItems": [{"typeLabel": "Nowhere"}], "viewInfo": {}})");
    launch();
    chooseRow(0);
    EXPECT_THAT(frames(), IsEmpty());
}

TEST_F(ApplicationTest, unknownMockupGivesAnEditorWithoutADefinition) {
    fake.putResource("main.json", R"({"tableItems": [{"typeLabel": "A"}], "viewInfo": {"A": {"images": ["x.png"]}}})");
    launch();
    chooseRow(0);
    tapFrame("x.png");
    const auto editor = top<EditingViewController>();
    ASSERT_TRUE(editor);
    EXPECT_FALSE(editor->definition().record().isPresent());
    EXPECT_FALSE(editor->phone()->image());
}

TEST_F(ApplicationTest, goingToTheBackgroundAndBackLeavesEveryScreenAsItWas) {
    launch();
    chooseRow(0);
    tapFrame("phone.png");
    list().createActionSheet();
    application->editorState().glareOn = true;
    const auto stack = navigation().stack();
    const auto sheet = list().presented();
    const auto requests = fake.web.requests;
    const auto lines = fake.log.lines();

    AppDelegate& delegate = application->delegate();
    const auto window = delegate.window();
    delegate.applicationWillResignActive();
    delegate.applicationDidEnterBackground();
    delegate.applicationWillEnterForeground();
    delegate.applicationDidBecomeActive();
    delegate.applicationWillTerminate();

    EXPECT_EQ(delegate.window(), window);
    EXPECT_EQ(navigation().stack(), stack);
    EXPECT_EQ(list().presented(), sheet);
    EXPECT_TRUE(application->editorState().glareOn);
    EXPECT_EQ(fake.web.requests, requests);
    EXPECT_EQ(fake.log.lines(), lines);
    EXPECT_EQ(fake.files.changes(), 0);
    EXPECT_EQ(fake.queue.pending(), 0U);
}

TEST_F(ApplicationTest, editorValuesOutliveEditorsButNotTheApplication) {
    launch();
    chooseRow(0);
    tapFrame("phone.png");
    application->editorState().pickingLeft = true;
    navigation().popToRoot();
    EXPECT_TRUE(application->editorState().pickingLeft);
    EXPECT_EQ(application->editorState().frameImageName, "phone.png");
    launch();
    EXPECT_FALSE(application->editorState().pickingLeft);
    EXPECT_EQ(application->editorState().frameImageName, "");
}

TEST_F(ApplicationTest, twoApplicationsShareNothing) {
    Application first(fake.platform);
    Application second(fake.platform);
    first.launch();
    second.launch();
    first.editorState().glareOn = true;
    EXPECT_FALSE(second.editorState().glareOn);
    EXPECT_NE(first.navigationController().root(), second.navigationController().root());
}

TEST_F(ApplicationTest, tasksStillQueuedWhenTheApplicationGoesDoNothing) {
    launch();
    list().update();
    EXPECT_EQ(fake.queue.pending(), 1U);
    application.reset();
    fake.web.requests.clear();
    fake.queue.runAll();
    EXPECT_THAT(fake.web.requests, IsEmpty());
}

TEST_F(ApplicationTest, authorizationThatIsAnsweredAfterTheEditorHasGoneOnlyLogs) {
    fake.photos.answerOnAnotherThread = true;
    launch();
    chooseRow(0);
    tapFrame("phone.png");
    navigation().popToRoot();
    fake.photos.join();
    EXPECT_TRUE(fake.log.contains("AuthTest PHAuthorizationStatusAuthorized"));
}

// Sessions
// ---------------------------------------------------------------------------------------------------------------

TEST_F(ApplicationTest, importedFrameIsShownEditedDeletedAndGone) {
    const std::string definition = fake.putElsewhere("mine.cfg", R"({"author": "Ida", "template_width": 4})");
    const std::string picture = fake.putElsewhere("mine.png", tinyPng(4, 4));
    launch();
    for (const std::string& path : {definition, picture}) {
        list().navigationItem.leftBarButtonItem->action();
        press(list(), "Import Mockup");
        pickDocument(list(), path);
        EXPECT_FALSE(list().presented());
    }

    chooseRow(1);
    EXPECT_THAT(frames(), ElementsAre("mine.png"));
    tapFrame("mine.png");
    const auto editor = top<EditingViewController>();
    ASSERT_TRUE(editor);
    EXPECT_TRUE(editor->definition().hasCreator());
    EXPECT_EQ(editor->phone()->image().pixelSize().width, 4);

    editor->navigationItem.rightBarButtonItem->action();
    press(*editor, "Delete Mockup");
    press(*editor, "Ok");
    EXPECT_EQ(navigation().stack().size(), 1U);
    EXPECT_THAT(fake.documentNames(), IsEmpty());

    chooseRow(1);
    EXPECT_THAT(frames(), IsEmpty());
}

TEST_F(ApplicationTest, askingToDeleteABuiltInReturnsToTheListAllTheSame) {
    launch();
    chooseRow(0);
    tapFrame("phone.png");
    const auto editor = top<EditingViewController>();
    editor->navigationItem.rightBarButtonItem->action();
    press(*editor, "Delete Mockup");
    press(*editor, "Ok");
    EXPECT_EQ(navigation().top().get(), &list());
    EXPECT_EQ(fake.files.changes(), 0);
}

TEST_F(ApplicationTest, updatedCatalogueShowsItsNewFrame) {
    const std::string published = R"({"version": "1.10", "tableItems": [{"typeLabel": "Tablets"}],
        "viewInfo": {"Tablets": {"images": ["tablet.png"]}},
        "editInfo": {"tablet.png": {"finalFrameWidth": 60}}, "otaImages": ["tablet.png", "phone.png"]})";
    fake.web.replies["https://maker.test/quillomat/updates/main.json"] = bytesOf(published);
    fake.web.replies["https://www.maker.test/quillomat/updates/main.json"] = bytesOf(published);
    fake.web.replies["https://maker.test/quillomat/updates/images/tablet.png"] = tinyPng(6, 6);
    launch();
    const auto press = list().navigationItem.rightBarButtonItem->action;
    press();
    fake.queue.advance(2s);
    EXPECT_FALSE(list().navigationItem.rightBarButtonItem);
    chooseRow(0);
    tapFrame("tablet.png");
    const auto editor = top<EditingViewController>();
    ASSERT_TRUE(editor);
    EXPECT_EQ(editor->phone()->image().pixelSize().width, 6);
    EXPECT_EQ(editor->definition().canvasSize().width, 60);
    EXPECT_FALSE(fake.hasDocument("phone.png"));
}

TEST_F(ApplicationTest, importNamedLikeABuiltInReplacesItsDefinitionAndNotItsPicture) {
    fake.putDocument("phone.cfg", R"({"template_width": 7})");
    fake.putDocument("phone.png", tinyPng(9, 9));
    launch();
    chooseRow(0);
    tapFrame("phone.png");
    const auto editor = top<EditingViewController>();
    EXPECT_EQ(editor->definition().canvasSize().width, 7);
    EXPECT_EQ(editor->phone()->image().pixelSize().width, 3);
}

} // namespace
} // namespace quillomat::testing
