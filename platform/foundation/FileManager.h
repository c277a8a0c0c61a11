// Files as the application sees them: whole reads, whole writes, flat directories.
#pragma once

#include "platform/foundation/Bytes.h"
#include "platform/foundation/Result.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillomat {

/// Paths are UTF-8 byte strings. Every operation reports its failure in one line and changes nothing when it fails.
class FileManager {
public:
    virtual ~FileManager() = default;

    [[nodiscard]] virtual bool fileExists(const std::string& path) const = 0;
    /// Names of the directory's entries in bytewise order, without "." and "..".
    [[nodiscard]] virtual Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const = 0;
    /// The whole file; fails above `limit` bytes and for what is no regular file.
    [[nodiscard]] virtual Result<Bytes> read(const std::string& path, std::uint64_t limit) const = 0;
    /// Replaces the file whole or not at all: a temporary sibling, flushed, then a rename.
    virtual Status write(const std::string& path, std::span<const std::byte> bytes) = 0;
    /// Copies a regular file; fails when `to` exists. The copy is whole or not there at all.
    virtual Status copy(const std::string& from, const std::string& to) = 0;
    /// Removes a file (a symbolic link itself, never what it points to) or an empty or full directory below.
    virtual Status remove(const std::string& path) = 0;
};

/// The machine's own files. Temporary siblings are hidden files (TemporaryFiles.h); the first write into a folder
/// removes those that killed programs left there.
class SystemFileManager final : public FileManager {
public:
    [[nodiscard]] bool fileExists(const std::string& path) const override;
    [[nodiscard]] Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const override;
    [[nodiscard]] Result<Bytes> read(const std::string& path, std::uint64_t limit) const override;
    Status write(const std::string& path, std::span<const std::byte> bytes) override;
    Status copy(const std::string& from, const std::string& to) override;
    Status remove(const std::string& path) override;

private:
    void sweepOnce(const std::string& folder);

    std::mutex sweeping_;
    std::set<std::string> swept_;
};

/// Appends one component with exactly one separator between.
[[nodiscard]] std::string appendPathComponent(std::string_view path, std::string_view component);
[[nodiscard]] std::string lastPathComponent(std::string_view path);
/// The path under which the entry itself is removed, a link and not what it points to; empty for the root, for "." and
/// "..", and for nothing at all, which are never removed.
[[nodiscard]] std::string removableName(std::string_view path);
/// The name without its last extension ("a.tar.gz" gives "a.tar"; ".hidden" stays).
[[nodiscard]] std::string deletePathExtension(std::string_view name);
/// Whether a name from outside stays in the folder it is appended to: one plain component of 1 to 255 bytes, not "."
/// or "..", without separators or NUL.
[[nodiscard]] bool isPlainFileName(std::string_view name);

} // namespace quillomat
