// Documents and other runs of bytes.
#pragma once

#include "platform/foundation/Pages.h"

#include <cstddef>
#include <vector>

namespace quillomat {

using Bytes = std::vector<std::byte, PageAllocator<std::byte>>;

} // namespace quillomat
