#include "platform/foundation/FileDescriptor.h"

#include <cctype>
#include <cerrno>
#include <system_error>

#include <unistd.h>

namespace quillomat {

Failure systemFailure(int error) {
    std::string text = std::generic_category().message(error);
    if (!text.empty()) {
        text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
    }
    return Failure{std::move(text)};
}

bool isUsablePath(const std::string& path) {
    return !path.empty() && path.find('\0') == std::string::npos;
}

Failure unusablePath() {
    return Failure{"not a usable path"};
}

std::string parentFolder(const std::string& path) {
    const auto slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

FileDescriptor::~FileDescriptor() {
    if (number_ >= 0) {
        ::close(number_);
    }
}

Status FileDescriptor::close() {
    return ::close(std::exchange(number_, -1)) == 0 ? Status() : Status(systemFailure(errno));
}

Status writeAll(const FileDescriptor& file, std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file.number(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return systemFailure(errno);
        }
        bytes = bytes.subspan(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    return {};
}

} // namespace quillomat
