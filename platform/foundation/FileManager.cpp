#include "platform/foundation/FileManager.h"

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/FileDraft.h"
#include "platform/foundation/Pages.h"
#include "platform/foundation/TemporaryFiles.h"
#include "platform/foundation/Trace.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillomat {

namespace {

struct OpenFile {
    FileDescriptor descriptor;
    std::uint64_t size;
};

/// Opens for reading what is a regular file; a pipe or a device would block or never end.
Result<std::shared_ptr<OpenFile>> openRegularFile(const std::string& path) {
    if (!isUsablePath(path)) {
        return unusablePath();
    }
    FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!descriptor.isOpen()) {
        return systemFailure(errno);
    }
    struct stat info {};
    if (::fstat(descriptor.number(), &info) != 0) {
        return systemFailure(errno);
    }
    if (!S_ISREG(info.st_mode)) {
        return Failure{"not a regular file"};
    }
    return std::make_shared<OpenFile>(OpenFile{std::move(descriptor), static_cast<std::uint64_t>(info.st_size)});
}

/// Reads until the buffer is full or the file ends; how many bytes that were.
Result<std::size_t> readUpTo(const FileDescriptor& file, std::span<std::byte> buffer) {
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count = ::read(file.number(), buffer.data() + filled, buffer.size() - filled);
        if (count == 0) {
            break;
        }
        if (count < 0 && errno != EINTR) {
            return systemFailure(errno);
        }
        filled += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return filled;
}

Status copyBytes(const OpenFile& from, FileDraft& to) {
    Bytes buffer(std::min<std::uint64_t>(from.size, std::uint64_t{1} << 20));
    for (std::uint64_t left = from.size; left > 0;) {
        const std::span part(buffer.data(), std::min<std::uint64_t>(left, buffer.size()));
        const auto count = readUpTo(from.descriptor, part);
        if (!count) {
            return Failure{count.reason()};
        }
        if (*count < part.size()) {
            return Failure{"became shorter while it was copied"};
        }
        if (Status status = to.append(part); !status) {
            return status;
        }
        left -= part.size();
    }
    return {};
}

} // namespace

bool SystemFileManager::fileExists(const std::string& path) const {
    struct stat info {};
    return isUsablePath(path) && ::stat(path.c_str(), &info) == 0;
}

Result<std::vector<std::string>> SystemFileManager::contentsOfDirectory(const std::string& path) const {
    if (!isUsablePath(path)) {
        return unusablePath();
    }
    std::error_code error;
    std::vector<std::string> names;
    for (std::filesystem::directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    if (error) {
        return systemFailure(error.value());
    }
    std::sort(names.begin(), names.end());
    return names;
}

Result<Bytes> SystemFileManager::read(const std::string& path, std::uint64_t limit) const {
    trace::Span span("read file");
    const auto file = openRegularFile(path);
    if (!file) {
        return Failure{file.reason()};
    }
    const std::uint64_t size = (*file)->size;
    const Failure tooLarge{"larger than " + std::to_string(limit) + " bytes"};
    if (size > limit) {
        return tooLarge;
    }
    // Files of the system's own making say 0 and hold more, and a log grows meanwhile: the end is where it is read.
    Bytes bytes(size + 1);
    std::size_t filled = 0;
    while (true) {
        const auto count = readUpTo((*file)->descriptor, std::span(bytes).subspan(filled));
        if (!count) {
            return Failure{count.reason()};
        }
        filled += *count;
        if (filled > limit) {
            return tooLarge;
        }
        if (filled < bytes.size()) {
            break;
        }
        bytes.resize(std::min<std::uint64_t>(limit, std::uint64_t{filled} * 2 + 4096) + 1);
    }
    bytes.resize(filled);
    return bytes;
}

/// Where something is written, a writer may have been killed before.
void SystemFileManager::sweepOnce(const std::string& folder) {
    {
        const std::scoped_lock lock(sweeping_);
        if (!swept_.insert(folder).second) {
            return;
        }
    }
    removeStaleTemporaryFiles(folder);
}

Status SystemFileManager::write(const std::string& path, std::span<const std::byte> bytes) {
    trace::Span span("write file");
    span.note("bytes", static_cast<std::int64_t>(bytes.size()));
    if (!isUsablePath(path)) {
        return unusablePath();
    }
    sweepOnce(parentFolder(path));
    const auto draft = FileDraft::begin(path);
    if (!draft) {
        return Failure{draft.reason()};
    }
    if (Status status = (*draft)->append(bytes); !status) {
        return status;
    }
    return (*draft)->publish();
}

Status SystemFileManager::copy(const std::string& from, const std::string& to) {
    const auto source = openRegularFile(from);
    if (!source) {
        return Failure{source.reason()};
    }
    struct stat info {};
    if (!isUsablePath(to)) {
        return unusablePath();
    }
    // Only to spare the work; what counts is the moment of publishing.
    if (::lstat(to.c_str(), &info) == 0) {
        return systemFailure(EEXIST);
    }
    sweepOnce(parentFolder(to));
    const auto draft = FileDraft::begin(to);
    if (!draft) {
        return Failure{draft.reason()};
    }
    if (Status status = copyBytes(**source, **draft); !status) {
        return status;
    }
    return (*draft)->publishUnlessThere();
}

Status SystemFileManager::remove(const std::string& path) {
    if (!isUsablePath(path)) {
        return unusablePath();
    }
    const std::string name = removableName(path);
    if (name.empty()) {
        return unusablePath();
    }
    std::error_code error;
    const auto removed = std::filesystem::remove_all(name, error);
    if (error) {
        return systemFailure(error.value());
    }
    return removed > 0 ? Status() : Status(systemFailure(ENOENT));
}

std::string appendPathComponent(std::string_view path, std::string_view component) {
    while (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
    while (!component.empty() && component.front() == '/' && !path.empty()) {
        component.remove_prefix(1);
    }
    if (path.empty() || component.empty()) {
        return std::string(path).append(component);
    }
    return std::string(path).append(path == "/" ? "" : "/").append(component);
}

std::string lastPathComponent(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
    const auto slash = path.find_last_of('/');
    return std::string(slash == std::string_view::npos || path.size() == 1 ? path : path.substr(slash + 1));
}

std::string removableName(std::string_view path) {
    // "link/" would name what the link points to.
    while (!path.empty() && path.back() == '/') {
        path.remove_suffix(1);
    }
    const std::string last = lastPathComponent(path);
    return last.empty() || last == "." || last == ".." ? std::string() : std::string(path);
}

std::string deletePathExtension(std::string_view name) {
    const auto dot = name.find_last_of('.');
    const auto slash = name.find_last_of('/');
    const std::size_t start = slash == std::string_view::npos ? 0 : slash + 1;
    // A dot in front hides the file, and a dot at the end has nothing behind it that could be an extension.
    if (dot == std::string_view::npos || dot <= start || dot + 1 == name.size()) {
        return std::string(name);
    }
    return std::string(name.substr(0, dot));
}

bool isPlainFileName(std::string_view name) {
    // The backslash separates on other systems, where the same names may arrive.
    constexpr std::string_view separators("/\\\0", 3);
    return !name.empty() && name.size() <= 255 && name != "." && name != ".." &&
           name.find_first_of(separators) == std::string_view::npos;
}

} // namespace quillomat
