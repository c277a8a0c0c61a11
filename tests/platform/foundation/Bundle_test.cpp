#include "platform/foundation/Bundle.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace quillomat {
namespace {

class BundleTest : public ::testing::Test {
protected:
    BundleTest() {
        folder.add("secret.png", "outside");
        folder.add("resources/main.json", "{}");
        folder.add("resources/images/phone.png", "picture");
        folder.add("resources/images/phone", "exact");
        folder.add("resources/images/glare.png", "picture");
        std::filesystem::create_directory(folder.path("resources/images/folder.png"));
    }

    testing::TemporaryFolder folder;
    DirectoryBundle bundle{folder.path("resources")};
};

TEST_F(BundleTest, findsTheCatalogueAtTheTop) {
    EXPECT_EQ(bundle.pathForResource("main", "json"), folder.path("resources/main.json"));
}

TEST_F(BundleTest, findsAPictureByItsBaseNameAndType) {
    EXPECT_EQ(bundle.pathForResource("phone", "png"), folder.path("resources/images/phone.png"));
    EXPECT_EQ(bundle.pathForResource("phone.png", ""), folder.path("resources/images/phone.png"));
}

TEST_F(BundleTest, findsNothingThatIsNotThere) {
    EXPECT_EQ(bundle.pathForResource("other", "png"), std::nullopt);
    EXPECT_EQ(bundle.pathForResource("", "png"), std::nullopt);
    EXPECT_EQ(bundle.pathForResource("phone", "jpg"), std::nullopt);
    EXPECT_EQ(bundle.pathForImageNamed(""), std::nullopt);
    EXPECT_EQ(bundle.pathForImageNamed("other"), std::nullopt);
}

TEST_F(BundleTest, takesTheExactImageNameBeforeTheOneWithItsExtension) {
    EXPECT_EQ(bundle.pathForImageNamed("phone"), folder.path("resources/images/phone"));
    EXPECT_EQ(bundle.pathForImageNamed("phone.png"), folder.path("resources/images/phone.png"));
    EXPECT_EQ(bundle.pathForImageNamed("glare"), folder.path("resources/images/glare.png"));
}

TEST_F(BundleTest, namesThatLeaveTheFolderNameNothing) {
    EXPECT_EQ(bundle.pathForResource("../secret", "png"), std::nullopt);
    EXPECT_EQ(bundle.pathForResource("images/phone", "png"), std::nullopt);
    EXPECT_EQ(bundle.pathForResource(folder.path("secret"), "png"), std::nullopt);
    EXPECT_EQ(bundle.pathForImageNamed("../../secret.png"), std::nullopt);
    EXPECT_EQ(bundle.pathForImageNamed("../main.json"), std::nullopt);
    EXPECT_EQ(bundle.pathForImageNamed(std::string_view("phone.png\0x", 11)), std::nullopt);
    EXPECT_EQ(bundle.pathForImageNamed(std::string(300, 'a')), std::nullopt);
}

TEST_F(BundleTest, aFolderIsNoResource) {
    EXPECT_EQ(bundle.pathForResource("folder", "png"), std::nullopt);
    EXPECT_EQ(bundle.pathForResource("images", ""), std::nullopt);
    EXPECT_EQ(bundle.pathForImageNamed("."), std::nullopt);
}

TEST_F(BundleTest, aMissingFolderHoldsNothing) {
    EXPECT_EQ(DirectoryBundle(folder.path("nowhere")).pathForResource("main", "json"), std::nullopt);
}

} // namespace
} // namespace quillomat
