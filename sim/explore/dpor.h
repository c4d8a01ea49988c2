// Dynamic partial-order reduction: a search that runs one order of a block's steps for
// each class of orders that differ only in steps that commute. After each run it looks at
// every pair of steps that do not commute and could have run the other way round, and
// plans a run that reverses them from the state before the first (source sets); sleep
// sets keep it from running a class twice.
//
// The search knows runs only by their steps: what ran them (processes, a model) is the
// caller's. It plans a run, the caller runs it and hands back its steps, and so on.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "causality.h"
#include "policy.h"
#include "steps.h"

namespace explore {

// A step of a run with the threads that could have run in its place.
struct TracedStep {
    Step step;
    std::vector<Candidate> candidates;  // only its own thread when no other could run
};

// A run as the search wants it (see PlannedPolicy).
struct Plan {
    std::map<size_t, int> choices;  // decision index -> thread
    size_t sleepAt = 0;             // the decision where `sleeping` begins to sleep
    std::vector<Step> sleeping;
};

class PartialOrderSearch {
  public:
    // The next run to make; false once every class has been run. The first run is the
    // default path.
    bool next(Plan* plan);
    // The steps of the run just made, in order. False, with *error, when the run did not
    // follow its plan (a run that is not deterministic).
    bool record(const std::vector<TracedStep>& steps, std::string* error);
    // The class of the run just recorded (see Causality::className).
    std::string className() const { return mCausality.className(); }

  private:
    struct Node {
        TracedStep taken;
        std::map<int, Step> explored;  // the threads run from this state, with their steps
        std::set<int> backtrack;       // the threads to run from this state
        std::vector<Step> sleeping;    // asleep when the state was reached
    };

    void append(const TracedStep& step);
    void reverse(const Causality::Race& race, size_t later);
    void addBacktrack(size_t position, int thread);
    std::vector<Step> asleepAfter(size_t position) const;
    bool canChoose(const Node& node, int thread) const;
    void truncate(size_t size);

    bool mStarted = false;
    size_t mPlanned = 0;  // the state whose new choice the last plan made
    std::vector<Node> mPath;
    Causality mCausality;
};

}  // namespace explore
