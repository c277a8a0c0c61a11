// How the system hands out memory: asking it ahead costs a fraction of what every first touch of a page does.
#pragma once

#include <cstddef>

namespace quillomat {

/// Asks for large pages where whole ones lie inside the memory, which nobody has touched yet: the system then hands it
/// out several times faster.
void preferLargePages(void* data, std::size_t size);

/// Has the whole pages inside the memory handed out at once. For memory that will be written from end to end: it counts
/// as used from now on. What lies on them stays as it is.
void takePages(void* data, std::size_t size);

} // namespace quillomat
