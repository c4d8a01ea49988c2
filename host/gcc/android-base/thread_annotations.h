// GCC has no thread-safety analysis and rejects its attributes on function
// definitions, so the host's GCC builds take the annotations as no-ops. Clang
// builds, like the device's, read the platform header unchanged.
#pragma once

#include_next <android-base/thread_annotations.h>

#undef THREAD_ANNOTATION_ATTRIBUTE__
#define THREAD_ANNOTATION_ATTRIBUTE__(x)
