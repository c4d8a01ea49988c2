// How the explorer's scheduler picks the next thread at a decision: the threads it may
// pick, what each choice costs in preemptions, and the policies that pick.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

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
    virtual ~Policy() = default;
    // One of the candidates' threads; 0 when the policy cannot follow this run (a replayed
    // schedule that does not fit it).
    virtual int choose(const Decision& decision) = 0;
};

// The default policy, but for the decisions a schedule names: the schedule string of a run.
class GuidedPolicy : public Policy {
  public:
    explicit GuidedPolicy(std::map<size_t, int> deviations) : mDeviations(std::move(deviations)) {}
    int choose(const Decision& decision) override;

  private:
    std::map<size_t, int> mDeviations;
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
