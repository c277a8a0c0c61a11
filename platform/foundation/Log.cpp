#include "platform/foundation/Log.h"

#include <algorithm>

namespace quillomat {

void RecordingLog::write(std::string_view line) {
    const std::scoped_lock lock(mutex_);
    lines_.emplace_back(line);
}

std::vector<std::string> RecordingLog::lines() const {
    const std::scoped_lock lock(mutex_);
    return lines_;
}

bool RecordingLog::contains(std::string_view line) const {
    const std::scoped_lock lock(mutex_);
    return std::find(lines_.begin(), lines_.end(), line) != lines_.end();
}

} // namespace quillomat
