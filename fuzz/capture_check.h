// Checks shared by the capture-reader targets, which run no library and need no world.
#pragma once

#include <cstdio>
#include <cstdlib>

#define CAPTURE_CHECK(condition, detail)                                           \
    do {                                                                           \
        if (!(condition)) {                                                        \
            std::fprintf(stderr, "capture reader: %s (%s)\n", #condition, detail); \
            std::abort();                                                          \
        }                                                                          \
    } while (0)
