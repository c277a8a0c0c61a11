#include "platform/graphics/codecs/DocumentSink.h"

#include "platform/graphics/codecs/Deflate.h"

#include <new>

namespace quillomat::codecs {

void BytesSink::begin(std::size_t likelyLength) {
    bytes_ = {};
    // What is not used is never touched.
    bytes_.reserve(likelyLength);
}

Status BytesSink::append(std::span<const std::byte> bytes) {
    try {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    } catch (const std::bad_alloc&) {
        return Failure{"not enough memory for the picture"};
    }
    return {};
}

void DraftSink::begin(std::size_t /*likelyLength*/) {
    key_ = {};
    begun_ = draft_.clear();
}

Status DraftSink::append(std::span<const std::byte> bytes) {
    if (!begun_) {
        return begun_;
    }
    key_ = {key_.length + bytes.size(), checksum64(bytes, key_.checksum)};
    return draft_.append(bytes);
}

} // namespace quillomat::codecs
