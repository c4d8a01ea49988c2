// Scheduling hooks of the explorer's build. The library is linked there with --wrap for
// the pthread mutex calls and for libc++'s std::mutex members, and its translation units
// carry the compiler's ThreadSanitizer instrumentation of atomics alone: so every lock
// and every atomic access of the library, and only those, passes through here. Each one
// reports to the schedule controller, then does the real operation. Atomics are done
// sequentially consistent whatever order the code asked for, as the explorer assumes.
#include <pthread.h>
#include <utils/RefBase.h>
#include <zdhost/schedule.h>

#include <cerrno>
#include <cstdint>
#include <mutex>

namespace {

using zdhost::schedule::Controller;
using zdhost::schedule::Point;

using zdhost::schedule::Access;

// A load reads the atomic; a store, an exchange, a fetch-op and a compare-exchange write
// it (a failed compare-exchange only reads, but taking it as a write keeps every order of
// it against a store).
void reachAtomic(const volatile void* address, Access access) {
    if (Controller* controller = zdhost::schedule::current()) {
        controller->point(Point::kAtomic, const_cast<const void*>(address), access);
    }
}

// A store of the value the atomic already holds changes nothing: it is a read of it, and
// commutes with other reads (two probes that publish the same flags do not race). Whether
// it is depends on the value when the store is made, after the point: a store that found
// another value by then writes after all.
template <typename T>
void reachStore(const volatile T* address, T value) {
    Controller* controller = zdhost::schedule::current();
    if (controller == nullptr) return;
    const bool silent = __atomic_load_n(address, __ATOMIC_SEQ_CST) == value;
    controller->point(Point::kAtomic, const_cast<const T*>(address),
                      silent ? Access::kRead : Access::kWrite);
    if (silent && __atomic_load_n(address, __ATOMIC_SEQ_CST) != value) {
        controller->touch(const_cast<const T*>(address), Access::kWrite);
    }
}

}  // namespace

extern "C" {

int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __real_pthread_mutex_trylock(pthread_mutex_t* mutex);
int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    if (Controller* controller = zdhost::schedule::current()) controller->acquire(mutex);
    return __real_pthread_mutex_lock(mutex);
}

int __wrap_pthread_mutex_trylock(pthread_mutex_t* mutex) {
    Controller* controller = zdhost::schedule::current();
    if (controller != nullptr && !controller->tryAcquire(mutex)) return EBUSY;
    int result = __real_pthread_mutex_trylock(mutex);
    if (controller != nullptr && result != 0) controller->release(mutex);
    return result;
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    int result = __real_pthread_mutex_unlock(mutex);
    if (Controller* controller = zdhost::schedule::current()) controller->release(mutex);
    return result;
}

// libc++ keeps std::mutex's members out of line; the library calls them by these names.
void __real__ZNSt3__15mutex4lockEv(std::mutex* mutex);
bool __real__ZNSt3__15mutex8try_lockEv(std::mutex* mutex);
void __real__ZNSt3__15mutex6unlockEv(std::mutex* mutex);

void __wrap__ZNSt3__15mutex4lockEv(std::mutex* mutex) {
    if (Controller* controller = zdhost::schedule::current()) controller->acquire(mutex);
    __real__ZNSt3__15mutex4lockEv(mutex);
}

bool __wrap__ZNSt3__15mutex8try_lockEv(std::mutex* mutex) {
    Controller* controller = zdhost::schedule::current();
    if (controller != nullptr && !controller->tryAcquire(mutex)) return false;
    bool locked = __real__ZNSt3__15mutex8try_lockEv(mutex);
    if (controller != nullptr && !locked) controller->release(mutex);
    return locked;
}

void __wrap__ZNSt3__15mutex6unlockEv(std::mutex* mutex) {
    __real__ZNSt3__15mutex6unlockEv(mutex);
    if (Controller* controller = zdhost::schedule::current()) controller->release(mutex);
}

// libutils' reference counts, as the library uses them. Whether a weak reference's
// promotion finds its object alive depends on every strong reference dropped before it,
// and it adds one: a promotion writes the object. The drop of the last strong reference
// ends the object, a write; other drops read it (they commute with each other, but which
// of them is the last depends on the promotions around them).
void __real__ZNK7android7RefBase9decStrongEPKv(const android::RefBase* self, const void* id);
bool __real__ZN7android7RefBase12weakref_type16attemptIncStrongEPKv(
    android::RefBase::weakref_type* self, const void* id);

void __wrap__ZNK7android7RefBase9decStrongEPKv(const android::RefBase* self, const void* id) {
    if (Controller* controller = zdhost::schedule::current()) {
        controller->touch(self, self->getStrongCount() == 1 ? zdhost::schedule::Access::kWrite
                                                            : zdhost::schedule::Access::kRead);
    }
    __real__ZNK7android7RefBase9decStrongEPKv(self, id);
}

bool __wrap__ZN7android7RefBase12weakref_type16attemptIncStrongEPKv(
    android::RefBase::weakref_type* self, const void* id) {
    if (Controller* controller = zdhost::schedule::current()) {
        controller->touch(self->refBase(), zdhost::schedule::Access::kWrite);
    }
    return __real__ZN7android7RefBase12weakref_type16attemptIncStrongEPKv(self, id);
}

// ThreadSanitizer's instrumentation calls these for every atomic access of the library.
void __tsan_init() {}

#define ZD_TSAN_ATOMIC_OPS(bits, type)                                                             \
    type __tsan_atomic##bits##_load(const volatile type* a, int) {                                 \
        reachAtomic(a, Access::kRead);                                                             \
        return __atomic_load_n(a, __ATOMIC_SEQ_CST);                                               \
    }                                                                                              \
    void __tsan_atomic##bits##_store(volatile type* a, type v, int) {                              \
        reachStore<type>(a, v);                                                                    \
        __atomic_store_n(a, v, __ATOMIC_SEQ_CST);                                                  \
    }                                                                                              \
    type __tsan_atomic##bits##_exchange(volatile type* a, type v, int) {                           \
        reachStore<type>(a, v);                                                                    \
        return __atomic_exchange_n(a, v, __ATOMIC_SEQ_CST);                                        \
    }                                                                                              \
    type __tsan_atomic##bits##_fetch_add(volatile type* a, type v, int) {                          \
        reachAtomic(a, Access::kWrite);                                                            \
        return __atomic_fetch_add(a, v, __ATOMIC_SEQ_CST);                                         \
    }                                                                                              \
    type __tsan_atomic##bits##_fetch_sub(volatile type* a, type v, int) {                          \
        reachAtomic(a, Access::kWrite);                                                            \
        return __atomic_fetch_sub(a, v, __ATOMIC_SEQ_CST);                                         \
    }                                                                                              \
    type __tsan_atomic##bits##_fetch_and(volatile type* a, type v, int) {                          \
        reachAtomic(a, Access::kWrite);                                                            \
        return __atomic_fetch_and(a, v, __ATOMIC_SEQ_CST);                                         \
    }                                                                                              \
    type __tsan_atomic##bits##_fetch_or(volatile type* a, type v, int) {                           \
        reachAtomic(a, Access::kWrite);                                                            \
        return __atomic_fetch_or(a, v, __ATOMIC_SEQ_CST);                                          \
    }                                                                                              \
    type __tsan_atomic##bits##_fetch_xor(volatile type* a, type v, int) {                          \
        reachAtomic(a, Access::kWrite);                                                            \
        return __atomic_fetch_xor(a, v, __ATOMIC_SEQ_CST);                                         \
    }                                                                                              \
    type __tsan_atomic##bits##_fetch_nand(volatile type* a, type v, int) {                         \
        reachAtomic(a, Access::kWrite);                                                            \
        return __atomic_fetch_nand(a, v, __ATOMIC_SEQ_CST);                                        \
    }                                                                                              \
    int __tsan_atomic##bits##_compare_exchange_strong(volatile type* a, type* c, type v, int,      \
                                                      int) {                                       \
        reachAtomic(a, Access::kWrite);                                                            \
        return __atomic_compare_exchange_n(a, c, v, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);    \
    }                                                                                              \
    int __tsan_atomic##bits##_compare_exchange_weak(volatile type* a, type* c, type v, int, int) { \
        reachAtomic(a, Access::kWrite);                                                            \
        return __atomic_compare_exchange_n(a, c, v, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);    \
    }                                                                                              \
    type __tsan_atomic##bits##_compare_exchange_val(volatile type* a, type c, type v, int, int) {  \
        reachAtomic(a, Access::kWrite);                                                            \
        __atomic_compare_exchange_n(a, &c, v, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);          \
        return c;                                                                                  \
    }

ZD_TSAN_ATOMIC_OPS(8, uint8_t)
ZD_TSAN_ATOMIC_OPS(16, uint16_t)
ZD_TSAN_ATOMIC_OPS(32, uint32_t)
ZD_TSAN_ATOMIC_OPS(64, uint64_t)

void __tsan_atomic_thread_fence(int) {
    __atomic_thread_fence(__ATOMIC_SEQ_CST);
}

void __tsan_atomic_signal_fence(int) {
    __atomic_signal_fence(__ATOMIC_SEQ_CST);
}

}  // extern "C"
