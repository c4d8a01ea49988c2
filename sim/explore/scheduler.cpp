#include "scheduler.h"

#include <dlfcn.h>
#include <zdhost/runtime.h>

#include <algorithm>
#include <cstdio>

namespace explore {

namespace {

thread_local void* tSelf = nullptr;

using zdhost::schedule::Point;
using ScheduleAccess = zdhost::schedule::Access;

Access objectAccess(const void* object, ScheduleAccess access) {
    Access a;
    a.id = reinterpret_cast<uintptr_t>(object);
    a.mode = access == ScheduleAccess::kRead ? Access::Mode::kRead : Access::Mode::kWrite;
    return a;
}

// Adds `a` to a step's accesses, once per object: a write covers a read and an order.
void addAccess(std::vector<Access>& accesses, const Access& a) {
    for (Access& known : accesses) {
        if (known.kind != a.kind || known.id != a.id) continue;
        if (known.mode == a.mode || known.mode == Access::Mode::kWrite) return;
        if (a.mode == Access::Mode::kWrite) {
            known.mode = Access::Mode::kWrite;
            return;
        }
    }
    accesses.push_back(a);
}

std::string hex(uintptr_t value) {
    char text[32];
    snprintf(text, sizeof(text), "0x%zx", static_cast<size_t>(value));
    return text;
}

}  // namespace

std::string objectName(const void* address) {
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_sname == nullptr) {
        return "object at " + hex(reinterpret_cast<uintptr_t>(address));
    }
    const uintptr_t offset =
        reinterpret_cast<uintptr_t>(address) - reinterpret_cast<uintptr_t>(info.dli_saddr);
    std::string name = info.dli_sname;
    return offset == 0 ? name : name + "+" + hex(offset);
}

Scheduler::Scheduler(Policy& policy, Events events, size_t stepBound)
    : mPolicy(policy), mEvents(std::move(events)), mStepBound(stepBound) {
    sem_init(&mDone, 0, 0);
    sem_init(&mStarted, 0, 0);
}

Scheduler::~Scheduler() {
    for (auto& thread : mThreads) {
        if (thread->os.joinable()) thread->os.join();
        sem_destroy(&thread->turn);
    }
    sem_destroy(&mDone);
    sem_destroy(&mStarted);
}

void Scheduler::run(const std::vector<Branch>& branches) {
    for (size_t i = 0; i < branches.size(); ++i) {
        start(static_cast<int>(i) + 1, branches[i].work,
              {branches[i].firstKey, 0, branches[i].firstLabel});
    }
    zdhost::schedule::install(this);
    reschedule(nullptr);
    sem_wait(&mDone);
    zdhost::schedule::install(nullptr);
    for (auto& thread : mThreads) {
        if (thread->os.joinable()) thread->os.join();
    }
}

Scheduler::Thread* Scheduler::start(int branch, std::function<void()> work,
                                    const OperationStart& first) {
    auto thread = std::make_unique<Thread>();
    thread->id = static_cast<int>(mThreads.size()) + 1;
    thread->branch = branch;
    thread->work = std::move(work);
    thread->operation = first.key;
    thread->label = first.label;
    sem_init(&thread->turn, 0, 0);
    Thread* raw = thread.get();
    mThreads.push_back(std::move(thread));
    raw->os = std::thread([this, raw] { body(raw); });
    // A new thread sets itself up (the runtime's and the allocator's per-thread state)
    // before it waits for its turn; waiting for that keeps its set-up from running beside
    // the creator's step, where it would take heap memory in another order in each run.
    sem_wait(&mStarted);
    return raw;
}

void Scheduler::body(Thread* self) {
    sem_post(&mStarted);
    sem_wait(&self->turn);
    joinExited(self);
    tSelf = self;
    began(self);
    zdhost::schedule::setControlled(true);
    zdhost::schedule::setThreadTag(self->branch);
    zdhost::pool::runAsPoolThread(self->work);
    self->work = nullptr;
    self->state = State::kFinished;
    reschedule(self);
}

// A new thread's number is the next free one, so starting threads is ordered; the new
// thread's first step comes after the step that started it. Its work is an operation of its
// own: the N-th delivery the operation that started it set off.
void Scheduler::spawn(std::function<void()> work) {
    Thread* me = static_cast<Thread*>(tSelf);
    const std::string key = me->operation + "/" + std::to_string(++mSpawns[me->operation]);
    Thread* started = start(me->branch, std::move(work), {key, 0, "delivery"});
    const Access begins{Access::Kind::kStart, Access::Mode::kOrder,
                        static_cast<uint64_t>(started->id)};
    addAccess(mStep.accesses, {Access::Kind::kThreads, Access::Mode::kWrite, 0});
    addAccess(mStep.accesses, begins);
    started->next = {begins};
}

// Beginning an operation touches nothing by itself; it is a point so that another
// operation may run between two commands of a branch.
void Scheduler::beginOperation(const std::string& key, const std::string& label) {
    Thread* me = static_cast<Thread*>(tSelf);
    if (me->operation == key) return;  // the thread's first operation began with the thread
    me->operation = key;
    me->label = label;
    me->atOperationStart = true;
    me->next.clear();
    reschedule(me);
    began(me);
}

void Scheduler::began(Thread* me) {
    me->atOperationStart = false;
    if (mEvents.operationBegan) mEvents.operationBegan({me->operation, me->id, me->label});
}

std::string Scheduler::currentOperation() {
    const Thread* me = static_cast<const Thread*>(tSelf);
    return me == nullptr ? std::string() : me->operation;
}

void Scheduler::point(Point kind, const void* object, ScheduleAccess access) {
    Thread* me = static_cast<Thread*>(tSelf);
    if (kind == Point::kCall) noteRemoteCall(me);
    me->next.clear();
    if (access != ScheduleAccess::kNothing) me->next.push_back(objectAccess(object, access));
    reschedule(me);
}

void Scheduler::noteRemoteCall(const Thread* me) {
    if (!mEvents.lockHeldAcrossCall) return;
    for (const auto& [mutex, owner] : mOwners) {
        if (owner != me) continue;
        auto known = mMutexNames.find(mutex);  // a look-up of a symbol costs a run dearly
        if (known == mMutexNames.end()) known = mMutexNames.emplace(mutex, objectName(mutex)).first;
        const std::string& name = known->second;
        // The connection lock is held across the whole connection, look-ups and the daemon's
        // sub-interface calls included, by design: a death notice must wait for it.
        if (name != "fusdMutex") mEvents.lockHeldAcrossCall(name);
    }
}

void Scheduler::touch(const void* object, ScheduleAccess access) {
    if (access != ScheduleAccess::kNothing) addAccess(mStep.accesses, objectAccess(object, access));
}

// A thread standing at the acquire of a held mutex cannot run: it is not offered until
// the mutex is let go, and then taking it is its next step.
void Scheduler::acquire(const void* mutex) {
    Thread* me = static_cast<Thread*>(tSelf);
    me->waitsFor = mutex;
    me->next = {objectAccess(mutex, ScheduleAccess::kWrite)};
    reschedule(me);
    me->waitsFor = nullptr;
    mOwners[mutex] = me;
}

bool Scheduler::tryAcquire(const void* mutex) {
    Thread* me = static_cast<Thread*>(tSelf);
    me->next = {objectAccess(mutex, ScheduleAccess::kWrite)};
    reschedule(me);
    if (mOwners.count(mutex) != 0) return false;
    mOwners[mutex] = me;
    return true;
}

void Scheduler::release(const void* mutex) {
    mOwners.erase(mutex);
    addAccess(mStep.accesses,
              {Access::Kind::kObject, Access::Mode::kOrder, reinterpret_cast<uintptr_t>(mutex)});
}

void Scheduler::pause(useconds_t micros) {
    Thread* me = static_cast<Thread*>(tSelf);
    me->state = State::kPaused;
    me->wakeAt = mNow + micros;
    me->next.clear();  // waking touches nothing by itself
    reschedule(me);
}

bool Scheduler::canRun(const Thread& thread) const {
    return thread.state == State::kEnabled &&
           (thread.waitsFor == nullptr || mOwners.count(thread.waitsFor) == 0);
}

// Every paused thread is offered: the one due first costs nothing once no other thread
// can run; waking any other early costs a preemption.
std::vector<Candidate> Scheduler::candidates(const Thread* me) const {
    const bool meCanGoOn = me != nullptr && canRun(*me);
    std::vector<Candidate> enabled;
    for (const auto& t : mThreads) {
        if (!canRun(*t)) continue;
        enabled.push_back({t->id, t->branch, meCanGoOn && t.get() != me ? 1 : 0, false,
                           t->operation, t->atOperationStart});
    }
    uint64_t earliest = UINT64_MAX;
    for (const auto& t : mThreads) {
        if (t->state == State::kPaused) earliest = std::min(earliest, t->wakeAt);
    }
    std::vector<Candidate> all = enabled;
    for (const auto& t : mThreads) {
        if (t->state != State::kPaused) continue;
        const bool due = enabled.empty() && t->wakeAt == earliest;
        all.push_back({t->id, t->branch, due ? 0 : 1, !due, t->operation, false});
    }
    std::sort(all.begin(), all.end(),
              [](const Candidate& a, const Candidate& b) { return a.thread < b.thread; });
    return all;
}

int Scheduler::fallback(const Thread* me, const std::vector<Candidate>& candidates) const {
    if (me != nullptr && canRun(*me)) return me->id;
    for (const Candidate& c : candidates) {
        if (!c.early) return c.thread;
    }
    return candidates.front().thread;
}

Scheduler::Thread* Scheduler::pick(Thread* me, long* decided) {
    std::vector<Candidate> offered = candidates(me);
    if (offered.empty()) return nullptr;
    int chosen = offered.front().thread;
    *decided = -1;
    if (offered.size() > 1) {
        Decision decision;
        decision.index = mDecisions++;
        decision.current = me != nullptr ? me->id : 0;
        decision.candidates = offered;
        decision.fallback = fallback(me, offered);
        chosen = mPolicy.choose(decision);
        if (chosen == 0) {
            mEvents.stopped(Stop::kDiverged, "the schedule does not fit this run at decision " +
                                                 std::to_string(decision.index));
        }
        if (chosen == Policy::kRedundant) mEvents.stopped(Stop::kRedundant, "");
        if (mEvents.decided) mEvents.decided(decision, chosen);
        *decided = static_cast<long>(decision.index);
    } else if (mPolicy.redundant(chosen)) {
        mEvents.stopped(Stop::kRedundant, "");
    }
    Thread* next = mThreads[chosen - 1].get();
    if (next->state == State::kPaused) {
        const bool early = offered.size() > 1 &&
                           std::any_of(offered.begin(), offered.end(), [&](const Candidate& c) {
                               return c.thread == chosen && c.early;
                           });
        if (!early) mNow = std::max(mNow, next->wakeAt);
        next->state = State::kEnabled;
    }
    return next;
}

void Scheduler::reschedule(Thread* me) {
    if (++mSteps > mStepBound) {
        mEvents.stopped(Stop::kStepBound,
                        "the run passed " + std::to_string(mStepBound) + " scheduling points");
    }
    endStep();
    long decision = -1;
    Thread* next = pick(me, &decision);
    if (next == nullptr) {
        const bool unfinished = std::any_of(mThreads.begin(), mThreads.end(), [](const auto& t) {
            return t->state != State::kFinished;
        });
        if (unfinished) mEvents.stopped(Stop::kDeadlock, waitsDescription());
        sem_post(&mDone);
        return;
    }
    beginStep(next, decision);
    handOver(me, next);
}

void Scheduler::endStep() {
    if (!mStepOpen) return;
    mStepOpen = false;
    mPolicy.stepped(mStep);
    if (mEvents.stepped) mEvents.stepped(mStep);
}

void Scheduler::beginStep(Thread* next, long decision) {
    mStep.thread = next->id;
    mStep.decision = decision;
    mStep.accesses.swap(next->next);
    next->next.clear();
    mStepOpen = true;
}

void Scheduler::handOver(Thread* me, Thread* next) {
    if (next == me) return;
    const bool finished = me != nullptr && me->state == State::kFinished;
    if (finished) mExiting = me;
    sem_post(&next->turn);
    if (me == nullptr || finished) return;
    sem_wait(&me->turn);
    joinExited(me);
}

// A thread that finished still runs its exit (thread-local destructors, the allocator
// taking back the memory it cached) after it handed over. The thread it handed over to
// waits for that exit before it goes on, so that the exit happens at the same point of
// every run and a run's heap objects get the same addresses in every run of its schedule.
void Scheduler::joinExited(Thread* self) {
    if (mExiting == nullptr || mExiting == self) return;
    Thread* exiting = mExiting;
    mExiting = nullptr;
    exiting->os.join();
}

std::string Scheduler::waitsDescription() const {
    std::string text;
    for (const auto& t : mThreads) {
        if (t->state != State::kEnabled || t->waitsFor == nullptr || canRun(*t)) continue;
        auto owner = mOwners.find(t->waitsFor);
        if (!text.empty()) text += "; ";
        text += "thread " + std::to_string(t->id) + " (branch " + std::to_string(t->branch) +
                ") waits for " + objectName(t->waitsFor);
        if (owner != mOwners.end()) {
            text += ", held by thread " + std::to_string(owner->second->id) +
                    (owner->second == t.get() ? " itself" : "");
        }
    }
    return text;
}

}  // namespace explore
