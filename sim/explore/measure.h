// `zdgnss-sim explore --measure`: the explorer's throughput on one file, held against the
// cheapest process a run could be, a bare fork and _exit of this same binary, timed in the
// same run so that both see the same machine and load.
#pragma once

#include <ostream>
#include <vector>

#include "explorer.h"

namespace explore {

// Explores the scenario as explore() does, then prints the measurement lines, each starting
// with "measure:". Returns explore()'s exit code.
int measure(const sim::Scenario& scenario, const std::vector<const sim::Step*>& blocks,
            const Options& options, std::ostream& out);

}  // namespace explore
