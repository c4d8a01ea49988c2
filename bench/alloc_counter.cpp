#include "alloc_counter.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#if ZD_BENCH_COUNT_ALLOCATIONS

// The counters are per thread: a measurement counts what its own thread
// allocates, not what the runtime's pool threads do meanwhile. Plain integers
// in the executable's static TLS block, so counting costs one increment.
namespace {
__attribute__((tls_model("initial-exec"))) thread_local uint64_t tMallocs = 0;
__attribute__((tls_model("initial-exec"))) thread_local uint64_t tNews = 0;

void* newOrThrow(std::size_t size) {
    ++tNews;
    void* block = malloc(size == 0 ? 1 : size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void* newOrNull(std::size_t size) noexcept {
    ++tNews;
    return malloc(size == 0 ? 1 : size);
}
}  // namespace

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

void* malloc(size_t size) noexcept {
    ++tMallocs;
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size) noexcept {
    ++tMallocs;
    return __libc_calloc(count, size);
}

void* realloc(void* block, size_t size) noexcept {
    ++tMallocs;
    return __libc_realloc(block, size);
}
}  // extern "C"

void* operator new(std::size_t size) {
    return newOrThrow(size);
}
void* operator new[](std::size_t size) {
    return newOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return newOrNull(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return newOrNull(size);
}

namespace bench {
bool countingAllocations() {
    return true;
}
AllocCount allocationsSoFar() {
    return {tMallocs, tNews};
}
}  // namespace bench

#else

namespace bench {
bool countingAllocations() {
    return false;
}
AllocCount allocationsSoFar() {
    return {};
}
}  // namespace bench

#endif
