#include "platform/foundation/Trace.h"

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace quillomat::trace {

namespace {

struct Event {
    const char* name = nullptr;
    std::int64_t begin = 0; // nanoseconds on the steady clock
    std::int64_t length = 0;
    Span::Notes notes;
};

/// What one thread has recorded. The thread itself appends, `stop` takes; the lock is hardly ever waited for.
struct ThreadEvents {
    std::mutex mutex;
    int number = 0;
    std::string name;
    std::vector<Event> events;
};

// A window that is left open overnight must not fill the memory.
constexpr std::size_t mostEventsOfThread = 1 << 20;
constexpr std::size_t mostThreads = 1 << 14;

/// Threads come and go; what they recorded stays here.
struct Recorded {
    std::mutex mutex;
    std::vector<std::shared_ptr<ThreadEvents>> threads;
    std::atomic<std::uint64_t> session{0};
    std::int64_t start = 0;
    int workers = 0;
};

Recorded& recorded() {
    static Recorded* const everything = new Recorded; // outlives threads that end after main
    return *everything;
}

std::int64_t now() {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(time).count();
}

struct OwnEvents {
    std::uint64_t session = 0;
    std::shared_ptr<ThreadEvents> events;
};

/// The calling thread's, of this session; null when there are too many threads.
ThreadEvents* ownEvents(const char* name = nullptr) {
    thread_local OwnEvents own;
    Recorded& all = recorded();
    if (const std::uint64_t session = all.session.load(std::memory_order_relaxed); own.session != session) {
        own = {session, nullptr};
        const std::scoped_lock lock(all.mutex);
        if (all.threads.size() < mostThreads) {
            own.events = std::make_shared<ThreadEvents>();
            own.events->number = static_cast<int>(all.threads.size()) + 1;
            own.events->name = name != nullptr ? name : "worker " + std::to_string(++all.workers);
            all.threads.push_back(own.events);
        }
    }
    return own.events.get();
}

void appendText(std::string& out, std::string_view text) {
    out += '"';
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
        }
        out += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
    }
    out += '"';
}

/// Nanoseconds as microseconds, exactly.
void appendMicroseconds(std::string& out, std::int64_t nanoseconds) {
    char text[40];
    std::snprintf(text, sizeof text, "%" PRId64 ".%03d", nanoseconds / 1000, static_cast<int>(nanoseconds % 1000));
    out += text;
}

void appendThread(std::string& out, const std::string& place, const ThreadEvents& thread) {
    out += (out.back() == '[' ? "\n" : ",\n") + std::string(R"({"name": "thread_name", "ph": "M", )") + place +
           R"(, "args": {"name": )";
    appendText(out, thread.name);
    out += "}}";
}

void appendEvent(std::string& out, const std::string& place, const Event& event, std::int64_t start) {
    out += ",\n{\"name\": ";
    appendText(out, event.name);
    out += R"(, "ph": "X", )" + place + R"(, "ts": )";
    appendMicroseconds(out, event.begin - start);
    out += R"(, "dur": )";
    appendMicroseconds(out, event.length);
    if (event.notes.front().key != nullptr) {
        out += R"(, "args": {)";
        for (const Span::Note& note : event.notes) {
            if (note.key != nullptr) {
                out += out.back() == '{' ? "" : ", ";
                appendText(out, note.key);
                out += ": " + std::to_string(note.value);
            }
        }
        out += '}';
    }
    out += '}';
}

} // namespace

void start() {
    Recorded& all = recorded();
    {
        const std::scoped_lock lock(all.mutex);
        all.threads.clear();
        all.workers = 0;
        all.start = now();
        all.session.fetch_add(1, std::memory_order_relaxed);
    }
    ownEvents("main");
    detail::isOn.store(true, std::memory_order_relaxed);
}

std::string stop() {
    detail::isOn.store(false, std::memory_order_relaxed);
    Recorded& all = recorded();
    const std::scoped_lock lock(all.mutex);
    const std::string process = "\"pid\": " + std::to_string(::getpid()) + ", \"tid\": ";
    std::string out = R"({"displayTimeUnit": "ms", "traceEvents": [)";
    for (const std::shared_ptr<ThreadEvents>& thread : all.threads) {
        const std::scoped_lock threadLock(thread->mutex);
        const std::string place = process + std::to_string(thread->number);
        appendThread(out, place, *thread);
        for (const Event& event : thread->events) {
            appendEvent(out, place, event, all.start);
        }
    }
    all.threads.clear();
    return out + "\n]}\n";
}

void nameThread(const char* name) {
    if (!isOn()) {
        return;
    }
    if (ThreadEvents* const own = ownEvents(name)) {
        const std::scoped_lock lock(own->mutex);
        own->name = name;
    }
}

void Span::begin(const char* name) {
    name_ = name;
    session_ = recorded().session.load(std::memory_order_relaxed);
    begin_ = now();
}

void Span::end() {
    const std::int64_t length = now() - begin_;
    // One that was begun before tracing was switched on again belongs to nothing.
    if (!isOn() || session_ != recorded().session.load(std::memory_order_relaxed)) {
        return;
    }
    if (ThreadEvents* const own = ownEvents()) {
        const std::scoped_lock lock(own->mutex);
        if (own->events.size() < mostEventsOfThread) {
            own->events.push_back({name_, begin_, length, notes_});
        }
    }
}

} // namespace quillomat::trace
