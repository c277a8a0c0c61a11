// A web client that remembers what did not arrive and why, and shows progress on a terminal.
#pragma once

#include "platform/foundation/Value.h"
#include "platform/network/CurlWebClient.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>

namespace quillomat {

class WatchedWebClient final : public WebClient {
public:
    explicit WatchedWebClient(CurlOptions options) : client_(std::move(options)) {}

    [[nodiscard]] std::optional<Bytes> dataWithContentsOfUrl(const std::string& url) override;

    /// Why the document of that address did not arrive; empty when it did, or was not asked for.
    [[nodiscard]] std::string failureOf(const std::string& url) const;
    /// The published catalogue that arrived first; nothing when none did or it is no JSON.
    [[nodiscard]] const Value& catalogue() const { return catalogue_; }
    /// How many pictures are to come, for the progress line.
    void announce(std::size_t pictures) { picturesToCome_ = pictures; }

private:
    void showProgress() const;

    CurlWebClient client_;
    std::map<std::string, std::string> failures_;
    Value catalogue_;
    std::size_t picturesToCome_ = 0;
    std::size_t picturesAsked_ = 0;
};

} // namespace quillomat
