#include "hosts/desktop/UserFolders.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

namespace quillomat {
namespace {

namespace fs = std::filesystem;

Environment with(std::map<std::string, std::string> variables) {
    return [variables = std::move(variables)](const std::string& name) -> std::optional<std::string> {
        const auto found = variables.find(name);
        return found == variables.end() ? std::nullopt : std::optional(found->second);
    };
}

struct UserFoldersTest : testing::Test {
    fs::path folder = fs::path(testing::TempDir()) / "quillomat-user-folders";
    void SetUp() override { fs::remove_all(folder); }
    void TearDown() override { fs::remove_all(folder); }
    void write(const fs::path& path, const std::string& text) {
        fs::create_directories(path.parent_path());
        std::ofstream(path) << text;
    }
};

TEST_F(UserFoldersTest, documentsFollowTheDataHome) {
    EXPECT_EQ(defaultDocumentsDirectory(with({{"XDG_DATA_HOME", "/data"}, {"HOME", "/home/ada"}})), "/data/quillomat");
}

TEST_F(UserFoldersTest, documentsStandBelowTheHomeOtherwise) {
    EXPECT_EQ(defaultDocumentsDirectory(with({{"HOME", "/home/ada"}})), "/home/ada/.local/share/quillomat");
}

TEST_F(UserFoldersTest, relativeVariablesDoNotCount) {
    EXPECT_EQ(defaultDocumentsDirectory(with({{"XDG_DATA_HOME", "data"}, {"HOME", "/home/ada"}})),
              "/home/ada/.local/share/quillomat");
    EXPECT_EQ(picturesDirectory(with({{"XDG_PICTURES_DIR", "pics"}, {"HOME", "/home/ada"}})), "/home/ada/Pictures");
}

TEST_F(UserFoldersTest, withoutAHomeThereAreNoFolders) {
    EXPECT_EQ(defaultDocumentsDirectory(with({})), "");
    EXPECT_EQ(picturesDirectory(with({})), "");
}

TEST_F(UserFoldersTest, picturesVariableWinsOverTheFile) {
    write(folder / ".config/user-dirs.dirs", "XDG_PICTURES_DIR=\"$HOME/Bilder\"\n");
    EXPECT_EQ(picturesDirectory(with({{"XDG_PICTURES_DIR", "/pictures"}, {"HOME", folder.string()}})), "/pictures");
}

TEST_F(UserFoldersTest, picturesFileIsReadFromTheConfigurationFolder) {
    write(folder / ".config/user-dirs.dirs",
          "# comment\nXDG_MUSIC_DIR=\"$HOME/M\"\nXDG_PICTURES_DIR=\"$HOME/Bilder\"\n");
    EXPECT_EQ(picturesDirectory(with({{"HOME", folder.string()}})), folder.string() + "/Bilder");
}

TEST_F(UserFoldersTest, brokenPicturesFileIsIgnored) {
    write(folder / ".config/user-dirs.dirs", "XDG_PICTURES_DIR=\"\nXDG_PICTURES_DIR=\"relative\"\n");
    EXPECT_EQ(picturesDirectory(with({{"HOME", folder.string()}})), folder.string() + "/Pictures");
}

TEST_F(UserFoldersTest, installedResourcesWinOverTheSourceTrees) {
    write(folder / "resources/main.json", "{}");
    const std::string program = (folder / "build/release/bin/quillomat").string();
    EXPECT_EQ(resourcesDirectory(program), (folder / "resources").string());
    write(folder / "build/release/share/quillomat/main.json", "{}");
    EXPECT_EQ(resourcesDirectory(program), (folder / "build/release/share/quillomat").string());
}

TEST_F(UserFoldersTest, programWithoutResourcesHasNone) {
    EXPECT_EQ(resourcesDirectory((folder / "bin/quillomat").string()), "");
}

} // namespace
} // namespace quillomat
