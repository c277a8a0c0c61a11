#include "platform/network/Gunzip.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string>

namespace quillomat {

namespace {

class Inflater {
public:
    Inflater() : isReady_(inflateInit2(&stream, gzipOnly) == Z_OK) {}
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() {
        if (isReady_) {
            inflateEnd(&stream);
        }
    }
    [[nodiscard]] bool isReady() const { return isReady_; }

    z_stream stream{};

private:
    static constexpr int gzipOnly = 15 + 16;
    bool isReady_;
};

} // namespace

Result<Bytes> gunzip(std::span<const std::byte> packed, std::uint64_t limit) {
    Inflater inflater;
    if (!inflater.isReady() || packed.size() > std::numeric_limits<uInt>::max()) {
        return Failure{"cannot be unpacked"};
    }
    z_stream& stream = inflater.stream;
    // The library never writes to its input, its type merely does not say so.
    stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    Bytes document;
    std::array<std::byte, 65536> piece{};
    int status = Z_OK;
    while (status == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef*>(piece.data());
        stream.avail_out = static_cast<uInt>(piece.size());
        status = inflate(&stream, Z_NO_FLUSH);
        const std::size_t count = piece.size() - stream.avail_out;
        if (count > limit - document.size()) {
            return Failure{"larger than " + std::to_string(limit) + " bytes"};
        }
        document.insert(document.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(count));
    }
    if (status != Z_STREAM_END || stream.avail_in != 0) {
        return Failure{"its compression is damaged"};
    }
    return document;
}

} // namespace quillomat
