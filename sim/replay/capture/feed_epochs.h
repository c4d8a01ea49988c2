// A capture or a phone log as the replay hands it to the library: one entry per epoch (a
// capture's epoch, or a second of a phone log's clock), each holding the NMEA chunks,
// satellite reports and locations of that epoch in the order the HAL delivers them.
#pragma once

#include <android/hardware/gnss/2.0/types.h>

#include <cstdint>
#include <string>
#include <vector>

#include "capture.h"
#include "phone_log.h"

namespace replay {

struct FeedEvent {
    enum class Kind { kNmea, kSatellites, kLocation };
    Kind kind = Kind::kNmea;
    int64_t atMs = 0;  // virtual time: ms from the start of the replay
    std::string nmea;  // kNmea: the chunk
    int64_t nmeaTimestampMs = 0;
    std::vector<SatelliteView> satellites;                   // kSatellites
    android::hardware::gnss::V2_0::GnssLocation location{};  // kLocation
};

struct FeedEpoch {
    int64_t atMs = 0;  // virtual time the epoch starts at
    EpochRule rule = EpochRule::kUtcTime;
    std::string utcLabel;  // "hh:mm:ss" (with a fraction for several epochs a second), or ""
    SkipCounts skipped;    // sentences the NMEA decoder left out
    std::vector<FeedEvent> events;
};

// How the input was cut into epochs, beyond the epochs themselves.
struct EpochCut {
    int64_t intervalMs = 1000;  // the usual step from one epoch to the next
    int timeBreaks = 0;         // time stamps that went back or leapt ahead
    std::string cycleEnder;     // the learned last sentence of a cycle, "" if none
    int linesNotNmea = 0;       // non-blank lines of a capture that are no sentence
};

// A receiver capture: each epoch at its replay time (see placeEpochs), all of it at once: its
// sentences (one chunk each, or one chunk for the epoch with `burst`), then its satellites,
// then its fix.
std::vector<FeedEpoch> feedEpochs(const Capture& capture, bool burst);

// A phone log on its own clock, one epoch a second: epoch k holds the events from k * 1000 ms after
// its first event, each at its own time. With `burst`, a second's NMEA rows go as one chunk, at the
// place and with the time stamp of the first.
std::vector<FeedEpoch> feedEpochs(const PhoneLog& log, bool burst);

}  // namespace replay
