#include "platform/foundation/Crew.h"

#include <algorithm>
#include <system_error>
#include <thread>

namespace quillomat {

Crew& Crew::shared() {
    static Crew& crew = *new Crew; // NOLINT(cppcoreguidelines-owning-memory): its threads may outlive everything else
    return crew;
}

void Crew::run(int threads, const std::function<void()>& work) {
    Job job{work, std::max(threads, 1) - 1};
    std::unique_lock lock(mutex_);
    growTo(job.wanted);
    const auto place = jobs_.insert(jobs_.end(), &job);
    for (int i = 0; i < job.wanted; ++i) {
        called_.notify_one();
    }
    call(job, lock);
    jobs_.erase(place); // whoever has not begun by now is not needed
    ended_.wait(lock, [&job] { return job.running == 0; });
    if (job.failure) {
        std::rethrow_exception(job.failure);
    }
}

/// Fewer threads do, where the system has no more.
void Crew::growTo(int helpers) {
    try {
        for (; helpers_ < helpers; ++helpers_) {
            std::thread([this] { help(); }).detach();
        }
    } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch): see above
    }
}

void Crew::help() {
    std::unique_lock lock(mutex_);
    const auto wantsMore = [](const Job* job) { return job->wanted > 0; };
    while (true) {
        auto job = std::find_if(jobs_.begin(), jobs_.end(), wantsMore);
        if (job == jobs_.end()) {
            called_.wait(lock);
            continue;
        }
        --(*job)->wanted;
        call(**job, lock);
        ended_.notify_all();
    }
}

void Crew::call(Job& job, std::unique_lock<std::mutex>& lock) noexcept {
    ++job.running;
    lock.unlock();
    std::exception_ptr failure;
    try {
        job.work();
    } catch (...) {
        failure = std::current_exception();
    }
    lock.lock();
    --job.running;
    if (!job.failure) {
        job.failure = failure;
    }
}

int threadsFor(int asked) {
    return asked > 0 ? asked : static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

} // namespace quillomat
