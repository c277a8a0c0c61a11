#include "cli/StandardStreams.h"

#include "cli/Messages.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/TemporaryFiles.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <unistd.h>

namespace quillomat {

Result<Bytes> readStandardInput(std::uint64_t limit) {
    Bytes bytes;
    std::array<std::byte, 65536> block{};
    for (;;) {
        const ssize_t got = ::read(STDIN_FILENO, block.data(), block.size());
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return Failure{systemReason(errno)};
        }
        if (got == 0) {
            return bytes;
        }
        if (bytes.size() + static_cast<std::size_t>(got) > limit) {
            return Failure{"more than the limit of " + std::to_string(limit) + " bytes"};
        }
        bytes.insert(bytes.end(), block.begin(), block.begin() + got);
    }
}

namespace {

Status writeAll(int stream, std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t put = ::write(stream, bytes.data(), bytes.size());
        if (put < 0 && errno == EINTR) {
            continue;
        }
        if (put < 0) {
            return Failure{systemReason(errno)};
        }
        bytes = bytes.subspan(static_cast<std::size_t>(put));
    }
    return {};
}

} // namespace

Status writeStandardOutput(std::span<const std::byte> bytes) {
    return writeAll(STDOUT_FILENO, bytes);
}

namespace {

/// The file that is replaced by writing to that path: where a link leads to. Nothing for what is no regular file.
std::optional<std::string> replacedFile(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    const auto kind = fs::status(path, error).type();
    if (kind != fs::file_type::regular && kind != fs::file_type::not_found && kind != fs::file_type::none) {
        return std::nullopt;
    }
    const auto target = fs::is_symlink(fs::symlink_status(path, error)) ? fs::canonical(path, error) : fs::path(path);
    return error ? path : target.string();
}

} // namespace

Result<std::shared_ptr<FileDraft>> beginOutputFile(const std::string& path) {
    const auto file = replacedFile(path);
    if (!file) {
        return Failure{"is no regular file"};
    }
    removeStaleTemporaryFiles(parentFolder(*file));
    return FileDraft::begin(*file);
}

Status writeOutputFile(FileManager& files, const std::string& path, std::span<const std::byte> bytes) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        return Failure{"is a directory"};
    }
    const auto file = replacedFile(path);
    return file ? files.write(*file, bytes) : writeInto(path, bytes);
}

Status writeInto(const std::string& path, std::span<const std::byte> bytes) {
    const int stream = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (stream < 0) {
        return Failure{systemReason(errno)};
    }
    Status written = writeAll(stream, bytes);
    if (::close(stream) != 0 && written) {
        written = Failure{systemReason(errno)};
    }
    return written;
}

} // namespace quillomat
