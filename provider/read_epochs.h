// Reads of shared handles that cost no reference-count traffic.
//
// A reader pins its thread for as long as it uses an object it found through a
// handle, and calls through a plain pointer. A writer that replaces a handle
// retires the reference it took out: the reference is released at once when no
// thread is pinned, or else by the first thread that finds, on unpinning, that
// no reader pinned before the replacement is left. So no object is used after
// its release, and none is held longer than the reads that may still use it.
//
// Readers pay two plain stores and two loads. The writers' side makes that
// enough: before it looks at the readers, it makes every running thread of the
// process pass a full memory barrier (membarrier(2)); where the kernel offers no
// such barrier, readers fence their own stores instead.
#pragma once

#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

// One per thread that has pinned; taken over by another thread once its own
// thread has exited. Slots are never freed, so a scan may walk them at any time.
struct ReaderSlot {
    static constexpr uint64_t kNotPinned = 0;

    std::atomic<uint64_t> pinnedEpoch{kNotPinned};
    std::atomic<bool> taken{true};
    unsigned depth = 0;          // used by the owning thread only
    ReaderSlot* next = nullptr;  // fixed before the slot is published
};

// State shared by the inline pin and unpin below and read_epochs.cpp.
namespace read_epochs_state {
extern std::atomic<uint64_t> currentEpoch;
extern std::atomic<size_t> retiredCount;
extern std::atomic<bool> readersFence;  // set when writers cannot fence for readers

// Orders a reader's store of its epoch before its next load.
inline void readerFence() {
    if (readersFence.load(std::memory_order_relaxed)) {
        std::atomic_thread_fence(std::memory_order_seq_cst);
    } else {
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }
}

// Releases every retired reference that no pinned reader can still hold.
void reclaim();
}  // namespace read_epochs_state

// The calling thread's slot once it has taken one.
inline thread_local ReaderSlot* t_readerSlot = nullptr;

// Takes a slot for the calling thread, at its first pin.
ReaderSlot* takeReaderSlot();

inline ReaderSlot* currentReaderSlot() {
    ReaderSlot* slot = t_readerSlot;
    return slot != nullptr ? slot : takeReaderSlot();
}

// Pins may nest on one thread; only the outermost pair does any work. The pin
// returns the slot that its unpin takes.
inline ReaderSlot* pinReadEpoch() {
    using namespace read_epochs_state;
    ReaderSlot* slot = currentReaderSlot();
    if (slot->depth++ == 0) {
        slot->pinnedEpoch.store(currentEpoch.load(std::memory_order_acquire),
                                std::memory_order_release);
        readerFence();
    }
    return slot;
}

inline void unpinReadEpoch(ReaderSlot* slot) {
    using namespace read_epochs_state;
    if (--slot->depth != 0) return;
    slot->pinnedEpoch.store(ReaderSlot::kNotPinned, std::memory_order_release);
    readerFence();
    if (retiredCount.load(std::memory_order_relaxed) != 0) reclaim();
}

// Takes over a reference that a writer has just replaced in its handle (after
// the new value is published) and releases it as soon as that is safe. Safe to
// call while the calling thread is pinned: the release then waits for its unpin.
void retireReference(android::sp<android::RefBase> previous);

// Retired references not released yet.
size_t retiredReferenceCount();

// Reader slots ever created: one per thread that pinned, reused once it exits.
size_t readerSlotCount();
