// Handles that hot paths read without taking a lock or a reference.
//
// Every write of a handle also publishes the plain pointer it now holds, and
// retires the reference it replaced (see read_epochs.h). A PinnedHandle pins the
// reading thread, then reads that pointer; the object stays alive until the pin
// ends, however the handle changes meanwhile.
#pragma once

#include <utils/StrongPointer.h>

#include <atomic>
#include <cstddef>
#include <mutex>
#include <type_traits>
#include <utility>

#include "guarded_handle.h"
#include "read_epochs.h"

template <typename Handle>
struct HandleTraits;

template <typename T>
struct HandleTraits<android::sp<T>> {
    using Object = T;
};

template <auto& Handle>
using HandleObject = typename HandleTraits<std::remove_reference_t<decltype(Handle)>>::Object;

// The object each handle holds, as last published by a write under the lock.
template <auto& Handle>
inline std::atomic<HandleObject<Handle>*> publishedObject{nullptr};

template <auto& Handle>
class PinnedHandle {
  public:
    PinnedHandle()
        : mSlot(pinReadEpoch()), mObject(publishedObject<Handle>.load(std::memory_order_acquire)) {}
    ~PinnedHandle() { unpinReadEpoch(mSlot); }
    PinnedHandle(const PinnedHandle&) = delete;
    PinnedHandle& operator=(const PinnedHandle&) = delete;

    HandleObject<Handle>* operator->() const { return mObject; }
    HandleObject<Handle>* get() const { return mObject; }
    bool operator==(std::nullptr_t) const { return mObject == nullptr; }
    bool operator!=(std::nullptr_t) const { return mObject != nullptr; }

  private:
    ReaderSlot* mSlot;
    HandleObject<Handle>* mObject;
};

// A strong reference to what the handle holds, copied under `lock`.
template <auto& Handle>
android::sp<HandleObject<Handle>> copyPublishedHandle(std::mutex& lock) {
    return copyHandle(lock, Handle);
}

// Replaces the handle under `lock`: the new reference is taken before the old
// one is retired, and the old one is released outside the lock.
template <auto& Handle, typename U>
void publishHandle(std::mutex& lock, const android::sp<U>& value) {
    android::sp<HandleObject<Handle>> previous;
    {
        std::lock_guard<std::mutex> guard(lock);
        previous = Handle;
        Handle = value;
        publishedObject<Handle>.store(Handle.get(), std::memory_order_release);
    }
    retireReference(std::move(previous));
}
