#include "platform/foundation/FileDraft.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

#include <unistd.h>

namespace quillomat {
namespace {

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text));
}

std::string textOf(const Result<Bytes>& bytes) {
    return bytes ? std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size())
                 : "(" + bytes.reason() + ")";
}

class FileDraftTest : public ::testing::Test {
protected:
    [[nodiscard]] std::shared_ptr<FileDraft> begin() const {
        auto draft = FileDraft::begin(path);
        EXPECT_TRUE(draft) << draft.reason();
        return draft ? *draft : nullptr;
    }
    [[nodiscard]] std::string written() const { return textOf(files.read(path, 1 << 30)); }
    [[nodiscard]] std::size_t entries() const { return files.contentsOfDirectory(folder.path())->size(); }

    testing::TemporaryFolder folder;
    SystemFileManager files;
    std::string path = appendPathComponent(folder.path(), "picture.png");
};

TEST_F(FileDraftTest, piecesAreThereOncePublished) {
    const auto draft = begin();
    ASSERT_TRUE(draft->append(bytesOf("one ")));
    ASSERT_TRUE(draft->append(bytesOf("two")));
    EXPECT_FALSE(files.fileExists(path));
    EXPECT_EQ(textOf(draft->read()), "one two");
    ASSERT_TRUE(draft->publish());
    EXPECT_EQ(written(), "one two");
    EXPECT_EQ(textOf(draft->read()), "one two");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(FileDraftTest, whatIsNotPublishedLeavesNothing) {
    ASSERT_TRUE(files.write(path, bytesOf("former")));
    {
        const auto draft = begin();
        ASSERT_TRUE(draft->append(bytesOf("half")));
        EXPECT_EQ(entries(), 2U);
    }
    EXPECT_EQ(entries(), 1U);
    EXPECT_EQ(written(), "former");
}

TEST_F(FileDraftTest, publishingReplacesOrRefusesWhatStandsThere) {
    ASSERT_TRUE(files.write(path, bytesOf("former")));
    {
        const auto draft = begin();
        ASSERT_TRUE(draft->append(bytesOf("refused")));
        EXPECT_EQ(draft->publishUnlessThere().reason(), "file exists");
    }
    EXPECT_EQ(written(), "former");
    const auto draft = begin();
    ASSERT_TRUE(draft->append(bytesOf("new")));
    ASSERT_TRUE(draft->publish());
    EXPECT_EQ(written(), "new");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(FileDraftTest, whatIsClearedIsForgotten) {
    const auto draft = begin();
    ASSERT_TRUE(draft->append(bytesOf("a long beginning")));
    ASSERT_TRUE(draft->clear());
    ASSERT_TRUE(draft->append(bytesOf("afresh")));
    ASSERT_TRUE(draft->publish());
    EXPECT_EQ(written(), "afresh");
}

TEST_F(FileDraftTest, largeFilesArriveWhole) {
    const std::string piece(300 << 10, 'x');
    const auto draft = begin();
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(draft->append(bytesOf(piece)));
    }
    ASSERT_TRUE(draft->publish());
    EXPECT_EQ(std::filesystem::file_size(path), 20 * piece.size());
}

TEST_F(FileDraftTest, foldersThatAreNotThereAreToldAtOnce) {
    EXPECT_EQ(FileDraft::begin(folder.path() + "/gone/picture.png").reason(), "no such file or directory");
    EXPECT_EQ(FileDraft::begin("").reason(), "not a usable path");
    EXPECT_EQ(FileDraft::begin(std::string("a\0b", 3)).reason(), "not a usable path");
}

} // namespace
} // namespace quillomat
