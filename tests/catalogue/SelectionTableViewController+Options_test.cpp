#include "CatalogueTest.h"

#include <gmock/gmock.h>

namespace quillomat::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OptionsSheetTest : public CatalogueTest {
protected:
    std::shared_ptr<AlertController> openSheet() {
        launch();
        list().navigationItem.leftBarButtonItem->action();
        return presentedAs<AlertController>(list());
    }
};

TEST_F(OptionsSheetTest, optionsButtonOpensTheSheetWithItsSixActionsInOrder) {
    const auto sheet = openSheet();
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->title(), "Options");
    EXPECT_EQ(sheet->message(), "");
    EXPECT_EQ(sheet->style(), AlertStyle::actionSheet);
    EXPECT_THAT(actionTitles(*sheet), ElementsAre("Import Mockup", "Import Tutorial", "Get Import Location",
                                                  "Browse Mockups", "Support this free app", "Dismiss"));
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(sheet->actions()[i].style, ActionStyle::normal);
    }
    EXPECT_EQ(sheet->actions()[5].style, ActionStyle::cancel);
}

TEST_F(OptionsSheetTest, dismissClosesTheSheetWithNoOtherEffect) {
    openSheet();
    press(list(), "Dismiss");
    EXPECT_FALSE(list().presented());
    EXPECT_THAT(fake.urls.opened, IsEmpty());
    EXPECT_EQ(navigation->stack().size(), 1U);
    EXPECT_EQ(fake.queue.pending(), 0U);
}

TEST_F(OptionsSheetTest, importMockupShowsThePickerAfterTheSheetHasGone) {
    const auto sheet = openSheet();
    pressOnly(list(), "Import Mockup");
    EXPECT_EQ(list().presented(), sheet);
    settle(list());
    EXPECT_TRUE(presentedAs<DocumentPickerController>(list()));
}

TEST_F(OptionsSheetTest, pagesOpenOnlyAfterTheSheetHasGone) {
    const std::vector<std::pair<std::string, std::string>> pages{
        {"Import Tutorial", "https://tutorial.test/importing"},
        {"Browse Mockups", "https://maker.test/quillomat/mockups/"},
        {"Support this free app", "https://maker.test/quillomat/support"}};
    for (const auto& [title, url] : pages) {
        fake.urls.opened.clear();
        openSheet();
        pressOnly(list(), title);
        EXPECT_THAT(fake.urls.opened, IsEmpty()) << title;
        settle(list());
        EXPECT_THAT(fake.urls.opened, ElementsAre(url));
        EXPECT_FALSE(list().presented());
        EXPECT_EQ(navigation->stack().size(), 1U);
    }
}

TEST_F(OptionsSheetTest, importLocationAlertNamesTheDirectoryWithoutTrailingSeparator) {
    const auto sheet = openSheet();
    pressOnly(list(), "Get Import Location");
    EXPECT_EQ(list().presented(), sheet);
    settle(list());
    const auto alert = presentedAs<AlertController>(list());
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->title(), "Importing");
    EXPECT_EQ(alert->message(), "The imported resources are saved in " + fake.documentsDirectory());
    EXPECT_EQ(alert->style(), AlertStyle::alert);
    EXPECT_THAT(actionTitles(*alert), ElementsAre("Ok"));
    EXPECT_EQ(alert->actions()[0].style, ActionStyle::normal);
    press(list(), "Ok");
    EXPECT_FALSE(list().presented());
}

TEST_F(OptionsSheetTest, effectOfAnActionWaitsForTheDismissalThatItStartsItself) {
    const auto sheet = openSheet();
    sheet->actions()[3].handler(); // a host that calls it while the sheet still stands
    EXPECT_TRUE(list().isDismissing());
    EXPECT_THAT(fake.urls.opened, IsEmpty());
    settle(list());
    EXPECT_THAT(fake.urls.opened, ElementsAre("https://maker.test/quillomat/mockups/"));
}

TEST_F(OptionsSheetTest, actionsOfASheetThatOutlivesItsScreenDoNothing) {
    const auto sheet = openSheet();
    auto handlers = sheet->actions();
    navigation.reset();
    forgetList();
    for (const AlertAction& action : handlers) {
        action.handler();
    }
    EXPECT_THAT(fake.urls.opened, IsEmpty());
}

} // namespace
} // namespace quillomat::testing
