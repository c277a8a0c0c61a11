// The smallest deflated form of a band of rows: filters are tried by deflating, not by guessing.
#pragma once

#include "platform/graphics/codecs/Deflate.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace quillomat::codecs {

/// One for each thread: buffers and the libraries' state are used again from band to band.
class SmallestPiece {
public:
    /// `isSmall` says that the whole picture is no more than a band's worth: no effort is too much then.
    SmallestPiece(std::size_t rowBytes, std::size_t pixelBytes, int mostRows, bool isSmall);

    /// Filters `count` rows, the first at `rows` with padding (`rowPadding`) about each and a row of zeros before it,
    /// and appends them deflated to `out`. False when a library fails.
    [[nodiscard]] bool make(const std::uint8_t* rows, std::size_t stride, int count, bool isLast, Bytes& out);
    /// What was deflated last: each row behind the number of its filter.
    [[nodiscard]] std::span<const std::uint8_t> filtered() const { return std::span(best_).first(length_); }

private:
    enum class Way { none, sub, up, average, paeth, leastCost };
    static constexpr Way ways[] = {Way::none, Way::sub, Way::up, Way::average, Way::paeth, Way::leastCost};

    void filter(Way way, const std::uint8_t* rows, std::size_t stride, int count);
    void filterByLeastCost(const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* out) const;
    [[nodiscard]] bool choose(const std::uint8_t* rows, std::size_t stride, int count, std::size_t& size);
    [[nodiscard]] DeflateEffort effortFor(std::size_t fastSize) const;
    [[nodiscard]] PieceDeflater& deflaterFor(DeflateEffort effort);

    std::size_t rowBytes_;
    std::size_t pixelBytes_;
    bool isSmall_;
    std::size_t length_ = 0;
    std::vector<std::uint8_t> best_;
    std::vector<std::uint8_t> tried_;
    Bytes deflated_;
    std::map<DeflateEffort, PieceDeflater> deflaters_; // made when first needed
};

} // namespace quillomat::codecs
