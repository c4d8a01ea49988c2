#include "dpor.h"

#include <algorithm>
#include <limits>

namespace explore {

namespace {

const Candidate* candidate(const TracedStep& taken, int thread) {
    for (const Candidate& c : taken.candidates) {
        if (c.thread == thread) return &c;
    }
    return nullptr;
}

bool asleep(const std::vector<Step>& sleeping, int thread) {
    return std::any_of(sleeping.begin(), sleeping.end(),
                       [thread](const Step& s) { return s.thread == thread; });
}

// What a step that never ended (its process died in it) is taken to touch: everything.
Step unfinished(int thread, long decision) {
    Step step;
    step.thread = thread;
    step.decision = decision;
    step.accesses.push_back(Access{});
    return step;
}

}  // namespace

bool PartialOrderSearch::canChoose(const Node& node, int thread) const {
    const Candidate* c = candidate(node.taken, thread);
    return c != nullptr && node.explored.count(thread) == 0 && !asleep(node.sleeping, thread);
}

bool PartialOrderSearch::next(Plan* plan) {
    *plan = Plan();
    if (!mStarted) {
        mStarted = true;
        plan->sleepAt = std::numeric_limits<size_t>::max();
        return true;
    }
    while (!mPath.empty()) {
        const size_t last = mPath.size() - 1;
        Node& node = mPath[last];
        for (int thread : node.backtrack) {
            if (!canChoose(node, thread)) continue;
            for (size_t p = 0; p < last; ++p) {
                const Step& taken = mPath[p].taken.step;
                if (taken.decision >= 0) plan->choices[taken.decision] = taken.thread;
            }
            const long decision = node.taken.step.decision;
            plan->choices[decision] = thread;
            plan->sleepAt = static_cast<size_t>(decision);
            plan->sleeping = node.sleeping;
            for (const auto& [done, step] : node.explored) plan->sleeping.push_back(step);
            node.explored[thread] = unfinished(thread, decision);
            mPlanned = last;
            return true;
        }
        truncate(last);
    }
    return false;
}

bool PartialOrderSearch::record(const std::vector<TracedStep>& steps, std::string* error) {
    const size_t from = mPath.empty() ? 0 : mPlanned;
    for (size_t p = 0; p < std::min(from, steps.size()); ++p) {
        if (steps[p].step.thread != mPath[p].taken.step.thread) {
            *error = "the run left its planned order at step " + std::to_string(p);
            return false;
        }
    }
    if (steps.size() < from) {
        *error = "the run ended before its planned step " + std::to_string(from);
        return false;
    }
    if (from < mPath.size()) {
        truncate(from + 1);
        mCausality.truncate(from);
        if (steps.size() == from) return true;  // the planned step never ended
        Node& node = mPath[from];
        const int thread = steps[from].step.thread;
        if (node.explored.count(thread) == 0 ||
            steps[from].step.decision != node.taken.step.decision) {
            *error = "the run did not take its planned choice at step " + std::to_string(from);
            return false;
        }
        node.taken = steps[from];
        node.explored[thread] = steps[from].step;
        const size_t position = mCausality.append(steps[from].step);
        for (const auto& race : mCausality.races(position)) reverse(race, position);
    }
    for (size_t p = mPath.size(); p < steps.size(); ++p) append(steps[p]);
    return true;
}

void PartialOrderSearch::append(const TracedStep& taken) {
    Node node;
    node.taken = taken;
    node.explored[taken.step.thread] = taken.step;
    node.backtrack.insert(taken.step.thread);
    if (!mPath.empty()) node.sleeping = asleepAfter(mPath.size() - 1);
    mPath.push_back(std::move(node));
    const size_t position = mCausality.append(taken.step);
    for (const auto& race : mCausality.races(position)) reverse(race, position);
}

// A thread sleeps after a step when it slept before it, or was run from that state before
// the step's thread, and does not depend on the step.
std::vector<Step> PartialOrderSearch::asleepAfter(size_t position) const {
    const Node& node = mPath[position];
    const Step& taken = node.taken.step;
    std::vector<Step> sleeping;
    auto keep = [&](const Step& s) {
        if (s.thread != taken.thread && !dependent(s, taken)) sleeping.push_back(s);
    };
    for (const Step& s : node.sleeping) keep(s);
    for (const auto& [thread, s] : node.explored) keep(s);
    return sleeping;
}

void PartialOrderSearch::reverse(const Causality::Race& race, size_t later) {
    const size_t earlier = race.earlier;
    Node& node = mPath[earlier];
    const std::set<int> initials = mCausality.initials(race, later);
    for (int thread : initials) {
        if (node.backtrack.count(thread) != 0) return;
    }
    int best = 0;
    for (int thread : initials) {
        if (candidate(node.taken, thread) == nullptr) continue;
        if (best == 0 || (asleep(node.sleeping, best) && !asleep(node.sleeping, thread))) {
            best = thread;
        }
    }
    addBacktrack(earlier, best);
}

// Adds `thread` to the threads to run from the state before `position`; when it could not
// run there, every thread that could.
void PartialOrderSearch::addBacktrack(size_t position, int thread) {
    Node& node = mPath[position];
    if (candidate(node.taken, thread) != nullptr) {
        node.backtrack.insert(thread);
        return;
    }
    for (const Candidate& c : node.taken.candidates) node.backtrack.insert(c.thread);
}

void PartialOrderSearch::truncate(size_t size) {
    if (size < mPath.size()) mPath.resize(size);
    mCausality.truncate(size);
}

}  // namespace explore
