// Whole documents through standard input and output.
#pragma once

#include "platform/foundation/FileManager.h"
#include "platform/foundation/Result.h"

#include <cstdint>
#include <span>

namespace quillomat {

/// Everything on standard input; fails above `limit` bytes.
[[nodiscard]] Result<Bytes> readStandardInput(std::uint64_t limit);
/// Fails when the reader went away or the disk is full.
[[nodiscard]] Status writeStandardOutput(std::span<const std::byte> bytes);

} // namespace quillomat
