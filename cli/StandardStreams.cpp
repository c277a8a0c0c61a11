#include "cli/StandardStreams.h"

#include <array>
#include <cerrno>
#include <cstring>
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
            return Failure{std::strerror(errno)};
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

Status writeStandardOutput(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t put = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (put < 0 && errno == EINTR) {
            continue;
        }
        if (put < 0) {
            return Failure{std::strerror(errno)};
        }
        bytes = bytes.subspan(static_cast<std::size_t>(put));
    }
    return {};
}

} // namespace quillomat
