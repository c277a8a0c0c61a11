#include "CatalogueTest.h"

#include <gmock/gmock.h>

namespace quillomat::testing {
namespace {

using ListTest = CatalogueTest;

TEST_F(ListTest, loadingSetsTitleRowsAndOptionsButton) {
    auto& list = launch();
    EXPECT_EQ(list.title, "Selection");
    EXPECT_EQ(list.numberOfSectionsInTableView(), 1U);
    EXPECT_EQ(list.tableViewNumberOfRowsInSection(0), 2U);
    ASSERT_TRUE(list.navigationItem.leftBarButtonItem);
    EXPECT_EQ(list.navigationItem.leftBarButtonItem->title, "Options");
    EXPECT_EQ(list.navigationItem.leftBarButtonItem->style, BarButtonStyle::done);
    EXPECT_FALSE(list.navigationItem.rightBarButtonItem);
}

TEST_F(ListTest, optionsTitleKeepsTheBoldTwelvePointFontWhenSelected) {
    // One font serves the normal and the selected state of a bar button.
    const BarButtonItem& options = *launch().navigationItem.leftBarButtonItem;
    EXPECT_TRUE(options.bold);
    EXPECT_EQ(options.fontSize, 12);
}

TEST_F(ListTest, everyRowIs119HighAndTheSectionHasNoHeader) {
    auto& list = launch();
    EXPECT_EQ(list.tableViewHeightForRowAtIndexPath({0, 0}), 119.0);
    EXPECT_EQ(list.tableViewHeightForRowAtIndexPath({0, 1}), 119.0);
    EXPECT_EQ(list.tableViewHeightForHeaderInSection(0), 0.0);
}

TEST_F(ListTest, cellShowsTheRowsTextsAndAsset) {
    auto& list = launch();
    const auto cell = list.tableViewCellForRowAtIndexPath({0, 0});
    EXPECT_EQ(cell->sizeLabel()->text, "3000 x 3000");
    EXPECT_EQ(cell->typeLabel()->text, "Phones");
    EXPECT_EQ(cell->descLabel()->text, "Upright");
    EXPECT_EQ(cell->previewImage()->image().pixelSize().width, 3);
}

TEST_F(ListTest, numberInALabelShowsAsDecimalText) {
    EXPECT_EQ(launch().tableViewCellForRowAtIndexPath({0, 1})->sizeLabel()->text, "12");
}

TEST_F(ListTest, missingAndNullLabelsShowTheFormattersTexts) {
    fake.putResource("main.json", R"({"tableItems": [{"typeLabel": null}]})");
    const auto cell = launch().tableViewCellForRowAtIndexPath({0, 0});
    EXPECT_EQ(cell->sizeLabel()->text, "(null)");
    EXPECT_EQ(cell->typeLabel()->text, "<null>");
}

TEST_F(ListTest, previewThatIsNoAssetShowsTheDownloadedFile) {
    fake.putDocument("imported.png", tinyPng(7, 1));
    EXPECT_EQ(launch().tableViewCellForRowAtIndexPath({0, 1})->previewImage()->image().pixelSize().width, 7);
}

TEST_F(ListTest, previewFoundNowhereLeavesTheImageViewEmpty) {
    EXPECT_FALSE(launch().tableViewCellForRowAtIndexPath({0, 1})->previewImage()->image());
}

TEST_F(ListTest, previewKeepsTheLargeMarkerInItsName) {
    fake.putResource("main.json", R"({"tableItems": [{"previewImage": "phone-large.png"}]})");
    EXPECT_FALSE(launch().tableViewCellForRowAtIndexPath({0, 0})->previewImage()->image());
}

TEST_F(ListTest, previewNameThatIsNoStringFindsAnAssetByItsTextAndNeverAFile) {
    fake.putResource("main.json", R"({"tableItems": [{"previewImage": 7}, {"previewImage": 8}, {}]})");
    fake.putResourceImage("7.png", tinyPng(4, 1));
    fake.putDocument("8", tinyPng(5, 1));
    auto& list = launch();
    EXPECT_EQ(list.tableViewCellForRowAtIndexPath({0, 0})->previewImage()->image().pixelSize().width, 4);
    EXPECT_FALSE(list.tableViewCellForRowAtIndexPath({0, 1})->previewImage()->image());
    EXPECT_FALSE(list.tableViewCellForRowAtIndexPath({0, 2})->previewImage()->image());
}

TEST_F(ListTest, previewNeverLeavesTheDocuments) {
    fake.putElsewhere("secret.png", tinyPng(5, 4));
    fake.putResource("main.json", R"({"tableItems": [{"previewImage": "../elsewhere/secret.png"}]})");
    EXPECT_FALSE(launch().tableViewCellForRowAtIndexPath({0, 0})->previewImage()->image());
}

TEST_F(ListTest, catalogueWithoutRowsGivesAnEmptyTable) {
    for (const char* text : {"{}", "[]", R"({"tableItems": null})", R"({"tableItems": {}})", R"({"tableItems": 3})",
                             R"({"tableItems": "x"})", "garbage", ""}) {
        fake.putDocument("main.json", text);
        EXPECT_EQ(launch().tableViewNumberOfRowsInSection(0), 0U) << text;
    }
}

TEST_F(ListTest, rowsThatAreNoObjectsAreShownWithoutTexts) {
    fake.putDocument("main.json", R"({"tableItems": [null, 5, "x", [], {}]})");
    auto& list = launch();
    ASSERT_EQ(list.tableViewNumberOfRowsInSection(0), 5U);
    for (std::size_t row = 0; row < 5; ++row) {
        EXPECT_EQ(list.tableViewCellForRowAtIndexPath({0, row})->typeLabel()->text, "(null)");
        EXPECT_FALSE(list.tableViewCellForRowAtIndexPath({0, row})->previewImage()->image());
    }
}

TEST_F(ListTest, nothingIsReportedWhenEverythingIsMissing) {
    std::filesystem::remove(fake.resourcesDirectory() + "/main.json");
    auto& list = launch();
    EXPECT_EQ(list.tableViewNumberOfRowsInSection(0), 0U);
    EXPECT_EQ(list.title, "Selection");
    EXPECT_FALSE(list.presented());
    EXPECT_TRUE(fake.log.lines().empty());
}

TEST_F(ListTest, rowsChangeOnlyWhenTheViewLoadsAgain) {
    auto& list = launch();
    fake.putDocument("main.json", R"({"tableItems": []})");
    EXPECT_EQ(list.tableViewNumberOfRowsInSection(0), 2U);
    list.viewDidLoad();
    EXPECT_EQ(list.tableViewNumberOfRowsInSection(0), 0U);
}

TEST_F(ListTest, loadingTwiceIsHarmless) {
    auto& list = launch();
    list.viewDidLoad();
    EXPECT_EQ(list.navigationItem.leftBarButtonItem->title, "Options");
    EXPECT_EQ(list.tableViewCellForRowAtIndexPath({0, 0})->typeLabel()->text, "Phones");
}

TEST_F(ListTest, listsDirectoryEndsInASeparator) {
    EXPECT_EQ(launch().mainDirectory(), fake.documentsDirectory() + "/");
}

TEST_F(ListTest, choosingARowOpensItsGallery) {
    auto& list = launch();
    list.tableViewDidSelectRowAtIndexPath({0, 1});
    ASSERT_EQ(navigation->stack().size(), 2U);
    const auto gallery = std::dynamic_pointer_cast<ScrollerViewController>(navigation->top());
    ASSERT_TRUE(gallery);
    EXPECT_EQ(gallery->contentInfo(), "Imported");
    EXPECT_THAT(storyboard.made, ::testing::ElementsAre("scrollerViewController"));
}

TEST_F(ListTest, typeLabelThatIsNoStringIsHandedOnAsItsText) {
    fake.putResource("main.json", R"({"tableItems": [{"typeLabel": 5}, {}],
                                      "viewInfo": {"5": {"images": ["phone.png"]}}})");
    auto& list = launch();
    list.tableViewDidSelectRowAtIndexPath({0, 0});
    const auto gallery = std::dynamic_pointer_cast<ScrollerViewController>(navigation->top());
    EXPECT_EQ(gallery->contentInfo(), "5");
    EXPECT_EQ(identifiers(*gallery).size(), 1U);
    navigation->pop();
    list.tableViewDidSelectRowAtIndexPath({0, 1});
    EXPECT_EQ(std::dynamic_pointer_cast<ScrollerViewController>(navigation->top())->contentInfo(), "(null)");
}

TEST_F(ListTest, choosingTheSameRowTwiceMakesTwoGalleriesFromTheDocumentAsItIsThen) {
    auto& list = launch();
    list.tableViewDidSelectRowAtIndexPath({0, 0});
    const auto first = std::dynamic_pointer_cast<ScrollerViewController>(navigation->top());
    EXPECT_EQ(identifiers(*first).size(), 2U);
    navigation->pop();
    fake.putDocument("main.json", R"({"viewInfo": {"Phones": {"images": ["phone.png"]}}})");
    list.tableViewDidSelectRowAtIndexPath({0, 0});
    const auto second = std::dynamic_pointer_cast<ScrollerViewController>(navigation->top());
    EXPECT_NE(first, second);
    EXPECT_EQ(identifiers(*second).size(), 1U);
}

TEST_F(ListTest, backingOutDiscardsTheGallery) {
    auto& list = launch();
    list.tableViewDidSelectRowAtIndexPath({0, 0});
    const std::weak_ptr<ViewController> gallery = navigation->top();
    navigation->pop();
    EXPECT_TRUE(gallery.expired());
}

TEST_F(ListTest, cellOwnsItsOutletsAndSelectionChangesNothingElse) {
    const auto cell = launch().tableViewCellForRowAtIndexPath({0, 0});
    EXPECT_EQ(cell->bounds().size.height, 119.0);
    for (const auto& outlet :
         {std::static_pointer_cast<View>(cell->sizeLabel()), std::static_pointer_cast<View>(cell->previewImage()),
          std::static_pointer_cast<View>(cell->descLabel()), std::static_pointer_cast<View>(cell->typeLabel())}) {
        EXPECT_EQ(outlet->superview(), cell);
        EXPECT_LE(outlet->frame().maxX(), cell->bounds().size.width);
        EXPECT_LE(outlet->frame().maxY(), 119.0);
    }
    cell->setSelectedAnimated(true, /*animated=*/true);
    EXPECT_TRUE(cell->isSelected());
    EXPECT_EQ(cell->typeLabel()->text, "Phones");
    cell->sizeLabel()->removeFromSuperview();
    EXPECT_FALSE(cell->sizeLabel());
}

TEST_F(ListTest, memoryWarningChangesNothing) {
    auto& list = launch();
    list.didReceiveMemoryWarning();
    EXPECT_EQ(list.tableViewNumberOfRowsInSection(0), 2U);
}

} // namespace
} // namespace quillomat::testing
