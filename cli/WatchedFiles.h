// The machine's files, remembering what went wrong: the screens never ask, and a command has to say it.
#pragma once

#include "platform/foundation/FileManager.h"

#include <map>
#include <string>

namespace quillomat {

class WatchedFiles final : public FileManager {
public:
    [[nodiscard]] bool fileExists(const std::string& path) const override { return files_.fileExists(path); }
    [[nodiscard]] Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const override {
        return files_.contentsOfDirectory(path);
    }
    [[nodiscard]] Result<Bytes> read(const std::string& path, std::uint64_t limit) const override {
        return files_.read(path, limit);
    }
    Status write(const std::string& path, std::span<const std::byte> bytes) override {
        return keep(path, files_.write(path, bytes));
    }
    Status copy(const std::string& from, const std::string& to) override { return keep(to, files_.copy(from, to)); }
    Status remove(const std::string& path) override { return keep(path, files_.remove(path)); }

    /// Why the last change of that path failed; empty when it did not, or when there was none.
    [[nodiscard]] std::string failureOf(const std::string& path) const {
        const auto found = failures_.find(path);
        return found == failures_.end() ? std::string() : found->second;
    }

private:
    Status keep(const std::string& path, Status status) {
        failures_.erase(path);
        if (!status) {
            failures_.emplace(path, status.reason());
        }
        return status;
    }

    SystemFileManager files_;
    std::map<std::string, std::string> failures_;
};

} // namespace quillomat
