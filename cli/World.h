// The outside world of one run of the command: files, resources, a virtual clock, and a photo library that waits.
#pragma once

#include "cli/Options.h"
#include "cli/WatchedFiles.h"
#include "hosts/desktop/PlainDocumentAccess.h"
#include "hosts/headless/HeadlessHost.h"
#include "platform/foundation/MainQueue.h"
#include "platform/views/Platform.h"

#include <memory>
#include <string>

namespace quillomat {

/// Takes the saved picture and keeps it: the command decides where it goes once it knows that all went well.
class WaitingPhotoLibrary final : public PhotoLibrary {
public:
    void requestAuthorization(std::function<void(PhotoAuthorization)> answer) override;
    void writeToSavedPhotosAlbum(const Image& image) override { saved_ = image; }
    /// The picture saved last; no picture when nothing was saved.
    [[nodiscard]] const Image& saved() const { return saved_; }

private:
    Image saved_;
};

class World {
public:
    /// Makes the documents directory when it is needed. Only a command that updates hands over a web client.
    [[nodiscard]] static Result<std::unique_ptr<World>> open(const GlobalOptions& options,
                                                             std::unique_ptr<WebClient> web = nullptr);

    [[nodiscard]] Platform& platform() { return platform_; }
    [[nodiscard]] WatchedFiles& files() { return files_; }
    [[nodiscard]] SteppedMainQueue& queue() { return queue_; }
    [[nodiscard]] WaitingPhotoLibrary& photos() { return photos_; }
    [[nodiscard]] const GlobalOptions& options() const { return options_; }

private:
    World(const GlobalOptions& options, std::string documents, const std::string& resources,
          std::unique_ptr<WebClient> web);

    GlobalOptions options_;
    std::unique_ptr<Log> log_;
    std::unique_ptr<WebClient> web_;
    WatchedFiles files_;
    DirectoryBundle bundle_;
    WaitingPhotoLibrary photos_;
    PlainDocumentAccess documentAccess_;
    HeadlessUrlOpener urls_;
    SteppedMainQueue queue_;
    Platform platform_;
};

} // namespace quillomat
