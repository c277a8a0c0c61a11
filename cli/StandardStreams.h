// Whole documents through standard input and output, pipes and devices.
#pragma once

#include "platform/foundation/FileDraft.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Result.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace quillomat {

/// Everything on standard input; fails above `limit` bytes.
[[nodiscard]] Result<Bytes> readStandardInput(std::uint64_t limit);
/// Fails when the reader went away or the disk is full.
[[nodiscard]] Status writeStandardOutput(std::span<const std::byte> bytes);
/// A file is replaced whole, behind a link as well; a pipe or a device takes the bytes and stays what it is.
[[nodiscard]] Status writeOutputFile(FileManager& files, const std::string& path, std::span<const std::byte> bytes);
/// The same piece by piece, for what is a file or nothing yet; fails for pipes and devices.
[[nodiscard]] Result<std::shared_ptr<FileDraft>> beginOutputFile(const std::string& path);
/// Writes into a pipe or a device that is there already.
[[nodiscard]] Status writeInto(const std::string& path, std::span<const std::byte> bytes);

} // namespace quillomat
