#include "catalogue/CatalogueDocument.h"

#include "CatalogueTest.h"

namespace quillomat::testing {
namespace {

namespace fs = std::filesystem;

class CatalogueDocumentTest : public ::testing::Test {
protected:
    FakePlatform fake;
    CatalogueDocument document{fake.platform};
};

TEST_F(CatalogueDocumentTest, withoutStoredCopyTheResourceIsRead) {
    fake.putResource("main.json", R"({"version": "1"})");
    EXPECT_EQ(document.JSONFromFile()["version"].stringValue(), "1");
}

TEST_F(CatalogueDocumentTest, storedCopyWinsOverTheResourceEvenWhenOlder) {
    fake.putResource("main.json", R"({"version": "2"})");
    fake.putDocument("main.json", R"({"version": "1"})");
    EXPECT_EQ(document.JSONFromFile()["version"].stringValue(), "1");
}

TEST_F(CatalogueDocumentTest, brokenStoredCopyStillHidesTheResource) {
    fake.putResource("main.json", R"({"version": "2"})");
    fake.putDocument("main.json", "{\"version\": ");
    EXPECT_FALSE(document.JSONFromFile().isPresent());
}

TEST_F(CatalogueDocumentTest, emptyStoredCopyStillHidesTheResource) {
    fake.putResource("main.json", R"({"version": "2"})");
    fake.putDocument("main.json", "");
    EXPECT_FALSE(document.JSONFromFile().isPresent());
}

TEST_F(CatalogueDocumentTest, folderNamedLikeTheStoredCopyReadsAsNothing) {
    fake.putResource("main.json", R"({"version": "2"})");
    fs::create_directory(fake.document("main.json"));
    EXPECT_FALSE(document.JSONFromFile().isPresent());
}

TEST_F(CatalogueDocumentTest, noDocumentAnywhereGivesNothing) {
    EXPECT_FALSE(document.JSONFromFile().isPresent());
}

TEST_F(CatalogueDocumentTest, isReadAfreshEveryTime) {
    fake.putDocument("main.json", R"({"version": "1"})");
    EXPECT_EQ(document.JSONFromFile()["version"].stringValue(), "1");
    fake.putDocument("main.json", R"({"version": "2"})");
    EXPECT_EQ(document.JSONFromFile()["version"].stringValue(), "2");
}

TEST_F(CatalogueDocumentTest, catalogueBeyondTheByteLimitReadsAsNothing) {
    fake.putDocument("main.json", "{}");
    fs::resize_file(fake.document("main.json"), JsonLimits{}.bytes + 1); // sparse
    EXPECT_FALSE(document.JSONFromFile().isPresent());
}

TEST_F(CatalogueDocumentTest, assetWinsOverTheFileOfTheSameName) {
    fake.putResourceImage("a.png", tinyPng(3, 2));
    fake.putDocument("a.png", tinyPng(5, 4));
    EXPECT_EQ(document.pictureNamed("a.png").pixelSize().width, 3);
}

TEST_F(CatalogueDocumentTest, assetIsFoundWithoutItsExtension) {
    fake.putResourceImage("a.png", tinyPng(3, 2));
    EXPECT_EQ(document.pictureNamed("a").pixelSize().width, 3);
}

TEST_F(CatalogueDocumentTest, pictureWithoutAssetComesFromTheDocuments) {
    fake.putDocument("a.png", tinyPng(5, 4));
    EXPECT_FALSE(document.imageNamed("a.png"));
    EXPECT_EQ(document.pictureNamed("a.png").pixelSize().width, 5);
}

TEST_F(CatalogueDocumentTest, fileIsLookedUpByItsWholeNameOnly) {
    fake.putDocument("a.png", tinyPng(5, 4));
    EXPECT_FALSE(document.pictureNamed("a"));
}

TEST_F(CatalogueDocumentTest, unreadableAssetGivesWayToTheFile) {
    fake.putResourceImage("a.png", "no picture");
    fake.putDocument("a.png", tinyPng(5, 4));
    EXPECT_EQ(document.pictureNamed("a.png").pixelSize().width, 5);
}

TEST_F(CatalogueDocumentTest, missingPictureIsNoPictureAndNoError) {
    EXPECT_FALSE(document.pictureNamed("a.png"));
    EXPECT_TRUE(fake.log.lines().empty());
}

TEST_F(CatalogueDocumentTest, pictureOverTheLimitsIsNoPicture) {
    fake.platform.imageLimits.side = 4;
    fake.putDocument("a.png", tinyPng(5, 4));
    EXPECT_FALSE(document.pictureNamed("a.png"));
}

TEST_F(CatalogueDocumentTest, namesThatWouldLeaveTheFolderNameNothing) {
    const std::string outside = fake.putElsewhere("secret.png", tinyPng(5, 4));
    fs::create_directory(fake.document("sub"));
    FakePlatform::put(fake.document("sub") + "/inner.png", tinyPng(5, 4));
    const std::string withNul("sub\0.png", 8);
    for (const std::string& name :
         std::vector<std::string>{"../elsewhere/secret.png", outside, "sub/inner.png", "./sub/inner.png", "..", ".", "",
                                  "/", withNul, "a\\b", std::string(256, 'a'), std::string(100000, 'a')}) {
        EXPECT_FALSE(document.pathOfDocument(name)) << name.substr(0, 40);
        EXPECT_FALSE(document.pictureNamed(name)) << name.substr(0, 40);
        EXPECT_FALSE(document.JSONFromDocument(name).isPresent()) << name.substr(0, 40);
    }
}

TEST_F(CatalogueDocumentTest, symbolicLinkOutOfTheDocumentsIsNotFollowed) {
    fs::create_symlink(fake.putElsewhere("secret.png", tinyPng(5, 4)), fake.document("a.png"));
    fs::create_symlink(fake.putElsewhere("secret.json", R"({"version": "9"})"), fake.document("b.cfg"));
    fs::create_symlink(fake.elsewhere(), fake.document("folder"));
    EXPECT_FALSE(document.pictureNamed("a.png"));
    EXPECT_FALSE(document.JSONFromDocument("b.cfg").isPresent());
    EXPECT_FALSE(document.pathOfDocument("folder"));
}

TEST_F(CatalogueDocumentTest, linkedCatalogueFromOutsideIsNoStoredCopy) {
    fake.putResource("main.json", R"({"version": "1"})");
    fs::create_symlink(fake.putElsewhere("other.json", R"({"version": "9"})"), fake.document("main.json"));
    EXPECT_EQ(document.JSONFromFile()["version"].stringValue(), "1");
}

TEST_F(CatalogueDocumentTest, symbolicLinkInsideTheDocumentsIsFollowed) {
    fake.putDocument("a.png", tinyPng(5, 4));
    fs::create_symlink("a.png", fake.document("b.png"));
    EXPECT_EQ(document.pictureNamed("b.png").pixelSize().width, 5);
}

TEST_F(CatalogueDocumentTest, danglingAndCircularLinksNameNothing) {
    fs::create_symlink("gone.png", fake.document("a.png"));
    fs::create_symlink("c.png", fake.document("b.png"));
    fs::create_symlink("b.png", fake.document("c.png"));
    EXPECT_FALSE(document.pathOfDocument("a.png"));
    EXPECT_FALSE(document.pathOfDocument("b.png"));
}

TEST_F(CatalogueDocumentTest, documentsDirectoryMayItselfBeALink) {
    fake.putDocument("a.png", tinyPng(5, 4));
    const std::string link = fake.directory.path() + "/linked";
    fs::create_directory_symlink(fake.documentsDirectory(), link);
    fake.platform.documentsDirectory = link;
    EXPECT_EQ(document.pictureNamed("a.png").pixelSize().width, 5);
}

TEST_F(CatalogueDocumentTest, neighbourWithALongerNameIsOutside) {
    const std::string neighbour = fake.documentsDirectory() + "-other";
    fs::create_directory(neighbour);
    FakePlatform::put(neighbour + "/a.png", tinyPng(5, 4));
    fs::create_symlink(neighbour + "/a.png", fake.document("a.png"));
    EXPECT_FALSE(document.pathOfDocument("a.png"));
}

TEST_F(CatalogueDocumentTest, importIsAnyNameThatContainsCfg) {
    for (const char* name : {"b.cfg", "a.cfg.bak", "x.cfg.y.cfg", "cfg", "a.png", "c.CFG"}) {
        fake.putDocument(name, "{}");
    }
    EXPECT_EQ(document.importedDefinitions(), (std::vector<std::string>{"a.cfg.bak", "b.cfg", "x.cfg.y.cfg"}));
}

TEST_F(CatalogueDocumentTest, failedListingHoldsNoImports) {
    fake.putDocument("b.cfg", "{}");
    fake.files.failListings = true;
    EXPECT_TRUE(document.importedDefinitions().empty());
}

TEST(PictureNameOfImport, replacesEveryCfg) {
    EXPECT_EQ(pictureNameOfImport("x.cfg"), "x.png");
    EXPECT_EQ(pictureNameOfImport("x.cfg.bak"), "x.png.bak");
    EXPECT_EQ(pictureNameOfImport("x.cfg.y.cfg"), "x.png.y.png");
    EXPECT_EQ(pictureNameOfImport("x.cf.cfgg"), "x.cf.pngg");
}

TEST(LookupNameOfMockup, losesEveryLargeMarker) {
    EXPECT_EQ(lookupNameOfMockup("phone-large.png"), "phone.png");
    EXPECT_EQ(lookupNameOfMockup("a-large-b-large.png"), "a-b.png");
    EXPECT_EQ(lookupNameOfMockup("phone.png"), "phone.png");
}

} // namespace
} // namespace quillomat::testing
