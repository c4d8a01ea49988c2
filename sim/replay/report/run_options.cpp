#include "run_options.h"

#include "text_escape.h"

namespace replay {

std::string describeOptions(const ReplayReport& report) {
    return oneLine("HAL " + report.hal + ", NMEA " +
                   (report.burst ? "burst (whole cycle as one chunk)" : "per sentence") +
                   ", latency " + std::to_string(report.latencyMs) + " ms, jitter " +
                   std::to_string(report.jitterMs) + " ms, coast " +
                   std::to_string(report.coastMs) + " ms");
}

}  // namespace replay
