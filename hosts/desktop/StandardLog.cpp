#include "hosts/desktop/StandardLog.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace quillomat {

void StandardLog::write(std::string_view line) {
    // Lines carry names from outside: what a terminal would obey is not passed on.
    std::string text(line);
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, ' ');
    text += '\n';
    const std::lock_guard lock(mutex_);
    std::fwrite(text.data(), 1, text.size(), stderr);
}

} // namespace quillomat
