// The interface's main queue: tasks that run later, on the interface's thread, each after a delay.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

namespace quillomat {

class MainQueue {
public:
    using Task = std::function<void()>;

    virtual ~MainQueue() = default;
    /// Runs `task` on the main thread `delay` from now. Tasks of equal due time run in the order they were added.
    virtual void after(std::chrono::nanoseconds delay, Task task) = 0;
    void async(Task task) { after(std::chrono::nanoseconds{0}, std::move(task)); }
};

/// A queue over a virtual clock that moves only when told to: for the command and the tests. One thread.
class SteppedMainQueue final : public MainQueue {
public:
    void after(std::chrono::nanoseconds delay, Task task) override;

    [[nodiscard]] std::chrono::nanoseconds now() const { return now_; }
    [[nodiscard]] std::size_t pending() const { return tasks_.size(); }
    /// Moves the clock and runs what falls due, in due order; tasks added meanwhile run too when they fall due.
    void advance(std::chrono::nanoseconds duration);
    /// Runs everything, whenever it is due; at most `limit` tasks, so that a task that adds itself for ever ends.
    void runAll(std::size_t limit = 100000);

private:
    bool runNextDueBy(std::chrono::nanoseconds deadline);

    std::chrono::nanoseconds now_{0};
    std::uint64_t sequence_ = 0;
    std::map<std::pair<std::chrono::nanoseconds, std::uint64_t>, Task> tasks_;
};

} // namespace quillomat
