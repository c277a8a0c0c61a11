// Work on a range of numbers that threads share, each going through neighbouring ones: what a piece read lies in its
// thread's cache for the next. Whoever has done its share takes half of what another has left.
#pragma once

#include <functional>
#include <mutex>
#include <vector>

namespace quillomat {

/// Thread-safe.
class SharedRange {
public:
    struct Piece {
        int begin = 0;
        int end = 0;

        [[nodiscard]] int length() const { return end - begin; }
    };

    /// Of [begin, end), from 0 on, for that many threads, which take it in pieces from one multiple of `grain` to the
    /// next.
    SharedRange(int begin, int end, int grain, int threads);

    /// Calls `work` for one piece after the other until none is left to take. Each thread calls this once; those that
    /// never come leave their shares to the others.
    void workThrough(const std::function<void(const Piece&)>& work);

private:
    [[nodiscard]] Piece take(std::size_t own);
    void takeOver(Piece& own);
    [[nodiscard]] int multipleWithin(const Piece& share, int number) const;

    std::mutex mutex_;
    int grain_;
    std::vector<Piece> shares_; // what is left of each
    std::size_t joined_ = 0;
};

} // namespace quillomat
