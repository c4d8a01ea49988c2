#include "bounded.h"

#include <limits>

namespace explore {

namespace {

int costOf(const std::vector<Candidate>& candidates, int thread) {
    for (const Candidate& c : candidates) {
        if (c.thread == thread) return c.cost;
    }
    return 0;
}

}  // namespace

bool BoundedSearch::next(Plan* plan) {
    *plan = Plan();
    plan->sleepAt = std::numeric_limits<size_t>::max();
    if (!mStarted) {
        mStarted = true;
        return true;
    }
    while (!mPath.empty()) {
        Node& node = mPath.back();
        for (const Candidate& c : node.candidates) {
            if (node.tried.count(c.thread) != 0 || node.preemptions + c.cost > mBound) continue;
            node.tried.insert(c.thread);
            node.chosen = c.thread;
            for (const Node& n : mPath) plan->choices[n.decision] = n.chosen;
            mPlanned = mPath.size() - 1;
            return true;
        }
        mPath.pop_back();
    }
    return false;
}

bool BoundedSearch::record(const std::vector<TracedStep>& steps, std::string* error) {
    mCausality.truncate(0);
    const size_t known = mPath.empty() ? 0 : mPlanned + 1;
    size_t node = 0;
    for (const TracedStep& taken : steps) {
        mCausality.append(taken.step);
        if (taken.step.decision < 0) continue;
        if (node < known) {
            if (mPath[node].chosen != taken.step.thread) {
                *error = "the run left its planned order at decision " +
                         std::to_string(taken.step.decision);
                return false;
            }
            ++node;
            continue;
        }
        Node added;
        added.decision = static_cast<size_t>(taken.step.decision);
        added.candidates = taken.candidates;
        added.chosen = taken.step.thread;
        added.tried.insert(added.chosen);
        if (!mPath.empty()) {
            const Node& before = mPath.back();
            added.preemptions = before.preemptions + costOf(before.candidates, before.chosen);
        }
        mPath.push_back(added);
        ++node;
    }
    if (node < known) mPath.resize(node);
    return true;
}

}  // namespace explore
