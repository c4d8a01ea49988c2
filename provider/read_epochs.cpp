#include "read_epochs.h"

#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <iterator>
#include <limits>
#include <mutex>
#include <utility>
#include <vector>

using android::RefBase;
using android::sp;

using namespace read_epochs_state;

namespace read_epochs_state {
std::atomic<uint64_t> currentEpoch{1};
std::atomic<size_t> retiredCount{0};
std::atomic<bool> readersFence{false};
}  // namespace read_epochs_state

namespace {

struct RetiredReference {
    uint64_t epoch;  // the epoch the replacement opened
    sp<RefBase> reference;
};

std::atomic<ReaderSlot*> g_slots{nullptr};

std::mutex& retireLock() {
    static std::mutex lock;
    return lock;
}

// Released at unload with the rest of the static state.
std::vector<RetiredReference>& retiredList() {
    static std::vector<RetiredReference> list;
    return list;
}

// Whether the process may use the expedited private membarrier. Decided once,
// before the first reader pins or the first writer scans.
bool barrierAvailable() {
    static const bool available = [] {
        long commands = syscall(__NR_membarrier, MEMBARRIER_CMD_QUERY, 0, 0);
        bool registered =
            commands >= 0 && (commands & MEMBARRIER_CMD_PRIVATE_EXPEDITED) != 0 &&
            syscall(__NR_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0) == 0;
        readersFence.store(!registered, std::memory_order_relaxed);
        return registered;
    }();
    return available;
}

// Makes every pin store made so far visible to the scan that follows.
void writerBarrier() {
    if (barrierAvailable() &&
        syscall(__NR_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0) == 0) {
        return;
    }
    std::atomic_thread_fence(std::memory_order_seq_cst);
}

// Hands the thread's slot back when the thread exits.
struct SlotReturn {
    ~SlotReturn() {
        if (t_readerSlot != nullptr) t_readerSlot->taken.store(false, std::memory_order_release);
        t_readerSlot = nullptr;
    }
};
thread_local SlotReturn t_slotReturn;

ReaderSlot* takeFreeSlot() {
    for (ReaderSlot* slot = g_slots.load(std::memory_order_acquire); slot != nullptr;
         slot = slot->next) {
        bool expected = false;
        if (slot->taken.compare_exchange_strong(expected, true, std::memory_order_acq_rel)) {
            return slot;
        }
    }
    return nullptr;
}

ReaderSlot* publishNewSlot() {
    auto* slot = new ReaderSlot;
    slot->next = g_slots.load(std::memory_order_relaxed);
    while (!g_slots.compare_exchange_weak(slot->next, slot, std::memory_order_release,
                                          std::memory_order_relaxed)) {
    }
    return slot;
}

}  // namespace

ReaderSlot* takeReaderSlot() {
    barrierAvailable();
    ReaderSlot* slot = takeFreeSlot();
    if (slot == nullptr) slot = publishNewSlot();
    (void)&t_slotReturn;  // registers the hand-back at thread exit
    t_readerSlot = slot;
    return slot;
}

namespace {

uint64_t oldestPinnedEpoch() {
    uint64_t oldest = std::numeric_limits<uint64_t>::max();
    for (ReaderSlot* slot = g_slots.load(std::memory_order_acquire); slot != nullptr;
         slot = slot->next) {
        uint64_t epoch = slot->pinnedEpoch.load(std::memory_order_acquire);
        if (epoch != ReaderSlot::kNotPinned) oldest = std::min(oldest, epoch);
    }
    return oldest;
}

}  // namespace

// Releases, outside the lock, every retired reference that no pinned reader
// can hold: a reader that pinned at or after a reference's epoch read the handle
// after the replacement.
void read_epochs_state::reclaim() {
    std::vector<RetiredReference> released;
    {
        std::lock_guard<std::mutex> guard(retireLock());
        writerBarrier();
        uint64_t oldest = oldestPinnedEpoch();
        std::vector<RetiredReference>& list = retiredList();
        auto kept = std::partition(list.begin(), list.end(),
                                   [oldest](const auto& entry) { return entry.epoch > oldest; });
        released.assign(std::make_move_iterator(kept), std::make_move_iterator(list.end()));
        list.erase(kept, list.end());
        retiredCount.store(list.size(), std::memory_order_relaxed);
    }
}

void retireReference(sp<RefBase> previous) {
    if (previous == nullptr) return;
    {
        std::lock_guard<std::mutex> guard(retireLock());
        uint64_t epoch = currentEpoch.fetch_add(1, std::memory_order_acq_rel) + 1;
        retiredList().push_back({epoch, std::move(previous)});
        retiredCount.store(retiredList().size(), std::memory_order_relaxed);
    }
    reclaim();
}

size_t retiredReferenceCount() {
    return retiredCount.load(std::memory_order_relaxed);
}

size_t readerSlotCount() {
    size_t count = 0;
    for (ReaderSlot* slot = g_slots.load(std::memory_order_acquire); slot != nullptr;
         slot = slot->next) {
        ++count;
    }
    return count;
}
