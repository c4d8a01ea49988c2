// Depth-first search of the runs within a preemption bound: the first run takes the
// default path; each next one backs up to the latest decision with a choice left that
// keeps the run within the bound, and takes it. Every schedule within the bound is run.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "causality.h"
#include "dpor.h"

namespace explore {

class BoundedSearch {
  public:
    explicit BoundedSearch(int bound) : mBound(bound) {}

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
    bool mStarted = false;
    size_t mPlanned = 0;  // the node whose choice the last plan changed
    std::vector<Node> mPath;
    Causality mCausality;  // of the run just recorded
};

}  // namespace explore
