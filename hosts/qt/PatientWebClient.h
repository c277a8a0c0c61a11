// Fetches for a window: the core waits for its document, the interface goes on being painted.
#pragma once

#include "platform/foundation/WebClient.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace quillomat {

/// Hands every request to `inner` on a thread of its own and lets the event loop run without the user's input
/// meanwhile. `waiting` is told when such a wait begins and ends.
class PatientWebClient final : public WebClient {
public:
    explicit PatientWebClient(WebClient& inner) : inner_(inner) {}
    void setWaiting(std::function<void(bool)> waiting) { waiting_ = std::move(waiting); }
    [[nodiscard]] std::optional<Bytes> dataWithContentsOfUrl(const std::string& url) override;

private:
    WebClient& inner_;
    std::function<void(bool)> waiting_ = [](bool) {};
};

} // namespace quillomat
