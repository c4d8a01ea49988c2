// The happens-before order of one run's steps: a step comes after the earlier steps of its
// own thread and after every earlier step it does not commute with, and transitively so.
// Kept as a vector clock per step, built as steps are appended, and cut back when a search
// backs up to an earlier state.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "steps.h"

namespace explore {

// For each thread (by number), how many of its steps happen before, the step included.
using Clock = std::vector<uint32_t>;

class Causality {
  public:
    // A race of a step with an earlier one of another thread: the two do not commute, could
    // run the other way round, and nothing that happens between them orders them.
    struct Race {
        size_t earlier = 0;
        // What must happen before the later step when it runs first: its happens-before
        // order without the earlier step and what only that step brings.
        Clock before;
    };

    size_t size() const { return mSteps.size(); }
    const Step& step(size_t position) const { return mSteps[position].step; }
    size_t append(const Step& step);
    void truncate(size_t size);

    // Whether the step at `earlier` happens before the one at `later`.
    bool before(size_t earlier, size_t later) const;
    std::vector<Race> races(size_t position) const;
    // The threads that could begin a reordering in which the race's later step comes
    // first: those whose first step after `race.earlier` depends on no other such step
    // (the steps that happen after the earlier one left out).
    std::set<int> initials(const Race& race, size_t later) const;
    // The run's order of steps with each step placed as early as its order allows, ties
    // to the lower thread: one name for all the runs that differ only in the order of
    // steps that commute.
    std::string className() const;

  private:
    struct Entry {
        Step step;
        uint32_t local = 0;  // its place among its thread's steps
        long previous = -1;  // its thread's step before it
        Clock clock;
        std::vector<size_t> revs;  // earlier steps it could swap with
        std::vector<size_t> kept;  // earlier steps that order it and stay when it swaps
    };
    using Key = std::pair<Access::Kind, uint64_t>;

    bool knows(const Clock& clock, size_t position) const;
    void link(size_t position);

    std::vector<Entry> mSteps;
    std::map<Key, std::vector<std::pair<size_t, Access::Mode>>> mUses;
    std::vector<size_t> mUnnamed;  // steps that touch something unnamed
    std::map<int, size_t> mLast;   // each thread's last step
};

}  // namespace explore
