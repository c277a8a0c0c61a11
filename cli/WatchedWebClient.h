// A web client that keeps count for the update's summary, and shows progress on a terminal.
#pragma once

#include "platform/foundation/Value.h"
#include "platform/foundation/WebClient.h"
#include "platform/views/Platform.h"

#include <cstddef>
#include <memory>
#include <string>

namespace quillomat {

class WatchedWebClient final : public WebClient {
public:
    explicit WatchedWebClient(std::unique_ptr<WebClient> client) : client_(std::move(client)) {}

    [[nodiscard]] std::optional<Bytes> dataWithContentsOfUrl(const std::string& url) override;

    /// The published catalogue that arrived first; nothing when none did or it is no JSON.
    [[nodiscard]] const Value& catalogue() const { return catalogue_; }
    [[nodiscard]] std::size_t picturesArrived() const { return picturesArrived_; }
    /// How many pictures are to come, for the progress line.
    void announce(std::size_t pictures) { picturesToCome_ = pictures; }

private:
    void showProgress() const;

    std::unique_ptr<WebClient> client_;
    Value catalogue_;
    std::size_t picturesToCome_ = 0;
    std::size_t picturesAsked_ = 0;
    std::size_t picturesArrived_ = 0;
};

/// How many of the catalogue's "otaImages" the application's resources hold already.
[[nodiscard]] std::size_t countHeldPictures(const Platform& platform, const Value& catalogue);

} // namespace quillomat
