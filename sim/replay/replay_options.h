// The command line of `zdgnss-sim replay`.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace replay {

struct ReplayOptions {
    std::string capture;
    std::string hal = "2.0";     // which satellite records and location overloads the HAL uses
    bool burst = false;          // one NMEA chunk per cycle instead of one per sentence
    int64_t latencyMs = 200;     // fix in, fused location out
    int64_t jitterMs = 0;        // +- around the latency, drawn per report
    int64_t coastMs = 3000;      // fused locations go on this long after fixes stop
    uint32_t seed = 1;           // of the jitter draws: runs repeat exactly
    int64_t intervalMs = -1;     // setFusdGnssMinReportingInterval after the start; -1: none
    bool batching = true;        // the provider runs batching, so a restart replays it
    std::vector<int> killAt;     // seconds (cycle indices) at whose start the daemon dies
    std::vector<int> restartAt;  // ... and at whose start it registers again
    bool transcript = false;     // print every event as a scenario run does
    bool summary = true;
    std::string svgPath;  // write the timeline picture here
};

extern const char kReplayUsage[];

// Parses the words after `replay`. False with *error set on a bad command line.
bool parseReplayOptions(const std::vector<std::string>& words, ReplayOptions* options,
                        std::string* error);

}  // namespace replay
