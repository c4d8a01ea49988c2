// Bounded memory and string functions of the platform's bounds-checking C
// library. Each takes the destination's capacity and refuses to write past it.
#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

// 0 on success. On failure the destination is cleared where that is possible.
int memcpy_s(void* dest, size_t destMax, const void* src, size_t count);
// 0 on success; a count above destMax fills destMax bytes and fails.
int memset_s(void* dest, size_t destMax, int c, size_t count);
// Writes at most `count` characters plus the terminator; returns the number of
// characters written, or -1 on failure or truncation (dest is then terminated).
int snprintf_s(char* dest, size_t destMax, size_t count, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

#ifdef __cplusplus
}
#endif
