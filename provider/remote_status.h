// How the library treats the status of a call to another process. A failed
// call either leaves a log line or is deliberately passed over; both say
// whether the call went through, and both mark the status as checked.
#pragma once

#include <hidl/Status.h>
#include <log/log.h>

// True when the call went through; otherwise logs `format` at `priority`.
template <typename T, typename... Args>
bool checkRemoteCall(const android::hardware::Return<T>& status, int priority, const char* format,
                     Args... args) {
    if (status.isOk()) return true;
    if constexpr (sizeof...(Args) == 0) {
        __android_log_print(priority, LOG_TAG, "%s", format);
    } else {
        __android_log_print(priority, LOG_TAG, format, args...);
    }
    return false;
}

// True when the call went through. A failure leaves no trace: the caller has
// nothing to add to what the other side already knows or to what it returns.
template <typename T>
bool remoteCallWentThrough(const android::hardware::Return<T>& status) {
    return status.isOk();
}
