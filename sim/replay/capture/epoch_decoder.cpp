#include <optional>

#include "capture.h"
#include "nmea_fields.h"
#include "nmea_sentence.h"
#include "satellites.h"

namespace replay {
namespace {

namespace gnss_v1 = android::hardware::gnss::V1_0;
using LocationFlags = gnss_v1::GnssLocationFlags;

constexpr double kMetersPerSecondPerKnot = 0.514444;
// Horizontal accuracy is taken as HDOP times a ranging error of 5 m, a usual figure for a
// single-frequency receiver; NMEA itself carries no accuracy in metres.
constexpr double kMetersPerHdop = 5.0;
// A GGA whose time of day lies this far before that of the RMC the date came from was sent
// after UTC midnight.
constexpr int64_t kHalfDayMs = kMsPerDay / 2;

struct Position {
    double latitude = 0;
    double longitude = 0;
};

struct TimeAndPlace {
    int64_t timeOfDayMs = 0;
    Position position;
};

// The first usable RMC ('A') and GGA (quality above 0) of a epoch.
struct FixSources {
    struct Rmc {
        TimeAndPlace at;
        std::optional<int64_t> dateMs;
        std::optional<double> speedKnots;
        std::optional<double> courseDegrees;
    };
    struct Gga {
        TimeAndPlace at;
        std::optional<double> altitudeMeters;
        std::optional<double> hdop;
    };
    std::optional<Rmc> rmc;
    std::optional<Gga> gga;
};

// Counts the sentence if it is left undecoded; true when it can be decoded.
bool decodable(const NmeaSentence& sentence, SkipCounts* skipped) {
    switch (sentence.check) {
        case SentenceCheck::Unreadable:
            ++skipped->unreadable;
            return false;
        case SentenceCheck::BadChecksum:
            ++skipped->badChecksum;
            return false;
        case SentenceCheck::NoChecksum:
            ++skipped->noChecksum;
            return false;
        case SentenceCheck::Ok:
            break;
    }
    if (sentence.proprietary) ++skipped->proprietary;
    return !sentence.proprietary;
}

// Latitude, its hemisphere, longitude and its hemisphere from the field at index on.
std::optional<Position> readPosition(const NmeaSentence& sentence, size_t index) {
    std::optional<double> latitude = readLatitude(sentence.field(index), sentence.field(index + 1));
    std::optional<double> longitude =
        readLongitude(sentence.field(index + 2), sentence.field(index + 3));
    if (!latitude || !longitude) return std::nullopt;
    return Position{*latitude, *longitude};
}

// The time and position of a sentence that claims a fix; a claim without them is counted.
std::optional<TimeAndPlace> readClaimedFix(const NmeaSentence& sentence, size_t positionIndex,
                                           SkipCounts* skipped) {
    std::optional<int64_t> time = readTimeOfDayMs(sentence.field(0));
    std::optional<Position> position = readPosition(sentence, positionIndex);
    if (!time || !position) {
        ++skipped->emptyFields;
        return std::nullopt;
    }
    return TimeAndPlace{*time, *position};
}

// RMC: time, status, latitude, N/S, longitude, E/W, speed (knots), course, date, ...
void readRmc(const NmeaSentence& rmc, FixSources* sources, SkipCounts* skipped) {
    if (rmc.field(1) != "A") return;
    std::optional<TimeAndPlace> at = readClaimedFix(rmc, 2, skipped);
    if (!at || sources->rmc) return;
    sources->rmc = FixSources::Rmc{*at, readDateMs(rmc.field(8)), readNumber(rmc.field(6)),
                                   readNumber(rmc.field(7))};
}

// GGA: time, latitude, N/S, longitude, E/W, quality, satellites, HDOP, altitude above mean
// sea level, M, geoid height above the ellipsoid, M, ...
void readGga(const NmeaSentence& gga, FixSources* sources, SkipCounts* skipped) {
    std::optional<int> quality = readInteger(gga.field(5));
    if (!quality || *quality <= 0) return;
    std::optional<TimeAndPlace> at = readClaimedFix(gga, 1, skipped);
    if (!at || sources->gga) return;
    // The HAL reports altitude above the WGS 84 ellipsoid: mean-sea-level altitude plus the
    // geoid height, where the receiver gives one.
    std::optional<double> altitude = readNumber(gga.field(8));
    if (altitude) *altitude += readNumber(gga.field(10)).value_or(0);
    std::optional<double> hdop = readNumber(gga.field(7));
    if (hdop && *hdop <= 0) hdop.reset();
    sources->gga = FixSources::Gga{*at, altitude, hdop};
}

void addFlag(gnss_v1::GnssLocation* fix, LocationFlags flag) {
    fix->gnssLocationFlags |= static_cast<uint16_t>(flag);
}

void fillFix(const FixSources& sources, int64_t timestampMs, gnss_v1::GnssLocation* fix) {
    const Position& position = sources.rmc ? sources.rmc->at.position : sources.gga->at.position;
    *fix = gnss_v1::GnssLocation{};
    fix->timestamp = timestampMs;
    fix->latitudeDegrees = position.latitude;
    fix->longitudeDegrees = position.longitude;
    addFlag(fix, LocationFlags::HAS_LAT_LONG);
    if (sources.rmc && sources.rmc->speedKnots) {
        fix->speedMetersPerSec =
            static_cast<float>(*sources.rmc->speedKnots * kMetersPerSecondPerKnot);
        addFlag(fix, LocationFlags::HAS_SPEED);
    }
    if (sources.rmc && sources.rmc->courseDegrees) {
        fix->bearingDegrees = static_cast<float>(*sources.rmc->courseDegrees);
        addFlag(fix, LocationFlags::HAS_BEARING);
    }
    if (sources.gga && sources.gga->altitudeMeters) {
        fix->altitudeMeters = *sources.gga->altitudeMeters;
        addFlag(fix, LocationFlags::HAS_ALTITUDE);
    }
    if (sources.gga && sources.gga->hdop) {
        fix->horizontalAccuracyMeters = static_cast<float>(*sources.gga->hdop * kMetersPerHdop);
        addFlag(fix, LocationFlags::HAS_HORIZONTAL_ACCURACY);
    }
}

}  // namespace

EpochContent EpochDecoder::decode(const Epoch& epoch) {
    EpochContent content;
    SatelliteCollector satellites;
    FixSources sources;
    for (const std::string& line : epoch.lines) {
        NmeaSentence sentence = parseSentence(line);
        if (!decodable(sentence, &content.skipped)) continue;
        if (sentence.is("RMC")) {
            rememberDate(readDateMs(sentence.field(8)), sentence.field(0));
            readRmc(sentence, &sources, &content.skipped);
        } else if (sentence.is("ZDA")) {
            // ZDA: time, day, month, four-digit year, ...
            rememberDate(
                readDayMonthYearMs(sentence.field(1), sentence.field(2), sentence.field(3)),
                sentence.field(0));
        } else if (sentence.is("GGA")) {
            readGga(sentence, &sources, &content.skipped);
        } else if (sentence.is("GSV")) {
            satellites.addGsv(sentence, &content.skipped);
        } else if (sentence.is("GSA")) {
            satellites.addGsa(sentence);
        }
    }
    content.hasSatellites = satellites.heardAny();
    content.satellites = satellites.satellites();
    if (sources.rmc || sources.gga) {
        int64_t timeOfDay = sources.rmc ? sources.rmc->at.timeOfDayMs : sources.gga->at.timeOfDayMs;
        std::optional<int64_t> day =
            sources.rmc && sources.rmc->dateMs ? sources.rmc->dateMs : dayOf(timeOfDay);
        if (day) {
            fillFix(sources, *day + timeOfDay, &content.fix);
            content.hasFix = true;
        }
    }
    return content;
}

void EpochDecoder::rememberDate(std::optional<int64_t> date, std::string_view timeField) {
    if (!date) return;
    mDayMs = *date;
    mDateTimeOfDayMs = readTimeOfDayMs(timeField).value_or(-1);
}

std::optional<int64_t> EpochDecoder::dayOf(int64_t timeOfDayMs) const {
    if (mDayMs < 0) return std::nullopt;
    bool pastMidnight = mDateTimeOfDayMs >= 0 && timeOfDayMs + kHalfDayMs < mDateTimeOfDayMs;
    return pastMidnight ? mDayMs + kMsPerDay : mDayMs;
}

}  // namespace replay
