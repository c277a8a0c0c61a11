#include "CatalogueTest.h"

#include <gmock/gmock.h>

namespace quillomat::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ImportTest : public CatalogueTest {
protected:
    /// Opens the picker, picks, and lets the picker go.
    void import(const std::string& path) {
        list().showFilePicker();
        pickDocument(list(), path);
    }
    [[nodiscard]] std::shared_ptr<AlertController> question() { return presentedAs<AlertController>(list()); }
    std::vector<std::string> importedGallery() { return identifiers(*openGallery("Imported")); }
};

TEST_F(ImportTest, pickerAsksForTextAndDataInImportMode) {
    launch().showFilePicker();
    const auto picker = presentedAs<DocumentPickerController>(list());
    ASSERT_TRUE(picker);
    EXPECT_THAT(picker->documentTypes, ElementsAre("public.text", "public.data"));
    EXPECT_EQ(picker->mode, DocumentPickerMode::import);
    EXPECT_EQ(picker->delegate.lock().get(), static_cast<DocumentPickerDelegate*>(&list()));
}

TEST_F(ImportTest, newNameIsCopiedWithNoQuestion) {
    launch();
    import(fake.putElsewhere("x.cfg", "{}"));
    EXPECT_FALSE(list().presented());
    EXPECT_EQ(fake.documentText("x.cfg"), "{}");
}

TEST_F(ImportTest, accessIsHeldAroundTheCopyAndReleasedInsideTheCoordinatedRead) {
    launch();
    const std::string picked = fake.putElsewhere("x.cfg", "{}");
    fake.journal.clear();
    import(picked);
    EXPECT_THAT(fake.journal, ElementsAre("start " + picked, "coordinate " + picked,
                                          "copy " + picked + " -> " + fake.document("x.cfg"), "stop " + picked,
                                          "coordinated " + picked));
}

TEST_F(ImportTest, accessThatWasNotGrantedIsNotReleasedAndTheCopyIsTriedAllTheSame) {
    fake.documents.grants = false;
    launch();
    const std::string picked = fake.putElsewhere("x.cfg", "{}");
    fake.journal.clear();
    import(picked);
    EXPECT_THAT(fake.journal, ElementsAre("start " + picked, "coordinate " + picked,
                                          "copy " + picked + " -> " + fake.document("x.cfg"), "coordinated " + picked));
}

TEST_F(ImportTest, storedNameAsksBeforeReplacing) {
    launch();
    fake.putDocument("x.cfg", "old");
    import(fake.putElsewhere("x.cfg", "new"));
    ASSERT_TRUE(question());
    EXPECT_EQ(question()->title(), "File Already Exists");
    EXPECT_EQ(question()->message(), "Do you wish to replace this file?");
    EXPECT_EQ(question()->style(), AlertStyle::alert);
    EXPECT_THAT(actionTitles(*question()), ElementsAre("No", "Yes"));
    EXPECT_EQ(question()->actions()[0].style, ActionStyle::normal);
    EXPECT_EQ(question()->actions()[1].style, ActionStyle::normal);
    EXPECT_EQ(fake.documentText("x.cfg"), "old");
}

TEST_F(ImportTest, questionWaitsUntilThePickerHasGone) {
    launch();
    fake.putDocument("x.cfg", "old");
    list().showFilePicker();
    const auto picker = presentedAs<DocumentPickerController>(list());
    list().answerDocumentPicker(picker->id(), fake.putElsewhere("x.cfg", "new"));
    EXPECT_EQ(list().presented(), picker);
    settle(list());
    EXPECT_TRUE(question());
}

TEST_F(ImportTest, noLeavesTheStoredFileUnchanged) {
    launch();
    fake.putDocument("x.cfg", "old");
    import(fake.putElsewhere("x.cfg", "new"));
    press(list(), "No");
    EXPECT_EQ(fake.documentText("x.cfg"), "old");
    EXPECT_FALSE(list().presented());
    EXPECT_EQ(fake.files.changes(), 0);
}

TEST_F(ImportTest, yesReplacesTheStoredFile) {
    launch();
    fake.putDocument("x.cfg", "old");
    import(fake.putElsewhere("x.cfg", "new"));
    press(list(), "Yes");
    EXPECT_EQ(fake.documentText("x.cfg"), "new");
    EXPECT_FALSE(list().presented());
}

TEST_F(ImportTest, accessEndsBeforeTheAnswerYesSoItsCopyRunsWithoutIt) {
    launch();
    fake.putDocument("x.cfg", "old");
    const std::string picked = fake.putElsewhere("x.cfg", "new");
    fake.journal.clear();
    import(picked);
    press(list(), "Yes");
    EXPECT_THAT(fake.journal,
                ElementsAre("start " + picked, "coordinate " + picked, "stop " + picked, "coordinated " + picked,
                            "remove " + fake.document("x.cfg"), "copy " + picked + " -> " + fake.document("x.cfg")));
}

TEST_F(ImportTest, secondImportOfTheSameFileAsksAndTakesItsNewContent) {
    launch();
    const std::string picked = fake.putElsewhere("x.cfg", "first");
    import(picked);
    FakePlatform::put(picked, std::string("second"));
    import(picked);
    ASSERT_TRUE(question());
    press(list(), "Yes");
    EXPECT_EQ(fake.documentText("x.cfg"), "second");
}

TEST_F(ImportTest, fileOfAnyKindIsStoredUnderItsOwnName) {
    launch();
    import(fake.putElsewhere("notes.txt", "hello"));
    EXPECT_EQ(fake.documentText("notes.txt"), "hello");
    EXPECT_THAT(importedGallery(), IsEmpty());
}

TEST_F(ImportTest, importedCatalogueWinsFromThenOn) {
    launch();
    import(fake.putElsewhere("main.json", R"({"tableItems": []})"));
    EXPECT_FALSE(list().presented());
    EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 2U);
    list().viewDidLoad();
    EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 0U);
}

TEST_F(ImportTest, importedCatalogueAsksWhenOneIsStoredAlready) {
    fake.putDocument("main.json", catalogue);
    launch();
    import(fake.putElsewhere("main.json", "{}"));
    EXPECT_TRUE(question());
    EXPECT_EQ(fake.documentText("main.json"), catalogue);
}

TEST_F(ImportTest, downloadedPictureIsReplacedTheSameWay) {
    fake.putDocument("a.png", tinyPng(2, 2));
    launch();
    import(fake.putElsewhere("a.png", tinyPng(5, 5)));
    press(list(), "Yes");
    EXPECT_EQ(CatalogueDocument(fake.platform).pictureNamed("a.png").pixelSize().width, 5);
}

TEST_F(ImportTest, definitionShowsOnceItsPictureIsThereInEitherOrder) {
    launch();
    import(fake.putElsewhere("x.cfg", "{}"));
    EXPECT_THAT(importedGallery(), IsEmpty());
    navigation->popToRoot();
    import(fake.putElsewhere("x.png", tinyPng(2, 2)));
    EXPECT_THAT(importedGallery(), ElementsAre("x.png"));
    navigation->popToRoot();
    import(fake.putElsewhere("y.png", tinyPng(2, 2)));
    import(fake.putElsewhere("y.cfg", "{}"));
    EXPECT_THAT(importedGallery(), ElementsAre("x.png", "y.png"));
}

TEST_F(ImportTest, turningThePickerAwayImportsNothing) {
    launch().showFilePicker();
    list().cancelPicker(list().presented()->id());
    settle(list());
    EXPECT_FALSE(list().presented());
    EXPECT_THAT(fake.documentNames(), IsEmpty());
}

// Faults
// ----------------------------------------------------------------------------------------------------------------

TEST_F(ImportTest, failedCopyLeavesNoImportAndNoMessage) {
    launch();
    fake.files.failFromChange = 0;
    import(fake.putElsewhere("x.cfg", "{}"));
    EXPECT_THAT(fake.documentNames(), IsEmpty());
    EXPECT_FALSE(list().presented());
    EXPECT_THAT(fake.log.lines(), IsEmpty());
}

TEST_F(ImportTest, pickedFileThatIsGoneLeavesNoImport) {
    launch();
    import(fake.elsewhere() + "/never.cfg");
    EXPECT_THAT(fake.documentNames(), IsEmpty());
    EXPECT_FALSE(list().presented());
}

TEST_F(ImportTest, pickedFolderOrPipeIsNotCopied) {
    launch();
    fs::create_directory(fake.elsewhere() + "/folder.cfg");
    import(fake.elsewhere() + "/folder.cfg");
    EXPECT_THAT(fake.documentNames(), IsEmpty());
}

TEST_F(ImportTest, pathsWithoutAPlainLastNameImportNothingAndStillReleaseTheAccess) {
    for (const std::string& path : std::vector<std::string>{"/", "", "..", fake.elsewhere() + "/..", ".",
                                                            std::string("a\0b.cfg", 7), "x/" + std::string(300, 'a')}) {
        launch();
        fake.journal.clear();
        import(path);
        EXPECT_FALSE(list().presented());
        EXPECT_THAT(fake.documentNames(), IsEmpty());
        EXPECT_THAT(fake.journal,
                    ElementsAre("start " + path, "coordinate " + path, "stop " + path, "coordinated " + path));
    }
}

TEST_F(ImportTest, yesForTheStoredFileItselfKeepsIt) {
    launch();
    fake.putDocument("x.cfg", "only copy");
    import(fake.document("x.cfg"));
    ASSERT_TRUE(question());
    press(list(), "Yes");
    EXPECT_EQ(fake.documentText("x.cfg"), "only copy");
}

TEST_F(ImportTest, yesOverALinkReplacesTheLinkAndNotWhatItPointsTo) {
    launch();
    const std::string outside = fake.putElsewhere("precious.cfg", "precious");
    fs::create_symlink(outside, fake.document("x.cfg"));
    import(fake.putElsewhere("x.cfg", "new"));
    press(list(), "Yes");
    EXPECT_FALSE(fs::is_symlink(fake.document("x.cfg")));
    EXPECT_EQ(fake.documentText("x.cfg"), "new");
    EXPECT_EQ(SystemFileManager().read(outside, 100).value(), bytesOf("precious"));
}

TEST_F(ImportTest, danglingLinkAtTheDestinationIsNotWrittenThrough) {
    launch();
    fs::create_symlink(fake.elsewhere() + "/made.cfg", fake.document("x.cfg"));
    import(fake.putElsewhere("x.cfg", "new"));
    EXPECT_FALSE(fs::exists(fake.elsewhere() + "/made.cfg"));
}

TEST_F(ImportTest, yesWhoseRemovalFailsKeepsTheStoredFile) {
    launch();
    fake.putDocument("x.cfg", "old");
    fake.files.failChange = 0;
    import(fake.putElsewhere("x.cfg", "new"));
    press(list(), "Yes");
    EXPECT_EQ(fake.documentText("x.cfg"), "old"); // the copy does not overwrite
}

TEST_F(ImportTest, yesOnAFullDiskLosesTheOldFileAndTheNextImportBringsTheNewOne) {
    launch();
    fake.putDocument("x.cfg", "old");
    fake.files.failChange = 1;
    const std::string picked = fake.putElsewhere("x.cfg", "new");
    import(picked);
    press(list(), "Yes");
    EXPECT_FALSE(fake.hasDocument("x.cfg"));
    import(picked);
    EXPECT_FALSE(list().presented());
    EXPECT_EQ(fake.documentText("x.cfg"), "new");
}

TEST_F(ImportTest, killedAtAnyStepOfAReplacementTheFileIsWholeOrAbsentAndImportingAgainHeals) {
    for (int step = 0; step < 4; ++step) {
        SCOPED_TRACE(step);
        launch();
        fake.putDocument("x.cfg", "old");
        const std::string picked = fake.putElsewhere("x.cfg", "new");
        (step % 2 == 0 ? fake.files.dieBeforeChange : fake.files.dieAfterChange) = fake.files.changes() + step / 2;
        import(picked);
        EXPECT_THROW(press(list(), "Yes"), Killed);
        fake.files.dieBeforeChange = fake.files.dieAfterChange = JournalledFiles::never;
        const std::vector<std::string> expected{"old", "", "", "new"};
        EXPECT_EQ(fake.documentText("x.cfg"), expected[static_cast<std::size_t>(step)]);

        launch();
        EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 2U);
        import(picked);
        if (list().presented()) {
            press(list(), "Yes");
        }
        EXPECT_EQ(fake.documentText("x.cfg"), "new");
        EXPECT_THAT(fake.documentNames(), ElementsAre("x.cfg"));
        fs::remove(fake.document("x.cfg"));
    }
}

// Emptying
// --------------------------------------------------------------------------------------------------------------

TEST_F(ImportTest, deleteDocumentsRemovesAndLogsEveryEntryInListingOrder) {
    launch();
    fake.putDocument("b.cfg", "{}");
    fake.putDocument("a.png", "x");
    fs::create_directory(fake.document("folder"));
    FakePlatform::put(fake.document("folder") + "/inner", std::string("x"));
    list().deleteDocuments();
    EXPECT_THAT(fake.documentNames(), IsEmpty());
    EXPECT_THAT(fake.log.lines(),
                ElementsAre("Directory: " + fake.documentsDirectory(), "File : " + fake.document("a.png"),
                            "File : " + fake.document("b.cfg"), "File : " + fake.document("folder")));
}

TEST_F(ImportTest, afterDeleteDocumentsTheResourceCountsAgainAndTheImportsAreGone) {
    fake.putDocument("main.json", R"({"tableItems": [{}], "viewInfo": {"Imported": {"images": ["own.png"]}}})");
    fake.putDocument("x.cfg", "{}");
    fake.putDocument("x.png", tinyPng(2, 2));
    launch();
    EXPECT_THAT(importedGallery(), ElementsAre("own.png", "x.png"));
    list().deleteDocuments();
    list().viewDidLoad();
    EXPECT_EQ(list().tableViewNumberOfRowsInSection(0), 2U);
    EXPECT_THAT(importedGallery(), IsEmpty());
}

TEST_F(ImportTest, deleteDocumentsGoesOnAfterARemovalThatFails) {
    launch();
    fake.putDocument("a", "x");
    fake.putDocument("b", "x");
    fake.files.failChange = 0;
    list().deleteDocuments();
    EXPECT_THAT(fake.documentNames(), ElementsAre("a"));
}

TEST_F(ImportTest, deleteDocumentsRemovesLinksAndNotWhatTheyPointTo) {
    launch();
    const std::string outside = fake.putElsewhere("precious", "precious");
    fs::create_symlink(outside, fake.document("link"));
    fs::create_symlink(fake.elsewhere(), fake.document("folder"));
    list().deleteDocuments();
    EXPECT_THAT(fake.documentNames(), IsEmpty());
    EXPECT_EQ(SystemFileManager().read(outside, 100).value(), bytesOf("precious"));
}

TEST_F(ImportTest, deleteDocumentsWithAFailedListingRemovesNothing) {
    launch();
    fake.putDocument("a", "x");
    fake.files.failListings = true;
    list().deleteDocuments();
    EXPECT_TRUE(fake.hasDocument("a"));
    EXPECT_THAT(fake.log.lines(), ElementsAre("Directory: " + fake.documentsDirectory()));
}

TEST_F(ImportTest, deleteDocumentsWithoutADirectoryDoesNothing) {
    launch();
    fake.platform.documentsDirectory.clear();
    list().deleteDocuments();
    EXPECT_THAT(fake.log.lines(), IsEmpty());
    EXPECT_EQ(fake.files.changes(), 0);
}

} // namespace
} // namespace quillomat::testing
