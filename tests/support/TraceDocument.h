// Reads a trace back, for tests of what is in it.
#pragma once

#include "platform/foundation/Value.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quillomat::testing {

struct TraceEvent {
    std::string name;
    double begin = 0; // microseconds
    double end = 0;
    Value notes;
};

struct TraceDocument {
    std::map<std::int64_t, std::vector<TraceEvent>> threads; // complete events by thread
    std::set<std::string> threadNames;
    std::set<std::string> eventNames;

    [[nodiscard]] std::size_t count(std::string_view name) const {
        std::size_t count = 0;
        for (const auto& [thread, events] : threads) {
            count += static_cast<std::size_t>(std::count_if(
                events.begin(), events.end(), [&](const TraceEvent& event) { return event.name == name; }));
        }
        return count;
    }
    /// Whether of each two events on a thread one holds the other or they lie apart.
    [[nodiscard]] bool isWellNested() const {
        return std::all_of(threads.begin(), threads.end(), [](const auto& thread) { return nests(thread.second); });
    }

private:
    static bool nests(std::vector<TraceEvent> events) {
        std::sort(events.begin(), events.end(), [](const TraceEvent& a, const TraceEvent& b) {
            return a.begin != b.begin ? a.begin < b.begin : a.end > b.end;
        });
        std::vector<double> open;
        for (const TraceEvent& event : events) {
            while (!open.empty() && open.back() <= event.begin) {
                open.pop_back();
            }
            if (!open.empty() && event.end > open.back() + 1e-6) {
                return false;
            }
            open.push_back(event.end);
        }
        return true;
    }
};

/// The whole document, which must be JSON of the form that viewers read.
inline TraceDocument readTrace(const std::string& text) {
    TraceDocument document;
    const auto parsed = parseJson(text);
    EXPECT_TRUE(parsed) << parsed.reason() << "\n" << text;
    if (!parsed) {
        return document;
    }
    EXPECT_TRUE((*parsed)["traceEvents"].isArray());
    for (const Value& event : (*parsed)["traceEvents"].elements()) {
        EXPECT_EQ(event["pid"].kind(), Value::Kind::integer);
        EXPECT_EQ(event["tid"].kind(), Value::Kind::integer);
        if (event["ph"].stringValue() == "M") {
            EXPECT_EQ(event["name"].stringValue(), "thread_name");
            document.threadNames.insert(event["args"]["name"].stringValue());
            continue;
        }
        EXPECT_EQ(event["ph"].stringValue(), "X");
        EXPECT_GE(event["ts"].realValue(), 0);
        EXPECT_GE(event["dur"].realValue(), 0);
        const double begin = event["ts"].realValue();
        document.threads[event["tid"].integerValue()].push_back(
            {event["name"].stringValue(), begin, begin + event["dur"].realValue(), event["args"]});
        document.eventNames.insert(event["name"].stringValue());
    }
    return document;
}

} // namespace quillomat::testing
