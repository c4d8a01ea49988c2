// The ThreadSanitizer suppressions hide only what libutils' uninstrumented reference counts
// cause: a race of our own on an object shared through sp is still reported under them.
#include <gtest/gtest.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include <cstdlib>
#include <thread>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ZD_UNDER_TSAN 1
#endif
#endif
#if defined(__SANITIZE_THREAD__)
#define ZD_UNDER_TSAN 1
#endif

namespace {

struct Counter : public ::android::RefBase {
    int hits = 0;
};

__attribute__((noinline)) void unsynchronisedBump(const ::android::sp<Counter>& counter) {
    counter->hits++;
}

// Two threads bump a counter with no lock. The object is shared through sp, as the library
// shares its objects, so the report's stacks pass near RefBase.
void raceOnSharedObject() {
    ::android::sp<Counter> counter = new Counter();
    std::thread a([counter] { unsynchronisedBump(counter); });
    std::thread b([counter] { unsynchronisedBump(counter); });
    a.join();
    b.join();
}

TEST(TsanScopeTest, RaceInOurOwnCodeIsStillReported) {
#ifndef ZD_UNDER_TSAN
    GTEST_SKIP() << "meaningful only in a ThreadSanitizer build";
#endif
    // The death test re-executes this binary, which reads these options at start-up.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setenv("TSAN_OPTIONS", "halt_on_error=1:exitcode=66:suppressions=" ZD_TSAN_SUPPRESSIONS, 1);
    EXPECT_EXIT(raceOnSharedObject(), ::testing::ExitedWithCode(66),
                "ThreadSanitizer: data race.*unsynchronisedBump");
}

}  // namespace
