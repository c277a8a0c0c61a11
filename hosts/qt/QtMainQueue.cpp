#include "hosts/qt/QtMainQueue.h"

#include <QObject>

#include <algorithm>

namespace quillomat {

using std::chrono::ceil;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

QtMainQueue::QtMainQueue() {
    clock_.start();
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { runDue(); });
}

void QtMainQueue::after(nanoseconds delay, Task task) {
    const nanoseconds due = nanoseconds(clock_.nsecsElapsed()) + std::max(delay, nanoseconds{0});
    tasks_.emplace(Due{due, ++sequence_}, std::move(task));
    arm();
}

void QtMainQueue::arm() {
    if (tasks_.empty()) {
        return;
    }
    const nanoseconds wait = tasks_.begin()->first.first - nanoseconds(clock_.nsecsElapsed());
    timer_.start(ceil<milliseconds>(std::max(wait, nanoseconds{0})));
}

void QtMainQueue::runDue() {
    // What is added meanwhile waits for the next turn of the event loop, so that the window stays alive between tasks.
    const Due last{nanoseconds(clock_.nsecsElapsed()), sequence_};
    while (!tasks_.empty() && tasks_.begin()->first <= last) {
        auto task = std::move(tasks_.begin()->second);
        tasks_.erase(tasks_.begin());
        door_(std::move(task));
    }
    arm();
}

} // namespace quillomat
