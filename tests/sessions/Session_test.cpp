// Every road through the three screens, each as one person walks it.
#include "Session.h"

#include <gtest/gtest.h>

#include <chrono>

namespace quillomat {
namespace {

using namespace std::chrono_literals;
using testing::pixelOf;
using testing::plainPicture;
using testing::Rgba;
using testing::Session;

constexpr Rgba red{255, 0, 0, 255};
constexpr Rgba green{0, 255, 0, 255};
constexpr Rgba blue{0, 0, 255, 255};
constexpr Rgba yellow{255, 255, 0, 255};

struct SessionTest : ::testing::Test {
    testing::FakePlatform world;
    SessionTest() { Session::installCatalogue(world); }

    /// A user's frame of 60 x 80 pixels: a grey border of five around an open screen.
    void importFrame(const std::string& name, const std::string& author) {
        world.putDocument(name + ".cfg",
                          R"({"left_top_x":5,"left_top_y":5,"right_top_x":55,"right_top_y":5,"left_bottom_x":5,)"
                          R"("left_bottom_y":75,"right_bottom_x":55,"right_bottom_y":75,"template_width":60,)"
                          R"("template_height":80,"corner_radius":0)" +
                              (author.empty() ? std::string() : R"(,"author":")" + author + "\"") + "}");
        Bitmap frame(PixelSize{60, 80});
        for (int y = 0; y < 80; ++y) {
            for (int x = 0; x < 60; ++x) {
                const bool open = x >= 5 && x < 55 && y >= 5 && y < 75;
                const std::uint8_t value = open ? 0 : 128;
                auto* pixel = frame.row(y) + x * 4;
                pixel[0] = pixel[1] = pixel[2] = value;
                pixel[3] = open ? 0 : 255;
            }
        }
        world.putDocument(name + ".png", *encodePng(frame));
    }

    const Image& saved() const { return world.photos.written.back(); }
};

TEST_F(SessionTest, onePersonsWayFromLaunchToTheSavedMockupAndBackToTheList) {
    Session session(world);
    EXPECT_EQ(session.list().title, "Selection");
    session.choose("Phones");
    EXPECT_EQ(session.depth(), 2U);
    session.tapFrame("tilted.png");
    const auto editor = session.editor();
    ASSERT_NE(editor, nullptr);

    session.pick(editor->addLeftButton(), plainPicture(red));
    session.pick(editor->addBGButton(), plainPicture(blue), plainPicture(green));
    EXPECT_EQ(session.host().alert(), nullptr) << "the question comes a moment later";
    session.host().advance(100ms);
    ASSERT_NE(session.host().alert(), nullptr);
    EXPECT_EQ(session.host().alert()->message(), "Blur background Image?");
    session.host().press("No");

    editor->saveButton()->press();
    ASSERT_EQ(world.photos.written.size(), 1U);
    EXPECT_EQ(saved().pixelSize(), (PixelSize{480, 480}));
    EXPECT_EQ(pixelOf(saved(), 240, 240), red) << "the screenshot, seen through the frame";
    EXPECT_EQ(pixelOf(saved(), 4, 4), green) << "the cut background, not the whole photograph";

    ASSERT_NE(session.host().alert(), nullptr);
    EXPECT_EQ(session.host().alert()->title(), "Screenshot");
    EXPECT_EQ(session.host().alert()->message(), "Image saved to camera roll \n\n");
    session.host().press("Thanks!");
    EXPECT_EQ(session.depth(), 1U);
}

TEST_F(SessionTest, aBlurredBackgroundKeepsItsEdges) {
    Session session(world);
    const auto editor = session.open("Phones", "upright.png");
    session.pick(editor->addBGButton(), plainPicture(green), plainPicture(green, 480, 480));
    session.host().advance(100ms);
    session.host().press("Yes");
    session.pick(editor->addLeftButton(), plainPicture(red));
    editor->saveButton()->press();
    EXPECT_EQ(pixelOf(saved(), 0, 0), green);
    EXPECT_EQ(pixelOf(saved(), 479, 479), green);
}

TEST_F(SessionTest, aCancelledBackgroundPickSendsTheNextLeftPickToTheBackground) {
    Session session(world);
    const auto editor = session.open("Phones", "tilted.png");
    editor->addBGButton()->press();
    session.host().cancelPicker();
    session.pick(editor->addLeftButton(), plainPicture(red));
    EXPECT_FALSE(editor->background()->image()) << "a left pick has no cut picture";
    EXPECT_FALSE(editor->inside1()->image());
    EXPECT_TRUE(session.state().pickingLeft);
    session.host().advance(100ms);
    ASSERT_NE(session.host().alert(), nullptr) << "the question is asked all the same";
    session.host().press("No");
    session.pick(editor->addLeftButton(), plainPicture(blue));
    EXPECT_TRUE(editor->inside1()->image());
    EXPECT_FALSE(session.state().pickingLeft);
}

TEST_F(SessionTest, aStaleBackgroundFlagMeetsTheNextEditor) {
    Session session(world);
    session.open("Phones", "tilted.png")->addBGButton()->press();
    session.host().cancelPicker();
    session.backToTheList();
    const auto next = session.open("Phones", "upright.png");
    session.pick(next->addLeftButton(), plainPicture(red), {});
    EXPECT_FALSE(next->inside1()->image());
    EXPECT_FALSE(session.state().pickingBackground);
}

TEST_F(SessionTest, aStaleBackgroundFlagSpendsACreatorMockupsOnlyPick) {
    importFrame("mine", "Ada");
    Session session(world);
    session.open("Phones", "tilted.png")->addBGButton()->press();
    session.host().cancelPicker();
    session.backToTheList();
    const auto editor = session.open("Imported", "mine.png");
    session.pick(editor->addLeftButton(), plainPicture(red));
    EXPECT_TRUE(session.state().pendingImage) << "composed at once, though without a screenshot";
    EXPECT_FALSE(editor->addLeftButton()->enabled);
    EXPECT_NE(pixelOf(session.state().pendingImage, 30, 40), red);
}

TEST_F(SessionTest, twoScreenshotsLandOnTheirScreens) {
    Session session(world);
    const auto editor = session.open("Scenes", "duo.png");
    EXPECT_TRUE(editor->addRightButton()->enabled);
    session.pick(editor->addLeftButton(), plainPicture(red));
    session.pick(editor->addRightButton(), plainPicture(blue));
    editor->saveButton()->press();
    EXPECT_EQ(saved().pixelSize(), (PixelSize{520, 480}));
    EXPECT_EQ(pixelOf(saved(), 160, 220), red);
    EXPECT_EQ(pixelOf(saved(), 340, 260), blue);
}

TEST_F(SessionTest, aTallScreenGoesTheHalfSizeWayWithTheRadiusItsDefinitionGives) {
    world.putDocument("tall.cfg",
                      R"({"left_top_x":0,"left_top_y":0,"right_top_x":400,"right_top_y":0,"left_bottom_x":0,)"
                      R"("left_bottom_y":2731,"right_bottom_x":400,"right_bottom_y":2731,"template_width":400,)"
                      R"("template_height":2731,"corner_radius":100})");
    world.putDocument("tall.png", *encodePng(Bitmap(PixelSize{400, 2731})));
    std::filesystem::remove(world.resourcesDirectory() + "/images/tall.png");
    Session session(world);
    const auto editor = session.open("Imported", "tall.png");
    session.pick(editor->addLeftButton(), plainPicture(red));
    editor->saveButton()->press();
    EXPECT_TRUE(world.log.contains("RESET OVER A BUNCH"));
    // The arc of radius 100 crosses the diagonal 29.3 pixels in; one of twice the radius would at 58.6.
    EXPECT_EQ(pixelOf(saved(), 200, 1300), red);
    EXPECT_EQ(pixelOf(saved(), 40, 40), red);
    EXPECT_EQ(pixelOf(saved(), 20, 20), (Rgba{0, 0, 0, 255})) << "what the warped screen leaves open is black";
}

TEST_F(SessionTest, aLargeNameShowsThePictureOfItsTwinAndSavesItsOwnCanvas) {
    Session session(world);
    const auto editor = session.open("Phones", "pair-large.png");
    EXPECT_EQ(editor->imageInfo(), "pair-large.png");
    EXPECT_EQ(session.state().frameImageName, "pair.png");
    EXPECT_EQ(editor->phone()->image().pixelSize(), (PixelSize{480, 480}));
    session.pick(editor->addLeftButton(), plainPicture(red));
    editor->saveButton()->press();
    EXPECT_EQ(saved().pixelSize(), (PixelSize{480, 480}));
    session.host().press("Thanks!");
    const auto twin = session.open("Phones", "pair.png");
    session.pick(twin->addLeftButton(), plainPicture(red));
    twin->saveButton()->press();
    EXPECT_EQ(saved().pixelSize(), (PixelSize{240, 240}));
}

TEST_F(SessionTest, anImportWithAnAuthorComposesAtThePickAndSavesWithItsCredit) {
    importFrame("mine", "Ada");
    Session session(world);
    const auto editor = session.open("Imported", "mine.png");
    EXPECT_FALSE(editor->addBGButton()->enabled);
    EXPECT_FALSE(editor->addGlareButton()->enabled);
    session.pick(editor->addLeftButton(), plainPicture(red));
    EXPECT_TRUE(session.state().pendingImage);
    EXPECT_EQ(editor->phone()->image(), session.state().pendingImage);
    EXPECT_TRUE(world.photos.written.empty());
    editor->saveButton()->press();
    ASSERT_EQ(world.photos.written.size(), 1U);
    EXPECT_EQ(pixelOf(saved(), 30, 40), red);
    EXPECT_EQ(session.host().alert()->message(), "Image saved to camera roll \n\n Mockup created by Ada");
    EXPECT_FALSE(session.state().pendingImage);
}

TEST_F(SessionTest, anImportWithoutAnAuthorIsAFrameLikeAnyOtherAndCannotBeDeleted) {
    importFrame("plain", "");
    Session session(world);
    const auto editor = session.open("Imported", "plain.png");
    EXPECT_TRUE(editor->addBGButton()->enabled);
    session.host().pressRightBarButton();
    session.host().press("Delete Mockup");
    EXPECT_EQ(session.host().alert()->message(), "Nothing removed. You can only delete mockups you added.");
    session.host().press("Ok");
    EXPECT_EQ(session.depth(), 1U) << "back to the list, whatever came of it";
    EXPECT_TRUE(world.files.fileExists(world.document("plain.cfg")));
}

TEST_F(SessionTest, aPendingPictureIsSavedByTheNextEditorWithThatEditorsCredit) {
    importFrame("mine", "Ada");
    Session session(world);
    session.pick(session.open("Imported", "mine.png")->addLeftButton(), plainPicture(red));
    session.backToTheList();
    const auto other = session.open("Phones", "tilted.png");
    session.pick(other->addLeftButton(), plainPicture(blue));
    other->saveButton()->press();
    EXPECT_EQ(saved().pixelSize(), (PixelSize{60, 80})) << "the waiting picture, not this mockup";
    EXPECT_EQ(session.host().alert()->message(), "Image saved to camera roll \n\n") << "but this mockup's credit";
    EXPECT_FALSE(session.state().pendingImage);
    EXPECT_TRUE(other->inside1()->image()) << "nothing else of the editor has changed";
}

TEST_F(SessionTest, glareCarriesOverUnseenAndTheFirstPressTurnsItOff) {
    Session session(world);
    const auto first = session.open("Phones", "upright.png");
    first->addGlareButton()->press();
    EXPECT_TRUE(first->overlay()->image());
    session.backToTheList();

    const auto second = session.open("Phones", "upright.png");
    EXPECT_TRUE(session.state().glareOn);
    EXPECT_FALSE(second->overlay()->image()) << "a new editor shows none";
    session.pick(second->addLeftButton(), plainPicture({0, 0, 0, 255}));
    second->saveButton()->press();
    const Image withGlare = saved();
    session.host().press("Thanks!");

    const auto third = session.open("Phones", "upright.png");
    third->addGlareButton()->press();
    EXPECT_FALSE(session.state().glareOn);
    session.pick(third->addLeftButton(), plainPicture({0, 0, 0, 255}));
    third->saveButton()->press();
    EXPECT_FALSE(*withGlare.bitmap() == *saved().bitmap()) << "yet it was composed into the picture";
}

TEST_F(SessionTest, anImportNamedLikeABuiltInChangesTheDefinitionAndNotThePicture) {
    importFrame("upright", "Ada");
    Session session(world);
    const auto editor = session.open("Phones", "upright.png");
    EXPECT_EQ(editor->phone()->image().pixelSize(), (PixelSize{480, 480})) << "resources come before documents";
    EXPECT_FALSE(editor->addBGButton()->enabled);
    session.pick(editor->addLeftButton(), plainPicture(red));
    EXPECT_EQ(session.state().pendingImage.pixelSize(), (PixelSize{60, 80}));
}

TEST_F(SessionTest, deletingAnImportRemovesItsFilesAndItsPlaceInTheGallery) {
    importFrame("mine", "Ada");
    importFrame("other", "Bob");
    Session session(world);
    session.choose("Imported");
    EXPECT_EQ(session.shownMockups(), (std::vector<std::string>{"mine.png", "other.png"}));
    session.tapFrame("mine.png");
    session.host().pressRightBarButton();
    session.host().press("Delete Mockup");
    EXPECT_EQ(session.host().alert()->title(), "Completed");
    EXPECT_EQ(session.host().alert()->message(), "Deleted mockup named mine.png");
    session.host().press("Ok");
    EXPECT_EQ(session.depth(), 1U);
    session.choose("Imported");
    EXPECT_EQ(session.shownMockups(), std::vector<std::string>{"other.png"});
    EXPECT_FALSE(world.files.fileExists(world.document("mine.cfg")));
}

TEST_F(SessionTest, aFrameImportedThroughTheSheetShowsInTheNextGallery) {
    importFrame("picked", "Ada");
    const std::string elsewhere = world.elsewhere();
    for (const char* name : {"/picked.cfg", "/picked.png"}) {
        std::filesystem::rename(world.documentsDirectory() + name, elsewhere + name);
    }
    Session session(world);
    for (const char* name : {"/picked.cfg", "/picked.png"}) {
        session.host().pressLeftBarButton();
        session.host().press("Import Mockup");
        ASSERT_TRUE(session.host().pickDocument(elsewhere + name));
        EXPECT_EQ(session.host().alert(), nullptr) << "no question for a new name";
    }
    session.choose("Imported");
    EXPECT_EQ(session.shownMockups(), std::vector<std::string>{"picked.png"});
}

TEST_F(SessionTest, importingTheSameFileAgainAsksFirst) {
    const std::string file = world.elsewhere() + "/frame.cfg";
    testing::FakePlatform::put(file, "{\"author\": \"first\"}");
    Session session(world);
    session.list().showFilePicker();
    session.host().pickDocument(file);
    testing::FakePlatform::put(file, "{\"author\": \"second\"}");
    const auto stored = [&] { return testing::textOf(*world.files.read(world.document("frame.cfg"), 1000)); };

    session.list().showFilePicker();
    session.host().pickDocument(file);
    ASSERT_NE(session.host().alert(), nullptr);
    EXPECT_EQ(session.host().alert()->title(), "File Already Exists");
    session.host().press("No");
    EXPECT_EQ(stored(), "{\"author\": \"first\"}");

    session.list().showFilePicker();
    session.host().pickDocument(file);
    session.host().press("Yes");
    EXPECT_EQ(stored(), "{\"author\": \"second\"}");
}

TEST_F(SessionTest, anUpdateBringsANewRowWhoseFrameCanBeSaved) {
    const std::string shortUrl = "https://maker.test/quillomat/updates/";
    const std::string longUrl = "https://www.maker.test/quillomat/updates/";
    const auto catalogue = testing::bytesOf(
        R"({"version":"99","tableItems":[{"typeLabel":"New","sizeLabel":1,"descLabel":"d","previewImage":"new.png"}],)"
        R"("viewInfo":{"New":{"images":["new.png"]},"Imported":{"images":[]}},"otaImages":["new.png","upright.png"],)"
        R"("editInfo":{"new.png":{"FtopLeftX":-10,"FtopLeftY":-10,"FtopRightX":30,"FtopRightY":-10,"FbottomLeftX":-10,)"
        R"("FbottomLeftY":50,"FbottomRightX":30,"FbottomRightY":50,"cornerRadius":0,"frameWidth":40,"frameHeight":60,)"
        R"("finalFrameWidth":40,"finalFrameHeight":60}}})");
    world.web.replies[shortUrl + "main.json"] = catalogue;
    world.web.replies[longUrl + "main.json"] = catalogue;
    world.web.replies[shortUrl + "images/new.png"] = *encodePng(Bitmap(PixelSize{40, 60}));

    Session session(world);
    ASSERT_TRUE(session.list().navigationItem.rightBarButtonItem);
    EXPECT_EQ(session.list().navigationItem.rightBarButtonItem->title, "Update Available");
    session.host().pressRightBarButton();
    session.host().advance(2s);
    EXPECT_FALSE(session.list().navigationItem.rightBarButtonItem);
    EXPECT_EQ(session.list().title, "Selection");
    EXPECT_FALSE(world.files.fileExists(world.document("upright.png"))) << "the resources hold it";

    const auto editor = session.open("New", "new.png");
    session.pick(editor->addLeftButton(), plainPicture(yellow));
    editor->saveButton()->press();
    EXPECT_EQ(pixelOf(saved(), 20, 30), yellow);
}

TEST_F(SessionTest, choosingTheSameRowTwiceMakesTwoGalleries) {
    Session session(world);
    session.choose("Phones");
    const auto first = session.gallery().shared_from_this(); // held, so that its place is not given to the second
    session.backToTheList();
    importFrame("late", "");
    session.choose("Phones");
    EXPECT_NE(session.gallery().shared_from_this(), first);
    EXPECT_EQ(session.gallery().viewInfo()["Imported"]["images"].count(), 1U) << "read afresh";
}

TEST_F(SessionTest, leavingTheEditorBeforeTheQuestionComesUpAsksNothing) {
    Session session(world);
    session.pick(session.open("Phones", "tilted.png")->addBGButton(), plainPicture(red), plainPicture(red));
    session.backToTheList();
    session.host().advance(1s);
    EXPECT_EQ(session.host().alert(), nullptr);
    EXPECT_EQ(session.depth(), 1U);
}

TEST_F(SessionTest, aSecondLaunchStartsFromAKnownState) {
    {
        Session first(world);
        first.open("Phones", "upright.png")->addGlareButton()->press();
        EXPECT_TRUE(first.state().glareOn);
    }
    Session second(world);
    EXPECT_FALSE(second.state().glareOn);
    EXPECT_FALSE(second.state().pendingImage);
}

TEST_F(SessionTest, withoutACatalogueTheListIsEmptyAndStaysUsable) {
    std::filesystem::remove(world.resourcesDirectory() + "/main.json");
    Session session(world);
    EXPECT_EQ(session.list().tableViewNumberOfRowsInSection(0), 0U);
    session.host().pressLeftBarButton();
    ASSERT_NE(session.host().alert(), nullptr);
    session.host().press("Get Import Location");
    ASSERT_NE(session.host().alert(), nullptr);
    EXPECT_EQ(session.host().alert()->message(), "The imported resources are saved in " + world.documentsDirectory());
    session.host().press("Ok");
    EXPECT_EQ(session.host().alert(), nullptr);
}

TEST_F(SessionTest, everyWebPageOpensAfterTheSheetHasGone) {
    Session session(world);
    for (const char* title : {"Import Tutorial", "Browse Mockups", "Support this free app"}) {
        session.host().pressLeftBarButton();
        session.host().press(title);
    }
    EXPECT_EQ(world.urls.opened,
              (std::vector<std::string>{"https://tutorial.test/importing", "https://maker.test/quillomat/mockups/",
                                        "https://maker.test/quillomat/support"}));
}

} // namespace
} // namespace quillomat
