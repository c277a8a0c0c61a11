// The photo library of a desktop or Linux phone: the user's pictures folder.
#pragma once

#include "platform/foundation/FileManager.h"
#include "platform/foundation/Result.h"
#include "platform/views/Platform.h"

#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace quillomat {

/// Saved pictures are PNG files named "Mockup YYYY-MM-DD HH.MM.SS.png" (with " 2", " 3" ... when that is taken), whole
/// or not there at all; no file is ever replaced. The folder is made when it is missing.
class FolderPhotoLibrary final : public PhotoLibrary {
public:
    /// `now` gives the local time the names carry, as "YYYY-MM-DD HH.MM.SS"; the default is the clock's.
    FolderPhotoLibrary(std::string folder, FileManager& files, std::function<std::string()> now = {});
    ~FolderPhotoLibrary() override;

    /// Answers on a thread of its own: authorized when the folder can be written to, denied otherwise.
    void requestAuthorization(std::function<void(PhotoAuthorization)> answer) override;
    void writeToSavedPhotosAlbum(const Image& image) override;

    /// What became of the last write: its path, or the reason why there is none.
    [[nodiscard]] const Result<std::string>& lastWrite() const { return lastWrite_; }

private:
    Result<std::string> store(std::span<const std::byte> png);

    std::string folder_;
    FileManager& files_;
    std::function<std::string()> now_;
    Result<std::string> lastWrite_{Failure{"nothing was saved"}};
    std::vector<std::thread> asking_;
};

/// The picture's PNG document: its own bytes when it is one already, else encoded now.
[[nodiscard]] Result<SharedDocument> pngDocument(const Image& image);

} // namespace quillomat
