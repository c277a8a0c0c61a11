// The system log: single free-form lines without levels.
#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace quillomat {

/// Lines may arrive from any thread; an implementation takes them one at a time.
class Log {
public:
    virtual ~Log() = default;
    virtual void write(std::string_view line) = 0;
};

/// Drops every line.
class SilentLog final : public Log {
public:
    void write(std::string_view) override {}
};

/// Keeps every line, for the tests and for a report afterwards.
class RecordingLog final : public Log {
public:
    void write(std::string_view line) override;
    [[nodiscard]] std::vector<std::string> lines() const;
    [[nodiscard]] bool contains(std::string_view line) const;

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

} // namespace quillomat
