#include "platform/foundation/FileManager.h"

#include "platform/foundation/TemporaryFiles.h"
#include "platform/foundation/Trace.h"

#include <algorithm>
#include <cctype>
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

Failure systemFailure(int error) {
    std::string text = std::generic_category().message(error);
    if (!text.empty()) {
        text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
    }
    return Failure{std::move(text)};
}

/// A path the system can be asked about: it would take a NUL for the end and look at another file.
bool isUsable(const std::string& path) {
    return !path.empty() && path.find('\0') == std::string::npos;
}

const Failure unusablePath{"not a usable path"};

class FileDescriptor {
public:
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&&) = delete;
    ~FileDescriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }

    [[nodiscard]] bool isOpen() const { return number_ >= 0; }
    [[nodiscard]] int number() const { return number_; }
    /// Closing reports what the disk had no room for on some network file systems.
    [[nodiscard]] Status close() {
        return ::close(std::exchange(number_, -1)) == 0 ? Status() : Status(systemFailure(errno));
    }

private:
    int number_;
};

struct OpenFile {
    FileDescriptor descriptor;
    std::uint64_t size;
};

/// Opens for reading what is a regular file; a pipe or a device would block or never end.
Result<std::shared_ptr<OpenFile>> openRegularFile(const std::string& path) {
    if (!isUsable(path)) {
        return unusablePath;
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

std::string parentFolder(const std::string& path) {
    const auto slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// A new file beside the one it is to become, which vanishes again unless it is published.
class TemporarySibling {
public:
    static Result<std::shared_ptr<TemporarySibling>> makeFor(const std::string& target) {
        for (int attempt = 0; attempt < 16; ++attempt) {
            std::string path = appendPathComponent(parentFolder(target), temporaryFileName());
            FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666));
            if (file.isOpen()) {
                return std::make_shared<TemporarySibling>(std::move(file), std::move(path), target);
            }
            if (errno != EEXIST) {
                return systemFailure(errno);
            }
        }
        return systemFailure(EEXIST);
    }

    TemporarySibling(FileDescriptor file, std::string path, std::string target)
        : file_(std::move(file)), path_(std::move(path)), target_(std::move(target)) {}
    TemporarySibling(const TemporarySibling&) = delete;
    TemporarySibling& operator=(const TemporarySibling&) = delete;
    ~TemporarySibling() {
        if (!path_.empty()) {
            ::unlink(path_.c_str());
        }
    }

    [[nodiscard]] const FileDescriptor& file() const { return file_; }

    /// Takes the place of the target, whatever stands there; a link there is replaced and not followed.
    Status replaceTarget() {
        if (Status status = flush(); !status) {
            return status;
        }
        if (::rename(path_.c_str(), target_.c_str()) != 0) {
            return systemFailure(errno);
        }
        path_.clear();
        flushFolder();
        return {};
    }

    /// Takes the place of the target unless something stands there, also something that came a moment ago.
    Status becomeTarget() {
        if (Status status = flush(); !status) {
            return status;
        }
        if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target_.c_str(), RENAME_NOREPLACE) == 0) {
            path_.clear();
        } else if (errno != EINVAL && errno != ENOSYS) {
            return systemFailure(errno);
        } else if (::link(path_.c_str(), target_.c_str()) != 0) {
            return systemFailure(errno);
        }
        flushFolder();
        return {};
    }

private:
    Status flush() {
        if (::fsync(file_.number()) != 0) {
            return systemFailure(errno);
        }
        return file_.close();
    }

    /// The new name is in its place already; where a folder cannot be flushed, there is nothing left to undo.
    void flushFolder() const {
        const FileDescriptor folder(::open(parentFolder(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder.isOpen()) {
            static_cast<void>(::fsync(folder.number()));
        }
    }

    FileDescriptor file_;
    std::string path_;
    std::string target_;
};

Status copyBytes(const OpenFile& from, const FileDescriptor& to) {
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
        if (Status status = writeAll(to, part); !status) {
            return status;
        }
        left -= part.size();
    }
    return {};
}

} // namespace

bool SystemFileManager::fileExists(const std::string& path) const {
    struct stat info {};
    return isUsable(path) && ::stat(path.c_str(), &info) == 0;
}

Result<std::vector<std::string>> SystemFileManager::contentsOfDirectory(const std::string& path) const {
    if (!isUsable(path)) {
        return unusablePath;
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
    if (!isUsable(path)) {
        return unusablePath;
    }
    sweepOnce(parentFolder(path));
    const auto sibling = TemporarySibling::makeFor(path);
    if (!sibling) {
        return Failure{sibling.reason()};
    }
    if (Status status = writeAll((*sibling)->file(), bytes); !status) {
        return status;
    }
    return (*sibling)->replaceTarget();
}

Status SystemFileManager::copy(const std::string& from, const std::string& to) {
    const auto source = openRegularFile(from);
    if (!source) {
        return Failure{source.reason()};
    }
    struct stat info {};
    if (!isUsable(to)) {
        return unusablePath;
    }
    // Only to spare the work; what counts is the moment of publishing.
    if (::lstat(to.c_str(), &info) == 0) {
        return systemFailure(EEXIST);
    }
    sweepOnce(parentFolder(to));
    const auto sibling = TemporarySibling::makeFor(to);
    if (!sibling) {
        return Failure{sibling.reason()};
    }
    if (Status status = copyBytes(**source, (*sibling)->file()); !status) {
        return status;
    }
    return (*sibling)->becomeTarget();
}

Status SystemFileManager::remove(const std::string& path) {
    if (!isUsable(path)) {
        return unusablePath;
    }
    const std::string name = removableName(path);
    if (name.empty()) {
        return unusablePath;
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
