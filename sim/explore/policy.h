// How the explorer's scheduler picks the next thread at a decision: the threads it may
// pick, what each choice costs in preemptions, and the policies that pick.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

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
    virtual ~Policy() = default;
    // One of the candidates' threads; 0 when the policy cannot follow this run (a replayed
    // schedule that does not fit it).
    virtual int choose(const Decision& decision) = 0;
    // After the run: whether the run took every choice the policy was told to make; else
    // *why. Only a replayed schedule can fail to fit.
    virtual bool fitted(std::string* /*why*/) const { return true; }
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
