// Unpacking of a document that came compressed.
#pragma once

#include "platform/foundation/FileManager.h"
#include "platform/foundation/Result.h"

#include <cstdint>
#include <span>

namespace quillomat {

/// The content of one gzip member that fills `packed` exactly. Fails when it is cut short, damaged or unpacks to more
/// than `limit` bytes; what is allocated grows with what was unpacked, not with what the input promises.
[[nodiscard]] Result<Bytes> gunzip(std::span<const std::byte> packed, std::uint64_t limit);

} // namespace quillomat
