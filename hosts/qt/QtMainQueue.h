// The main queue of a window: tasks run from the toolkit's event loop when they fall due.
#pragma once

#include "platform/foundation/MainQueue.h"

#include <QElapsedTimer>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <map>
#include <utility>

namespace quillomat {

/// Tasks run in the order of their due times, those of equal due time in the order they were added. Each goes through
/// the `door`, which may put it off while the core is in the middle of something.
class QtMainQueue final : public MainQueue {
public:
    QtMainQueue();
    void setDoor(std::function<void(Task)> door) { door_ = std::move(door); }
    void after(std::chrono::nanoseconds delay, Task task) override;

private:
    using Due = std::pair<std::chrono::nanoseconds, std::uint64_t>;

    void arm();
    void runDue();

    QElapsedTimer clock_;
    QTimer timer_;
    std::uint64_t sequence_ = 0;
    std::map<Due, Task> tasks_;
    std::function<void(Task)> door_ = [](const Task& task) { task(); };
};

} // namespace quillomat
