// `list` and `show`.
#include "Command.h"

namespace quillomat {
namespace {

using testing::isOneComplaint;
using testing::Ran;

class ListTest : public testing::CommandTest {};

TEST_F(ListTest, eachMockupIsALineOfRowNameCanvasScreensAndCredit) {
    import("holiday");
    const Ran ran = run({"list"});
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.err, "");
    EXPECT_TRUE(ran.out.starts_with("Phones\tupright.png\t480 x 480\t1 screen\t\n")) << ran.out;
    EXPECT_NE(ran.out.find("\nScenes\tduo.png\t520 x 480\t2 screens\t\n"), std::string::npos) << ran.out;
    EXPECT_TRUE(ran.out.ends_with("\nImported\tholiday.png\t60 x 80\t1 screen\tAda\n")) << ran.out;
}

TEST_F(ListTest, onATerminalColumnsAreAligned) {
    const testing::Terminal terminal;
    EXPECT_EQ(run({"list"}, {.output = terminal.name()}).status, 0);
    const std::string text = terminal.text();
    EXPECT_TRUE(text.starts_with("Phones  upright.png      480 x 480    1 screen\r\n")) << text;
    EXPECT_EQ(text.find('\t'), std::string::npos);
}

TEST_F(ListTest, jsonHasRowsWithTheirMockups) {
    import("holiday");
    import("plain", "");
    const Value rows = run({"list", "--json"}).json();
    ASSERT_EQ(rows.count(), 3U);
    EXPECT_EQ(rows.at(0)["row"], Value::string("Phones"));
    EXPECT_EQ(rows.at(0)["mockups"].at(0), Value::object({{"name", Value::string("upright.png")},
                                                          {"width", Value::integer(480)},
                                                          {"height", Value::integer(480)},
                                                          {"screens", Value::integer(1)},
                                                          {"credit", Value::null()},
                                                          {"imported", Value::boolean(false)}}));
    const Value imported = rows.at(2)["mockups"];
    ASSERT_EQ(imported.count(), 2U);
    EXPECT_EQ(imported.at(0)["credit"], Value::string("Ada"));
    EXPECT_EQ(imported.at(0)["imported"], Value::boolean(true));
    EXPECT_EQ(imported.at(1)["name"], Value::string("plain.png"));
    EXPECT_EQ(imported.at(1)["credit"], Value::null());
}

TEST_F(ListTest, aRowWithoutMockupsIsInTheJsonAndNotInTheLines) {
    const Value rows = run({"list", "--json"}).json();
    EXPECT_EQ(rows.at(2), Value::object({{"row", Value::string("Imported")}, {"mockups", Value::array({})}}));
    EXPECT_EQ(run({"list"}).out.find("Imported"), std::string::npos);
}

TEST_F(ListTest, aDefinitionWithoutItsPictureIsNotListed) {
    const std::string stem = addImportFiles("holiday");
    EXPECT_EQ(run({"import", stem + ".cfg"}).status, 0);
    EXPECT_EQ(run({"list"}).out.find("holiday"), std::string::npos);
}

TEST_F(ListTest, whatATerminalWouldObeyIsNotPrinted) {
    import("gl\x1b[31mow\tx\xc2\x9b", "");
    const std::string out = run({"list"}).out;
    EXPECT_NE(out.find("\tgl?[31mow?x\xc2?.png\t"), std::string::npos) << out;
    EXPECT_EQ(out.find('\x1b'), std::string::npos);
}

TEST_F(ListTest, storedCatalogueWinsEvenWhenItIsBroken) {
    folder.add("documents/main.json", "{broken");
    const Ran ran = run({"list"});
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.out, "");
}

TEST_F(ListTest, showPrintsTheDefinitionAsTheEditorSeesIt) {
    import("holiday");
    const Ran builtIn = run({"show", "upright.png"});
    EXPECT_EQ(builtIn.status, 0);
    EXPECT_EQ(builtIn.json()["overlay"], Value::string("upright-glare.png"));
    const Value imported = run({"show", "holiday"}).json();
    EXPECT_EQ(imported["FtopLeftX"], Value::string("0"));
    EXPECT_EQ(imported["topLeftX"], Value::integer(10));
    EXPECT_EQ(imported["topRightY"], Value::string("10"));
    EXPECT_EQ(imported["cornerRadius"], Value::string("10"));
    EXPECT_EQ(imported["creator"], Value::string(" Mockup created by Ada"));
}

TEST_F(ListTest, missingPngIsAddedToAName) {
    EXPECT_EQ(run({"show", "upright"}).out, run({"show", "upright.png"}).out);
    EXPECT_EQ(run({"show", "pair-large"}).json()["finalFrameWidth"], Value::integer(480));
}

TEST_F(ListTest, unknownNamesGetTheThreeNearest) {
    const Ran ran = run({"show", "uprihgt"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.out, "");
    EXPECT_TRUE(isOneComplaint(ran.err));
    EXPECT_TRUE(ran.err.starts_with("quillomat: uprihgt: no such mockup; did you mean upright.png, ")) << ran.err;
    EXPECT_EQ(std::count(ran.err.begin(), ran.err.end(), ','), 1);
    EXPECT_NE(ran.err.find(" or "), std::string::npos) << ran.err;
}

TEST_F(ListTest, anEnormousNameIsAnsweredAtOnce) {
    const Ran ran = run({"show", std::string(100000, 'u')}, {.limit = std::chrono::seconds(10)});
    EXPECT_EQ(ran.status, 1);
}

TEST_F(ListTest, aMockupWithoutADefinitionIsListedAndCannotBeShown) {
    resources = folder.path("resources");
    folder.add("resources/main.json", R"({"tableItems": [{"typeLabel": "Bare"}],
                                          "viewInfo": {"Bare": {"images": ["bare.png"]}, "Imported": {"images": []}}})");
    EXPECT_EQ(run({"list"}).out, "Bare\tbare.png\t0 x 0\t1 screen\t\n");
    const Ran show = run({"show", "bare"});
    EXPECT_EQ(show.status, 1);
    EXPECT_TRUE(isOneComplaint(show.err)) << show.err;
}

} // namespace
} // namespace quillomat
