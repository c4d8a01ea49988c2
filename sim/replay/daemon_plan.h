// When the replay kills the fusion daemon and registers it again (--kill-at, --restart-at),
// and which of those requests would do nothing.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace replay {

struct DaemonAction {
    int64_t atMs = 0;  // replay time: the start of the second the option names
    bool kill = false;
    int second = 0;
};

// The requests in time order; at one moment a kill goes before a restart.
std::vector<DaemonAction> daemonPlan(const std::vector<int>& killAt,
                                     const std::vector<int>& restartAt);

// One line for each request that does nothing in a run ending at `endMs`: past the end, a
// restart while the daemon is up, a kill while it is down, and a kill whose restart comes
// in the same second (the daemon is never down).
std::vector<std::string> planWarnings(const std::vector<DaemonAction>& plan, int64_t endMs);

}  // namespace replay
