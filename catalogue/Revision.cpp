#include "catalogue/Revision.h"

#include "platform/foundation/NumericOrder.h"

namespace quillomat {

bool RevisionCheck::isUpdateAvailable() const {
    return published && (!local || compareNumerically(*published, *local) > 0);
}

std::optional<std::string> revisionOf(const Value& catalogue) {
    const Value version = catalogue["version"];
    return version.isString() ? std::optional(version.stringValue()) : std::nullopt;
}

} // namespace quillomat
