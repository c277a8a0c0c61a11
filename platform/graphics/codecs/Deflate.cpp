// The fast pieces come from ISA-L, whose flushes join as they are. The best ones come from libdeflate, which marks the
// last block of whatever it compresses as the last of all: that mark is found with zlib's inflate, which can stop at
// every block, and taken out.
#include "platform/graphics/codecs/Deflate.h"

#include <isa-l/crc.h>
#include <isa-l/crc64.h>
#include <isa-l/igzip_lib.h>
#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <optional>

namespace quillomat::codecs {
namespace {

// Level 2 with a generous buffer of tokens: on pictures it is as fast as level 1, and its output is a hundredth
// smaller.
constexpr unsigned fastLevel = 2;
constexpr std::size_t fastTokens = ISAL_DEF_LVL2_EXTRA_LARGE;
// Of a distance: 32 bytes.
constexpr std::uint16_t runBits = 5;
constexpr std::array<int, 4> levels{0, 9, 10, 12}; // libdeflate's for each effort
constexpr std::uint32_t adlerModulus = 65521;

struct FreeCompressor {
    void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};

struct BlockInflater {
    z_stream stream{};
    bool isReady = inflateInit2(&stream, -MAX_WBITS) == Z_OK;

    BlockInflater() = default;
    ~BlockInflater() { inflateEnd(&stream); }
    BlockInflater(const BlockInflater&) = delete;
    BlockInflater& operator=(const BlockInflater&) = delete;
};

struct LastBlock {
    std::uint64_t firstBit = 0; // where its header, and in it the mark, begins
    std::uint64_t endBit = 0;
};

std::optional<LastBlock> findLastBlock(std::span<const std::byte> deflated) {
    BlockInflater inflater;
    if (!inflater.isReady) {
        return std::nullopt;
    }
    z_stream& stream = inflater.stream;
    std::array<unsigned char, 1 << 16> sink; // NOLINT(cppcoreguidelines-pro-type-member-init): only written to
    stream.next_in = const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(deflated.data())); // NOLINT
    stream.avail_in = static_cast<unsigned>(deflated.size());
    LastBlock last;
    while (true) {
        stream.next_out = sink.data();
        stream.avail_out = static_cast<unsigned>(sink.size());
        const int status = inflate(&stream, Z_BLOCK);
        if (status != Z_OK && status != Z_STREAM_END) {
            return std::nullopt;
        }
        // zlib says: 128 at the end of a block, 64 in the last one, and how many bits of the last byte are not used
        // yet.
        const auto unused = static_cast<std::uint64_t>(stream.data_type & 7);
        const bool isBetweenBlocks = (stream.data_type & 128) != 0;
        const bool isLast = (stream.data_type & 64) != 0;
        const std::uint64_t bit = std::uint64_t{stream.total_in} * 8 - unused;
        if (isBetweenBlocks && isLast) {
            last.endBit = bit;
            return last;
        }
        if (isBetweenBlocks) {
            last.firstBit = bit;
        }
        if (status == Z_STREAM_END || (stream.avail_in == 0 && stream.avail_out != 0)) {
            return std::nullopt;
        }
    }
}

/// Makes a complete stream one that goes on: without the mark of its last block, up to a whole byte.
bool openEnd(Bytes& out, std::size_t begin) {
    const std::optional<LastBlock> last = findLastBlock(std::span(out).subspan(begin));
    if (!last) {
        return false;
    }
    const auto mark = std::byte{1} << static_cast<int>(last->firstBit % 8);
    out[begin + last->firstBit / 8] &= ~mark;
    // An empty stored block: three zero bits, zeros to the next whole byte, a length of 0 and its complement.
    out.resize(begin + (last->endBit + 3 + 7) / 8);
    for (const int value : {0, 0, 0xff, 0xff}) {
        out.push_back(static_cast<std::byte>(value));
    }
    return true;
}

} // namespace

struct PieceDeflater::State {
    DeflateEffort effort = DeflateEffort::fast;
    std::vector<std::uint8_t> tokens;
    Bytes room; // kept from piece to piece: fresh memory costs more than copying out of this
    isal_zstream stream{};
    std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor;

    bool deflateFast(std::span<const std::uint8_t> piece, bool isLast, Bytes& out, DeflateReach reach);
    bool deflateBest(std::span<const std::uint8_t> piece, bool isLast, Bytes& out) const;
};

PieceDeflater::PieceDeflater(DeflateEffort effort) : state_(std::make_unique<State>()) {
    state_->effort = effort;
    if (effort == DeflateEffort::fast) {
        state_->tokens.resize(fastTokens);
    } else {
        state_->compressor.reset(libdeflate_alloc_compressor(levels.at(static_cast<std::size_t>(effort))));
    }
}

PieceDeflater::~PieceDeflater() = default;

bool PieceDeflater::deflate(std::span<const std::uint8_t> piece, bool isLast, Bytes& out, DeflateReach reach) {
    return state_->effort == DeflateEffort::fast ? state_->deflateFast(piece, isLast, out, reach)
                                                 : state_->deflateBest(piece, isLast, out);
}

bool PieceDeflater::State::deflateFast(std::span<const std::uint8_t> piece, bool isLast, Bytes& out,
                                       DeflateReach reach) {
    isal_deflate_init(&stream);
    stream.level = fastLevel;
    stream.hist_bits = reach == DeflateReach::runs ? runBits : 0; // 0: the whole window
    stream.level_buf = tokens.data();
    stream.level_buf_size = static_cast<std::uint32_t>(tokens.size());
    stream.next_in = const_cast<std::uint8_t*>(piece.data()); // NOLINT: the library only reads it
    stream.avail_in = static_cast<std::uint32_t>(piece.size());
    stream.end_of_stream = isLast ? 1 : 0;
    stream.flush = FULL_FLUSH;
    room.resize(std::max(room.size(), piece.size() / 2 + 4096));
    do {
        stream.next_out = reinterpret_cast<std::uint8_t*>(room.data());
        stream.avail_out = static_cast<std::uint32_t>(room.size());
        if (isal_deflate(&stream) != COMP_OK) {
            return false;
        }
        const auto written = static_cast<std::ptrdiff_t>(room.size() - stream.avail_out);
        out.insert(out.end(), room.begin(), room.begin() + written);
    } while (stream.avail_out == 0);
    return stream.avail_in == 0;
}

bool PieceDeflater::State::deflateBest(std::span<const std::uint8_t> piece, bool isLast, Bytes& out) const {
    if (!compressor) {
        return false;
    }
    const std::size_t begin = out.size();
    const std::size_t bound = libdeflate_deflate_compress_bound(compressor.get(), piece.size());
    out.resize(begin + bound);
    const std::size_t length =
        libdeflate_deflate_compress(compressor.get(), piece.data(), piece.size(), out.data() + begin, bound);
    if (length == 0) {
        return false;
    }
    out.resize(begin + length);
    return isLast || openEnd(out, begin);
}

std::uint32_t adler32(std::span<const std::uint8_t> bytes) {
    return libdeflate_adler32(1, bytes.data(), bytes.size());
}

std::uint32_t joinAdler32(std::uint32_t first, std::uint32_t second, std::uint64_t secondLength) {
    // Adler-32 is two sums: of the bytes, from 1, and of that sum after each byte.
    const std::uint64_t length = secondLength % adlerModulus;
    const std::uint64_t low = (first & 0xffff) + (second & 0xffff) + adlerModulus - 1;
    const std::uint64_t high = (first >> 16) + (second >> 16) + length * ((first & 0xffff) + adlerModulus - 1);
    return static_cast<std::uint32_t>((high % adlerModulus) << 16 | (low % adlerModulus));
}

std::uint32_t crc32(std::span<const std::byte> bytes) {
    return crc32_gzip_refl(0, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

std::uint64_t checksum64(std::span<const std::byte> bytes, std::uint64_t before) {
    return crc64_ecma_refl(before, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

} // namespace quillomat::codecs
