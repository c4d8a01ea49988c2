// A phone's GNSS log as Android's logging apps (GnssLogger, GPSTest) write it: a block of
// '#' header lines naming the columns of each row type, then one CSV row per event. Only
// what a GNSS HAL hands the location provider is read: the GPS provider's Fix rows, Status
// rows (the satellite list, one row per signal) and NMEA rows, from the log or from the
// .nmea file beside it.
#pragma once

#include <android/hardware/gnss/2.0/types.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "capture.h"

namespace replay {

// Why rows were left out; each is a label of the summary.
namespace phone_skip {
constexpr const char* kBlank = "blank lines";
constexpr const char* kOtherType = "rows of other types";  // Raw, sensors, ... named in the header
constexpr const char* kUnknownType = "unknown row types";  // named nowhere in the header
constexpr const char* kCutOff = "rows cut off";            // fewer fields than the columns read
constexpr const char* kUnreadable = "unreadable fields";
constexpr const char* kMissing = "missing time or position";
constexpr const char* kOutOfOrder = "out of time order";
constexpr const char* kTooLate = "more than a day after the rows before";
}  // namespace phone_skip

struct PhoneEvent {
    enum class Kind { kLocation, kSatellites, kNmea };
    Kind kind = Kind::kNmea;
    int64_t atMs = 0;  // on the log's clock: UTC ms since the epoch
    android::hardware::gnss::V2_0::GnssLocation location{};  // kLocation
    std::vector<SatelliteView> signals;  // kSatellites: one per Status row, as the HAL lists them
    bool complete = true;                // kSatellites: every one of its SignalCount rows was read
    std::string sentence;                // kNmea
};

struct PhoneLogCounts {
    int rows = 0;                                // lines that are not '#' header lines
    std::map<std::string, int> fixesByProvider;  // "GPS" (read), "FLP", "NLP", ... (skipped)
    int fieldsLeftOut = 0;                       // optional Fix fields that were empty or 0.000000
    int incompleteReports = 0;           // satellite reports with fewer rows than their SignalCount
    std::map<std::string, int> skipped;  // phone_skip reason -> rows
};

struct PhoneLog {
    std::string version;             // the version line, "" when the header has none
    std::vector<PhoneEvent> events;  // in time order; ties keep the order they were read in
    PhoneLogCounts counts;
};

// Whether the text starts as such a log does: a header block that names a version or the
// header description and is not followed by an NMEA sentence, or (a .nmea file) an NMEA row.
bool looksLikePhoneLog(const std::string& text);

// Reads a log and the text of the .nmea file beside it (empty when there is none).
PhoneLog parsePhoneLog(const std::string& text, const std::string& nmeaText);

}  // namespace replay
