// `publish`: the tree a static web server serves, and what is refused before anybody installs it.
#include "Site.h"

#include <algorithm>

namespace quillomat {
namespace {

using testing::isOneComplaint;
using testing::Ran;

class PublishTest : public testing::SiteTest {
protected:
    void SetUp() override {} // no server needed

    void expectRefusal(const std::string& reason, const testing::Words& more = {}) {
        const Ran ran = publish(more);
        EXPECT_EQ(ran.status, 1);
        EXPECT_EQ(ran.out, "");
        EXPECT_NE(ran.err.find(reason), std::string::npos) << ran.err;
        EXPECT_FALSE(exists(folder.path("site/quillomat"))) << "nothing is published then";
    }
    void changeCatalogue(const std::string& from, const std::string& to) const {
        std::string text = testing::contentOfFile(makersResources + "/main.json");
        const auto at = text.find(from);
        ASSERT_NE(at, std::string::npos) << from;
        folder.add("maker/resources/main.json", text.replace(at, from.size(), to));
    }
    [[nodiscard]] std::map<std::string, std::filesystem::file_time_type> timesOfSite() const {
        std::map<std::string, std::filesystem::file_time_type> times;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path("site"))) {
            if (entry.is_regular_file()) {
                times[entry.path().string()] = entry.last_write_time();
            }
        }
        return times;
    }
    [[nodiscard]] std::string page() const { return folder.contentOf("site/quillomat/mockups/index.html"); }
};

TEST_F(PublishTest, theTreeHoldsALaterCatalogueItsPicturesAndThePages) {
    const Ran ran = publish();
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.err, "");
    EXPECT_TRUE(ran.out.starts_with("version 1.1: 8 frames, 10 pictures, ")) << ran.out;
    const Value catalogue = publishedCatalogue();
    EXPECT_EQ(catalogue["version"], Value::string("1.1"));
    EXPECT_EQ(catalogue["tableItems"].count(), 3U);
    EXPECT_EQ(catalogue["otaImages"].count(), 10U);
    for (const Value& name : catalogue["otaImages"].elements()) {
        const std::string file = "site/quillomat/updates/images/" + name.stringValue();
        EXPECT_EQ(folder.contentOf(file), testing::contentOfFile(makersResources + "/images/" + name.stringValue()));
        EXPECT_FALSE(folder.contentOf(file).empty()) << file;
    }
    EXPECT_TRUE(exists(folder.path("site/quillomat/support/index.html")));
    EXPECT_EQ(namesIn(folder.path("site")), testing::Words{"quillomat"}) << "and nothing else";
}

TEST_F(PublishTest, picturesAreListedByTheirNamesWithoutTheMarkerEachOnce) {
    ASSERT_EQ(publish().status, 0);
    const Value pictures = publishedCatalogue()["otaImages"];
    const auto& names = pictures.elements();
    EXPECT_EQ(std::count(names.begin(), names.end(), Value::string("pair.png")), 1);
    EXPECT_EQ(std::count(names.begin(), names.end(), Value::string("pair-large.png")), 0);
}

TEST_F(PublishTest, jsonSaysWhatWasDone) {
    const Value report = publish({"--json"}).json();
    EXPECT_EQ(report["version"], Value::string("1.1"));
    EXPECT_EQ(report["frames"], Value::integer(8));
    EXPECT_EQ(report["pictures"], Value::integer(10));
    EXPECT_GT(report["changedFiles"].integerValue(), 18);
}

TEST_F(PublishTest, aSecondRunChangesNothing) {
    makerImports("holiday", "Ada");
    ASSERT_EQ(publish({"--row", "Community"}).status, 0);
    const auto before = timesOfSite();
    const Ran again = publish({"--row", "Community"});
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.out, "version 1.1: nothing has changed\n");
    EXPECT_EQ(timesOfSite(), before);
}

TEST_F(PublishTest, aChangedPictureRaisesTheVersion) {
    ownMakersResources();
    ASSERT_EQ(publish().status, 0);
    addPicture("maker/resources/images/tilted.png", 480, 480);
    ASSERT_EQ(publish().status, 0);
    EXPECT_EQ(publishedCatalogue()["version"], Value::string("1.2"));
}

TEST_F(PublishTest, aChangedCatalogueRaisesTheVersionBeyondBoth) {
    ownMakersResources();
    ASSERT_EQ(publish().status, 0);
    changeCatalogue("One screen", "A single screen");
    changeCatalogue("\"version\": \"1.0\"", "\"version\": \"1.9\"");
    ASSERT_EQ(publish().status, 0);
    EXPECT_EQ(publishedCatalogue()["version"], Value::string("1.10"));
}

TEST_F(PublishTest, aRunThatWasCutShortAfterItsPicturesStillRaisesTheVersion) {
    ownMakersResources();
    ASSERT_EQ(publish().status, 0);
    addPicture("maker/resources/images/tilted.png", 480, 480);
    // The catalogue cannot be written: its place is taken by a folder that is not empty.
    std::filesystem::rename(folder.path("site/quillomat/updates/main.json"), folder.path("kept.json"));
    folder.add("site/quillomat/updates/main.json/in-the-way", "x");
    EXPECT_EQ(publish().status, 1);
    std::filesystem::remove(folder.path("site/quillomat/updates/main.json/in-the-way"));
    std::filesystem::remove(folder.path("site/quillomat/updates/main.json"));
    std::filesystem::rename(folder.path("kept.json"), folder.path("site/quillomat/updates/main.json"));
    ASSERT_EQ(publish().status, 0);
    EXPECT_EQ(publishedCatalogue()["version"], Value::string("1.2")) << "or nobody would fetch the new picture";
    EXPECT_EQ(publish().out, "version 1.2: nothing has changed\n");
}

// Imported frames --------------------------------------------------------------------------------------------------

TEST_F(PublishTest, importedFramesJoinTheRowAboveImported) {
    makerImports("holiday", "Ada");
    ASSERT_EQ(publish({"--row", "Community"}).status, 0);
    const Value catalogue = publishedCatalogue();
    ASSERT_EQ(catalogue["tableItems"].count(), 4U);
    EXPECT_EQ(catalogue["tableItems"].at(2)["typeLabel"], Value::string("Community"));
    EXPECT_EQ(catalogue["tableItems"].at(3)["typeLabel"], Value::string("Imported"));
    EXPECT_EQ(catalogue["viewInfo"]["Community"]["images"], Value::array({Value::string("holiday.png")}));
    EXPECT_EQ(catalogue["viewInfo"]["Imported"]["images"], Value::array({}));
}

TEST_F(PublishTest, theRowIsCalledMoreUnlessItIsNamed) {
    makerImports("holiday", "Ada");
    ASSERT_EQ(publish().status, 0);
    EXPECT_TRUE(publishedCatalogue()["viewInfo"].contains("More"));
}

TEST_F(PublishTest, importedFramesCanJoinARowThatIsThere) {
    makerImports("holiday", "Ada");
    ASSERT_EQ(publish({"--row", "Phones"}).status, 0);
    EXPECT_EQ(publishedCatalogue()["tableItems"].count(), 3U);
    EXPECT_EQ(publishedCatalogue()["viewInfo"]["Phones"]["images"].at(6), Value::string("holiday.png"));
}

TEST_F(PublishTest, theCreditGoesOntoThePageAndNotIntoTheDefinition) {
    makerImports("holiday", "Ada <b> & Co");
    ASSERT_EQ(publish().status, 0);
    const Value definition = publishedCatalogue()["editInfo"]["holiday.png"];
    EXPECT_FALSE(definition.contains("creator")) << "it would switch background and glare off";
    EXPECT_EQ(definition["FtopLeftX"], Value::string("0"));
    EXPECT_NE(page().find("by Ada &lt;b&gt; &amp; Co<"), std::string::npos);
    EXPECT_EQ(page().find("<b>"), std::string::npos);
}

TEST_F(PublishTest, previewCornersOfImportsLieWhereTheScreenIs) {
    makerImports("holiday", "Ada");
    ASSERT_EQ(publish().status, 0);
    const Value definition = publishedCatalogue()["editInfo"]["holiday.png"];
    // 60 x 80 fills the height of the 300 points: 3.75 points a pixel, 37.5 from the left; markers are 10 off.
    EXPECT_EQ(definition["topLeftX"], Value::integer(65));
    EXPECT_EQ(definition["topLeftY"], Value::integer(28));
    EXPECT_EQ(definition["bottomRightX"], Value::integer(215));
    EXPECT_EQ(definition["bottomRightY"], Value::integer(253));
}

TEST_F(PublishTest, theUsersOwnRowIsNoRowToJoin) {
    makerImports("holiday", "Ada");
    expectRefusal("publish: the row \"Imported\" is the users' own", {"--row", "Imported"});
}

// Refusals ---------------------------------------------------------------------------------------------------------

TEST_F(PublishTest, aCatalogueWithoutTheImportedEntryIsRefused) {
    ownMakersResources();
    changeCatalogue("\"Imported\": {", "\"Imported elsewhere\": {");
    expectRefusal("Imported: the catalogue has no \"viewInfo\" entry \"Imported\" with an \"images\" array");
}

TEST_F(PublishTest, namesThatNeedEscapingAreRefused) {
    makerImports("my holiday", "Ada");
    expectRefusal("the name \"my holiday.png\" would need escaping in a web address");
}

TEST_F(PublishTest, aBrokenImportIsRefusedWithTheReason) {
    folder.add("maker/documents/broken.cfg", "{\"template_width\": 60");
    addPicture("maker/documents/broken.png", 60, 80);
    expectRefusal("broken.cfg: is not a definition");
}

TEST_F(PublishTest, definitionsThatCannotWorkAreRefusedWithTheReason) {
    ownMakersResources();
    changeCatalogue("\"finalFrameWidth\": 480", "\"finalFrameWidth\": 0");
    expectRefusal("publish: upright.png: the canvas has no extent");
}

TEST_F(PublishTest, crossedCornersAreRefused) {
    ownMakersResources();
    changeCatalogue("\"FtopLeftX\": 143", "\"FtopLeftX\": 400");
    expectRefusal("upright.png: full-resolution corners of screen 1 do not enclose an area in order");
}

TEST_F(PublishTest, missingPicturesAreRefused) {
    ownMakersResources();
    std::filesystem::remove(makersResources + "/images/tilted.png");
    std::filesystem::remove(makersResources + "/images/upright-glare.png");
    expectRefusal("tilted.png: picture tilted.png is missing");
    expectRefusal("upright.png: picture upright-glare.png is missing");
}

TEST_F(PublishTest, damagedPicturesAreRefused) {
    ownMakersResources();
    const std::string whole = testing::contentOfFile(makersResources + "/images/tilted.png");
    folder.add("maker/resources/images/tilted.png", whole.substr(0, whole.size() - 50));
    expectRefusal("tilted.png: frame picture tilted.png: ");
}

TEST_F(PublishTest, everythingThatIsWrongIsSaidAtOnce) {
    ownMakersResources();
    std::filesystem::remove(makersResources + "/images/tilted.png");
    std::filesystem::remove(makersResources + "/images/duo.png");
    const Ran ran = publish();
    EXPECT_NE(ran.err.find("quillomat: publish: tilted.png"), std::string::npos) << ran.err;
    EXPECT_NE(ran.err.find("quillomat: publish: duo.png"), std::string::npos) << ran.err;
}

TEST_F(PublishTest, withoutACatalogueThereIsNothingToPublish) {
    folder.add("maker/documents/main.json", "[]");
    expectRefusal("there is no catalogue to publish");
}

TEST_F(PublishTest, aFolderThatCannotBeMadeIsNamed) {
    folder.add("site", "a file");
    const Ran ran = publish();
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
    EXPECT_NE(ran.err.find(folder.path("site")), std::string::npos) << ran.err;
}

// Pages ------------------------------------------------------------------------------------------------------------

TEST_F(PublishTest, theGalleryShowsEveryFrameUnderItsRowWithAPreview) {
    ASSERT_EQ(publish().status, 0);
    for (const char* row : {"Phones", "Scenes"}) {
        EXPECT_NE(page().find(std::string(">") + row + "</h2>"), std::string::npos) << row;
    }
    for (const char* name : {"upright.png", "duo.png", "pair.png", "pair-large.png"}) {
        EXPECT_NE(page().find(std::string("src=\"previews/") + name + "\""), std::string::npos) << name;
        const PixelSize size = sizeOf(folder.path(std::string("site/quillomat/mockups/previews/") + name));
        EXPECT_GT(size.width, 0) << name;
        EXPECT_LE(std::max(size.width, size.height), 640) << name;
    }
    EXPECT_EQ(page().find(">Imported</h2>"), std::string::npos) << "the users' own row is nobody else's to see";
}

TEST_F(PublishTest, previewsShowTheScreensLit) {
    ASSERT_EQ(publish().status, 0);
    const std::string preview = folder.path("site/quillomat/mockups/previews/upright.png");
    EXPECT_EQ(testing::pixelOf(preview, 240, 240)[3], 255);
    EXPECT_EQ(testing::pixelOf(makersResources + "/images/upright.png", 240, 240)[3], 0) << "where the frame is clear";
}

TEST_F(PublishTest, pagesNeedNoScriptAndNothingFromElsewhere) {
    ASSERT_EQ(publish().status, 0);
    for (const std::string& text : {page(), folder.contentOf("site/quillomat/support/index.html")}) {
        EXPECT_TRUE(text.starts_with("<!doctype html>")) << text.substr(0, 40);
        EXPECT_NE(text.find("name=\"viewport\""), std::string::npos);
        EXPECT_NE(text.find("prefers-color-scheme: dark"), std::string::npos);
        EXPECT_EQ(text.find("<script"), std::string::npos);
        EXPECT_EQ(text.find("://"), std::string::npos);
    }
}

} // namespace
} // namespace quillomat
