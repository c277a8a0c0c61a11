#include "cli/WatchedWebClient.h"

#include "platform/foundation/Conversions.h"
#include "platform/foundation/FileManager.h"

#include <cstdio>
#include <unistd.h>

namespace quillomat {

std::optional<Bytes> WatchedWebClient::dataWithContentsOfUrl(const std::string& url) {
    auto data = client_->dataWithContentsOfUrl(url);
    if (url.find("/quillomat/updates/images/") != std::string::npos) {
        ++picturesAsked_;
        picturesArrived_ += data ? 1U : 0U;
        showProgress();
    } else if (data && !catalogue_.isPresent()) {
        if (auto parsed = parseJson(*data)) {
            catalogue_ = std::move(parsed).value();
        }
    }
    return data;
}

void WatchedWebClient::showProgress() const {
    if (::isatty(STDERR_FILENO) == 1) {
        std::fprintf(stderr, "\rpictures: %zu of %zu%s", picturesAsked_, picturesToCome_,
                     picturesAsked_ >= picturesToCome_ ? "\n" : "");
    }
}

std::size_t countHeldPictures(const Platform& platform, const Value& catalogue) {
    std::size_t held = 0;
    for (const auto& name : catalogue["otaImages"].elements()) {
        held += platform.bundle.pathForResource(deletePathExtension(describe(name)), "png") ? 1U : 0U;
    }
    return held;
}

} // namespace quillomat
