// Counts heap allocations made on the calling thread, wherever in the process
// they come from: the companion source replaces malloc, calloc and realloc,
// forwarding to the C library's allocator. An executable's definitions take
// precedence over those of the shared libraries it loads, so the library's
// allocations, and operator new's (which allocates through malloc), are
// counted too. The memalign family is not counted; nothing measured uses it.
#pragma once

#include <cstdint>

namespace bench {

uint64_t allocationsSoFar();

}  // namespace bench
