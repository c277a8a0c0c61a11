#include "platform/foundation/Crew.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <latch>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace quillomat {
namespace {

/// Runs work that only ends when so many threads have begun it.
void runTogether(
    int threads, const std::function<void()>& work = [] {}) {
    std::latch begun(threads);
    Crew::shared().run(threads, [&] {
        begun.arrive_and_wait();
        work();
    });
}

TEST(Crew, asManyThreadsAsAskedForWorkTogether) {
    std::mutex mutex;
    std::set<std::thread::id> seen;
    runTogether(4, [&] {
        const std::scoped_lock lock(mutex);
        seen.insert(std::this_thread::get_id());
    });
    EXPECT_EQ(seen.size(), 4U);
    EXPECT_EQ(seen.count(std::this_thread::get_id()), 1U);
}

TEST(Crew, oneThreadIsTheCaller) {
    for (const int threads : {1, 0, -3}) {
        int calls = 0;
        Crew::shared().run(threads, [&, caller = std::this_thread::get_id()] {
            ++calls;
            EXPECT_EQ(std::this_thread::get_id(), caller);
        });
        EXPECT_EQ(calls, 1);
    }
}

TEST(Crew, threadsAreUsedAgain) {
    std::mutex mutex;
    std::set<std::thread::id> seen;
    runTogether(6); // as many as there will ever be here
    for (int i = 0; i < 20; ++i) {
        runTogether(3, [&] {
            const std::scoped_lock lock(mutex);
            seen.insert(std::this_thread::get_id());
        });
    }
    EXPECT_LE(seen.size(), 6U);
}

TEST(Crew, whoeverComesLateIsNotWaitedFor) {
    std::latch mayEnd(1);
    std::latch areBusy(6);
    std::jthread other([&] {
        Crew::shared().run(6, [&] {
            areBusy.count_down();
            mayEnd.wait();
        });
    });
    areBusy.wait();
    std::atomic<int> calls = 0;
    Crew::shared().run(2, [&] { ++calls; });
    EXPECT_EQ(calls, 1);
    mayEnd.count_down();
}

TEST(Crew, returnsWhenAllThatBeganHaveEnded) {
    std::atomic<int> ended = 0;
    for (int i = 0; i < 50; ++i) {
        ended = 0;
        const auto caller = std::this_thread::get_id();
        runTogether(4, [&] {
            if (std::this_thread::get_id() != caller) {
                std::this_thread::yield();
            }
            ++ended;
        });
        ASSERT_EQ(ended, 4);
    }
}

TEST(Crew, workMayHaveWorkDone) {
    std::atomic<int> calls = 0;
    runTogether(3, [&] { Crew::shared().run(2, [&] { ++calls; }); });
    EXPECT_GE(calls, 3);
    EXPECT_LE(calls, 3 * 2);
}

TEST(Crew, severalCallersShareIt) {
    std::atomic<int> calls = 0;
    {
        std::vector<std::jthread> callers;
        for (int i = 0; i < 4; ++i) {
            callers.emplace_back([&] {
                for (int turn = 0; turn < 100; ++turn) {
                    Crew::shared().run(3, [&] { ++calls; });
                }
            });
        }
    }
    EXPECT_GE(calls, 400);
    EXPECT_LE(calls, 1200);
}

TEST(Crew, whatAThreadThrowsReachesTheCaller) {
    const auto caller = std::this_thread::get_id();
    for (const bool isCaller : {true, false}) {
        EXPECT_THROW(runTogether(3,
                                 [&] {
                                     if ((std::this_thread::get_id() == caller) == isCaller) {
                                         throw std::runtime_error("no more");
                                     }
                                 }),
                     std::runtime_error);
    }
    runTogether(3); // and the others are still there
}

TEST(Crew, askedForNoneItIsOneToACore) {
    EXPECT_EQ(threadsFor(7), 7);
    EXPECT_EQ(threadsFor(0), static_cast<int>(std::max(1U, std::thread::hardware_concurrency())));
}

} // namespace
} // namespace quillomat
