#include "platform/foundation/MainQueue.h"

#include <algorithm>

namespace quillomat {

namespace {

/// The clock stops at its end instead of running over it.
std::chrono::nanoseconds later(std::chrono::nanoseconds time, std::chrono::nanoseconds delay) {
    const auto forward = std::max(delay, std::chrono::nanoseconds{0});
    return forward > std::chrono::nanoseconds::max() - time ? std::chrono::nanoseconds::max() : time + forward;
}

} // namespace

void SteppedMainQueue::after(std::chrono::nanoseconds delay, Task task) {
    tasks_.emplace(std::pair{later(now_, delay), sequence_++}, std::move(task));
}

void SteppedMainQueue::advance(std::chrono::nanoseconds duration) {
    const auto deadline = later(now_, duration);
    while (runNextDueBy(deadline)) {
    }
    now_ = std::max(now_, deadline);
}

void SteppedMainQueue::runAll(std::size_t limit) {
    while (limit > 0 && runNextDueBy(std::chrono::nanoseconds::max())) {
        --limit;
    }
}

bool SteppedMainQueue::runNextDueBy(std::chrono::nanoseconds deadline) {
    if (tasks_.empty() || tasks_.begin()->first.first > deadline) {
        return false;
    }
    // Off the queue before it runs, for the task may add others or move the clock itself.
    auto next = tasks_.extract(tasks_.begin());
    now_ = std::max(now_, next.key().first);
    if (next.mapped()) {
        next.mapped()();
    }
    return true;
}

} // namespace quillomat
