// Documents from the web over HTTPS, whole or not at all, within limits that keep a silent network from holding a
// screen.
#pragma once

#include "platform/foundation/WebClient.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillomat {

struct CurlOptions {
    /// A PEM file with the certificate authority to trust, as curl's own option of that kind; empty for the system's.
    std::string caCertificate;
    /// From the look-up of the name to the end of the TLS handshake.
    std::chrono::milliseconds connectLimit{3000};
    std::chrono::milliseconds totalLimit{30000};
    /// Below `slowestRate` bytes a second on average for so long, a reply is given up.
    std::chrono::seconds patience{5};
    long slowestRate = 256;
    /// A host that could not be reached or fell silent is not asked again for so long, so that a list of pictures costs
    /// one wait and not one for each.
    std::chrono::milliseconds holdOff{10000};
    /// Of the document after decompression.
    std::uint64_t sizeLimit = std::uint64_t{64} << 20;
    long redirectLimit = 3;
    /// "HOST:PORT:ADDRESS" each: addresses known without asking for them.
    std::vector<std::string> resolve;
};

/// Reads over libcurl: HTTPS only, also behind redirects, with certificates checked. A status other than 200, a reply
/// that is cut short, of another length than announced or of none that could be checked, an empty one, and whatever
/// breaks a limit is nothing at all. One thread at a time.
class CurlWebClient final : public WebClient {
public:
    explicit CurlWebClient(CurlOptions options = {});
    ~CurlWebClient() override;
    CurlWebClient(const CurlWebClient&) = delete;
    CurlWebClient& operator=(const CurlWebClient&) = delete;

    [[nodiscard]] std::optional<Bytes> dataWithContentsOfUrl(const std::string& url) override;

    /// Why the last document did not arrive, in one line; empty when it did.
    [[nodiscard]] const std::string& lastFailure() const { return lastFailure_; }

private:
    struct Session;
    [[nodiscard]] bool isHeldOff(const std::string& host);

    std::unique_ptr<Session> session_;
    std::map<std::string, std::chrono::steady_clock::time_point, std::less<>> heldOffUntil_;
    std::string lastFailure_;
};

/// Whether a text is an "https" URL as it stands: a host, and only characters that need no escaping.
[[nodiscard]] bool isValidHttpsUrl(std::string_view url);

} // namespace quillomat
