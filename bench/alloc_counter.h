// Counts heap allocations made on the calling thread, wherever in the process
// they come from: this file's companion replaces malloc, calloc, realloc (each
// call counts as one allocation) and the global operator new, forwarding to
// the C library's allocator. An executable's definitions take precedence over
// those of the shared libraries it loads, so the library's allocations are
// counted too. The memalign family is not counted; nothing here uses it.
//
// Sanitizer builds bring their own allocator; there the counter is off and
// counting() says so.
#pragma once

#include <cstdint>

namespace bench {

struct AllocCount {
    uint64_t mallocs = 0;  // every allocation, operator new's included
    uint64_t news = 0;     // the part of them made through operator new
};

bool countingAllocations();
AllocCount allocationsSoFar();

inline AllocCount operator-(const AllocCount& after, const AllocCount& before) {
    return {after.mallocs - before.mallocs, after.news - before.news};
}

}  // namespace bench
