// What a filtered row is likely to cost is a bad guess for screenshots, whatever the measure: on flat areas and type
// one filter for a whole band, often none at all, deflates to a fifth less. So each way is deflated by the fast
// library, which costs a twentieth of the thorough one, and the winner is deflated thoroughly.
#include "platform/graphics/codecs/SmallestPiece.h"

#include "platform/graphics/codecs/RowFilters.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>

namespace quillomat::codecs {
namespace {

// Below this share of its bytes a band is type, flat areas and slopes; above it, a photograph.
constexpr double flatShare = 0.10;

} // namespace

SmallestPiece::SmallestPiece(std::size_t rowBytes, std::size_t pixelBytes, int mostRows, bool isSmall)
    : rowBytes_(rowBytes)
    , pixelBytes_(pixelBytes)
    , isSmall_(isSmall)
    , best_((rowBytes + 1) * static_cast<std::size_t>(mostRows) + rowPadding)
    , tried_(best_.size()) {}

bool SmallestPiece::make(const std::uint8_t* rows, std::size_t stride, int count, bool isLast, Bytes& out) {
    length_ = (rowBytes_ + 1) * static_cast<std::size_t>(count);
    std::size_t size = 0;
    if (!choose(rows, stride, count, size)) {
        return false;
    }
    return deflaterFor(effortFor(size)).deflate(filtered(), isLast, out);
}

/// On type and flat areas lazy matching does as well as an optimal parse, in a third of its time. Only in small
/// pictures is the difference worth it: there the hardest search costs little.
DeflateEffort SmallestPiece::effortFor(std::size_t fastSize) const {
    const double share = static_cast<double>(fastSize) / static_cast<double>(length_);
    if (share >= flatShare) {
        return DeflateEffort::best;
    }
    return isSmall_ ? DeflateEffort::utmost : DeflateEffort::careful;
}

PieceDeflater& SmallestPiece::deflaterFor(DeflateEffort effort) {
    return deflaters_.try_emplace(effort, effort).first->second;
}

/// Leaves the way that the fast library makes smallest in `best_`.
bool SmallestPiece::choose(const std::uint8_t* rows, std::size_t stride, int count, std::size_t& size) {
    size = std::numeric_limits<std::size_t>::max();
    for (const Way way : ways) {
        filter(way, rows, stride, count);
        deflated_.clear();
        if (!deflaterFor(DeflateEffort::fast).deflate(std::span(tried_).first(length_), /*isLast=*/true, deflated_)) {
            return false;
        }
        if (deflated_.size() < size) {
            size = deflated_.size();
            best_.swap(tried_);
        }
    }
    return true;
}

void SmallestPiece::filter(Way way, const std::uint8_t* rows, std::size_t stride, int count) {
    for (int y = 0; y < count; ++y) {
        const std::uint8_t* row = rows + stride * static_cast<std::size_t>(y);
        std::uint8_t* out = tried_.data() + (rowBytes_ + 1) * static_cast<std::size_t>(y);
        if (way == Way::leastCost) {
            filterByLeastCost(row, row - stride, out);
            continue;
        }
        auto filter = static_cast<RowFilter>(way);
        if (y == 0 && filter != RowFilter::none) {
            filter = RowFilter::sub; // a band refers to nothing above it
        }
        *out = static_cast<std::uint8_t>(filter);
        filterRow(filter, row, row - stride, rowBytes_, pixelBytes_, out + 1);
    }
}

void SmallestPiece::filterByLeastCost(const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* out) const {
    const RowCosts costs = costsOfRow(row, above, rowBytes_, pixelBytes_);
    const auto best = static_cast<RowFilter>(std::ranges::min_element(costs) - costs.begin());
    *out = static_cast<std::uint8_t>(best);
    filterRow(best, row, above, rowBytes_, pixelBytes_, out + 1);
}

} // namespace quillomat::codecs
