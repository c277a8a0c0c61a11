#include "CatalogueTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>

namespace quillomat::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

std::string versionOnly(const std::string& version) {
    return R"({"version": ")" + version + R"("})";
}

class UpdateTest : public CatalogueTest {
protected:
    bool offersUpdate(const std::string& local, const std::string& published) {
        fake.putResource("main.json", local);
        publish(published);
        return launch().navigationItem.rightBarButtonItem.has_value();
    }

    /// A later catalogue that lists these pictures, written as JSON.
    void publishWithPictures(const std::string& otaImages) {
        publish(R"({"version": "1.10", "tableItems": [{"typeLabel": "New"}], "otaImages": )" + otaImages + "}");
    }
    void serve(const std::string& name, int width = 6) { fake.web.replies[pictureUrl(name)] = tinyPng(width, 1); }

    [[nodiscard]] bool wasFetched(const std::string& name) const {
        return std::count(fake.web.requests.begin(), fake.web.requests.end(), pictureUrl(name)) > 0;
    }
    [[nodiscard]] std::string storedPath() const { return fake.document("main.json"); }
};

// Comparing revisions
// ---------------------------------------------------------------------------------------------------

TEST_F(UpdateTest, laterPublishedRevisionShowsTheButton) {
    EXPECT_TRUE(offersUpdate(versionOnly("1.9"), versionOnly("1.10")));
}

TEST_F(UpdateTest, equalRevisionShowsNoButton) {
    EXPECT_FALSE(offersUpdate(versionOnly("2.0"), versionOnly("2.0")));
}

TEST_F(UpdateTest, earlierRevisionShowsNoButton) {
    EXPECT_FALSE(offersUpdate(versionOnly("3"), versionOnly("2.9")));
}

TEST_F(UpdateTest, digitRunsCompareByValue) {
    EXPECT_TRUE(offersUpdate(versionOnly("9"), versionOnly("10")));
    EXPECT_FALSE(offersUpdate(versionOnly("10"), versionOnly("9")));
    EXPECT_TRUE(offersUpdate(versionOnly("1.9a"), versionOnly("1.9b")));
}

TEST_F(UpdateTest, storedCopysRevisionCountsWhenThereIsOne) {
    fake.putDocument("main.json", versionOnly("2.0"));
    EXPECT_FALSE(offersUpdate(versionOnly("1.0"), versionOnly("2.0")));
}

TEST_F(UpdateTest, missingLocalRevisionIsOlderThanAnyPublishedOne) {
    for (const char* local : {"{}", "[]", "garbage", "", R"({"version": null})", R"({"version": 9})"}) {
        EXPECT_TRUE(offersUpdate(local, versionOnly("0"))) << local;
    }
}

TEST_F(UpdateTest, damagedStoredCatalogueOffersAnUpdateAndHealsByIt) {
    fake.putDocument("main.json", "{\"version\": \"1.9\", \"tab");
    EXPECT_TRUE(offersUpdate(versionOnly("1.9"), versionOnly("1.9")));
    list().update();
    fake.queue.runAll();
    EXPECT_EQ(fake.documentText("main.json"), versionOnly("1.9"));
    EXPECT_FALSE(list().navigationItem.rightBarButtonItem);
}

TEST_F(UpdateTest, failedFetchInTheComparisonIsNothingToDo) {
    launch();
    EXPECT_FALSE(list().navigationItem.rightBarButtonItem);
    EXPECT_FALSE(list().presented());
    EXPECT_THAT(fake.log.lines(), IsEmpty());
    EXPECT_THAT(fake.web.requests, ElementsAre(shortCatalogue));
}

TEST_F(UpdateTest, unparsableOrUnversionedReplyInTheComparisonIsNothingToDo) {
    for (const char* reply : {"", "<html>503</html>", "{", "null", "\"1.10\"", "[\"version\"]", "{}",
                              R"({"version": null})", R"({"version": 99})", R"({"version": ["9"]})"}) {
        EXPECT_FALSE(offersUpdate(versionOnly("1.9"), reply)) << reply;
    }
}

TEST_F(UpdateTest, publishedRevisionThatIsNoStringIsNoneEvenWithoutALocalOne) {
    EXPECT_FALSE(offersUpdate("{}", R"({"version": 99})"));
    EXPECT_FALSE(list().checkVersion().published);
}

TEST_F(UpdateTest, deeplyNestedReplyIsNothingToDo) {
    EXPECT_FALSE(offersUpdate(versionOnly("1.9"), std::string(1000000, '[')));
}

TEST_F(UpdateTest, comparisonClearsAButtonThatIsNoLongerTrue) {
    EXPECT_TRUE(offersUpdate(versionOnly("1.9"), versionOnly("1.10")));
    fake.web.replies.clear();
    list().checkVersion();
    EXPECT_FALSE(list().navigationItem.rightBarButtonItem);
}

TEST_F(UpdateTest, comparisonAsksTheShortHostFormOnceAtEveryLoading) {
    launch();
    list().viewDidLoad();
    EXPECT_THAT(fake.web.requests, ElementsAre(shortCatalogue, shortCatalogue));
}

TEST_F(UpdateTest, comparisonTellsWhatItFound) {
    offersUpdate(versionOnly("1.9"), versionOnly("1.10"));
    const RevisionCheck later = list().checkVersion();
    EXPECT_EQ(later.local, "1.9");
    EXPECT_EQ(later.published, "1.10");
    EXPECT_TRUE(later.isUpdateAvailable());
    fake.web.replies.clear();
    const RevisionCheck silent = list().checkVersion();
    EXPECT_EQ(silent.local, "1.9");
    EXPECT_FALSE(silent.published);
    EXPECT_FALSE(silent.isUpdateAvailable());
}

TEST_F(UpdateTest, buttonIsDoneStyledWithABoldTwelvePointTitle) {
    offersUpdate(versionOnly("1.9"), versionOnly("1.10"));
    const BarButtonItem& button = *list().navigationItem.rightBarButtonItem;
    EXPECT_EQ(button.title, "Update Available");
    EXPECT_EQ(button.style, BarButtonStyle::done);
    EXPECT_TRUE(button.bold);
    EXPECT_EQ(button.fontSize, 12);
    const auto action = button.action;
    action();
    EXPECT_EQ(fake.documentText("main.json"), versionOnly("1.10"));
}

// The update
// ------------------------------------------------------------------------------------------------------------

TEST_F(UpdateTest, fetchesShortThenPicturesThenLong) {
    publishWithPictures(R"(["a.png", "b.png"])");
    launch();
    fake.web.requests.clear();
    list().update();
    EXPECT_THAT(fake.web.requests,
                ElementsAre(shortCatalogue, pictureUrl("a.png"), pictureUrl("b.png"), longCatalogue));
}

TEST_F(UpdateTest, pictureThatTheResourcesHoldIsNotFetched) {
    publishWithPictures(R"(["phone.png", "a.png"])");
    serve("a.png");
    launch();
    const UpdateReport report = list().update();
    EXPECT_FALSE(wasFetched("phone.png"));
    EXPECT_FALSE(fake.hasDocument("phone.png"));
    EXPECT_EQ(report.skippedPictures, 1);
    EXPECT_EQ(report.fetchedPictures, 1);
}

TEST_F(UpdateTest, resourcesAreAskedForTheBaseNameAsPngWhateverTheListedExtension) {
    publishWithPictures(R"(["phone.jpg", "phone"])");
    launch();
    EXPECT_EQ(list().update().skippedPictures, 2);
}

TEST_F(UpdateTest, missingPictureIsFetchedOnEveryUpdateAndReplacesTheOlderCopy) {
    publishWithPictures(R"(["a.png"])");
    serve("a.png", 6);
    launch();
    list().update();
    serve("a.png", 8);
    list().update();
    EXPECT_EQ(CatalogueDocument(fake.platform).pictureNamed("a.png").pixelSize().width, 8);
    EXPECT_EQ(std::count(fake.web.requests.begin(), fake.web.requests.end(), pictureUrl("a.png")), 2);
}

TEST_F(UpdateTest, nameThatNeedsEscapingIsSkippedWithoutAFetch) {
    for (const char* name : {"two words.png", "gr\xC3\xBCn.png", "a<b.png", "a\\\"b.png", "50%.png", "a^b.png",
                             "a|b.png", "a\\u0001.png", "a\\u007f.png", "{x}.png", "[x].png"}) {
        fake.web.requests.clear();
        publishWithPictures("[\"" + std::string(name) + "\"]");
        launch();
        fake.web.requests.clear();
        EXPECT_EQ(list().update().failedPictures, 1) << name;
        EXPECT_THAT(fake.web.requests, ElementsAre(shortCatalogue, longCatalogue)) << name;
    }
}

TEST_F(UpdateTest, escapedNameIsFetchedAndStoredAsListed) {
    publishWithPictures(R"(["a%20b.png"])");
    serve("a%20b.png");
    launch();
    list().update();
    EXPECT_TRUE(fake.hasDocument("a%20b.png"));
}

TEST_F(UpdateTest, pictureThatDoesNotArriveIsSkippedSilently) {
    publishWithPictures(R"(["gone.png", "a.png"])");
    serve("a.png");
    launch();
    const UpdateReport report = list().update();
    EXPECT_EQ(report.failedPictures, 1);
    EXPECT_FALSE(fake.hasDocument("gone.png"));
    EXPECT_TRUE(fake.hasDocument("a.png"));
    EXPECT_FALSE(list().presented());
}

TEST_F(UpdateTest, picturesFollowTheSecondFetchAndTheStoredDocumentIsTheThird) {
    const std::string third = R"({"version": "7", "otaImages": ["c.png"]})";
    publishWithPictures(R"(["a.png"])");
    fake.web.replies[longCatalogue] = bytesOf(third);
    serve("a.png");
    serve("c.png");
    launch();
    list().update();
    EXPECT_TRUE(fake.hasDocument("a.png"));
    EXPECT_FALSE(fake.hasDocument("c.png"));
    EXPECT_EQ(fake.documentText("main.json"), third);
}

TEST_F(UpdateTest, logLineComesAfterAGoodWriteToo) {
    publishWithPictures("[]");
    launch();
    list().update();
    EXPECT_THAT(fake.log.lines(), ElementsAre("dorvane ERROR (null) FilePath: " + storedPath()));
}

TEST_F(UpdateTest, logLineOfAGoodWriteCarriesTheSecondFetchsParseError) {
    publishWithPictures("[]");
    launch();
    fake.web.replies[shortCatalogue] = bytesOf("garbage");
    list().update();
    ASSERT_EQ(fake.log.lines().size(), 1U);
    EXPECT_THAT(fake.log.lines()[0], ::testing::StartsWith("dorvane ERROR "));
    EXPECT_THAT(fake.log.lines()[0], ::testing::EndsWith(" FilePath: " + storedPath()));
    EXPECT_THAT(fake.log.lines()[0], Not(::testing::HasSubstr("(null)")));
    EXPECT_TRUE(fake.hasDocument("main.json"));
}

TEST_F(UpdateTest, secondFetchThatFailsLeavesTheErrorSlotEmptyAndFetchesNoPictures) {
    publishWithPictures(R"(["a.png"])");
    launch();
    fake.web.replies.erase(shortCatalogue);
    fake.web.requests.clear();
    list().update();
    EXPECT_THAT(fake.web.requests, ElementsAre(shortCatalogue, longCatalogue));
    EXPECT_THAT(fake.log.lines(), ElementsAre("dorvane ERROR (null) FilePath: " + storedPath()));
}

TEST_F(UpdateTest, failedWriteIsVisibleOnlyInTheLogLine) {
    publishWithPictures("[]");
    launch();
    fake.files.failFromChange = 0;
    const UpdateReport report = list().update();
    EXPECT_TRUE(report.catalogueArrived);
    EXPECT_FALSE(report.catalogueStored);
    EXPECT_THAT(fake.log.lines(), ElementsAre("dorvane ERROR no space left on device FilePath: " + storedPath()));
    EXPECT_FALSE(list().presented());
    EXPECT_FALSE(fake.hasDocument("main.json"));
}

TEST_F(UpdateTest, writeErrorReplacesTheParseErrorInTheLogLine) {
    publishWithPictures("[]");
    launch();
    fake.web.replies[shortCatalogue] = bytesOf("garbage");
    fake.files.failFromChange = 0;
    list().update();
    EXPECT_THAT(fake.log.lines(), ElementsAre("dorvane ERROR no space left on device FilePath: " + storedPath()));
}

TEST_F(UpdateTest, withoutAThirdReplyNothingIsWrittenOrLoggedAndTheButtonComesBack) {
    fake.putDocument("main.json", catalogue);
    publishWithPictures("[]");
    launch();
    fake.web.replies.erase(longCatalogue);
    const UpdateReport report = list().update();
    EXPECT_FALSE(report.catalogueArrived);
    EXPECT_THAT(fake.log.lines(), IsEmpty());
    fake.queue.advance(2s);
    EXPECT_EQ(fake.documentText("main.json"), catalogue);
    EXPECT_EQ(list().view()->subviews().size(), 0U);
    ASSERT_TRUE(list().navigationItem.rightBarButtonItem);
}

TEST_F(UpdateTest, thirdReplyIsStoredAsItIsAndTheNextUpdateHealsIt) {
    publishWithPictures("[]");
    launch();
    const auto good = fake.web.replies[longCatalogue];
    fake.web.replies[longCatalogue] = bytesOf("<html>moved</html>");
    list().update();
    fake.queue.runAll();
    EXPECT_EQ(fake.documentText("main.json"), "<html>moved</html>");
    EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 0U);
    ASSERT_TRUE(list().navigationItem.rightBarButtonItem);
    fake.web.replies[longCatalogue] = good;
    list().update();
    fake.queue.runAll();
    EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 1U);
    EXPECT_FALSE(list().navigationItem.rightBarButtonItem);
}

TEST_F(UpdateTest, emptyThirdReplyIsDataThatArrived) {
    publishWithPictures("[]");
    launch();
    fake.web.replies[longCatalogue] = Bytes{};
    EXPECT_TRUE(list().update().catalogueStored);
    EXPECT_TRUE(fake.hasDocument("main.json"));
}

TEST_F(UpdateTest, afterwardsTheScreenIsRefreshedAndTheButtonGone) {
    publishWithPictures("[]");
    launch();
    int reloads = 0;
    list().tableView()->dataReloaded = [&] { ++reloads; };
    list().update();
    EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 2U);
    fake.queue.advance(2s);
    EXPECT_EQ(list().title, "Selection");
    EXPECT_EQ(list().navigationItem.leftBarButtonItem->title, "Options");
    EXPECT_FALSE(list().navigationItem.rightBarButtonItem);
    EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 1U);
    EXPECT_EQ(reloads, 1);
    EXPECT_EQ(fake.queue.pending(), 0U);
}

TEST_F(UpdateTest, comparisonRunsAgainAfterTheUpdate) {
    publishWithPictures("[]");
    launch();
    list().update();
    fake.web.requests.clear();
    fake.queue.advance(2s);
    EXPECT_THAT(fake.web.requests, ElementsAre(shortCatalogue));
}

TEST_F(UpdateTest, progressBoxStandsInTheMiddleForExactlyTwoSeconds) {
    publishWithPictures("[]");
    launch();
    list().update();
    ASSERT_EQ(list().view()->subviews().size(), 1U);
    const auto box = list().view()->subviews()[0];
    EXPECT_EQ(box->bounds().size, (Size{200, 30}));
    EXPECT_EQ(box->center(), list().view()->center());
    EXPECT_EQ(box->backgroundColor, Color::white());
    EXPECT_EQ(box->cornerRadius, 5.0);
    EXPECT_TRUE(box->masksToBounds);
    fake.queue.advance(1'999'999'999ns);
    EXPECT_EQ(box->superview(), list().view());
    fake.queue.advance(1ns);
    EXPECT_FALSE(box->superview());
}

TEST_F(UpdateTest, progressBoxHoldsItsMessage) {
    publishWithPictures("[]");
    launch();
    list().update();
    const auto box = list().view()->subviews().at(0);
    const auto message = std::dynamic_pointer_cast<TextView>(box->subviews().at(0));
    ASSERT_TRUE(message);
    EXPECT_EQ(message->frame(), makeRect(0, 0, 200, 30));
    EXPECT_EQ(message->text, "Downloading Files");
    EXPECT_EQ(message->backgroundColor, Color::clear());
    EXPECT_EQ(message->textColor, Color::black());
    EXPECT_EQ(message->font, (Font{15, false}));
    EXPECT_EQ(message->alignment, TextAlignment::center);
    EXPECT_FALSE(message->editable);
    EXPECT_FALSE(message->scrollEnabled);
}

TEST_F(UpdateTest, progressBoxIsThereBeforeTheFirstFetch) {
    publishWithPictures("[]");
    launch();
    std::vector<std::size_t> boxes;
    fake.web.onRequest = [&](const std::string&, std::size_t) { boxes.push_back(list().view()->subviews().size()); };
    list().update();
    EXPECT_THAT(boxes, ElementsAre(1U, 1U));
}

TEST_F(UpdateTest, secondPressBeforeTheFirstHasEndedRemovesBothBoxes) {
    publishWithPictures("[]");
    launch();
    list().update();
    fake.queue.advance(1s);
    list().update();
    EXPECT_EQ(list().view()->subviews().size(), 2U);
    fake.queue.advance(1s);
    EXPECT_EQ(list().view()->subviews().size(), 1U);
    fake.queue.advance(1s);
    EXPECT_EQ(list().view()->subviews().size(), 0U);
}

TEST_F(UpdateTest, taskOfAListThatIsGoneDoesNothing) {
    publishWithPictures("[]");
    launch();
    list().update();
    navigation.reset();
    forgetList();
    fake.web.requests.clear();
    fake.queue.runAll();
    EXPECT_THAT(fake.web.requests, IsEmpty());
}

TEST_F(UpdateTest, updateKeepsNoStateOfItsOwn) {
    publishWithPictures("[]");
    launch();
    list().update();
    fake.queue.runAll();
    EXPECT_FALSE(launch().navigationItem.rightBarButtonItem); // equal now
    publish(versionOnly("1.11"));
    EXPECT_TRUE(launch().navigationItem.rightBarButtonItem);
}

TEST_F(UpdateTest, listOfPicturesThatIsNoListFetchesNone) {
    for (const char* listed : {"null", "{}", "3", "\"a.png\"", "[]"}) {
        publishWithPictures(listed);
        launch();
        fake.web.requests.clear();
        list().update();
        EXPECT_THAT(fake.web.requests, ElementsAre(shortCatalogue, longCatalogue)) << listed;
    }
}

TEST_F(UpdateTest, listedElementsThatAreNoStringsAreSkipped) {
    publishWithPictures(R"([null, 3, {}, ["a.png"], "a.png"])");
    serve("a.png");
    launch();
    const UpdateReport report = list().update();
    EXPECT_EQ(report.fetchedPictures, 1);
    EXPECT_EQ(report.failedPictures, 4);
}

// Hostile names and files
// -----------------------------------------------------------------------------------------------

TEST_F(UpdateTest, hostileNamesAreNeitherFetchedNorWritten) {
    const std::string outside = fake.elsewhere() + "/evil.png";
    const std::vector<std::string> listed{"../elsewhere/evil.png",
                                          outside,
                                          "..",
                                          ".",
                                          "",
                                          "/",
                                          "sub/evil.png",
                                          "./evil.png",
                                          "a\\u0000.png",
                                          "..\\\\evil.png",
                                          std::string(256, 'a')};
    for (const std::string& name : listed) {
        publishWithPictures("[\"" + name + "\"]");
        launch();
        fake.web.requests.clear();
        const auto before = fake.documentNames();
        fake.files.failFromChange = JournalledFiles::never;
        const UpdateReport report = list().update();
        EXPECT_EQ(report.failedPictures, 1) << name.substr(0, 40);
        EXPECT_THAT(fake.web.requests, ElementsAre(shortCatalogue, longCatalogue)) << name.substr(0, 40);
        EXPECT_THAT(fake.documentNames(), ElementsAre("main.json"));
        EXPECT_TRUE(fs::is_empty(fake.elsewhere())) << name.substr(0, 40);
    }
}

TEST_F(UpdateTest, longestPossibleNameIsFetched) {
    const std::string name = std::string(251, 'a') + ".png";
    publishWithPictures("[\"" + name + "\"]");
    serve(name);
    launch();
    EXPECT_EQ(list().update().fetchedPictures, 1);
    EXPECT_TRUE(fake.hasDocument(name));
}

TEST_F(UpdateTest, pictureReplacesALinkAndNotWhatItPointsTo) {
    const std::string outside = fake.putElsewhere("precious.png", "precious");
    fs::create_symlink(outside, fake.document("a.png"));
    publishWithPictures(R"(["a.png"])");
    serve("a.png");
    launch();
    EXPECT_EQ(list().update().fetchedPictures, 1);
    EXPECT_FALSE(fs::is_symlink(fake.document("a.png")));
    EXPECT_EQ(SystemFileManager().read(outside, 100).value(), bytesOf("precious"));
}

TEST_F(UpdateTest, catalogueReplacesALinkAndNotWhatItPointsTo) {
    const std::string outside = fake.putElsewhere("precious.json", "precious");
    fs::create_symlink(outside, fake.document("main.json"));
    publishWithPictures("[]");
    launch();
    EXPECT_TRUE(list().update().catalogueStored);
    EXPECT_FALSE(fs::is_symlink(fake.document("main.json")));
    EXPECT_EQ(SystemFileManager().read(outside, 100).value(), bytesOf("precious"));
}

TEST_F(UpdateTest, pictureNamedLikeAFolderFailsAloneAndTheRestArrives) {
    fs::create_directory(fake.document("a.png"));
    publishWithPictures(R"(["a.png", "b.png"])");
    serve("a.png");
    serve("b.png");
    launch();
    const UpdateReport report = list().update();
    EXPECT_EQ(report.failedPictures, 1);
    EXPECT_EQ(report.fetchedPictures, 1);
    EXPECT_TRUE(report.catalogueStored);
}

TEST_F(UpdateTest, documentsDirectoryThatIsGoneLosesNothingButTheUpdate) {
    publishWithPictures(R"(["a.png"])");
    serve("a.png");
    launch();
    fs::remove_all(fake.documentsDirectory());
    const UpdateReport report = list().update();
    EXPECT_EQ(report.failedPictures, 1);
    EXPECT_FALSE(report.catalogueStored);
    fake.queue.runAll();
    EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 2U); // the resource copy
}

TEST_F(UpdateTest, diskThatIsFullFromAnyStepOnLeavesAUsableCatalogueAndTheNextUpdateRepairsIt) {
    for (int step = 0; step < 3; ++step) {
        SCOPED_TRACE(step);
        fake.putDocument("main.json", catalogue);
        publishWithPictures(R"(["a.png", "b.png"])");
        serve("a.png");
        serve("b.png");
        launch();
        fake.files.failFromChange = fake.files.changes() + step;
        const UpdateReport failed = list().update();
        EXPECT_EQ(failed.fetchedPictures, step);
        EXPECT_FALSE(failed.catalogueStored);
        fake.queue.runAll();
        EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 2U);
        ASSERT_TRUE(list().navigationItem.rightBarButtonItem);

        fake.files.failFromChange = JournalledFiles::never;
        EXPECT_EQ(list().update().fetchedPictures, 2);
        fake.queue.runAll();
        EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 1U);
        EXPECT_FALSE(list().navigationItem.rightBarButtonItem);
        for (const std::string& name : fake.documentNames()) {
            fs::remove(fake.document(name));
        }
    }
}

TEST_F(UpdateTest, killedBeforeOrAfterAnyStepTheNextStartShowsAWholeCatalogueAndItsUpdateRepairsIt) {
    const std::string published =
        R"({"version": "1.10", "tableItems": [{"typeLabel": "New"}], "otaImages": ["a.png", "b.png"]})";
    for (int step = 0; step < 6; ++step) {
        SCOPED_TRACE(step);
        fake.putDocument("main.json", catalogue);
        publish(published);
        serve("a.png");
        serve("b.png");
        launch();
        const int change = fake.files.changes() + step / 2;
        (step % 2 == 0 ? fake.files.dieBeforeChange : fake.files.dieAfterChange) = change;
        EXPECT_THROW(list().update(), Killed);
        fake.files.dieBeforeChange = fake.files.dieAfterChange = JournalledFiles::never;

        // Only the very last step, the catalogue itself, makes the new one count.
        const bool isNew = step == 5;
        EXPECT_EQ(fake.documentText("main.json"), isNew ? published : catalogue);
        launch();
        EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), isNew ? 1U : 2U);
        EXPECT_EQ(list().navigationItem.rightBarButtonItem.has_value(), !isNew);

        list().update();
        fake.queue.runAll();
        EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 1U);
        EXPECT_THAT(fake.documentNames(), ElementsAre("a.png", "b.png", "main.json"));
        for (const std::string& name : fake.documentNames()) {
            fs::remove(fake.document(name));
        }
    }
}

TEST_F(UpdateTest, killedDuringAnyFetchNothingIsHalfWritten) {
    for (std::size_t request = 0; request < 4; ++request) {
        SCOPED_TRACE(request);
        fake.putDocument("main.json", catalogue);
        publishWithPictures(R"(["a.png", "b.png"])");
        serve("a.png");
        serve("b.png");
        launch();
        fake.web.requests.clear();
        fake.web.onRequest = [request](const std::string&, std::size_t number) {
            if (number == request) {
                throw Killed();
            }
        };
        EXPECT_THROW(list().update(), Killed);
        fake.web.onRequest = {};
        EXPECT_EQ(fake.documentText("main.json"), catalogue);
        launch();
        list().update();
        fake.queue.runAll();
        EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 1U);
        EXPECT_THAT(fake.documentNames(), ElementsAre("a.png", "b.png", "main.json"));
        for (const std::string& name : fake.documentNames()) {
            fs::remove(fake.document(name));
        }
    }
}

} // namespace
} // namespace quillomat::testing
