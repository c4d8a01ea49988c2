#include <bounded_copy.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {
// Largest destination the functions accept, as bounds-checking libraries cap it.
constexpr size_t kMaxDestination = 0x7fffffff;

bool overlaps(const void* a, const void* b, size_t count) {
    auto x = reinterpret_cast<uintptr_t>(a);
    auto y = reinterpret_cast<uintptr_t>(b);
    return (x < y && x + count > y) || (y < x && y + count > x) || (x == y && count > 0);
}
}  // namespace

extern "C" int memcpy_s(void* dest, size_t destMax, const void* src, size_t count) {
    if (dest == nullptr || destMax == 0 || destMax > kMaxDestination) return EINVAL;
    if (src == nullptr || count > destMax || overlaps(dest, src, count)) {
        memset(dest, 0, destMax);
        return src == nullptr ? EINVAL : ERANGE;
    }
    if (count > 0) memcpy(dest, src, count);
    return 0;
}

extern "C" int memset_s(void* dest, size_t destMax, int c, size_t count) {
    if (dest == nullptr || destMax == 0 || destMax > kMaxDestination) return EINVAL;
    if (count > destMax) {
        memset(dest, c, destMax);
        return ERANGE;
    }
    memset(dest, c, count);
    return 0;
}

extern "C" int snprintf_s(char* dest, size_t destMax, size_t count, const char* format, ...) {
    if (dest == nullptr || destMax == 0 || destMax > kMaxDestination || format == nullptr) {
        return -1;
    }
    size_t limit = count < destMax ? count : destMax - 1;
    va_list args;
    va_start(args, format);
    int needed = vsnprintf(dest, limit + 1, format, args);
    va_end(args);
    if (needed < 0) {
        dest[0] = '\0';
        return -1;
    }
    if (static_cast<size_t>(needed) > limit) return -1;  // truncated; dest stays terminated
    return needed;
}
