// Lock-free handle reads: when a replaced object is released, and that no
// reader ever calls an object after its release.
#include "read_epochs.h"

#include <gtest/gtest.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "pinned_handle.h"

using android::sp;

namespace {

std::atomic<int> g_alive{0};

// Counts the live objects and checks, in every call, that the object called is
// still alive: a call on a released object fails the test even without ASan.
class Counted : public android::RefBase {
  public:
    Counted() { ++g_alive; }
    ~Counted() override {
        mMagic = 0;
        --g_alive;
    }
    int call() const {
        EXPECT_EQ(mMagic.load(std::memory_order_relaxed), kMagic) << "call on a released object";
        return 1;
    }

  private:
    static constexpr int kMagic = 0x5a5a;
    std::atomic<int> mMagic{kMagic};
};

sp<Counted> g_handle;
std::mutex g_handleLock;

void store(const sp<Counted>& value) {
    publishHandle<g_handle>(g_handleLock, value);
}

// A thread that pins when told to and unpins when told to.
class PinningThread {
  public:
    PinningThread() : mThread([this] { run(); }) {}
    ~PinningThread() {
        step(kExit);
        mThread.join();
    }
    void pin() { step(kPin); }
    void unpin() { step(kUnpin); }

  private:
    enum Command { kNone, kPin, kUnpin, kExit };

    // Hands over a command and waits until the thread has carried it out.
    void step(Command command) {
        std::unique_lock<std::mutex> lock(mMutex);
        mCommand = command;
        mChanged.notify_all();
        mChanged.wait(lock, [this] { return mCommand == kNone; });
    }

    void run() {
        for (;;) {
            std::unique_lock<std::mutex> lock(mMutex);
            mChanged.wait(lock, [this] { return mCommand != kNone; });
            Command command = mCommand;
            if (command == kPin) mSlot = pinReadEpoch();
            if (command == kUnpin) unpinReadEpoch(mSlot);
            mCommand = kNone;
            mChanged.notify_all();
            if (command == kExit) return;
        }
    }

    std::mutex mMutex;
    std::condition_variable mChanged;
    Command mCommand = kNone;
    ReaderSlot* mSlot = nullptr;
    std::thread mThread;
};

class ReadEpochsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        store(nullptr);
        ASSERT_EQ(g_alive, 0);
        ASSERT_EQ(retiredReferenceCount(), 0u);
    }
    void TearDown() override { store(nullptr); }
};

TEST_F(ReadEpochsTest, ReplacedObjectIsReleasedAtOnceWhenNoReaderIsPinned) {
    store(new Counted);
    store(new Counted);
    EXPECT_EQ(g_alive, 1);
    EXPECT_EQ(retiredReferenceCount(), 0u);
    store(nullptr);
    EXPECT_EQ(g_alive, 0);
}

TEST_F(ReadEpochsTest, ObjectReadByAPinnedReaderOutlivesItsReplacementUntilTheOutermostUnpin) {
    store(new Counted);
    {
        PinnedHandle<g_handle> outer;
        Counted* object = outer.get();
        ASSERT_NE(object, nullptr);
        store(new Counted);  // replaced while this very thread reads it
        {
            PinnedHandle<g_handle> inner;  // nested, and started after the replacement
            EXPECT_NE(inner.get(), object);
        }
        EXPECT_EQ(g_alive, 2);
        EXPECT_EQ(retiredReferenceCount(), 1u);
        EXPECT_EQ(object->call(), 1);
    }
    EXPECT_EQ(g_alive, 1);
    EXPECT_EQ(retiredReferenceCount(), 0u);
}

TEST_F(ReadEpochsTest, ReleaseWaitsOnlyForReadersPinnedBeforeTheReplacement) {
    PinningThread early, late;
    store(new Counted);
    early.pin();
    store(new Counted);
    late.pin();  // pinned after the replacement: cannot hold the first object
    EXPECT_EQ(g_alive, 2);
    early.unpin();  // the last reader that could hold it releases it
    EXPECT_EQ(g_alive, 1);
    EXPECT_EQ(retiredReferenceCount(), 0u);
    store(nullptr);
    EXPECT_EQ(g_alive, 1) << "held back by the reader still pinned";
    late.unpin();
    EXPECT_EQ(g_alive, 0);
}

TEST_F(ReadEpochsTest, ThreadsThatExitHandTheirSlotsOn) {
    auto pinOnce = [] {
        PinnedHandle<g_handle> read;
        (void)read.get();
    };
    std::thread(pinOnce).join();
    size_t slots = readerSlotCount();
    for (int i = 0; i < 50; ++i) std::thread(pinOnce).join();
    EXPECT_EQ(readerSlotCount(), slots);
}

// Readers call through whatever the handle holds while a writer keeps
// replacing it. Every object is released exactly once, none while in use.
TEST_F(ReadEpochsTest, ReadersNeverCallAReleasedObjectWhileAWriterReplacesIt) {
    constexpr int kReaders = 3;
    constexpr int kReplacements = 3000;
    std::atomic<bool> done{false};
    std::atomic<long> calls{0};
    std::atomic<int> running{0};
    std::vector<std::thread> readers;
    store(new Counted);
    for (int r = 0; r < kReaders; ++r) {
        readers.emplace_back([&] {
            bool counted = false;
            while (!done.load(std::memory_order_acquire)) {
                PinnedHandle<g_handle> object;
                if (object != nullptr) calls += object->call();
                if (!counted) ++running;
                counted = true;
            }
        });
    }
    // The writer starts once every reader has read, so the reads overlap the
    // replacements even where a replacement is cheap.
    while (running.load() < kReaders) std::this_thread::yield();
    for (int i = 0; i < kReplacements; ++i) store(i % 7 == 0 ? nullptr : sp<Counted>(new Counted));
    done.store(true, std::memory_order_release);
    for (std::thread& reader : readers) reader.join();
    store(nullptr);
    EXPECT_EQ(g_alive, 0);
    EXPECT_EQ(retiredReferenceCount(), 0u);
    EXPECT_GT(calls.load(), 0);
}

}  // namespace
