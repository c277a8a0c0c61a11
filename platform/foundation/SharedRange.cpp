#include "platform/foundation/SharedRange.h"

#include <algorithm>
#include <cassert>

namespace quillomat {

SharedRange::SharedRange(int begin, int end, int grain, int threads) : grain_(grain) {
    assert(begin >= 0 && grain > 0);
    Piece left{begin, std::max(begin, end)};
    for (int others = std::max(threads, 1); others-- > 0;) {
        const int until = others == 0 ? left.end : multipleWithin(left, left.begin + left.length() / (others + 1));
        shares_.push_back({left.begin, until});
        left.begin = until;
    }
}

void SharedRange::workThrough(const std::function<void(const Piece&)>& work) {
    std::unique_lock lock(mutex_);
    assert(joined_ < shares_.size());
    const std::size_t own = joined_++;
    for (Piece piece = take(own); piece.length() > 0; piece = take(own)) {
        lock.unlock();
        work(piece);
        lock.lock();
    }
}

SharedRange::Piece SharedRange::take(std::size_t own) {
    Piece& share = shares_[own];
    if (share.length() == 0) {
        takeOver(share);
    }
    const Piece piece{share.begin, multipleWithin(share, share.begin + grain_)};
    share.begin = piece.end;
    return piece;
}

/// The lower half of the longest share, or all of it where it is but a piece.
void SharedRange::takeOver(Piece& own) {
    const auto shorter = [](const Piece& a, const Piece& b) { return a.length() < b.length(); };
    Piece& longest = *std::max_element(shares_.begin(), shares_.end(), shorter);
    const int middle = multipleWithin(longest, longest.begin + longest.length() / 2);
    own = {middle, longest.end};
    longest.end = middle;
}

/// The last multiple of the grain up to that number, or the end of the share that is nearer.
int SharedRange::multipleWithin(const Piece& share, int number) const {
    return std::clamp(number / grain_ * grain_, share.begin, share.end);
}

} // namespace quillomat
