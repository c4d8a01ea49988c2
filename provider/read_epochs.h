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

#include <cstddef>

// Pins may nest on one thread; only the outermost pair does any work.
void pinReadEpoch();
void unpinReadEpoch();

// Takes over a reference that a writer has just replaced in its handle (after
// the new value is published) and releases it as soon as that is safe. Safe to
// call while the calling thread is pinned: the release then waits for its unpin.
void retireReference(android::sp<android::RefBase> previous);

// Retired references not released yet.
size_t retiredReferenceCount();

// Reader slots ever created: one per thread that pinned, reused once it exits.
size_t readerSlotCount();
