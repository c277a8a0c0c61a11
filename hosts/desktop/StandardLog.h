// The application's log lines on standard error.
#pragma once

#include "platform/foundation/Log.h"

#include <mutex>

namespace quillomat {

/// One line each: control characters, which a terminal would obey, become blanks.
class StandardLog final : public Log {
public:
    void write(std::string_view line) override;

private:
    std::mutex mutex_;
};

} // namespace quillomat
