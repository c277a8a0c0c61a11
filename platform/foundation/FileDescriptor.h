// What the system's calls on files need: descriptors that close themselves, reasons in words.
#pragma once

#include "platform/foundation/Result.h"

#include <span>
#include <string>
#include <utility>

namespace quillomat {

/// What the system says about an error, lower case.
[[nodiscard]] Failure systemFailure(int error);

/// A path the system can be asked about: it would take a NUL for the end and look at another file.
[[nodiscard]] bool isUsablePath(const std::string& path);
[[nodiscard]] Failure unusablePath();

[[nodiscard]] std::string parentFolder(const std::string& path);

class FileDescriptor {
public:
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&&) = delete;
    ~FileDescriptor();

    [[nodiscard]] bool isOpen() const { return number_ >= 0; }
    [[nodiscard]] int number() const { return number_; }
    /// Closing reports what the disk had no room for on some network file systems.
    [[nodiscard]] Status close();

private:
    int number_;
};

[[nodiscard]] Status writeAll(const FileDescriptor& file, std::span<const std::byte> bytes);

} // namespace quillomat
