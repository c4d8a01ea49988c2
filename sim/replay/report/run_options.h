// How a run was set up, in words, for the headings of the summary and the timeline.
#pragma once

#include <string>

#include "replay_report.h"

namespace replay {

// "HAL 2.0, NMEA burst (whole cycle as one chunk), latency 0 ms, jitter 0 ms, coast 0 ms",
// already passed through oneLine().
std::string describeOptions(const ReplayReport& report);

}  // namespace replay
