#include <zdhost/runtime.h>
#include <zdhost/schedule.h>

#include <condition_variable>
#include <deque>
#include <thread>

namespace zdhost {
namespace pool {
namespace {

class Pool {
  public:
    static Pool& get() {
        static Pool* pool = new Pool();  // never destroyed: workers outlive static teardown
        return *pool;
    }

    void setThreadCount(unsigned count) {
        std::lock_guard<std::mutex> lock(mLock);
        if (mWorkers.empty()) mThreadCount = count > 0 ? count : 1;
    }

    void post(std::function<void()> work) {
        work = [work = std::move(work), tag = schedule::threadTag()] {
            schedule::setThreadTag(tag);
            work();
        };
        if (schedule::Controller* controller = schedule::current()) {
            controller->spawn(std::move(work));
            return;
        }
        std::lock_guard<std::mutex> lock(mLock);
        startLocked();
        mQueue.push_back(std::move(work));
        mWake.notify_one();
    }

    void drain() {
        std::unique_lock<std::mutex> lock(mLock);
        mIdle.wait(lock, [this] { return mQueue.empty() && mRunning == 0; });
    }

    void stopThreads() {
        std::vector<std::thread> workers;
        {
            std::unique_lock<std::mutex> lock(mLock);
            mIdle.wait(lock, [this] { return mQueue.empty() && mRunning == 0; });
            mStopping = true;
            workers.swap(mWorkers);
        }
        mWake.notify_all();
        for (std::thread& worker : workers) worker.join();
        std::lock_guard<std::mutex> lock(mLock);
        mStopping = false;
    }

  private:
    // Workers stay joinable so that stopThreads() can wait for them; the pool is never
    // destroyed, so a worker never stopped is never joined either.
    void startLocked() {
        while (mWorkers.size() < mThreadCount) mWorkers.emplace_back([this] { run(); });
    }

    void run() {
        tOnPool = true;
        std::unique_lock<std::mutex> lock(mLock);
        for (;;) {
            mWake.wait(lock, [this] { return !mQueue.empty() || mStopping; });
            if (mQueue.empty()) return;
            std::function<void()> work = std::move(mQueue.front());
            mQueue.pop_front();
            ++mRunning;
            lock.unlock();
            work();
            work = nullptr;  // release captures before reporting idle
            lock.lock();
            --mRunning;
            if (mQueue.empty() && mRunning == 0) mIdle.notify_all();
        }
    }

    std::mutex mLock;
    std::condition_variable mWake;
    std::condition_variable mIdle;
    std::deque<std::function<void()>> mQueue;
    std::vector<std::thread> mWorkers;
    unsigned mThreadCount = 1;
    unsigned mRunning = 0;
    bool mStopping = false;

  public:
    static thread_local bool tOnPool;
};

thread_local bool Pool::tOnPool = false;

}  // namespace

void post(std::function<void()> work) {
    Pool::get().post(std::move(work));
}

void deliverCall(const std::function<void()>& call) {
    if (Pool::tOnPool) {
        schedule::reach(schedule::Point::kDelivery, nullptr, schedule::Access::kNothing);
        call();
        return;
    }
    std::mutex lock;
    std::condition_variable done;
    bool finished = false;
    Pool::get().post([&] {
        schedule::reach(schedule::Point::kDelivery, nullptr, schedule::Access::kNothing);
        call();
        std::lock_guard<std::mutex> guard(lock);
        finished = true;
        done.notify_all();
    });
    std::unique_lock<std::mutex> guard(lock);
    done.wait(guard, [&] { return finished; });
}

void drain() {
    Pool::get().drain();
}

void stopThreads() {
    Pool::get().stopThreads();
}

void runAsPoolThread(const std::function<void()>& work) {
    const bool wasOnPool = Pool::tOnPool;
    Pool::tOnPool = true;
    work();
    Pool::tOnPool = wasOnPool;
}

void setThreadCount(unsigned count) {
    Pool::get().setThreadCount(count);
}

}  // namespace pool
}  // namespace zdhost
