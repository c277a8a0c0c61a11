#include "platform/foundation/FileManager.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillomat {
namespace {

using Names = std::vector<std::string>;

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text));
}

class FileManagerTest : public ::testing::Test {
protected:
    Names names() const {
        const auto found = files.contentsOfDirectory(folder.path());
        return found ? *found : Names{"unreadable"};
    }
    std::string readText(const std::string& path, std::uint64_t limit = 1 << 20) const {
        const auto bytes = files.read(path, limit);
        return bytes ? std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size())
                     : "(" + bytes.reason() + ")";
    }

    testing::TemporaryFolder folder;
    SystemFileManager files;
};

TEST_F(FileManagerTest, aFileExistsOnceItIsWritten) {
    EXPECT_FALSE(files.fileExists(folder.path("a")));
    EXPECT_TRUE(files.write(folder.path("a"), bytesOf("text")));
    EXPECT_TRUE(files.fileExists(folder.path("a")));
    EXPECT_TRUE(files.fileExists(folder.path()));
    EXPECT_FALSE(files.fileExists(""));
    EXPECT_FALSE(files.fileExists(folder.path("a") + std::string("\0b", 2)));
}

TEST_F(FileManagerTest, aLinkToNothingDoesNotExist) {
    std::filesystem::create_symlink("nowhere", folder.path("link"));
    EXPECT_FALSE(files.fileExists(folder.path("link")));
}

TEST_F(FileManagerTest, listsNamesInBytewiseOrder) {
    for (const char* name : {"b", "a", "B", "10", "9", ".hidden", "\xC3\xA9", "a.cfg", "~"}) {
        folder.add(name, "");
    }
    std::filesystem::create_directory(folder.path("sub"));
    folder.add("sub/inside", "");
    EXPECT_EQ(names(), (Names{".hidden", "10", "9", "B", "a", "a.cfg", "b", "sub", "~", "\xC3\xA9"}));
}

TEST_F(FileManagerTest, listingFailsForWhatIsNoDirectory) {
    EXPECT_EQ(files.contentsOfDirectory(folder.path("nowhere")).reason(), "no such file or directory");
    EXPECT_EQ(files.contentsOfDirectory(folder.add("file", "")).reason(), "not a directory");
    EXPECT_FALSE(files.contentsOfDirectory(""));
}

TEST_F(FileManagerTest, readsTheWholeFileUpToTheLimit) {
    const std::string path = folder.add("a", std::string("bytes\0and\xFF", 10));
    EXPECT_EQ(readText(path), std::string("bytes\0and\xFF", 10));
    EXPECT_EQ(readText(path, 10).size(), 10U);
    EXPECT_EQ(readText(path, 9), "(larger than 9 bytes)");
    EXPECT_EQ(readText(folder.add("empty", ""), 0), "");
}

TEST_F(FileManagerTest, readsFilesWhoseSizeIsNotKnownBeforehand) {
    EXPECT_GT(readText("/proc/self/status").size(), 100U);
    EXPECT_EQ(readText("/proc/self/status", 100), "(larger than 100 bytes)");
}

TEST_F(FileManagerTest, readsOnlyRegularFiles) {
    EXPECT_EQ(readText(folder.path()), "(not a regular file)");
    EXPECT_EQ(readText("/dev/zero"), "(not a regular file)");
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(readText(folder.path("pipe")), "(not a regular file)");
    EXPECT_EQ(readText(folder.path("nowhere")), "(no such file or directory)");
    EXPECT_EQ(readText(""), "(not a usable path)");
}

TEST_F(FileManagerTest, aPathWithANulIsNotCutShort) {
    folder.add("a", "text");
    const std::string path = folder.path("a") + std::string("\0.cfg", 5);
    EXPECT_EQ(readText(path), "(not a usable path)");
    EXPECT_FALSE(files.write(path, bytesOf("new")));
    EXPECT_FALSE(files.remove(path));
    EXPECT_FALSE(files.copy(folder.path("a"), path));
    EXPECT_EQ(folder.contentOf("a"), "text");
    EXPECT_EQ(names(), Names{"a"});
}

TEST_F(FileManagerTest, writeReplacesTheFileAndLeavesNothingElse) {
    folder.add("a", "a longer text than the new one");
    EXPECT_TRUE(files.write(folder.path("a"), bytesOf("new")));
    EXPECT_EQ(folder.contentOf("a"), "new");
    EXPECT_TRUE(files.write(folder.path("empty"), {}));
    EXPECT_EQ(names(), (Names{"a", "empty"}));
}

TEST_F(FileManagerTest, writtenFilesHaveTheUsualPermissions) {
    const mode_t mask = ::umask(022);
    EXPECT_TRUE(files.write(folder.path("a"), bytesOf("new")));
    ::umask(mask);
    EXPECT_EQ(std::filesystem::status(folder.path("a")).permissions(), std::filesystem::perms(0644));
}

TEST_F(FileManagerTest, writeReplacesALinkAndNotWhatItPointsTo) {
    const testing::TemporaryFolder outside;
    const std::string target = outside.add("target", "precious");
    std::filesystem::create_symlink(target, folder.path("link"));
    EXPECT_TRUE(files.write(folder.path("link"), bytesOf("new")));
    EXPECT_EQ(outside.contentOf("target"), "precious");
    EXPECT_FALSE(std::filesystem::is_symlink(folder.path("link")));
    EXPECT_EQ(folder.contentOf("link"), "new");
}

TEST_F(FileManagerTest, writeInsideTheWorkingFolderNeedsNoSeparator) {
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    EXPECT_TRUE(files.write("plain", bytesOf("text")));
    std::filesystem::current_path(before);
    EXPECT_EQ(folder.contentOf("plain"), "text");
}

TEST_F(FileManagerTest, writeFailsWithoutATraceWhereItCannotWrite) {
    EXPECT_EQ(files.write(folder.path("nowhere/a"), bytesOf("x")).reason(), "no such file or directory");
    std::filesystem::create_directory(folder.path("directory"));
    EXPECT_FALSE(files.write(folder.path("directory"), bytesOf("x")));
    EXPECT_FALSE(files.write("", bytesOf("x")));
    EXPECT_FALSE(files.write("/proc/quillomat", bytesOf("x")));
    EXPECT_EQ(names(), Names{"directory"});
}

/// Lets no file grow beyond a size while it lives, as a full disk would.
class SmallFilesOnly {
public:
    explicit SmallFilesOnly(rlim_t size) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit small{size, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    SmallFilesOnly(const SmallFilesOnly&) = delete;
    SmallFilesOnly& operator=(const SmallFilesOnly&) = delete;
    ~SmallFilesOnly() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    void (*handler_)(int);
    rlimit before_{};
};

TEST_F(FileManagerTest, aFullDiskLeavesTheOldFileAndNoTemporaryOne) {
    const std::string large(100000, 'x');
    folder.add("old", "old");
    folder.add("large", large);
    {
        const SmallFilesOnly limit(4096);
        EXPECT_EQ(files.write(folder.path("old"), bytesOf(large)).reason(), "file too large");
        EXPECT_EQ(files.copy(folder.path("large"), folder.path("copy")).reason(), "file too large");
    }
    EXPECT_EQ(folder.contentOf("old"), "old");
    EXPECT_EQ(names(), (Names{"large", "old"}));
}

TEST_F(FileManagerTest, aReadOnlyFolderKeepsWhatItHas) {
    folder.add("kept", "old");
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0555));
    const bool isRoot = ::geteuid() == 0;
    // Permissions do not bind the superuser, so be somebody else for a moment.
    ASSERT_TRUE(!isRoot || ::seteuid(65534) == 0);
    const Status written = files.write(folder.path("kept"), bytesOf("new"));
    const Status removed = files.remove(folder.path("kept"));
    const Status copied = files.copy(folder.path("kept"), folder.path("copy"));
    ASSERT_TRUE(!isRoot || ::seteuid(0) == 0);
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    EXPECT_FALSE(written);
    EXPECT_FALSE(removed);
    EXPECT_FALSE(copied);
    EXPECT_EQ(folder.contentOf("kept"), "old");
    EXPECT_EQ(names(), Names{"kept"});
}

TEST_F(FileManagerTest, aKilledWriterLeavesTheOldFileOrTheNewOneWhole) {
    const std::string old(3'000'000, 'o');
    const std::string fresh(3'000'000, 'n');
    folder.add("file", old);
    for (int round = 0; round < 8; ++round) {
        const pid_t writer = ::fork();
        ASSERT_GE(writer, 0);
        if (writer == 0) {
            while (true) {
                static_cast<void>(files.write(folder.path("file"), bytesOf(fresh)));
                static_cast<void>(files.write(folder.path("file"), bytesOf(old)));
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(3 * round + 1));
        ::kill(writer, SIGKILL);
        ::waitpid(writer, nullptr, 0);
        const std::string found = folder.contentOf("file");
        EXPECT_TRUE(found == old || found == fresh) << found.size();
    }
    // What a killed writer left behind is hidden and no scan takes it for a definition.
    for (const std::string& name : names()) {
        EXPECT_TRUE(name == "file" || name.front() == '.') << name;
        EXPECT_EQ(name.find(".cfg"), std::string::npos) << name;
    }
}

TEST_F(FileManagerTest, temporarySiblingsNeverLookLikeADefinition) {
    const std::string large(20'000'000, 'x');
    folder.add("abc.cfg", "old");
    std::thread writer([&] { EXPECT_TRUE(files.write(folder.path("abc.cfg"), bytesOf(large))); });
    bool seen = false;
    for (int i = 0; i < 100000 && !seen; ++i) {
        for (const std::string& name : names()) {
            if (name != "abc.cfg") {
                seen = true;
                EXPECT_EQ(name.find(".cfg"), std::string::npos) << name;
                EXPECT_EQ(name.front(), '.') << name;
            }
        }
        if (std::filesystem::file_size(folder.path("abc.cfg")) == large.size()) {
            break;
        }
    }
    writer.join();
    EXPECT_TRUE(seen);
    EXPECT_EQ(names(), Names{"abc.cfg"});
}

TEST_F(FileManagerTest, copiesTheWholeFile) {
    const std::string large(3'500'001, 'x');
    folder.add("from", large);
    EXPECT_TRUE(files.copy(folder.path("from"), folder.path("to")));
    EXPECT_EQ(folder.contentOf("to"), large);
    EXPECT_TRUE(files.copy(folder.add("empty", ""), folder.path("empty2")));
    EXPECT_EQ(names(), (Names{"empty", "empty2", "from", "to"}));
}

TEST_F(FileManagerTest, copyRefusesAnExistingDestination) {
    folder.add("from", "new");
    folder.add("to", "old");
    EXPECT_EQ(files.copy(folder.path("from"), folder.path("to")).reason(), "file exists");
    EXPECT_EQ(folder.contentOf("to"), "old");
    std::filesystem::create_symlink("nowhere", folder.path("link"));
    EXPECT_EQ(files.copy(folder.path("from"), folder.path("link")).reason(), "file exists");
    EXPECT_FALSE(files.fileExists(folder.path("nowhere")));
    EXPECT_FALSE(files.copy(folder.path("from"), folder.path("from")));
    EXPECT_EQ(folder.contentOf("from"), "new");
}

TEST_F(FileManagerTest, ofManyCopiesToOnePlaceOneWins) {
    for (int i = 0; i < 8; ++i) {
        folder.add("from" + std::to_string(i), std::string(200000, static_cast<char>('a' + i)));
    }
    std::atomic<int> succeeded = 0;
    std::vector<std::thread> copiers;
    for (int i = 0; i < 8; ++i) {
        copiers.emplace_back([&, i] {
            SystemFileManager own;
            if (own.copy(folder.path("from" + std::to_string(i)), folder.path("to"))) {
                ++succeeded;
            }
        });
    }
    for (auto& copier : copiers) {
        copier.join();
    }
    EXPECT_EQ(succeeded, 1);
    const std::string copied = folder.contentOf("to");
    EXPECT_EQ(copied, std::string(200000, copied.at(0)));
    EXPECT_EQ(names().size(), 9U);
}

TEST_F(FileManagerTest, copyFailsForWhatIsNoFile) {
    std::filesystem::create_directory(folder.path("directory"));
    EXPECT_EQ(files.copy(folder.path("directory"), folder.path("to")).reason(), "not a regular file");
    EXPECT_EQ(files.copy(folder.path("nowhere"), folder.path("to")).reason(), "no such file or directory");
    EXPECT_EQ(files.copy(folder.add("from", "x"), folder.path("nowhere/to")).reason(), "no such file or directory");
    EXPECT_EQ(names(), (Names{"directory", "from"}));
}

TEST_F(FileManagerTest, removesAFile) {
    EXPECT_TRUE(files.remove(folder.add("a", "x")));
    EXPECT_EQ(names(), Names{});
    EXPECT_EQ(files.remove(folder.path("a")).reason(), "no such file or directory");
}

TEST_F(FileManagerTest, removesALinkAndNeverWhatItPointsTo) {
    const testing::TemporaryFolder outside;
    outside.add("precious", "x");
    for (const char* spelling : {"link", "link/"}) {
        std::filesystem::create_symlink(outside.path(), folder.path("link"));
        EXPECT_TRUE(files.remove(folder.path(spelling)));
        EXPECT_EQ(names(), Names{});
        EXPECT_EQ(outside.contentOf("precious"), "x");
    }
    std::filesystem::create_symlink("nowhere", folder.path("dangling"));
    EXPECT_TRUE(files.remove(folder.path("dangling")));
}

TEST_F(FileManagerTest, removesADirectoryWithAllThatIsBelow) {
    const testing::TemporaryFolder outside;
    outside.add("precious", "x");
    folder.add("directory/sub/file", "x");
    std::filesystem::create_directory_symlink(outside.path(), folder.path("directory/link"));
    EXPECT_TRUE(files.remove(folder.path("directory")));
    EXPECT_EQ(names(), Names{});
    EXPECT_EQ(outside.contentOf("precious"), "x");
}

// Asked of the name alone: a removal of the root that is not refused would be the last thing the machine does.
TEST(PathComponents, theRootAndTheDotsAreNeverRemovable) {
    for (const char* path : {"", "/", "//", ".", "..", "./", "../", "a/.", "a/..", "/..", "a/../"}) {
        EXPECT_EQ(removableName(path), "") << path;
    }
    EXPECT_EQ(removableName("/a/b"), "/a/b");
    EXPECT_EQ(removableName("/a/link/"), "/a/link");
    EXPECT_EQ(removableName("...//"), "...");
}

TEST(PathComponents, appendPutsExactlyOneSeparatorBetween) {
    EXPECT_EQ(appendPathComponent("/documents", "main.json"), "/documents/main.json");
    EXPECT_EQ(appendPathComponent("/documents/", "main.json"), "/documents/main.json");
    EXPECT_EQ(appendPathComponent("/documents//", "/main.json"), "/documents/main.json");
    EXPECT_EQ(appendPathComponent("/", "main.json"), "/main.json");
    EXPECT_EQ(appendPathComponent("", "main.json"), "main.json");
    EXPECT_EQ(appendPathComponent("/documents/", ""), "/documents");
}

TEST(PathComponents, lastComponent) {
    EXPECT_EQ(lastPathComponent("/a/b.cfg"), "b.cfg");
    EXPECT_EQ(lastPathComponent("/a/b/"), "b");
    EXPECT_EQ(lastPathComponent("b"), "b");
    EXPECT_EQ(lastPathComponent("/"), "/");
    EXPECT_EQ(lastPathComponent(""), "");
}

TEST(PathComponents, extensionIsDeletedOnce) {
    EXPECT_EQ(deletePathExtension("a.tar.gz"), "a.tar");
    EXPECT_EQ(deletePathExtension("phone.png"), "phone");
    EXPECT_EQ(deletePathExtension("plain"), "plain");
    EXPECT_EQ(deletePathExtension(".hidden"), ".hidden");
    EXPECT_EQ(deletePathExtension("a.b/plain"), "a.b/plain");
    EXPECT_EQ(deletePathExtension("a/.hidden"), "a/.hidden");
    EXPECT_EQ(deletePathExtension("dot."), "dot.");
    EXPECT_EQ(deletePathExtension(""), "");
}

TEST(PathComponents, plainFileNamesStayInTheirFolder) {
    EXPECT_TRUE(isPlainFileName("phone.png"));
    EXPECT_TRUE(isPlainFileName("with space \xC3\xA9.cfg"));
    EXPECT_TRUE(isPlainFileName("..."));
    EXPECT_TRUE(isPlainFileName(std::string(255, 'a')));
    for (const std::string& name :
         {std::string(""), std::string("."), std::string(".."), std::string("../a"), std::string("a/b"),
          std::string("/etc/passwd"), std::string("a\\b"), std::string("a\0b", 3), std::string(256, 'a')}) {
        EXPECT_FALSE(isPlainFileName(name)) << name;
    }
}

} // namespace
} // namespace quillomat
