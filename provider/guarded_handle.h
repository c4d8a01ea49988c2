// A strong reference that one thread replaces while other threads read it.
// Readers copy the reference under the lock and call out through their copy;
// a writer swaps under the lock. The lock is held only for the copy or the
// swap, never across a remote call, and a replaced object is released after
// the lock is dropped, so its destructor runs unlocked.
#pragma once

#include <android-base/thread_annotations.h>
#include <utils/StrongPointer.h>

#include <mutex>
#include <utility>

template <typename T>
class GuardedHandle {
  public:
    GuardedHandle() = default;
    GuardedHandle(const GuardedHandle&) = delete;
    GuardedHandle& operator=(const GuardedHandle&) = delete;

    android::sp<T> get() const EXCLUDES(mLock) {
        std::lock_guard<std::mutex> guard(mLock);
        return mObject;
    }

    // `value` holds the new reference before the old one is let go.
    void set(android::sp<T> value) EXCLUDES(mLock) { exchange(std::move(value)); }

    // Stores `value` and hands back the reference it replaced, for the caller to let go
    // where no lock of its own is held.
    android::sp<T> exchange(android::sp<T> value) EXCLUDES(mLock) {
        std::lock_guard<std::mutex> guard(mLock);
        android::sp<T> previous = std::move(mObject);
        mObject = std::move(value);
        return previous;
    }

    void clear() EXCLUDES(mLock) { set(nullptr); }

    // The object held; when there is none, `make()` makes it and it is stored first. The
    // test and the store are one step, so that an object meant to be made once is made once
    // however many threads ask at the same time. `make` must not call out of the process.
    template <typename Make>
    android::sp<T> getOrMake(Make make) EXCLUDES(mLock) {
        std::lock_guard<std::mutex> guard(mLock);
        if (mObject == nullptr) mObject = make();
        return mObject;
    }

    bool isSet() const EXCLUDES(mLock) { return get() != nullptr; }

  private:
    mutable std::mutex mLock;
    android::sp<T> mObject GUARDED_BY(mLock);
};
