#include "platform/network/Gunzip.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <string>

namespace quillomat {
namespace {

Bytes packed(const std::string& text) {
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    Bytes bytes(deflateBound(&stream, text.size()) + 64);
    std::string input = text;
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    deflate(&stream, Z_FINISH);
    bytes.resize(stream.total_out);
    deflateEnd(&stream);
    return bytes;
}

std::string unpacked(std::span<const std::byte> bytes, std::uint64_t limit = 1 << 20) {
    const auto result = gunzip(bytes, limit);
    return result ? std::string(reinterpret_cast<const char*>(result->data()), result->size())
                  : "(" + result.reason() + ")";
}

TEST(Gunzip, unpacksAWholeDocument) {
    const std::string text(200000, 'a');
    EXPECT_EQ(unpacked(packed(text)), text);
    EXPECT_EQ(unpacked(packed("")), "");
}

TEST(Gunzip, refusesADocumentCutAnywhere) {
    const Bytes bytes = packed("a document of some length, which it does not need to be");
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        EXPECT_EQ(unpacked(std::span(bytes).first(length)), "(its compression is damaged)") << length;
    }
}

TEST(Gunzip, refusesWhatFollowsTheDocument) {
    Bytes bytes = packed("document");
    bytes.push_back(std::byte{0});
    EXPECT_EQ(unpacked(bytes), "(its compression is damaged)");
}

TEST(Gunzip, refusesADocumentWhoseChecksumIsWrong) {
    Bytes bytes = packed("document");
    bytes[bytes.size() - 6] ^= std::byte{1};
    EXPECT_EQ(unpacked(bytes), "(its compression is damaged)");
}

TEST(Gunzip, stopsAtTheLimit) {
    const Bytes bytes = packed(std::string(1000, 'a'));
    EXPECT_EQ(unpacked(bytes, 1000).size(), 1000U);
    EXPECT_EQ(unpacked(bytes, 999), "(larger than 999 bytes)");
    EXPECT_EQ(unpacked(packed(std::string(50 << 20, '\0')), 1 << 20), "(larger than 1048576 bytes)");
}

} // namespace
} // namespace quillomat
