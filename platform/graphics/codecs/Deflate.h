// Deflate in pieces that join: each piece ends at a whole byte and refers to nothing before it.
#pragma once

#include "platform/foundation/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace quillomat::codecs {

/// From ISA-L's fastest to libdeflate's utmost.
enum class DeflateEffort { fast, careful, best, utmost };

/// How far back equal bytes are looked for. What is alike in noise is so by chance: a reference to it takes more bits
/// than its bytes do, unless it is a run's, a few bytes back.
enum class DeflateReach { window, runs };

/// One for each thread: the state of either library is large and used again from piece to piece.
class PieceDeflater {
public:
    explicit PieceDeflater(DeflateEffort effort);
    ~PieceDeflater();
    PieceDeflater(const PieceDeflater&) = delete;
    PieceDeflater& operator=(const PieceDeflater&) = delete;

    /// Appends the piece to `out`; after the last one the stream is complete. False when the library fails. Only the
    /// fast effort needs to be told how far to reach: the others weigh what each reference costs.
    [[nodiscard]] bool deflate(std::span<const std::uint8_t> piece, bool isLast, Bytes& out,
                               DeflateReach reach = DeflateReach::window);

private:
    struct State;
    std::unique_ptr<State> state_;
};

[[nodiscard]] std::uint32_t adler32(std::span<const std::uint8_t> bytes);
/// The checksum of two stretches joined, from the checksum of each and the length of the second.
[[nodiscard]] std::uint32_t joinAdler32(std::uint32_t first, std::uint32_t second, std::uint64_t secondLength);
[[nodiscard]] std::uint32_t crc32(std::span<const std::byte> bytes);
/// CRC-64, for telling documents apart; `before` is that of the bytes that came before.
[[nodiscard]] std::uint64_t checksum64(std::span<const std::byte> bytes, std::uint64_t before = 0);

} // namespace quillomat::codecs
