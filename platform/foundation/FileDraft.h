// A file that is written piece by piece: under its name it is there whole or not at all.
#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/FileManager.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace quillomat {

/// A temporary sibling (TemporaryFiles.h), which vanishes again unless it is published.
class FileDraft {
public:
    [[nodiscard]] static Result<std::shared_ptr<FileDraft>> begin(const std::string& path);
    FileDraft(FileDescriptor file, std::string draftPath, std::string path);
    FileDraft(const FileDraft&) = delete;
    FileDraft& operator=(const FileDraft&) = delete;
    ~FileDraft();

    /// Of much that comes, the system begins to bring to the disk what is there, so that little is left to be flushed.
    [[nodiscard]] Status append(std::span<const std::byte> bytes);
    /// Forgets what has come.
    [[nodiscard]] Status clear();

    /// Flushed, takes the place of whatever has its name; a link there is replaced and not followed.
    [[nodiscard]] Status publish();
    /// The same unless something has its name, also something that came a moment ago.
    [[nodiscard]] Status publishUnlessThere();

    /// What has come so far; once it is published, what the file of its name holds.
    [[nodiscard]] Result<Bytes> read() const;

private:
    [[nodiscard]] Status flush();
    void flushFolder() const;

    FileDescriptor file_;
    std::string draftPath_; // empty once it is published
    std::string path_;
    std::uint64_t length_ = 0;
    std::uint64_t onItsWay_ = 0; // to the disk
};

} // namespace quillomat
