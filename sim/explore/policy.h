// How the explorer's scheduler picks the next thread at a decision: the threads it may
// pick, what each choice costs in preemptions, and the policies that pick.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
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
    bool early = false;             // a paused thread woken before its time while others could run
    std::string operation;          // the key of the operation the thread runs or begins
    bool atOperationStart = false;  // choosing it begins `operation`
};

// An operation beginning: a command of a branch ("B.C") or a delivery a world event set off
// on a thread of its own ("CAUSE/N": the N-th the operation CAUSE set off).
struct OperationStart {
    std::string key;
    int thread = 0;
    std::string label;  // the command as written, or the delivery's kind
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
    // After the run: whether the run took every choice the policy was told to make; else
    // *why. Only a replayed schedule can fail to fit.
    virtual bool fitted(std::string* /*why*/) const { return true; }
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
    bool fitted(std::string* why) const override;

  private:
    std::map<size_t, int> mDeviations;
    size_t mReached = 0;  // decisions reached
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

// One serial order of a block's operations: an operation, once begun, runs whole (pauses
// fire at once) before another begins. Where several operations could begin, the policy
// takes the next key of `order`; once `order` is used up it continues the branch that ran
// last, then what that branch set off, then the lowest-numbered thread. An empty `order` so
// plays each branch whole, with what it sets off, before the next branch.
class SerialPolicy : public Policy {
  public:
    // A point where more than one operation could begin: the one that did, and all of them.
    struct Choice {
        std::string chosen;
        std::vector<std::string> possible;
    };
    using ChoiceListener = std::function<void(const Choice&)>;

    explicit SerialPolicy(std::vector<std::string> order, ChoiceListener listener = nullptr)
        : mOrder(std::move(order)), mListener(std::move(listener)) {}
    int choose(const Decision& decision) override;

  private:
    const Candidate* chooseOperation(const Decision& decision);
    std::vector<std::string> mOrder;
    ChoiceListener mListener;
    size_t mChoices = 0;
    int mLastBranch = 0;
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
