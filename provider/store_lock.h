// The lock of the satellite store. It is held only while a report of at most a
// few kilobytes is copied in or out, never across a call out of the library, so
// a waiter yields its turn until the holder is done instead of sleeping in the
// kernel. Uncontended, taking and dropping it costs one atomic exchange.
#pragma once

#include <sched.h>

#include <atomic>

class StoreLock {
  public:
    constexpr StoreLock() = default;

    void lock() {
        while (mHeld.exchange(true, std::memory_order_acquire)) {
            while (mHeld.load(std::memory_order_relaxed)) sched_yield();
        }
    }
    void unlock() { mHeld.store(false, std::memory_order_release); }

  private:
    std::atomic<bool> mHeld{false};
};
