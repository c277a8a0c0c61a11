#include "cli/WatchedWebClient.h"

#include <cstdio>
#include <unistd.h>

namespace quillomat {

std::optional<Bytes> WatchedWebClient::dataWithContentsOfUrl(const std::string& url) {
    auto data = client_.dataWithContentsOfUrl(url);
    failures_.erase(url);
    if (!data) {
        failures_.emplace(url, client_.lastFailure());
    }
    if (url.find("/quillomat/updates/images/") != std::string::npos) {
        ++picturesAsked_;
        showProgress();
    } else if (data && !catalogue_.isPresent()) {
        if (auto parsed = parseJson(*data)) {
            catalogue_ = std::move(parsed).value();
        } else {
            failures_.emplace(url, "what arrived is no catalogue: " + parsed.reason());
        }
    }
    return data;
}

std::string WatchedWebClient::failureOf(const std::string& url) const {
    const auto found = failures_.find(url);
    return found == failures_.end() ? std::string() : found->second;
}

void WatchedWebClient::showProgress() const {
    if (::isatty(STDERR_FILENO) == 1) {
        std::fprintf(stderr, "\rpictures: %zu of %zu%s", picturesAsked_, picturesToCome_,
                     picturesAsked_ >= picturesToCome_ ? "\n" : "");
    }
}

} // namespace quillomat
