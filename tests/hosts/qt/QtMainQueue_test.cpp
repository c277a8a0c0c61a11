#include "hosts/qt/QtMainQueue.h"

#include "TestApplication.h"
#include "hosts/qt/PatientWebClient.h"

#include <QEventLoop>
#include <QTimer>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

namespace quillomat {
namespace {

using namespace std::chrono_literals;

void runFor(std::chrono::milliseconds time) {
    testApplication();
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

TEST(QtMainQueue, tasksRunInTheOrderOfTheirDueTimes) {
    testApplication();
    QtMainQueue queue;
    std::vector<int> order;
    queue.after(60ms, [&] { order.push_back(3); });
    queue.after(10ms, [&] { order.push_back(1); });
    queue.async([&] { order.push_back(0); });
    queue.after(30ms, [&] { order.push_back(2); });
    runFor(150ms);
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3}));
}

TEST(QtMainQueue, nothingRunsBeforeTheEventLoopTurns) {
    testApplication();
    QtMainQueue queue;
    bool ran = false;
    queue.async([&] { ran = true; });
    EXPECT_FALSE(ran);
    runFor(20ms);
    EXPECT_TRUE(ran);
}

TEST(QtMainQueue, taskNeverRunsEarly) {
    testApplication();
    QtMainQueue queue;
    const auto start = std::chrono::steady_clock::now();
    std::chrono::nanoseconds waited{0};
    queue.after(25ms, [&] { waited = std::chrono::steady_clock::now() - start; });
    runFor(120ms);
    EXPECT_GE(waited, 25ms);
}

TEST(QtMainQueue, tasksThatAddTasksLeaveTheLoopAlive) {
    testApplication();
    QtMainQueue queue;
    int turns = 0;
    std::function<void()> again = [&] {
        ++turns;
        queue.async(again);
    };
    queue.async(again);
    runFor(30ms); // would never end if the queue ran until it is empty
    EXPECT_GT(turns, 1);
}

class SlowWebClient final : public WebClient {
public:
    std::optional<Bytes> dataWithContentsOfUrl(const std::string& url) override {
        std::this_thread::sleep_for(60ms);
        thread = std::this_thread::get_id();
        return url.empty() ? std::nullopt : std::optional(Bytes(url.size()));
    }
    std::thread::id thread;
};

TEST(PatientWebClient, eventLoopTurnsWhileTheCoreWaits) {
    testApplication();
    SlowWebClient slow;
    PatientWebClient patient(slow);
    std::vector<bool> waits;
    patient.setWaiting([&](bool waiting) { waits.push_back(waiting); });
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start(5);
    const auto document = patient.dataWithContentsOfUrl("12345");
    ASSERT_TRUE(document);
    EXPECT_EQ(document->size(), 5U);
    EXPECT_GT(ticks, 2);
    EXPECT_EQ(waits, (std::vector{true, false}));
    EXPECT_NE(slow.thread, std::this_thread::get_id());
    EXPECT_FALSE(patient.dataWithContentsOfUrl(""));
}

} // namespace
} // namespace quillomat
