#include "platform/foundation/TemporaryFiles.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <memory>
#include <random>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillomat {

namespace {

constexpr std::string_view prefix = ".quillomat-";
constexpr std::string_view suffix = ".tmp";
constexpr std::size_t digits = 16;
// No picture is written for so long, and the clocks of file servers differ by less.
constexpr std::time_t staleAfter = 24 * 60 * 60;

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

bool isHexadecimal(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
}

bool isStale(int folder, const char* name) {
    struct stat info {};
    // Of a link itself, never of what it points to.
    return ::fstatat(folder, name, &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(info.st_mode) &&
           info.st_uid == ::geteuid() && info.st_mtime < std::time(nullptr) - staleAfter;
}

} // namespace

std::string temporaryFileName() {
    std::random_device random;
    std::array<char, 48> name{};
    std::snprintf(name.data(), name.size(), ".quillomat-%08x%08x.tmp", random(), random());
    return name.data();
}

bool isTemporaryFileName(std::string_view name) {
    if (name.size() != prefix.size() + digits + suffix.size() || !name.starts_with(prefix) || !name.ends_with(suffix)) {
        return false;
    }
    const std::string_view number = name.substr(prefix.size(), digits);
    return std::all_of(number.begin(), number.end(), isHexadecimal);
}

void removeStaleTemporaryFiles(const std::string& folder) {
    const std::unique_ptr<DIR, CloseFolder> entries(::opendir(folder.c_str()));
    if (!entries) {
        return;
    }
    const int descriptor = ::dirfd(entries.get());
    while (const dirent* entry = ::readdir(entries.get())) { // NOLINT(concurrency-mt-unsafe): a stream of our own
        const char* name = static_cast<const char*>(entry->d_name);
        if (isTemporaryFileName(name) && isStale(descriptor, name)) {
            static_cast<void>(::unlinkat(descriptor, name, 0));
        }
    }
}

} // namespace quillomat
