// Strong-reference handles that one thread replaces while other threads read
// them. A reader copies the reference under the lock and calls out through its
// copy; a writer swaps under the lock. The lock is held only for the copy or the
// swap, never across a remote call, and a replaced object is released after the
// lock is dropped, so its destructor runs unlocked.
#pragma once

#include <utils/StrongPointer.h>

#include <mutex>

template <typename T>
android::sp<T> copyHandle(std::mutex& lock, const android::sp<T>& handle) {
    std::lock_guard<std::mutex> guard(lock);
    return handle;
}

// Takes the new reference before the old one is released.
template <typename T, typename U>
void replaceHandle(std::mutex& lock, android::sp<T>& handle, const android::sp<U>& value) {
    android::sp<T> previous;
    {
        std::lock_guard<std::mutex> guard(lock);
        previous = handle;
        handle = value;
    }
}
