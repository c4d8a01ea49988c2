// How the explorer's scheduler picks the next thread at a decision: the threads it may
// pick, what each choice costs in preemptions, and the policies that pick.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "steps.h"

namespace explore {

struct Candidate {
    int thread = 0;  // numbered from 1 in creation order: branches first
    int branch = 0;  // the branch the thread works for, from 1
    int cost = 0;  // 1 when choosing it preempts a thread that could go on, or wakes a pause early
    bool early = false;  // a paused thread woken before its time while others could run
};

// A point of a run where more than one thread could run next.
struct Decision {
    size_t index = 0;  // counts the run's decisions from 0
    int current = 0;   // the thread that reached the point (0: the run is starting)
    std::vector<Candidate> candidates;
    int fallback = 0;  // the choice of the default policy: no preemption, no early wake
};

class Policy {
  public:
    // What choose() answers when every thread that could run is asleep: the rest of the
    // run would only repeat orders explored already.
    static constexpr int kRedundant = -1;

    virtual ~Policy() = default;
    // One of the candidates' threads; 0 when the policy cannot follow this run (a replayed
    // schedule that does not fit it), or kRedundant.
    virtual int choose(const Decision& decision) = 0;
    // Told of every step of the run as it ends.
    virtual void stepped(const Step& /*step*/) {}
    // Whether the run may stop where `thread` is the only one that can run.
    virtual bool redundant(int /*thread*/) { return false; }
};

// The default policy, but for the decisions a schedule names: the schedule string of a run.
class GuidedPolicy : public Policy {
  public:
    explicit GuidedPolicy(std::map<size_t, int> deviations) : mDeviations(std::move(deviations)) {}
    int choose(const Decision& decision) override;

  private:
    std::map<size_t, int> mDeviations;
};

// A run a search planned: the choices it names, up to decision `sleepAt`; from there the
// default policy, but for the sleeping threads: each one's next step was explored from
// that state already, and it sleeps until a step it does not commute with. A run where
// only sleeping threads could run is redundant.
//
// The plan is kept in storage of a fixed size, made at once: what a run allocates must not
// depend on its plan, so that the objects it makes have the same addresses as in every
// other run that takes the same steps, and steps of different runs can be compared.
class PlannedPolicy : public Policy {
  public:
    static constexpr size_t kMostChoices = 1 << 15;
    static constexpr size_t kMostSleeping = 64;
    static constexpr size_t kMostAccesses = 32;

    PlannedPolicy();
    void setSleepAt(size_t decision) { mSleepAt = decision; }
    // Choices come in increasing order of decision.
    void addChoice(size_t decision, int thread);
    // A step that touches more than kMostAccesses objects is kept as one that touches
    // everything.
    void addSleeping(int thread, const Access* accesses, size_t count);

    int choose(const Decision& decision) override;
    void stepped(const Step& step) override;
    bool redundant(int thread) override { return mAsleepNow && asleep(thread); }

  private:
    struct Sleeper {
        int thread = 0;
        size_t count = 0;
        std::array<Access, kMostAccesses> accesses;
    };
    bool asleep(int thread) const;
    std::vector<std::pair<size_t, int>> mChoices;
    size_t mSleepAt = SIZE_MAX;
    std::vector<Sleeper> mSleeping;
    bool mAsleepNow = false;  // the run has reached decision `sleepAt`
};

// One serial order: the threads of the earliest branch in `order` run first, pauses fire at
// once, so each branch runs whole, with what it starts, before the next one begins.
class SerialPolicy : public Policy {
  public:
    explicit SerialPolicy(std::vector<int> order) : mOrder(std::move(order)) {}
    int choose(const Decision& decision) override;

  private:
    size_t rank(int branch) const;
    std::vector<int> mOrder;
};

// Probabilistic concurrency testing: random thread priorities, the highest enabled thread
// runs, and at depth−1 random decisions the running thread drops below all others.
class PctPolicy : public Policy {
  public:
    PctPolicy(uint64_t seed, int depth, size_t expectedDecisions);
    int choose(const Decision& decision) override;

  private:
    int64_t priority(int thread);
    std::mt19937_64 mRandom;
    int mDepth;
    std::vector<size_t> mChangePoints;  // decision indices, in order
    std::map<int, int64_t> mPriorities;
};

// The schedule string of a run: its decisions that differ from the default policy, as
// "INDEX:THREAD" joined by commas; "-" when there are none.
std::string formatSchedule(const std::map<size_t, int>& deviations);
bool parseSchedule(const std::string& text, std::map<size_t, int>* deviations, std::string* error);

}  // namespace explore
