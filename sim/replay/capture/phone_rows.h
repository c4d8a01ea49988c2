// Reading one Fix, Status or NMEA row of a phone log into what the HAL would deliver.
#pragma once

#include <android/hardware/gnss/2.0/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "capture.h"
#include "phone_columns.h"

namespace replay {

// The earliest and latest UTC time (ms) a row may carry: the start of GPS time, and 2100.
constexpr int64_t kEarliestLogMs = 315964800000;
constexpr int64_t kLatestLogMs = 4102444800000;

// What reading a row gave: a value, or the phone_skip reason it was left out for.
template <typename T>
struct RowResult {
    std::optional<T> value;
    const char* skipReason = nullptr;
};

struct FixRow {
    std::string provider;  // upper case; "" when the row names none
    bool cutOff = false;   // fewer fields than the columns
    // Only for the GPS provider, and then either a location or a skip reason.
    RowResult<android::hardware::gnss::V2_0::GnssLocation> location;
    int fieldsLeftOut = 0;  // optional fields that were empty or 0.000000
};
FixRow readFixRow(const std::vector<std::string_view>& fields, const Columns& columns);

struct SignalRow {
    std::optional<int64_t> timeMs;  // of the last GPS fix; none before the first
    int count = 0;
    int index = 0;
    SatelliteView signal;
};
RowResult<SignalRow> readStatusRow(const std::vector<std::string_view>& fields,
                                   const Columns& columns);

struct NmeaRow {
    int64_t timeMs = 0;
    std::string sentence;
};
// "NMEA,<sentence, with its own commas>,<time stamp ms>".
RowResult<NmeaRow> readNmeaRow(std::string_view line);

}  // namespace replay
