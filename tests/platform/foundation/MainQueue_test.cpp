#include "platform/foundation/MainQueue.h"

#include <gtest/gtest.h>

#include <string>

namespace quillomat {
namespace {

using namespace std::chrono_literals;

class MainQueueTest : public ::testing::Test {
protected:
    MainQueue::Task note(char mark) {
        return [this, mark] { order += mark; };
    }

    SteppedMainQueue queue;
    std::string order;
};

TEST_F(MainQueueTest, nothingRunsBeforeTheClockMoves) {
    queue.async(note('a'));
    queue.after(2s, note('b'));
    EXPECT_EQ(order, "");
    EXPECT_EQ(queue.pending(), 2U);
    EXPECT_EQ(queue.now(), 0ns);
}

TEST_F(MainQueueTest, tasksRunInTheOrderTheyFallDue) {
    queue.after(2s, note('c'));
    queue.after(100ms, note('a'));
    queue.after(500ms, note('b'));
    queue.advance(2s);
    EXPECT_EQ(order, "abc");
}

TEST_F(MainQueueTest, tasksOfEqualDueTimeRunInTheOrderTheyWereAdded) {
    for (const char mark : std::string("abcdefghijklmnop")) {
        queue.after(500ms, note(mark));
    }
    queue.advance(250ms);
    queue.after(250ms, note('q'));
    queue.advance(250ms);
    EXPECT_EQ(order, "abcdefghijklmnopq");
}

TEST_F(MainQueueTest, aTaskRunsAtItsTimeAndNotAMomentBefore) {
    queue.after(2'000'000'000ns, note('a'));
    queue.advance(1'999'999'999ns);
    EXPECT_EQ(order, "");
    queue.advance(1ns);
    EXPECT_EQ(order, "a");
}

TEST_F(MainQueueTest, aTaskSeesTheTimeItWasDueAt) {
    std::chrono::nanoseconds seen{};
    queue.after(300ms, [&] { seen = queue.now(); });
    queue.advance(1s);
    EXPECT_EQ(seen, 300ms);
    EXPECT_EQ(queue.now(), 1s);
}

TEST_F(MainQueueTest, tasksAddedByATaskRunWhenTheyFallDueMeanwhile) {
    queue.after(100ms, [this] {
        order += 'a';
        queue.async(note('b'));
        queue.after(400ms, note('c'));
        queue.after(2s, note('d'));
    });
    queue.advance(500ms);
    EXPECT_EQ(order, "abc");
    queue.advance(2s);
    EXPECT_EQ(order, "abcd");
}

TEST_F(MainQueueTest, aNegativeDelayIsDueAtOnceBehindWhatIsDueAlready) {
    queue.async(note('a'));
    queue.after(-5s, note('b'));
    queue.advance(0ns);
    EXPECT_EQ(order, "ab");
}

TEST_F(MainQueueTest, theLongestDelayDoesNotOverflow) {
    queue.advance(10s);
    queue.after(std::chrono::nanoseconds::max(), note('z'));
    queue.after(1s, note('a'));
    queue.advance(1s);
    EXPECT_EQ(order, "a");
    queue.advance(std::chrono::nanoseconds::max());
    EXPECT_EQ(order, "az");
}

TEST_F(MainQueueTest, runAllRunsEverythingInDueOrder) {
    queue.after(2s, note('b'));
    queue.after(1s, [this] {
        order += 'a';
        queue.after(10s, note('c'));
    });
    queue.runAll();
    EXPECT_EQ(order, "abc");
    EXPECT_EQ(queue.pending(), 0U);
    EXPECT_EQ(queue.now(), 11s);
}

TEST_F(MainQueueTest, runAllEndsAlthoughATaskAddsItselfForEver) {
    int runs = 0;
    std::function<void()> again = [&] {
        ++runs;
        queue.async(again);
    };
    queue.async(again);
    queue.runAll(50);
    EXPECT_EQ(runs, 50);
}

TEST_F(MainQueueTest, aTaskMayMoveTheClockItself) {
    queue.after(1s, [this] {
        queue.advance(5s);
        order += 'b';
    });
    queue.after(3s, note('a'));
    queue.advance(2s);
    EXPECT_EQ(order, "ab");
    EXPECT_EQ(queue.now(), 6s);
}

TEST_F(MainQueueTest, anEmptyTaskIsPassedOver) {
    queue.async({});
    queue.async(note('a'));
    queue.advance(0ns);
    EXPECT_EQ(order, "a");
}

} // namespace
} // namespace quillomat
