#include "platform/foundation/SharedRange.h"

#include "platform/foundation/Crew.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <latch>
#include <mutex>
#include <ostream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace quillomat {

bool operator==(const SharedRange::Piece& a, const SharedRange::Piece& b) {
    return a.begin == b.begin && a.end == b.end;
}

void PrintTo(const SharedRange::Piece& piece, std::ostream* out) {
    *out << '[' << piece.begin << ", " << piece.end << ')';
}

namespace {

using Piece = SharedRange::Piece;

std::vector<Piece> piecesOf(SharedRange& range) {
    std::vector<Piece> pieces;
    range.workThrough([&](const Piece& piece) { pieces.push_back(piece); });
    return pieces;
}

TEST(SharedRange, oneThreadTakesItFromBeginningToEnd) {
    SharedRange range(0, 40, 16, 1);
    EXPECT_EQ(piecesOf(range), (std::vector<Piece>{{0, 16}, {16, 32}, {32, 40}}));
}

TEST(SharedRange, piecesEndAtMultiplesOfTheGrain) {
    SharedRange range(21, 70, 16, 1);
    EXPECT_EQ(piecesOf(range), (std::vector<Piece>{{21, 32}, {32, 48}, {48, 64}, {64, 70}}));
}

TEST(SharedRange, nothingIsNoWork) {
    for (const int end : {7, 3}) {
        SharedRange range(7, end, 16, 2);
        EXPECT_EQ(piecesOf(range), std::vector<Piece>{});
        EXPECT_EQ(piecesOf(range), std::vector<Piece>{});
    }
}

TEST(SharedRange, whoeverNeverComesLeavesItsShareToTheOthers) {
    SharedRange range(0, 64, 16, 4);
    // Its own share, and then the lower half, or the only piece, of the first of the longest.
    EXPECT_EQ(piecesOf(range), (std::vector<Piece>{{0, 16}, {16, 32}, {32, 48}, {48, 64}}));
    SharedRange longer(0, 128, 16, 2);
    EXPECT_EQ(piecesOf(longer),
              (std::vector<Piece>{{0, 16}, {16, 32}, {32, 48}, {48, 64}, {96, 112}, {112, 128}, {80, 96}, {64, 80}}));
}

TEST(SharedRange, eachThreadBeginsWithAShareOfItsOwn) {
    SharedRange range(0, 96, 16, 3);
    std::latch begun(3);
    const auto firstPiece = [&] {
        std::vector<Piece> pieces;
        range.workThrough([&](const Piece& piece) {
            if (pieces.empty()) {
                begun.arrive_and_wait();
            }
            pieces.push_back(piece);
        });
        return pieces.front().begin;
    };
    auto second = std::async(std::launch::async, firstPiece);
    auto third = std::async(std::launch::async, firstPiece);
    std::vector<int> begins{firstPiece(), second.get(), third.get()};
    std::sort(begins.begin(), begins.end());
    EXPECT_EQ(begins, (std::vector{0, 32, 64}));
}

TEST(SharedRange, whoeverHasDoneItsShareTakesOverFromOneWhoIsSlow) {
    SharedRange range(0, 128, 16, 2);
    std::latch slowHasBegun(1);
    std::latch restIsDone(1);
    std::vector<Piece> slow;
    std::thread thread([&] {
        range.workThrough([&](const Piece& piece) {
            slow.push_back(piece);
            slowHasBegun.count_down();
            restIsDone.wait();
        });
    });
    slowHasBegun.wait();
    const std::vector<Piece> quick = piecesOf(range);
    restIsDone.count_down();
    thread.join();
    EXPECT_EQ(slow, (std::vector<Piece>{{0, 16}}));
    EXPECT_EQ(quick, (std::vector<Piece>{{64, 80}, {80, 96}, {96, 112}, {112, 128}, {32, 48}, {48, 64}, {16, 32}}));
}

TEST(SharedRange, eachNumberIsWorkedOnOnceHoweverManyThreadsThereAre) {
    for (const int threads : {0, 1, 2, 3, 8}) {
        for (const int begin : {0, 5, 48}) {
            for (const int length : {1, 15, 16, 17, 100, 1000}) {
                for (const int grain : {1, 16, 33}) {
                    SharedRange range(begin, begin + length, grain, threads);
                    std::mutex mutex;
                    std::vector<int> times(static_cast<std::size_t>(length));
                    Crew::shared().run(threads, [&] {
                        range.workThrough([&](const Piece& piece) {
                            const std::scoped_lock lock(mutex);
                            EXPECT_TRUE(piece.end % grain == 0 || piece.end == begin + length);
                            for (int i = piece.begin; i < piece.end; ++i) {
                                ++times.at(static_cast<std::size_t>(i - begin));
                            }
                        });
                    });
                    EXPECT_EQ(times, std::vector(static_cast<std::size_t>(length), 1))
                        << threads << " threads from " << begin << ", " << length << " in pieces of " << grain;
                }
            }
        }
    }
}

TEST(SharedRange, whatOneThreadThrowsLeavesTheRestToTheOthers) {
    SharedRange range(0, 64, 16, 2);
    EXPECT_THROW(range.workThrough([](const Piece&) { throw std::runtime_error("cannot"); }), std::runtime_error);
    EXPECT_EQ(piecesOf(range), (std::vector<Piece>{{32, 48}, {48, 64}, {16, 32}}));
}

} // namespace
} // namespace quillomat
