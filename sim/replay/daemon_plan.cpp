#include "daemon_plan.h"

#include <algorithm>

namespace replay {
namespace {

std::string option(const DaemonAction& action) {
    return std::string(action.kill ? "--kill-at " : "--restart-at ") +
           std::to_string(action.second);
}

}  // namespace

std::vector<DaemonAction> daemonPlan(const std::vector<int>& killAt,
                                     const std::vector<int>& restartAt) {
    std::vector<DaemonAction> plan;
    for (int second : killAt) plan.push_back({second * int64_t{1000}, true, second});
    for (int second : restartAt) plan.push_back({second * int64_t{1000}, false, second});
    std::stable_sort(plan.begin(), plan.end(), [](const DaemonAction& a, const DaemonAction& b) {
        return a.atMs != b.atMs ? a.atMs < b.atMs : a.kill && !b.kill;
    });
    return plan;
}

std::vector<std::string> planWarnings(const std::vector<DaemonAction>& plan, int64_t endMs) {
    std::vector<std::string> warnings;
    const std::string end = std::to_string((endMs + 999) / 1000);
    bool up = true;
    for (size_t i = 0; i < plan.size(); ++i) {
        const DaemonAction& action = plan[i];
        if (action.atMs >= endMs) {
            warnings.push_back(option(action) + " does nothing: the run ends at second " + end);
        } else if (action.kill == !up) {
            warnings.push_back(option(action) + " does nothing: the daemon is already " +
                               (up ? "up" : "down") + " then");
        } else {
            up = !action.kill;
            const bool backAtOnce = action.kill && i + 1 < plan.size() && !plan[i + 1].kill &&
                                    plan[i + 1].atMs == action.atMs;
            if (backAtOnce) {
                warnings.push_back(option(action) + " and " + option(plan[i + 1]) +
                                   ": the daemon dies and registers again at once, and is "
                                   "never seen down");
            }
        }
    }
    return warnings;
}

}  // namespace replay
