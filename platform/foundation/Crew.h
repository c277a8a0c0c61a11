// Threads that sleep until there is work. A new thread costs more than it looks: the system may start it behind the one
// that asked for it, on the same core, and only milliseconds later move it to one that is free.
#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <list>
#include <mutex>

namespace quillomat {

/// Thread-safe; work may itself have work done.
class Crew {
public:
    /// The one of this process. It is never taken down: its threads end with the process.
    [[nodiscard]] static Crew& shared();

    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    /// Calls `work` on this thread and, as soon as they are free, on up to threads - 1 others, once each; returns when
    /// all that began have ended. Whoever comes late may find nothing to do, and some may never come. Rethrows the
    /// first exception of any of them.
    void run(int threads, const std::function<void()>& work);

private:
    struct Job {
        const std::function<void()>& work;
        int wanted = 0;
        int running = 0;
        std::exception_ptr failure = nullptr;
    };

    Crew() = default;
    ~Crew() = default;
    void growTo(int helpers);
    void help();
    void call(Job& job, std::unique_lock<std::mutex>& lock) noexcept;

    std::mutex mutex_;
    std::condition_variable called_;
    std::condition_variable ended_;
    std::list<Job*> jobs_; // that want more threads
    int helpers_ = 0;
};

/// Threads for work that may use any number of them: as many as asked for, one per core for 0.
[[nodiscard]] int threadsFor(int asked);

} // namespace quillomat
