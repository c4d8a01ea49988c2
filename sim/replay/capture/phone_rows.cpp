#include "phone_rows.h"

#include <cctype>
#include <cmath>

#include "nmea_fields.h"
#include "phone_log.h"
#include "satellites.h"

namespace replay {
namespace {

namespace gnss_v1 = android::hardware::gnss::V1_0;
namespace gnss_v2 = android::hardware::gnss::V2_0;
using LocationFlags = gnss_v1::GnssLocationFlags;

constexpr int kMaxSignalCount = 4096;

std::string_view fieldAt(const std::vector<std::string_view>& fields, int index) {
    return index >= 0 && static_cast<size_t>(index) < fields.size() ? fields[index]
                                                                    : std::string_view();
}

std::optional<int64_t> readLogTime(std::string_view field) {
    std::optional<int64_t> ms = readWholeNumber(field);
    if (!ms || *ms < kEarliestLogMs || *ms > kLatestLogMs) return std::nullopt;
    return ms;
}

// A number that a float of the HAL's records can hold.
std::optional<double> readFloat(std::string_view field) {
    std::optional<double> value = readNumber(field);
    if (!value || !std::isfinite(static_cast<float>(*value))) return std::nullopt;
    return value;
}

// Optional Fix values. A measured value is absent when its field is empty or reads
// 0.000000, which is how v2 writers print a value the location does not have (v3 leaves the
// field empty and writes a real zero as 0.0). An accuracy of zero or less is no accuracy.
enum class Measure { kValue, kAccuracy };

struct OptionalColumn {
    std::string_view name;
    std::string_view oldName;  // before GnssLogger 2.0.4; "" when it had no such column
    Measure measure;
    LocationFlags flag;
    void (*store)(gnss_v1::GnssLocation* location, double value);
};

const OptionalColumn kOptionalColumns[] = {
    {"AltitudeMeters", "Altitude", Measure::kValue, LocationFlags::HAS_ALTITUDE,
     [](gnss_v1::GnssLocation* l, double v) { l->altitudeMeters = v; }},
    {"SpeedMps", "Speed", Measure::kValue, LocationFlags::HAS_SPEED,
     [](gnss_v1::GnssLocation* l, double v) { l->speedMetersPerSec = static_cast<float>(v); }},
    {"BearingDegrees", "Bearing", Measure::kValue, LocationFlags::HAS_BEARING,
     [](gnss_v1::GnssLocation* l, double v) { l->bearingDegrees = static_cast<float>(v); }},
    {"AccuracyMeters", "Accuracy", Measure::kAccuracy, LocationFlags::HAS_HORIZONTAL_ACCURACY,
     [](gnss_v1::GnssLocation* l, double v) {
         l->horizontalAccuracyMeters = static_cast<float>(v);
     }},
    {"VerticalAccuracyMeters", "", Measure::kAccuracy, LocationFlags::HAS_VERTICAL_ACCURACY,
     [](gnss_v1::GnssLocation* l, double v) { l->verticalAccuracyMeters = static_cast<float>(v); }},
    {"SpeedAccuracyMps", "", Measure::kAccuracy, LocationFlags::HAS_SPEED_ACCURACY,
     [](gnss_v1::GnssLocation* l, double v) {
         l->speedAccuracyMetersPerSecond = static_cast<float>(v);
     }},
    {"BearingAccuracyDegrees", "", Measure::kAccuracy, LocationFlags::HAS_BEARING_ACCURACY,
     [](gnss_v1::GnssLocation* l, double v) { l->bearingAccuracyDegrees = static_cast<float>(v); }},
};

class FixReader {
  public:
    FixReader(const std::vector<std::string_view>& fields, const Columns& columns)
        : mFields(fields), mColumns(columns) {}

    RowResult<gnss_v2::GnssLocation> read(int* fieldsLeftOut) {
        if (!readPositionAndTime()) return {std::nullopt, mSkipReason};
        for (const OptionalColumn& column : kOptionalColumns) {
            if (!readOptional(column, fieldsLeftOut)) return {std::nullopt, mSkipReason};
        }
        if (!readElapsedRealtime(fieldsLeftOut)) return {std::nullopt, mSkipReason};
        return {mLocation, nullptr};
    }

  private:
    std::string_view field(std::initializer_list<std::string_view> names) const {
        return fieldAt(mFields, mColumns.find(names));
    }

    bool skip(const char* reason) {
        mSkipReason = reason;
        return false;
    }

    bool readPositionAndTime() {
        const std::string_view latitudeField = field({"LatitudeDegrees", "Latitude"});
        const std::string_view longitudeField = field({"LongitudeDegrees", "Longitude"});
        const std::string_view timeField = field({"UnixTimeMillis", "(UTC)TimeInMs"});
        if (latitudeField.empty() || longitudeField.empty() || timeField.empty()) {
            return skip(phone_skip::kMissing);
        }
        std::optional<double> latitude = readNumber(latitudeField);
        std::optional<double> longitude = readNumber(longitudeField);
        std::optional<int64_t> time = readLogTime(timeField);
        if (!latitude || !longitude || !time || std::fabs(*latitude) > 90 ||
            std::fabs(*longitude) > 180) {
            return skip(phone_skip::kUnreadable);
        }
        // 0,0 is what v2 writers print for a location without a position.
        if (*latitude == 0 && *longitude == 0) return skip(phone_skip::kMissing);
        gnss_v1::GnssLocation& fix = mLocation.v1_0;
        fix.latitudeDegrees = *latitude;
        fix.longitudeDegrees = *longitude;
        fix.timestamp = *time;
        fix.gnssLocationFlags |= static_cast<uint16_t>(LocationFlags::HAS_LAT_LONG);
        return true;
    }

    bool readOptional(const OptionalColumn& column, int* fieldsLeftOut) {
        const int index = column.oldName.empty() ? mColumns.find({column.name})
                                                 : mColumns.find({column.name, column.oldName});
        if (index < 0) return true;
        const std::string_view text = fieldAt(mFields, index);
        if (text.empty() || (column.measure == Measure::kValue && text == "0.000000")) {
            ++*fieldsLeftOut;
            return true;
        }
        std::optional<double> value = readFloat(text);
        if (!value) return skip(phone_skip::kUnreadable);
        if (column.measure == Measure::kAccuracy && *value <= 0) {
            ++*fieldsLeftOut;
            return true;
        }
        column.store(&mLocation.v1_0, *value);
        mLocation.v1_0.gnssLocationFlags |= static_cast<uint16_t>(column.flag);
        return true;
    }

    bool readElapsedRealtime(int* fieldsLeftOut) {
        const int index = mColumns.find({"elapsedRealtimeNanos"});
        if (index < 0) return true;
        const std::string_view text = fieldAt(mFields, index);
        std::optional<int64_t> nanos = readWholeNumber(text);
        if (!text.empty() && !nanos) return skip(phone_skip::kUnreadable);
        if (!nanos || *nanos <= 0) {
            ++*fieldsLeftOut;
            return true;
        }
        mLocation.elapsedRealtime.timestampNs = static_cast<uint64_t>(*nanos);
        mLocation.elapsedRealtime.flags |=
            static_cast<uint16_t>(gnss_v2::ElapsedRealtimeFlags::HAS_TIMESTAMP_NS);
        return true;
    }

    const std::vector<std::string_view>& mFields;
    const Columns& mColumns;
    gnss_v2::GnssLocation mLocation{};
    const char* mSkipReason = nullptr;
};

std::string upperCase(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return upper;
}

// A float of a Status row: 0 when left empty.
bool readSignalValue(std::string_view text, float* value) {
    if (text.empty()) return true;
    std::optional<double> read = readFloat(text);
    if (read) *value = static_cast<float>(*read);
    return read.has_value();
}

// A flag of a Status row: 0, 1, or empty for 0.
bool readSignalFlag(std::string_view text, bool* flag) {
    if (text.empty() || text == "0" || text == "1") {
        *flag = text == "1";
        return true;
    }
    return false;
}

bool readSignalIdentity(std::optional<int64_t> count, std::optional<int64_t> index,
                        std::optional<int64_t> constellation, std::optional<int64_t> svid,
                        SignalRow* row) {
    if (!count || !index || !constellation || !svid || *count < 1 || *count > kMaxSignalCount ||
        *index < 0 || *index >= *count || *svid < 0 || *svid > INT16_MAX) {
        return false;
    }
    row->count = static_cast<int>(*count);
    row->index = static_cast<int>(*index);
    const bool known = *constellation >= kUnknownConstellation && *constellation <= kIrnss;
    row->signal.constellation =
        known ? static_cast<uint8_t>(*constellation) : uint8_t{kUnknownConstellation};
    row->signal.svid = static_cast<int16_t>(*svid);
    return true;
}

}  // namespace

FixRow readFixRow(const std::vector<std::string_view>& fields, const Columns& columns) {
    FixRow row;
    row.provider = upperCase(fieldAt(fields, columns.find({"Provider"})));
    row.cutOff = fields.size() < columns.size();
    if (row.provider != "GPS") return row;
    if (row.cutOff) {
        row.location.skipReason = phone_skip::kCutOff;
        return row;
    }
    row.location = FixReader(fields, columns).read(&row.fieldsLeftOut);
    return row;
}

RowResult<SignalRow> readStatusRow(const std::vector<std::string_view>& fields,
                                   const Columns& columns) {
    if (fields.size() < columns.size()) return {std::nullopt, phone_skip::kCutOff};
    const auto field = [&](std::string_view name) { return fieldAt(fields, columns.find({name})); };
    const RowResult<SignalRow> unreadable{std::nullopt, phone_skip::kUnreadable};
    SignalRow row;
    const std::string_view time = field("UnixTimeMillis");
    if (!time.empty()) {
        row.timeMs = readLogTime(time);
        if (!row.timeMs) return unreadable;
    }
    if (!readSignalIdentity(
            readWholeNumber(field("SignalCount")), readWholeNumber(field("SignalIndex")),
            readWholeNumber(field("ConstellationType")), readWholeNumber(field("Svid")), &row)) {
        return unreadable;
    }
    SatelliteView& signal = row.signal;
    const bool read = readSignalValue(field("CarrierFrequencyHz"), &signal.carrierFrequencyHz) &&
                      readSignalValue(field("Cn0DbHz"), &signal.cn0Dbhz) &&
                      readSignalValue(field("AzimuthDegrees"), &signal.azimuthDegrees) &&
                      readSignalValue(field("ElevationDegrees"), &signal.elevationDegrees) &&
                      readSignalFlag(field("UsedInFix"), &signal.usedInFix) &&
                      readSignalFlag(field("HasAlmanacData"), &signal.hasAlmanac) &&
                      readSignalFlag(field("HasEphemerisData"), &signal.hasEphemeris);
    if (!read) return unreadable;
    return {row, nullptr};
}

RowResult<NmeaRow> readNmeaRow(std::string_view line) {
    const size_t first = line.find(',');
    const size_t last = line.rfind(',');
    if (first == std::string_view::npos || last == first)
        return {std::nullopt, phone_skip::kCutOff};
    const std::string_view sentence = line.substr(first + 1, last - first - 1);
    std::optional<int64_t> time = readLogTime(line.substr(last + 1));
    if (sentence.empty() || (sentence[0] != '$' && sentence[0] != '!') || !time) {
        return {std::nullopt, phone_skip::kUnreadable};
    }
    return {NmeaRow{*time, std::string(sentence)}, nullptr};
}

}  // namespace replay
