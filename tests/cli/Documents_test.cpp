// `import` and `delete`.
#include "Command.h"

namespace quillomat {
namespace {

using testing::isOneComplaint;
using testing::Ran;

class ImportTest : public testing::CommandTest {
protected:
    [[nodiscard]] std::string stored(const std::string& name) const { return folder.contentOf("documents/" + name); }
};

TEST_F(ImportTest, aDefinitionWithItsPictureIsComplete) {
    const std::string stem = addImportFiles("holiday");
    const Ran ran = run({"import", stem + ".cfg", stem + ".png"});
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.out, "holiday.cfg\tdefinition\nholiday.png\tpicture\n");
    EXPECT_EQ(ran.err, "");
    EXPECT_EQ(stored("holiday.cfg"), testing::contentOfFile(stem + ".cfg"));
    EXPECT_EQ(stored("holiday.png"), testing::contentOfFile(stem + ".png"));
    EXPECT_EQ(namesIn(documents), (testing::Words{"holiday.cfg", "holiday.png"}));
}

TEST_F(ImportTest, jsonSaysWhatEachFileBecame) {
    const std::string stem = addImportFiles("holiday");
    const std::string notes = folder.add("mine/notes.txt", "hello");
    const Value files = run({"import", "--json", stem + ".cfg", notes}).json();
    EXPECT_EQ(files.at(0), Value::object({{"file", Value::string(stem + ".cfg")},
                                          {"stored", Value::string("holiday.cfg")},
                                          {"kind", Value::string("definition")},
                                          {"complete", Value::boolean(false)}}));
    EXPECT_EQ(files.at(1), Value::object({{"file", Value::string(notes)},
                                          {"stored", Value::string("notes.txt")},
                                          {"kind", Value::string("other")},
                                          {"complete", Value::boolean(false)}}));
}

TEST_F(ImportTest, whatIsStillMissingIsWarnedOf) {
    const std::string stem = addImportFiles("holiday");
    const Ran definition = run({"import", stem + ".cfg"});
    EXPECT_EQ(definition.status, 0);
    EXPECT_EQ(definition.err,
              "quillomat: warning: holiday.cfg: its picture holiday.png is missing, so it does not show yet\n");
    const Ran picture = run({"import", stem + ".png"});
    EXPECT_EQ(picture.err, "") << "the definition is there by now";
    const std::string other = addImportFiles("other");
    EXPECT_EQ(run({"import", other + ".png"}).err,
              "quillomat: warning: other.png: its definition other.cfg is missing, so it does not show yet\n");
}

TEST_F(ImportTest, aPictureNoDefinitionCanNameIsWarnedOf) {
    const Ran ran = run({"import", "--json", picture("quarters.jpg")});
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.json().at(0)["kind"], Value::string("picture"));
    EXPECT_EQ(ran.json().at(0)["complete"], Value::boolean(false));
    EXPECT_TRUE(ran.err.starts_with("quillomat: warning: quarters.jpg: ")) << ran.err;
}

TEST_F(ImportTest, aDefinitionThatIsNoneIsStoredWithAWarning) {
    const std::string broken = folder.add("mine/broken.cfg", "{\"left_top_x\": ");
    const Ran ran = run({"import", broken});
    EXPECT_EQ(ran.status, 0);
    EXPECT_NE(ran.err.find("quillomat: warning: broken.cfg: is not a definition: "), std::string::npos) << ran.err;
    EXPECT_EQ(stored("broken.cfg"), "{\"left_top_x\": ");
}

TEST_F(ImportTest, aStoredNameIsRefusedAndNothingAtAllIsChanged) {
    import("holiday");
    const std::string changed = folder.add("mine/holiday.cfg", "{}");
    const std::string other = addImportFiles("other");
    const std::string before = stored("holiday.cfg");
    const Ran ran = run({"import", other + ".cfg", changed});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.out, "");
    EXPECT_EQ(ran.err, "quillomat: " + changed + ": holiday.cfg is stored already; replace it with --replace\n");
    EXPECT_EQ(stored("holiday.cfg"), before);
    EXPECT_FALSE(exists(documents + "/other.cfg"));
}

TEST_F(ImportTest, replaceReplaces) {
    import("holiday");
    const std::string changed = folder.add("mine/holiday.cfg", "{}");
    EXPECT_EQ(run({"import", "--replace", changed}).status, 0);
    EXPECT_EQ(stored("holiday.cfg"), "{}");
}

TEST_F(ImportTest, replacingAStoredFileByItselfKeepsIt) {
    import("holiday");
    const std::string before = stored("holiday.cfg");
    EXPECT_EQ(run({"import", "--replace", documents + "/holiday.cfg"}).status, 0);
    EXPECT_EQ(stored("holiday.cfg"), before);
}

TEST_F(ImportTest, twoFilesOfOneNameAreRefused) {
    const std::string one = folder.add("one/x.cfg", "{}");
    const std::string two = folder.add("two/x.cfg", "{\"author\": \"B\"}");
    const Ran ran = run({"import", one, two});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
    EXPECT_TRUE(namesIn(documents).empty());
}

TEST_F(ImportTest, whatCannotBeReadIsNamedAndNothingIsImported) {
    const std::string stem = addImportFiles("holiday");
    for (const std::string& bad : {folder.path("nowhere.cfg"), folder.path("mine"), std::string("/dev/zero")}) {
        const Ran ran = run({"import", stem + ".cfg", bad});
        EXPECT_EQ(ran.status, 1) << bad;
        EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
        EXPECT_TRUE(ran.err.starts_with("quillomat: " + bad + ": ")) << ran.err;
        EXPECT_TRUE(namesIn(documents).empty());
    }
}

TEST_F(ImportTest, aCatalogueOfThatNameIsInForceAtOnce) {
    const std::string catalogue = folder.add("mine/main.json", R"({"version": "9", "tableItems": []})");
    const Ran ran = run({"import", catalogue});
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.err, "quillomat: warning: main.json: is the catalogue from now on\n");
    EXPECT_EQ(run({"list"}).out, "");
}

TEST_F(ImportTest, anyNameThatContainsCfgIsADefinition) {
    const std::string definition = folder.add("mine/x.cfg.bak", "{\"template_width\": 60, \"template_height\": 80}");
    const std::string frame = addPicture("mine/x.png.bak", 60, 80);
    EXPECT_EQ(run({"import", definition, frame}).status, 0);
    EXPECT_NE(run({"list"}).out.find("Imported\tx.png.bak\t60 x 80"), std::string::npos);
}

TEST_F(ImportTest, aFullDiskLeavesNoHalfCopy) {
    const std::string stem = addImportFiles("holiday");
    const Ran ran = run({"import", stem + ".cfg", stem + ".png"}, {.fileSize = 1000});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "quillomat: " + stem + ".png: could not be copied into " + documents + ": file too large\n");
    EXPECT_EQ(namesIn(documents), testing::Words{"holiday.cfg"}) << "whole, or not there at all";
    EXPECT_EQ(run({"import", stem + ".png"}).status, 0) << "and once there is room, it is complete";
    EXPECT_NE(run({"list"}).out.find("holiday.png"), std::string::npos);
}

TEST_F(ImportTest, killedAtAnyMomentLeavesWholeFilesOrNone) {
    const std::string content(std::size_t{24} << 20, 'x');
    const std::string big = folder.add("mine/big.cfg", content);
    for (int milliseconds = 2; milliseconds < 120; milliseconds += 13) {
        std::error_code ignored;
        std::filesystem::remove(documents + "/big.cfg", ignored);
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        run({"import", big}, {.killWhen = [end] { return std::chrono::steady_clock::now() > end; }});
        EXPECT_TRUE(!exists(documents + "/big.cfg") || stored("big.cfg") == content) << milliseconds;
    }
    EXPECT_EQ(run({"list"}).status, 0);
    EXPECT_EQ(run({"import", "--replace", big}).status, 0);
    EXPECT_EQ(stored("big.cfg"), content);
}

// Deletion ---------------------------------------------------------------------------------------------------------

TEST_F(ImportTest, deleteRemovesExactlyThatImportsTwoFiles) {
    import("holiday");
    import("plain", "");
    for (const char* name : {"holiday.png", "plain"}) {
        const Ran ran = run({"delete", name});
        EXPECT_EQ(ran.status, 0) << "with an author or without: " << ran.err;
        EXPECT_TRUE(ran.out.ends_with(".png deleted\n")) << ran.out;
    }
    EXPECT_TRUE(namesIn(documents).empty());
}

TEST_F(ImportTest, deleteLeavesEverythingElse) {
    import("holiday");
    import("other");
    folder.add("documents/main.json", testing::contentOfFile(resources + "/main.json"));
    EXPECT_EQ(run({"delete", "holiday"}).status, 0);
    EXPECT_EQ(namesIn(documents), (testing::Words{"main.json", "other.cfg", "other.png"}));
}

TEST_F(ImportTest, deleteRefusesWhatIsBuiltIn) {
    import("holiday");
    const Ran ran = run({"delete", "upright"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "quillomat: upright.png: built into the application, only imports can be deleted\n");
    EXPECT_TRUE(exists(resources + "/images/upright.png"));
}

TEST_F(ImportTest, deleteOfAnImportNamedLikeABuiltInGivesTheBuiltInBack) {
    const std::string original = run({"show", "upright"}).out;
    import("upright");
    EXPECT_NE(run({"show", "upright"}).out, original);
    EXPECT_EQ(run({"delete", "upright"}).status, 0);
    EXPECT_EQ(run({"show", "upright"}).out, original);
}

TEST_F(ImportTest, deleteAlsoTakesADefinitionWithoutItsPicture) {
    const std::string stem = addImportFiles("holiday");
    run({"import", stem + ".cfg"});
    EXPECT_EQ(run({"delete", "holiday"}).status, 0);
    EXPECT_TRUE(namesIn(documents).empty());
}

TEST_F(ImportTest, deleteOfAnUnknownNameRemovesNothing) {
    import("holiday");
    const std::string outside = folder.add("outside.png", "mine");
    for (const char* name : {"nobody", "../outside", "../outside.png", "", ".", "..", "main.json"}) {
        const Ran ran = run({"delete", name});
        EXPECT_NE(ran.status, 0) << name;
        EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
    }
    EXPECT_TRUE(exists(outside));
    EXPECT_EQ(namesIn(documents), (testing::Words{"holiday.cfg", "holiday.png"}));
}

TEST_F(ImportTest, deleteOfALinkRemovesTheLinkAlone) {
    import("holiday");
    const std::string outside = addPicture("outside.png", 60, 80);
    std::filesystem::remove(documents + "/holiday.png");
    std::filesystem::create_symlink(outside, documents + "/holiday.png");
    EXPECT_EQ(run({"delete", "holiday"}).status, 0);
    EXPECT_TRUE(exists(outside));
    EXPECT_TRUE(namesIn(documents).empty());
}

TEST_F(ImportTest, deleteWithJsonNamesWhatIsGone) {
    import("holiday");
    EXPECT_EQ(run({"delete", "--json", "holiday"}).json(), Value::object({{"deleted", Value::string("holiday.png")}}));
}

} // namespace
} // namespace quillomat
