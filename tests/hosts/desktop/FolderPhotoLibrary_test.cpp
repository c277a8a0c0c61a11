#include "hosts/desktop/FolderPhotoLibrary.h"
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/PngWriter.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <sys/stat.h>
#include <unistd.h>

namespace quillomat {
namespace {

namespace fs = std::filesystem;

struct FolderPhotoLibraryTest : testing::Test {
    fs::path folder = fs::path(testing::TempDir()) / ("quillomat-photos-" + std::to_string(::getpid()));
    SystemFileManager files;
    FolderPhotoLibrary library{folder.string(), files, [] { return std::string("2026-01-02 03.04.05"); }};

    void TearDown() override { fs::remove_all(folder); }

    static Image encodedPicture() {
        Bitmap bitmap(PixelSize{3, 2});
        for (auto& byte : bitmap.bytes()) {
            byte = 255;
        }
        return std::move(imageFromBytes(std::move(encodePng(bitmap)).value())).value();
    }

    std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }
};

TEST_F(FolderPhotoLibraryTest, storesTheEncodedDocumentByteForByte) {
    const Image image = encodedPicture();
    library.writeToSavedPhotosAlbum(image);
    ASSERT_TRUE(library.lastWrite()) << library.lastWrite().reason();
    EXPECT_EQ(*library.lastWrite(), (folder / "Mockup 2026-01-02 03.04.05.png").string());
    const auto stored = files.read(*library.lastWrite(), 1 << 20);
    ASSERT_TRUE(stored);
    EXPECT_EQ(*stored, *image.source()->document());
    EXPECT_EQ(entries(), 1U) << "the draft is gone";
}

TEST_F(FolderPhotoLibraryTest, neverReplacesAFile) {
    library.writeToSavedPhotosAlbum(encodedPicture());
    library.writeToSavedPhotosAlbum(encodedPicture());
    ASSERT_TRUE(library.lastWrite());
    EXPECT_EQ(*library.lastWrite(), (folder / "Mockup 2026-01-02 03.04.05 2.png").string());
    EXPECT_EQ(entries(), 2U);
}

TEST_F(FolderPhotoLibraryTest, anUnusableFolderIsDeniedAndTheWriteSaysWhy) {
    std::ofstream(folder) << "a file where the folder should be";
    std::promise<PhotoAuthorization> answer;
    library.requestAuthorization([&](PhotoAuthorization status) { answer.set_value(status); });
    EXPECT_EQ(answer.get_future().get(), PhotoAuthorization::denied);
    library.writeToSavedPhotosAlbum(encodedPicture());
    ASSERT_FALSE(library.lastWrite());
    EXPECT_NE(library.lastWrite().reason().find(folder.string()), std::string::npos);
}

TEST_F(FolderPhotoLibraryTest, authorizationArrivesOnAnotherThread) {
    std::promise<std::pair<PhotoAuthorization, std::thread::id>> answer;
    library.requestAuthorization([&](PhotoAuthorization status) {
        answer.set_value({status, std::this_thread::get_id()});
    });
    const auto [status, thread] = answer.get_future().get();
    EXPECT_EQ(status, PhotoAuthorization::authorized);
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST_F(FolderPhotoLibraryTest, noPictureIsAFailure) {
    library.writeToSavedPhotosAlbum(Image());
    EXPECT_FALSE(library.lastWrite());
}

} // namespace
} // namespace quillomat
