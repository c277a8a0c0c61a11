#include "platform/foundation/FileDraft.h"

#include "platform/foundation/TemporaryFiles.h"
#include "platform/foundation/Trace.h"

#include <cerrno>
#include <cstdio>
#include <limits>

#include <fcntl.h>
#include <unistd.h>

namespace quillomat {

namespace {

// The system writes long stretches faster than short ones.
constexpr std::uint64_t broughtTogether = std::uint64_t{1} << 20;

} // namespace

Result<std::shared_ptr<FileDraft>> FileDraft::begin(const std::string& path) {
    if (!isUsablePath(path)) {
        return unusablePath();
    }
    for (int attempt = 0; attempt < 16; ++attempt) {
        std::string draftPath = appendPathComponent(parentFolder(path), temporaryFileName());
        FileDescriptor file(::open(draftPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666));
        if (file.isOpen()) {
            return std::make_shared<FileDraft>(std::move(file), std::move(draftPath), path);
        }
        if (errno != EEXIST) {
            return systemFailure(errno);
        }
    }
    return systemFailure(EEXIST);
}

FileDraft::FileDraft(FileDescriptor file, std::string draftPath, std::string path)
    : file_(std::move(file)), draftPath_(std::move(draftPath)), path_(std::move(path)) {}

FileDraft::~FileDraft() {
    if (!draftPath_.empty()) {
        ::unlink(draftPath_.c_str());
    }
}

Status FileDraft::append(std::span<const std::byte> bytes) {
    if (Status status = writeAll(file_, bytes); !status) {
        return status;
    }
    length_ += bytes.size();
    if (length_ - onItsWay_ >= broughtTogether) {
        // A hint, and no matter where a file system does not know it.
        static_cast<void>(::sync_file_range(file_.number(), static_cast<off_t>(onItsWay_),
                                            static_cast<off_t>(length_ - onItsWay_), SYNC_FILE_RANGE_WRITE));
        onItsWay_ = length_;
    }
    return {};
}

Status FileDraft::clear() {
    if (::ftruncate(file_.number(), 0) != 0 || ::lseek(file_.number(), 0, SEEK_SET) != 0) {
        return systemFailure(errno);
    }
    length_ = onItsWay_ = 0;
    return {};
}

Status FileDraft::publish() {
    if (Status status = flush(); !status) {
        return status;
    }
    if (::rename(draftPath_.c_str(), path_.c_str()) != 0) {
        return systemFailure(errno);
    }
    draftPath_.clear();
    flushFolder();
    return {};
}

Status FileDraft::publishUnlessThere() {
    if (Status status = flush(); !status) {
        return status;
    }
    if (::renameat2(AT_FDCWD, draftPath_.c_str(), AT_FDCWD, path_.c_str(), RENAME_NOREPLACE) == 0) {
        draftPath_.clear();
    } else if (errno != EINVAL && errno != ENOSYS) {
        return systemFailure(errno);
    } else if (::link(draftPath_.c_str(), path_.c_str()) != 0) {
        return systemFailure(errno);
    }
    flushFolder();
    return {};
}

Result<Bytes> FileDraft::read() const {
    return SystemFileManager().read(draftPath_.empty() ? path_ : draftPath_,
                                    std::numeric_limits<std::uint64_t>::max() - 1);
}

Status FileDraft::flush() {
    trace::Span span("flush file");
    span.note("bytes", static_cast<std::int64_t>(length_));
    if (::fsync(file_.number()) != 0) {
        return systemFailure(errno);
    }
    return file_.close();
}

/// The new name is in its place already; where a folder cannot be flushed, there is nothing left to undo.
void FileDraft::flushFolder() const {
    const FileDescriptor folder(::open(parentFolder(path_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen()) {
        static_cast<void>(::fsync(folder.number()));
    }
}

} // namespace quillomat
