// How a run was set up and how its input was cut, in words, for the headings of the summary
// and the timeline.
#pragma once

#include <string>

#include "replay_report.h"

namespace replay {

// Every option in effect: "HAL 2.0, NMEA per sentence, latency 200 ms, jitter 0 ms, seed 1,
// coast 3000 ms, reporting interval of the library, batching, daemon never killed";
// already passed through oneLine().
std::string describeOptions(const ReplayReport& report);

// The rules that cut the epochs, with their counts, and the rate: "Epochs: 120 where the UTC
// time changes, 40 where a sentence without a time repeats; 1 a second (every 1000 ms);
// the cycle ends with GPVTG".
std::string describeEpochs(const ReplayReport& report);

// "UTC time", "repeated sentence", "the log's seconds": the name the summary counts under.
const char* ruleName(EpochRule rule);

}  // namespace replay
