// What one operation reaches when it runs alone in a state: the library mutexes and
// atomics (named by their symbols, as the explorer's scheduling points see them) and the
// calls it makes into other parties. Two operations share state when their footprints in
// a state have a library object in common; only such pairs can give an outcome that no
// serial order gives through the library's own state.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "pair_set.h"

namespace gen {

struct Footprint {
    std::set<std::string> objects;  // "lock g_feedTimingLock", "atomic fdLocationFlag" ...
    RemoteCalls calls;              // the calls that went through
    size_t steps = 0;               // the scheduling points it passed: what exploring it costs
    std::string trace;              // a digest of those points in order, with what each names
    std::string problem;            // why the run did not end cleanly, if it did not
};

// Runs the prelude, then `commands` as the one branch of a block under the explorer's
// scheduler (what they set off included), in a process of its own. Without the explorer's
// hooks in the build, `objects` stays empty.
Footprint measureFootprint(const std::vector<std::string>& prelude,
                           const std::vector<std::string>& commands);

// Whether two footprints have a library object in common.
bool shareState(const Footprint& a, const Footprint& b);
// Whether the operation did something else at its scheduling points: another build of the
// library changed it.
bool changed(const Footprint& a, const Footprint& b);

}  // namespace gen
