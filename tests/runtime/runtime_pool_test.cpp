// The runtime pool: where posted work and delivered calls run, in what order, and what
// drain() waits for.
#include <gtest/gtest.h>
#include <zdhost/runtime.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace {

namespace pool = ::zdhost::pool;

class RuntimePoolTest : public ::testing::Test {
  protected:
    void TearDown() override { pool::drain(); }
};

TEST_F(RuntimePoolTest, TheTestThreadIsNotAPoolThread) {
    EXPECT_FALSE(pool::onPoolThread());
}

TEST_F(RuntimePoolTest, PostedWorkRunsOnAPoolThread) {
    std::thread::id ranOn;
    bool onPool = false;
    pool::post([&] {
        ranOn = std::this_thread::get_id();
        onPool = pool::onPoolThread();
    });
    pool::drain();
    EXPECT_NE(ranOn, std::thread::id());
    EXPECT_NE(ranOn, std::this_thread::get_id());
    EXPECT_TRUE(onPool);
}

TEST_F(RuntimePoolTest, PostedWorkRunsInPostingOrder) {
    std::vector<int> order;  // one pool thread by default: no lock needed beyond drain()
    for (int i = 0; i < 50; ++i) pool::post([&order, i] { order.push_back(i); });
    pool::drain();
    ASSERT_EQ(order.size(), 50u);
    for (int i = 0; i < 50; ++i) EXPECT_EQ(order[i], i);
}

TEST_F(RuntimePoolTest, DrainWaitsForWorkPostedByWork) {
    std::atomic<int> ran{0};
    pool::post([&] {
        ++ran;
        pool::post([&] {
            ++ran;
            pool::post([&] { ++ran; });
        });
    });
    pool::drain();
    EXPECT_EQ(ran.load(), 3);
}

TEST_F(RuntimePoolTest, DeliverCallFromOutsideRunsOnThePoolAndWaits) {
    std::thread::id ranOn;
    bool onPool = false;
    bool finished = false;
    pool::deliverCall([&] {
        ranOn = std::this_thread::get_id();
        onPool = pool::onPoolThread();
        finished = true;
    });
    // No drain: deliverCall has already waited for the call.
    EXPECT_TRUE(finished);
    EXPECT_TRUE(onPool);
    EXPECT_NE(ranOn, std::this_thread::get_id());
}

TEST_F(RuntimePoolTest, DeliverCallFromAPoolThreadRunsInline) {
    std::thread::id outer;
    std::thread::id inner;
    std::vector<int> steps;
    pool::post([&] {
        outer = std::this_thread::get_id();
        steps.push_back(1);
        pool::deliverCall([&] {
            inner = std::this_thread::get_id();
            steps.push_back(2);
        });
        steps.push_back(3);
    });
    pool::drain();
    EXPECT_EQ(inner, outer);
    EXPECT_EQ(steps, (std::vector<int>{1, 2, 3}));
}

TEST_F(RuntimePoolTest, DeliverCallFromManyThreadsRunsEachOnce) {
    std::mutex lock;
    std::vector<int> seen;
    std::vector<std::thread> callers;
    for (int i = 0; i < 8; ++i) {
        callers.emplace_back([&, i] {
            pool::deliverCall([&, i] {
                std::lock_guard<std::mutex> guard(lock);
                seen.push_back(i);
            });
        });
    }
    for (auto& t : callers) t.join();
    std::sort(seen.begin(), seen.end());
    EXPECT_EQ(seen, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
}

}  // namespace
