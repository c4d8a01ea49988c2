// Depth-first search of the runs within a preemption bound: the first run takes the
// default path; each next one backs up to the latest decision with a choice left that
// keeps the run within the bound, and takes it. With pruning, a decision reached by an
// order of steps equivalent to one that reached a decision before (the same steps, in an
// order that differs only in steps that commute), on the same thread and with no more of
// the bound left, is a state searched already: no choice is tried from it again.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "causality.h"
#include "dpor.h"

namespace explore {

class BoundedSearch {
  public:
    BoundedSearch(int bound, bool prune) : mBound(bound), mPrune(prune) {}

    bool next(Plan* plan);
    bool record(const std::vector<TracedStep>& steps, std::string* error);
    std::string className() const { return mCausality.className(); }

  private:
    struct Node {
        size_t decision = 0;
        std::vector<Candidate> candidates;
        int chosen = 0;
        std::set<int> tried;
        int preemptions = 0;  // spent before this decision
    };

    int mBound;
    bool mPrune;
    bool mStarted = false;
    size_t mPlanned = 0;  // the node whose choice the last plan changed
    std::vector<Node> mPath;
    Causality mCausality;               // of the run just recorded
    std::map<uint64_t, int> mSearched;  // state -> least preemptions it was reached with
};

}  // namespace explore
