#include "alloc_counter.h"

#include <cstddef>

// Per thread, so that a measurement counts what its own thread allocates and
// not what the runtime's pool threads do meanwhile. A plain integer in the
// executable's static TLS block keeps counting to one increment.
namespace {
__attribute__((tls_model("initial-exec"))) thread_local uint64_t tAllocations = 0;
}  // namespace

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

void* malloc(size_t size) noexcept {
    ++tAllocations;
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size) noexcept {
    ++tAllocations;
    return __libc_calloc(count, size);
}

void* realloc(void* block, size_t size) noexcept {
    ++tAllocations;
    return __libc_realloc(block, size);
}
}  // extern "C"

namespace bench {
uint64_t allocationsSoFar() {
    return tAllocations;
}
}  // namespace bench
