#include "platform/foundation/TemporaryFiles.h"

#include "TemporaryFolder.h"
#include "platform/foundation/FileManager.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace quillomat {
namespace {

namespace fs = std::filesystem;
using std::chrono::hours;

constexpr const char* ours = ".quillomat-0123456789abcdef.tmp";

class TemporaryFilesTest : public ::testing::Test {
protected:
    std::string put(const std::string& name, hours age) {
        const std::string path = folder.path(name);
        std::ofstream(path) << "half a picture";
        fs::last_write_time(path, fs::file_time_type::clock::now() - age);
        return path;
    }

    testing::TemporaryFolder folder;
};

TEST(TemporaryFileName, namesAreRecognisedAndNothingElseIs) {
    EXPECT_TRUE(isTemporaryFileName(temporaryFileName()));
    EXPECT_NE(temporaryFileName(), temporaryFileName());
    EXPECT_TRUE(isTemporaryFileName(ours));
    for (const char* other :
         {"", ".quillomat-", ".quillomat-.tmp", ".quillomat-0123456789abcde.tmp", ".quillomat-0123456789abcdef0.tmp",
          ".quillomat-0123456789abcdeg.tmp", ".quillomat-0123456789ABCDEF.tmp", "quillomat-0123456789abcdef.tmp",
          "x.quillomat-0123456789abcdef.tmp", ".quillomat-0123456789abcdef.tmp~", ".quillomat-0123456789abcdef.png",
          ".quillomat-notes-of-mine-.tmp"}) {
        EXPECT_FALSE(isTemporaryFileName(other)) << other;
    }
}

TEST_F(TemporaryFilesTest, onesOlderThanADayAreRemoved) {
    const std::string stale = put(ours, hours(25));
    const std::string fresh = put(".quillomat-1123456789abcdef.tmp", hours(23));
    const std::string ahead = put(".quillomat-2123456789abcdef.tmp", hours(-48));
    removeStaleTemporaryFiles(folder.path());
    EXPECT_FALSE(fs::exists(stale));
    EXPECT_TRUE(fs::exists(fresh));
    EXPECT_TRUE(fs::exists(ahead));
}

TEST_F(TemporaryFilesTest, filesOfOtherNamesStayHoweverOld) {
    const std::vector<std::string> others{put(".quillomat-notes.tmp", hours(900)), put("frame.cfg", hours(900)),
                                          put(".quillomat-0123456789abcdef.tmp.png", hours(900)),
                                          put("0123456789abcdef.tmp", hours(900))};
    removeStaleTemporaryFiles(folder.path());
    for (const std::string& other : others) {
        EXPECT_TRUE(fs::exists(other)) << other;
    }
}

TEST_F(TemporaryFilesTest, foldersLinksAndWhatLiesBelowStay) {
    fs::create_directory(folder.path(ours));
    const std::string below = put(std::string(ours) + "/.quillomat-3123456789abcdef.tmp", hours(900));
    fs::last_write_time(folder.path(ours), fs::file_time_type::clock::now() - hours(900));
    const std::string target = put("target", hours(900));
    const std::string link = folder.path(".quillomat-4123456789abcdef.tmp");
    fs::create_symlink(target, link);
    removeStaleTemporaryFiles(folder.path());
    EXPECT_TRUE(fs::is_directory(folder.path(ours)));
    EXPECT_TRUE(fs::exists(below));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_TRUE(fs::exists(target));
}

TEST_F(TemporaryFilesTest, filesOfAnotherUserStay) {
    const std::string path = put(ours, hours(900));
    if (::chown(path.c_str(), 65534, static_cast<gid_t>(-1)) != 0) {
        GTEST_SKIP() << "cannot give a file away";
    }
    fs::last_write_time(path, fs::file_time_type::clock::now() - hours(900));
    removeStaleTemporaryFiles(folder.path());
    EXPECT_TRUE(fs::exists(path));
}

TEST_F(TemporaryFilesTest, aFolderThatIsNotThereIsNoTrouble) {
    removeStaleTemporaryFiles(folder.path("nowhere"));
    removeStaleTemporaryFiles("");
}

TEST_F(TemporaryFilesTest, theFirstWriteIntoAFolderSweepsIt) {
    const std::string stale = put(ours, hours(900));
    SystemFileManager files;
    ASSERT_TRUE(files.write(folder.path("picture"), std::as_bytes(std::span("x", 1))));
    EXPECT_FALSE(fs::exists(stale));
    EXPECT_EQ(*files.contentsOfDirectory(folder.path()), std::vector<std::string>{"picture"});
    put(ours, hours(900));
    ASSERT_TRUE(files.write(folder.path("picture"), std::as_bytes(std::span("y", 1))));
    EXPECT_TRUE(fs::exists(stale)) << "once is enough";
    fs::create_directory(folder.path("other"));
    const std::string elsewhere = put(std::string("other/") + ours, hours(900));
    ASSERT_TRUE(files.copy(folder.path("picture"), folder.path("other/picture")));
    EXPECT_FALSE(fs::exists(elsewhere));
}

} // namespace
} // namespace quillomat
