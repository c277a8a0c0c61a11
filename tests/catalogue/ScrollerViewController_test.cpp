#include "CatalogueTest.h"

#include "catalogue/Gallery.h"

#include <gmock/gmock.h>

namespace quillomat::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class GalleryTest : public CatalogueTest {
protected:
    void putImport(const std::string& base) {
        fake.putDocument(base + ".cfg", "{}");
        fake.putDocument(base + ".png", tinyPng(4, 4));
    }
    static std::shared_ptr<ImageView> cell(const ScrollerViewController& gallery, std::size_t index) {
        return std::dynamic_pointer_cast<ImageView>(gallery.stackView()->arrangedSubviews().at(index));
    }
    static void tap(const View& view) {
        const auto recognizer = std::dynamic_pointer_cast<TapGestureRecognizer>(view.gestureRecognizers.at(0));
        ASSERT_TRUE(recognizer);
        recognizer->recognize();
    }
};

TEST_F(GalleryTest, showsTheRowsMockupsInOrder) {
    EXPECT_THAT(identifiers(*openGallery("Phones")), ElementsAre("phone.png", "phone-large.png"));
}

TEST_F(GalleryTest, picturesOfAView320WideAre320By220And40Apart) {
    fake.platform.screen.size = {320, 568};
    const auto gallery = openGallery("Phones");
    EXPECT_EQ(cell(*gallery, 0)->frame(), makeRect(0, 40, 320, 220));
    EXPECT_EQ(cell(*gallery, 1)->frame(), makeRect(0, 300, 320, 220));
    EXPECT_EQ(gallery->stackView()->frame(), makeRect(0, 0, 320, 2 * 220 + 40 + 80));
    EXPECT_EQ(gallery->scrollView()->contentSize, (Size{320, 2 * 220 + 40 + 80}));
}

TEST_F(GalleryTest, cellHeightComesFromTheWidthWhateverTheScreensHeight) {
    fake.platform.screen.size = {400, 100};
    EXPECT_EQ(cell(*openGallery("Phones"), 0)->frame(), makeRect(0, 40, 400, 300));
}

TEST_F(GalleryTest, scrollViewFillsTheScreenUnderAClearBackground) {
    const auto gallery = openGallery("Phones");
    const auto& scroll = gallery->scrollView();
    EXPECT_EQ(scroll->superview(), gallery->view());
    EXPECT_EQ(scroll->frame(), gallery->view()->bounds());
    EXPECT_EQ(scroll->backgroundColor, Color::clear());
    EXPECT_FALSE(scroll->translatesAutoresizingMaskIntoConstraints);
}

TEST_F(GalleryTest, columnHasItsSpacingDistributionAndMargins) {
    const auto gallery = openGallery("Phones");
    const auto& stack = gallery->stackView();
    EXPECT_EQ(stack->superview(), gallery->scrollView());
    EXPECT_EQ(stack->spacing, 40.0);
    EXPECT_EQ(stack->distribution, StackDistribution::fillEqually);
    EXPECT_EQ(stack->layoutMargins, (Insets{40, 0, 40, 0}));
    EXPECT_TRUE(stack->layoutMarginsRelativeArrangement);
    EXPECT_FALSE(stack->translatesAutoresizingMaskIntoConstraints);
}

TEST_F(GalleryTest, cellsKeepTheirPicturesShapeAndTakeTaps) {
    const auto picture = cell(*openGallery("Phones"), 0);
    EXPECT_EQ(picture->contentMode, ContentMode::scaleAspectFit);
    EXPECT_TRUE(picture->userInteractionEnabled);
    ASSERT_EQ(picture->gestureRecognizers.size(), 1U);
    EXPECT_EQ(std::dynamic_pointer_cast<TapGestureRecognizer>(picture->gestureRecognizers[0])->numberOfTapsRequired, 1);
}

TEST_F(GalleryTest, largeMockupIsShownWithTheUnmarkedPictureAndOpensTheEditorWithItsFullName) {
    const auto gallery = openGallery("Phones");
    EXPECT_EQ(cell(*gallery, 1)->image().pixelSize().width, 3);
    tap(*cell(*gallery, 1));
    const auto editor = std::dynamic_pointer_cast<StandInEditor>(navigation->top());
    ASSERT_TRUE(editor);
    EXPECT_EQ(editor->imageInfo, "phone-large.png");
}

TEST_F(GalleryTest, editorHasItsNameBeforeItsViewLoads) {
    const auto gallery = openGallery("Phones");
    tap(*cell(*gallery, 0));
    EXPECT_EQ(std::dynamic_pointer_cast<StandInEditor>(navigation->top())->imageInfoAtLoading, "phone.png");
    EXPECT_THAT(storyboard.made, ElementsAre("editingViewController"));
    EXPECT_EQ(navigation->stack().size(), 3U);
}

TEST_F(GalleryTest, everyTapMakesANewEditor) {
    const auto gallery = openGallery("Phones");
    tap(*cell(*gallery, 0));
    const auto first = navigation->top();
    navigation->pop();
    tap(*cell(*gallery, 0));
    EXPECT_NE(navigation->top(), first);
}

TEST_F(GalleryTest, tapOnAGalleryThatHasLeftTheStackDoesNothing) {
    const auto gallery = openGallery("Phones");
    navigation->pop();
    tap(*cell(*gallery, 0));
    EXPECT_EQ(navigation->stack().size(), 1U);
}

TEST_F(GalleryTest, pictureThatCannotBeFoundLeavesItsCellEmptyButTappable) {
    fake.putResource("main.json", R"({"viewInfo": {"Phones": {"images": ["gone.png"]}}})");
    const auto gallery = openGallery("Phones");
    ASSERT_EQ(identifiers(*gallery).size(), 1U);
    EXPECT_FALSE(cell(*gallery, 0)->image());
    EXPECT_EQ(cell(*gallery, 0)->frame().size.width, fake.platform.screen.size.width);
    tap(*cell(*gallery, 0));
    EXPECT_EQ(std::dynamic_pointer_cast<StandInEditor>(navigation->top())->imageInfo, "gone.png");
}

TEST_F(GalleryTest, downloadedPictureIsFoundInTheDocuments) {
    fake.putResource("main.json", R"({"viewInfo": {"Phones": {"images": ["new-large.png"]}}})");
    fake.putDocument("new.png", tinyPng(9, 9));
    EXPECT_EQ(cell(*openGallery("Phones"), 0)->image().pixelSize().width, 9);
}

TEST_F(GalleryTest, unknownRowGivesAnEmptyColumn) {
    const auto gallery = openGallery("Nowhere");
    EXPECT_THAT(identifiers(*gallery), IsEmpty());
    EXPECT_FALSE(gallery->presented());
}

TEST_F(GalleryTest, rowWithoutImagesGivesAnEmptyColumn) {
    for (const char* entry : {"{}", "null", "[]", "3", R"({"images": null})", R"({"images": "phone.png"})",
                              R"({"images": {"0": "phone.png"}})"}) {
        fake.putResource("main.json", std::string(R"({"viewInfo": {"Phones": )") + entry + "}}");
        EXPECT_THAT(identifiers(*openGallery("Phones")), IsEmpty()) << entry;
    }
}

TEST_F(GalleryTest, elementsThatAreNoStringsAreNoMockups) {
    fake.putResource("main.json", R"({"viewInfo": {"Phones": {"images": [null, 5, "phone.png", {}, ["x"]]}}})");
    EXPECT_THAT(identifiers(*openGallery("Phones")), ElementsAre("phone.png"));
}

TEST_F(GalleryTest, missingOrBrokenCatalogueGivesAnEmptyColumn) {
    for (const char* text : {"", "garbage", "[]", R"({"viewInfo": null})", R"({"viewInfo": []})"}) {
        fake.putDocument("main.json", text);
        EXPECT_THAT(identifiers(*openGallery("Phones")), IsEmpty()) << text;
    }
}

TEST_F(GalleryTest, importsFollowTheCataloguesOwnNamesInBytewiseOrder) {
    fake.putResource("main.json", R"({"viewInfo": {"Imported": {"images": ["phone.png"]}}})");
    putImport("b");
    putImport("a");
    putImport("B");
    EXPECT_THAT(identifiers(*openGallery("Imported")), ElementsAre("phone.png", "B.png", "a.png", "b.png"));
}

TEST_F(GalleryTest, importWithoutItsPictureIsNotShown) {
    putImport("b");
    fake.putDocument("a.cfg", "{}");
    EXPECT_THAT(identifiers(*openGallery("Imported")), ElementsAre("b.png"));
}

TEST_F(GalleryTest, importWhosePictureLeadsOutOfTheDocumentsIsNotShown) {
    fake.putDocument("a.cfg", "{}");
    std::filesystem::create_symlink(fake.putElsewhere("secret.png", tinyPng(4, 4)), fake.document("a.png"));
    EXPECT_THAT(identifiers(*openGallery("Imported")), IsEmpty());
}

TEST_F(GalleryTest, backupOfADefinitionCountsAsAnImport) {
    fake.putDocument("x.cfg.bak", "{}");
    fake.putDocument("x.png.bak", tinyPng(4, 4));
    EXPECT_THAT(identifiers(*openGallery("Imported")), ElementsAre("x.png.bak"));
}

TEST_F(GalleryTest, nameThatTheCatalogueListsAlreadyIsShownTwice) {
    fake.putResource("main.json", R"({"viewInfo": {"Imported": {"images": ["a.png"]}}})");
    putImport("a");
    EXPECT_THAT(identifiers(*openGallery("Imported")), ElementsAre("a.png", "a.png"));
}

TEST_F(GalleryTest, everyGalleryKnowsTheImportsButOnlyImportedShowsThem) {
    putImport("a");
    const auto gallery = openGallery("Phones");
    EXPECT_THAT(identifiers(*gallery), ElementsAre("phone.png", "phone-large.png"));
    EXPECT_THAT(mockupNames(gallery->viewInfo(), "Imported"), ElementsAre("a.png"));
}

TEST_F(GalleryTest, importIsSkippedWhileTheCatalogueHasNoImportedEntry) {
    for (const char* text : {R"({"viewInfo": {"Phones": {"images": ["phone.png"]}}})",
                             R"({"viewInfo": {"Imported": null, "Phones": {"images": ["phone.png"]}}})"}) {
        fake.putResource("main.json", text);
        putImport("a");
        EXPECT_THAT(identifiers(*openGallery("Phones")), ElementsAre("phone.png"));
        EXPECT_THAT(identifiers(*openGallery("Imported")), IsEmpty());
    }
}

TEST_F(GalleryTest, importedEntryWithoutImagesStillTakesImports) {
    fake.putResource("main.json", R"({"viewInfo": {"Imported": {"images": null, "other": 1}}})");
    putImport("a");
    const auto gallery = openGallery("Imported");
    EXPECT_THAT(identifiers(*gallery), ElementsAre("a.png"));
    EXPECT_EQ(gallery->viewInfo()["Imported"]["other"].integerValue(), 1);
}

TEST_F(GalleryTest, failedListingAddsNothing) {
    putImport("a");
    fake.files.failListings = true;
    EXPECT_THAT(identifiers(*openGallery("Imported")), IsEmpty());
}

TEST_F(GalleryTest, importMadeWhileAGalleryIsOpenShowsInTheNextOne) {
    const auto open = openGallery("Imported");
    putImport("a");
    EXPECT_THAT(identifiers(*open), IsEmpty());
    EXPECT_THAT(identifiers(*openGallery("Imported")), ElementsAre("a.png"));
}

TEST_F(GalleryTest, importsAreNeverWrittenIntoTheDocument) {
    fake.putDocument("main.json", catalogue);
    putImport("a");
    openGallery("Imported");
    EXPECT_EQ(fake.documentText("main.json"), catalogue);
    EXPECT_EQ(fake.files.changes(), 0);
}

TEST_F(GalleryTest, gallerysDirectoryHasNoTrailingSeparator) {
    EXPECT_EQ(openGallery("Phones")->mainDirectory(), fake.documentsDirectory());
}

TEST_F(GalleryTest, screenNarrowerThan100GivesFlatCellsAndNoNegativeOnes) {
    fake.platform.screen.size = {60, 100};
    const auto gallery = openGallery("Phones");
    EXPECT_EQ(cell(*gallery, 0)->frame().size.height, 0);
}

} // namespace
} // namespace quillomat::testing
