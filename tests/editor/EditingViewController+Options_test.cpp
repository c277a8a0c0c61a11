#include "EditorSession.h"

using namespace quillomat;
using namespace quillomat::testing;

namespace {

const std::string authored = R"({"template_width": 60, "template_height": 80, "author": "Ada"})";

std::shared_ptr<EditingViewController> openImport(EditorSession& session, const std::string& name = "abc") {
    session.world.putDocument(name + ".cfg", authored);
    session.world.putDocument(name + ".png", tinyPng(60, 80, blue));
    return session.open(name + ".png");
}

TEST(EditorOptions, sheetHasTwoActionsAndAnEmptyMessage) {
    EditorSession session;
    session.mockup(plainMockup());
    session.open()->optionsButtonClicked();
    const auto sheet = session.alert();
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->title(), "Options");
    EXPECT_EQ(sheet->message(), "");
    EXPECT_EQ(sheet->style(), AlertStyle::actionSheet);
    ASSERT_EQ(sheet->actions().size(), 2U);
    EXPECT_EQ(sheet->actions()[0].title, "Delete Mockup");
    EXPECT_EQ(sheet->actions()[0].style, ActionStyle::normal);
    EXPECT_EQ(sheet->actions()[1].title, "Dismiss");
    EXPECT_EQ(sheet->actions()[1].style, ActionStyle::cancel);
}

TEST(EditorOptions, dismissClosesTheSheetAndNothingFollows) {
    EditorSession session;
    const auto editor = openImport(session);
    editor->optionsButtonClicked();
    session.press("Dismiss");
    EXPECT_FALSE(session.navigation.top()->presented());
    EXPECT_EQ(session.navigation.top(), editor);
    EXPECT_TRUE(session.world.hasDocument("abc.cfg"));
}

TEST(EditorOptions, deletionRunsOnlyAfterTheSheetHasGone) {
    EditorSession session;
    const auto editor = openImport(session);
    editor->optionsButtonClicked();
    editor->answerAlert(session.alert()->id(), 0);
    EXPECT_TRUE(session.world.hasDocument("abc.png")) << "the sheet is still leaving";
    session.settle();
    EXPECT_FALSE(session.world.hasDocument("abc.png"));
}

TEST(EditorOptions, builtInMockupIsNotDeletedAndOkStillLeadsToTheList) {
    EditorSession session;
    session.mockup(plainMockup());
    session.world.putDocument("frame.png", tinyPng(1, 1));
    session.open()->optionsButtonClicked();
    session.press("Delete Mockup");
    ASSERT_TRUE(session.alert());
    EXPECT_EQ(session.alert()->title(), "Completed");
    EXPECT_EQ(session.alert()->style(), AlertStyle::alert);
    EXPECT_EQ(session.message(), "Nothing removed. You can only delete mockups you added.");
    ASSERT_EQ(session.alert()->actions().size(), 1U);
    EXPECT_TRUE(session.world.hasDocument("frame.png"));
    session.press("Ok");
    EXPECT_TRUE(session.isAtTheList());
}

TEST(EditorOptions, importWithoutAnAuthorCannotBeDeleted) {
    EditorSession session;
    session.world.putDocument("abc.cfg", "{}");
    session.open("abc.png")->optionsButtonClicked();
    session.press("Delete Mockup");
    EXPECT_EQ(session.message(), "Nothing removed. You can only delete mockups you added.");
    EXPECT_TRUE(session.world.hasDocument("abc.cfg"));
}

TEST(EditorOptions, importsPictureAndDefinitionAreRemoved) {
    EditorSession session;
    const auto editor = openImport(session);
    editor->optionsButtonClicked();
    session.press("Delete Mockup");
    EXPECT_EQ(session.message(), "Deleted mockup named abc.png");
    EXPECT_TRUE(session.world.documentNames().empty());
    EXPECT_TRUE(editor->editInfo().contains("abc.png")) << "the files change, not what is in memory";
    session.press("Ok");
    EXPECT_TRUE(session.isAtTheList());
}

TEST(EditorOptions, neitherFileExistingCountsAsDeleted) {
    EditorSession session;
    session.mockup(plainMockup().withMember("creator", Value::string("x")));
    session.open()->optionsButtonClicked();
    session.press("Delete Mockup");
    EXPECT_EQ(session.message(), "Deleted mockup named frame.png");
    EXPECT_TRUE(session.world.journal.empty());
}

TEST(EditorOptions, secondRemovalsSuccessClearsTheFirstsErrorBecauseTheyShareOneResult) {
    EditorSession session;
    openImport(session)->optionsButtonClicked();
    session.world.files.failChange = 0;
    session.press("Delete Mockup");
    EXPECT_EQ(session.message(), "Deleted mockup named abc.png");
    EXPECT_TRUE(session.world.hasDocument("abc.png"));
    EXPECT_FALSE(session.world.hasDocument("abc.cfg"));
}

TEST(EditorOptions, errorOfTheSecondRemovalIsShownWhenThePictureIsAlreadyGone) {
    EditorSession session;
    openImport(session)->optionsButtonClicked();
    session.world.files.failChange = 1;
    session.press("Delete Mockup");
    EXPECT_EQ(session.message(), "There was an issue removing this mockup no space left on device");
    EXPECT_FALSE(session.world.hasDocument("abc.png"));
    EXPECT_TRUE(session.world.hasDocument("abc.cfg"));
    session.press("Ok");
    EXPECT_TRUE(session.isAtTheList());
}

TEST(EditorOptions, errorOfTheFirstRemovalStaysWhenThereIsNoDefinitionFile) {
    EditorSession session;
    session.mockup(plainMockup().withMember("creator", Value::string("x")));
    session.world.putDocument("frame.png", tinyPng(1, 1));
    session.open()->optionsButtonClicked();
    session.world.files.failChange = 0;
    session.press("Delete Mockup");
    EXPECT_EQ(session.message(), "There was an issue removing this mockup no space left on device");
}

TEST(EditorOptions, permissionComesFromTheFullNameButTheFilesFromTheStrippedOne) {
    EditorSession session;
    session.catalogue({{"abc-large.png", plainMockup().withMember("creator", Value::string("x"))}});
    session.world.putDocument("abc-large.png", tinyPng(1, 1));
    session.world.putDocument("abc.png", tinyPng(1, 1));
    session.open("abc-large.png")->optionsButtonClicked();
    session.press("Delete Mockup");
    EXPECT_EQ(session.message(), "Deleted mockup named abc.png");
    EXPECT_FALSE(session.world.hasDocument("abc.png"));
    EXPECT_TRUE(session.world.hasDocument("abc-large.png"));
}

TEST(EditorOptions, permissionIsReadWhenTheSheetIsBuilt) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->optionsButtonClicked();
    session.world.putDocument("frame.cfg", authored);
    editor->addImportData("frame.cfg");
    session.press("Delete Mockup");
    EXPECT_EQ(session.message(), "Nothing removed. You can only delete mockups you added.");
}

TEST(EditorOptions, namesThatLeaveTheDocumentsDirectoryRemoveNothing) {
    for (const char* name : {"../outside.png", "-large", ".", ".."}) {
        EditorSession session;
        session.catalogue({{name, plainMockup().withMember("creator", Value::string("x"))}});
        FakePlatform::put(session.world.directory.path() + "/outside.png", tinyPng(1, 1));
        session.open(name)->optionsButtonClicked();
        session.press("Delete Mockup");
        EXPECT_TRUE(session.world.journal.empty()) << name;
        EXPECT_TRUE(std::filesystem::exists(session.world.directory.path() + "/outside.png")) << name;
        EXPECT_TRUE(std::filesystem::exists(session.world.documentsDirectory())) << name;
    }
}

} // namespace
