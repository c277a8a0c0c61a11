#include "platform/foundation/Trace.h"

#include "TraceDocument.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace quillomat {
namespace {

using testing::readTrace;
using testing::TraceDocument;

void work(int depth) {
    trace::Span span(depth % 2 == 0 ? "even" : "odd");
    span.note("depth", depth);
    if (depth > 0) {
        work(depth - 1);
        work(depth - 1);
    }
}

TEST(Trace, nothingIsRecordedWhileItIsOff) {
    work(3);
    trace::start();
    static_cast<void>(trace::stop());
    EXPECT_FALSE(trace::isOn());
    work(3);
    trace::start();
    EXPECT_TRUE(readTrace(trace::stop()).threads.empty()) << "neither what came before nor what came between";
}

TEST(Trace, spansNestOnTheirThreads) {
    trace::start();
    {
        const std::jthread one([] { work(5); });
        const std::jthread two([] { work(4); });
        work(3);
    }
    const TraceDocument document = readTrace(trace::stop());
    EXPECT_EQ(document.threads.size(), 3U);
    EXPECT_EQ(document.count("even") + document.count("odd"), 63U + 31U + 15U);
    EXPECT_TRUE(document.isWellNested());
    EXPECT_EQ(document.threadNames, (std::set<std::string>{"main", "worker 1", "worker 2"}));
}

TEST(Trace, threadsKeepTheNamesTheyAreGiven) {
    trace::start();
    std::jthread([] {
        trace::nameThread("painter \"1\"");
        work(0);
    }).join();
    const TraceDocument document = readTrace(trace::stop());
    EXPECT_TRUE(document.threadNames.contains("painter \"1\""));
    EXPECT_TRUE(document.threadNames.contains("main"));
}

TEST(Trace, numbersStandBesideTheirSpan) {
    trace::start();
    {
        trace::Span span("numbered");
        span.note("first", 1);
        span.note("large", 1'234'567'890'123);
        span.note("negative", -3);
        span.note("one too many", 4);
    }
    const TraceDocument document = readTrace(trace::stop());
    ASSERT_EQ(document.threads.size(), 1U);
    const Value notes = document.threads.begin()->second.at(0).notes;
    EXPECT_EQ(notes.count(), 3U);
    EXPECT_EQ(notes["large"].integerValue(), 1'234'567'890'123);
    EXPECT_EQ(notes["negative"].integerValue(), -3);
}

TEST(Trace, aSpanLastsAsLongAsItsScope) {
    trace::start();
    {
        const trace::Span span("long");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    const TraceDocument document = readTrace(trace::stop());
    const testing::TraceEvent& event = document.threads.begin()->second.at(0);
    EXPECT_GE(event.end - event.begin, 5000) << "microseconds";
}

TEST(Trace, aSpanAcrossTheEndsOfTracingBelongsToNone) {
    trace::start();
    {
        const trace::Span span("cut short");
        EXPECT_TRUE(readTrace(trace::stop()).threads.empty());
        trace::start();
    }
    { const trace::Span span("whole"); }
    EXPECT_EQ(readTrace(trace::stop()).eventNames, std::set<std::string>{"whole"});
}

TEST(Trace, itIsSwitchedOffWhileThreadsWork) {
    std::atomic<bool> goesOn{true};
    std::vector<std::jthread> workers;
    for (int i = 0; i < 3; ++i) {
        workers.emplace_back([&] {
            while (goesOn) {
                work(3);
            }
        });
    }
    for (int i = 0; i < 20; ++i) {
        trace::start();
        work(2);
        const TraceDocument document = readTrace(trace::stop());
        EXPECT_TRUE(document.isWellNested());
        EXPECT_GE(document.count("even"), 5U);
    }
    goesOn = false;
}

} // namespace
} // namespace quillomat
