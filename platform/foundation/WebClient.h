// Whole-document reads from the web; where there is no network, nothing arrives.
#pragma once

#include "platform/foundation/FileManager.h"

#include <optional>
#include <string>

namespace quillomat {

class WebClient {
public:
    virtual ~WebClient() = default;
    /// The whole document at `url`, synchronously; nothing when anything at all went wrong.
    [[nodiscard]] virtual std::optional<Bytes> dataWithContentsOfUrl(const std::string& url) = 0;
};

/// A client that has nothing to say: every command but one speaks to no network.
class NoWebClient final : public WebClient {
public:
    [[nodiscard]] std::optional<Bytes> dataWithContentsOfUrl(const std::string&) override { return std::nullopt; }
};

} // namespace quillomat
