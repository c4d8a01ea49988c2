// The explorer's deterministic scheduler: it runs a block's threads one at a time on real
// OS threads, handing a baton from thread to thread at the scheduling points, and models
// the library's mutexes and pauses so that a thread waiting for a held mutex, or paused,
// is not picked while others can run. Virtual time advances only when nothing else can.
// It also keeps, for every step a thread takes, what the step touched: the operation at
// the point the thread stood at when chosen, and what it reached on its way to the next.
#pragma once

#include <semaphore.h>
#include <zdhost/schedule.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "policy.h"
#include "steps.h"

namespace explore {

// What ends a run early: a deadlock, a run longer than the step bound, a schedule that
// the run does not fit, or a policy that finds the rest of the run explored already. The
// scheduler reports it and the run's process ends.
enum class Stop { kDeadlock, kStepBound, kDiverged, kRedundant };

class Scheduler : public zdhost::schedule::Controller {
  public:
    struct Events {
        std::function<void(const Decision&, int chosen)> decided;      // may be empty
        std::function<void(const Step&)> stepped;                      // may be empty
        std::function<void(Stop, const std::string& detail)> stopped;  // must not return
        // An operation began on `thread`: a command of a branch, or a delivery that a world
        // event set off on a thread of its own. May be empty.
        std::function<void(const OperationStart&)> operationBegan;
        // The running thread makes a remote call while it holds a library mutex other than
        // the connection lock: the mutex's name. May be empty.
        std::function<void(const std::string& mutex)> lockHeldAcrossCall;
    };
    Scheduler(Policy& policy, Events events, size_t stepBound);
    ~Scheduler() override;

    // A branch's work, with the key and label of the operation it begins with.
    struct Branch {
        std::function<void()> work;
        std::string firstKey;
        std::string firstLabel;
    };
    // Runs each branch on a controlled thread of its own (threads 1..n, tags 1..n) and
    // returns once every controlled thread, the ones they start included, has finished.
    void run(const std::vector<Branch>& branches);

    void point(zdhost::schedule::Point kind, const void* object,
               zdhost::schedule::Access access) override;
    void touch(const void* object, zdhost::schedule::Access access) override;
    void acquire(const void* mutex) override;
    bool tryAcquire(const void* mutex) override;
    void release(const void* mutex) override;
    void pause(useconds_t micros) override;
    void spawn(std::function<void()> work) override;

    // Called by a branch's thread before each of its commands: the operation `key` ("B.C",
    // branch B's command C, both from 1) begins. It is a scheduling point, so that another
    // operation may run between two commands of a branch.
    void beginOperation(const std::string& key, const std::string& label);
    // The key of the operation the calling thread runs; "" on a thread the scheduler does
    // not run.
    static std::string currentOperation();

  private:
    enum class State { kEnabled, kPaused, kFinished };
    struct Thread {
        int id = 0;
        int branch = 0;
        State state = State::kEnabled;
        const void* waitsFor = nullptr;  // the mutex it stands to acquire; runs once it is free
        std::vector<Access> next;        // what its next step begins with
        uint64_t wakeAt = 0;
        std::string operation;  // the key of the operation it runs or is about to begin
        std::string label;
        bool atOperationStart = true;  // it has not run a step of `operation` yet
        sem_t turn;
        std::function<void()> work;
        std::thread os;
    };

    Thread* start(int branch, std::function<void()> work, const OperationStart& first);
    // `me` runs the first step of its operation.
    void began(Thread* me);
    void body(Thread* self);
    // The running thread `me` (null when the run starts) is at a point: picks who runs
    // next and hands over the baton; returns when `me` runs again.
    void reschedule(Thread* me);
    bool canRun(const Thread& thread) const;
    std::vector<Candidate> candidates(const Thread* me) const;
    int fallback(const Thread* me, const std::vector<Candidate>& candidates) const;
    // `*decision` is the index of the decision taken, -1 when only one thread could run.
    Thread* pick(Thread* me, long* decision);
    // The running thread's step ends; `next` begins one.
    void endStep();
    void beginStep(Thread* next, long decision);
    void handOver(Thread* me, Thread* next);
    std::string waitsDescription() const;
    void noteRemoteCall(const Thread* me);
    void joinExited(Thread* self);

    Policy& mPolicy;
    Events mEvents;
    size_t mStepBound;
    std::vector<std::unique_ptr<Thread>> mThreads;
    std::map<const void*, Thread*> mOwners;
    std::map<const void*, std::string> mMutexNames;
    std::map<std::string, int> mSpawns;  // deliveries set off so far, by causing operation
    Thread* mExiting = nullptr;          // finished, handed over, its exit not yet waited for
    uint64_t mNow = 0;
    size_t mSteps = 0;
    size_t mDecisions = 0;
    Step mStep;  // the running thread's step so far
    bool mStepOpen = false;
    sem_t mDone;
    sem_t mStarted;  // a new thread has set itself up
};

// A name for a mutex or atomic of the library: its symbol, with an offset inside it.
std::string objectName(const void* address);

}  // namespace explore
