// Where the time goes: stages of work as spans on threads, written for the trace viewers that browsers bring along.
//
// Tracing is a measurement of the whole process, like its clock: it is switched on once, from the outermost `main`, and
// looked at once, when the work is done. While it is off a span costs one relaxed atomic load.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

namespace quillomat::trace {

namespace detail {
inline std::atomic<bool> isOn{false};
} // namespace detail

[[nodiscard]] inline bool isOn() {
    return detail::isOn.load(std::memory_order_relaxed);
}

/// Forgets what was recorded and records from now on; the calling thread is called "main".
void start();
/// Stops and gives the document: {"traceEvents": [...]} with complete events (ph "X", ts and dur in microseconds) and
/// the names of the threads. Spans that are still open are not in it.
[[nodiscard]] std::string stop();
/// What the calling thread is called in the document; others are "worker 1", "worker 2" ... as they appear.
void nameThread(const char* name);

/// From here to the end of the scope. Names and keys are literals.
class Span {
public:
    explicit Span(const char* name) {
        if (isOn()) {
            begin(name);
        }
    }
    ~Span() {
        if (name_ != nullptr) {
            end();
        }
    }
    Span(const Span&) = delete;
    Span& operator=(const Span&) = delete;

    /// A number to show beside the span, up to three of them.
    void note(const char* key, std::int64_t value) {
        if (name_ != nullptr && noteCount_ < notes_.size()) {
            notes_[noteCount_++] = {key, value};
        }
    }

    struct Note {
        const char* key = nullptr;
        std::int64_t value = 0;
    };
    using Notes = std::array<Note, 3>;

private:
    void begin(const char* name);
    void end();

    const char* name_ = nullptr;
    std::int64_t begin_ = 0;
    std::uint64_t session_ = 0;
    std::size_t noteCount_ = 0;
    Notes notes_;
};

} // namespace quillomat::trace
