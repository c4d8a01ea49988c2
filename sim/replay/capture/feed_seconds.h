// A capture or a phone log as the replay hands it to the library: one entry per second of
// virtual time, each holding the NMEA chunks, satellite reports and locations of that second
// in the order the HAL delivers them.
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

struct FeedSecond {
    std::string utcLabel;  // "hh:mm:ss", empty when the second's time is not known
    SkipCounts skipped;    // sentences the NMEA decoder left out
    std::vector<FeedEvent> events;
};

// A receiver capture: second k is cycle k, all of it at k * 1000 ms: its sentences (one
// chunk each, or one chunk for the cycle with `burst`), then its satellites, then its fix.
std::vector<FeedSecond> feedSeconds(const Capture& capture, bool burst);

// A phone log on its own clock: second k holds the events from k * 1000 ms after its first
// event, each at its own time. With `burst`, a second's NMEA rows go as one chunk, at the
// place and with the time stamp of the first.
std::vector<FeedSecond> feedSeconds(const PhoneLog& log, bool burst);

}  // namespace replay
