// Reading phone logs: columns from the header (or a version's documented set), GPS fixes
// into HAL locations, Status runs into satellite reports, odd rows counted by reason, and the
// events on the log's clock in time order.
#include "capture/phone_log.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "capture/feed_epochs.h"
#include "capture/replay_input.h"

namespace {

using replay::PhoneEvent;
using replay::PhoneLog;
using LocationFlags = android::hardware::gnss::V1_0::GnssLocationFlags;
using SvFlags = android::hardware::gnss::V1_0::IGnssCallback::GnssSvFlags;
namespace skip = replay::phone_skip;

const std::string kV3Header =
    "# Header Description:\n"
    "# Version: v3.0.6.4 Platform: 14 Manufacturer: Google Model: Pixel 7\n"
    "# Fix,Provider,LatitudeDegrees,LongitudeDegrees,AltitudeMeters,SpeedMps,AccuracyMeters,"
    "BearingDegrees,UnixTimeMillis,SpeedAccuracyMps,BearingAccuracyDegrees,elapsedRealtimeNanos,"
    "VerticalAccuracyMeters,MockLocation,NumberOfUsedSignals,VerticalSpeedAccuracyMps,"
    "SolutionType\n"
    "# Status,UnixTimeMillis,SignalCount,SignalIndex,ConstellationType,Svid,CarrierFrequencyHz,"
    "Cn0DbHz,AzimuthDegrees,ElevationDegrees,UsedInFix,HasAlmanacData,HasEphemerisData,"
    "BasebandCn0DbHz\n"
    "# Raw,utcTimeMillis,TimeNanos\n";

std::vector<const PhoneEvent*> eventsOf(const PhoneLog& log, PhoneEvent::Kind kind) {
    std::vector<const PhoneEvent*> found;
    for (const PhoneEvent& event : log.events) {
        if (event.kind == kind) found.push_back(&event);
    }
    return found;
}

bool hasFlag(const PhoneEvent& fix, LocationFlags flag) {
    return (fix.location.v1_0.gnssLocationFlags & static_cast<uint16_t>(flag)) != 0;
}

TEST(PhoneLog, GpsFixBecomesTheHalLocationWithTheFlagsOfItsFields) {
    const PhoneLog log = replay::parsePhoneLog(
        kV3Header +
            "Fix,GPS,37.5,-122.25,23.5,0.0,4.25,90.5,1699400582000,0.19,,16124559129000,3.0,0,,,\n"
            "Fix,FLP,37.4,-122.1,1.7,0.03,4.1,,1699400584473,0.19,,16126559152000,1.3,0,,,\n"
            "Fix,NLP,37.4,-122.1,8.3,,15.1,,1699400585063,,,16127149000000,2.5,0,,,\n",
        "");
    const auto fixes = eventsOf(log, PhoneEvent::Kind::kLocation);
    ASSERT_EQ(fixes.size(), 1u);
    const auto& fix = fixes[0]->location;
    EXPECT_EQ(fix.v1_0.latitudeDegrees, 37.5);
    EXPECT_EQ(fix.v1_0.longitudeDegrees, -122.25);
    EXPECT_EQ(fix.v1_0.altitudeMeters, 23.5);
    EXPECT_EQ(fix.v1_0.horizontalAccuracyMeters, 4.25f);
    EXPECT_EQ(fix.v1_0.bearingDegrees, 90.5f);
    EXPECT_EQ(fix.v1_0.verticalAccuracyMeters, 3.0f);
    EXPECT_EQ(fix.v1_0.timestamp, 1699400582000);
    EXPECT_EQ(fixes[0]->atMs, 1699400582000);
    // v3 leaves absent values empty, so its 0.0 speed is a real one.
    EXPECT_TRUE(hasFlag(*fixes[0], LocationFlags::HAS_SPEED));
    EXPECT_TRUE(hasFlag(*fixes[0], LocationFlags::HAS_SPEED_ACCURACY));
    EXPECT_FALSE(hasFlag(*fixes[0], LocationFlags::HAS_BEARING_ACCURACY));
    EXPECT_EQ(fix.elapsedRealtime.timestampNs, 16124559129000u);
    EXPECT_EQ(fix.elapsedRealtime.flags, 1u);
    EXPECT_EQ(log.counts.fixesByProvider,
              (std::map<std::string, int>{{"GPS", 1}, {"FLP", 1}, {"NLP", 1}}));
}

TEST(PhoneLog, ColumnsComeFromTheHeaderAndElseFromTheVersion) {
    // Columns reordered by the header: time first, latitude and longitude swapped.
    const PhoneLog reordered = replay::parsePhoneLog(
        "# Version: v1.4.0.0, Platform: N\n"
        "# Fix,(UTC)TimeInMs,Provider,Longitude,Latitude,Accuracy\n"
        "Fix,1467321969000,gps,-122.08,37.42,3.000000\n",
        "");
    ASSERT_EQ(reordered.events.size(), 1u);
    EXPECT_EQ(reordered.events[0].location.v1_0.latitudeDegrees, 37.42);
    EXPECT_EQ(reordered.events[0].location.v1_0.longitudeDegrees, -122.08);

    // No column lines: v2.0.4 writes bearing after accuracy and the time after it; v1.4 does not.
    const std::string row = "Fix,GPS,37.42,-122.08,10.5,1.5,3.5,45.5,1589494247000,0.5,2.5\n";
    const PhoneLog v2 = replay::parsePhoneLog("# Version: v2.0.4.2 Platform: 10\n" + row, "");
    ASSERT_EQ(v2.events.size(), 1u);
    EXPECT_EQ(v2.events[0].location.v1_0.bearingDegrees, 45.5f);
    EXPECT_EQ(v2.events[0].location.v1_0.bearingAccuracyDegrees, 2.5f);
    const PhoneLog v1 = replay::parsePhoneLog(
        "# Version: 1.4.0.0, Platform: N\nFix,gps,37.42,-122.08,10.5,1.5,3.5,1467321969000\n", "");
    ASSERT_EQ(v1.events.size(), 1u);
    EXPECT_EQ(v1.events[0].location.v1_0.timestamp, 1467321969000);
}

TEST(PhoneLog, V2ZeroesAndZeroAccuraciesAreLeftOut) {
    const PhoneLog log = replay::parsePhoneLog(
        "# Version: v2.0.4.2 Platform: 10\n"
        "Fix,GPS,37.42,-122.08,0.000000,0.000000,3.790092,0.000000,1589494247000,0.086023,"
        "0.000000\n",
        "");
    ASSERT_EQ(log.events.size(), 1u);
    const PhoneEvent& fix = log.events[0];
    EXPECT_FALSE(hasFlag(fix, LocationFlags::HAS_ALTITUDE));
    EXPECT_FALSE(hasFlag(fix, LocationFlags::HAS_SPEED));
    EXPECT_FALSE(hasFlag(fix, LocationFlags::HAS_BEARING));
    EXPECT_FALSE(hasFlag(fix, LocationFlags::HAS_BEARING_ACCURACY));
    EXPECT_TRUE(hasFlag(fix, LocationFlags::HAS_HORIZONTAL_ACCURACY));
    EXPECT_TRUE(hasFlag(fix, LocationFlags::HAS_SPEED_ACCURACY));
    EXPECT_EQ(fix.location.elapsedRealtime.flags, 0u);
    EXPECT_EQ(log.counts.fieldsLeftOut, 4);
}

TEST(PhoneLog, StatusRunsBecomeReportsWithEverySignalAndItsFlags) {
    const PhoneLog log = replay::parsePhoneLog(
        kV3Header +
            // One satellite on L1 and L5, then a second report of the same time.
            "Status,1699400582000,3,0,1,5,1575420032,40.5,120,45,1,1,0,38\n"
            "Status,1699400582000,3,1,1,5,1176450048,35.25,120,45,1,0,1,33\n"
            "Status,1699400582000,3,2,6,13,,,,,0,0,0,\n"
            "Status,1699400582000,2,0,3,7,1602000000,30,10,20,0,1,1,28\n"
            // A report cut short: its first row is missing.
            "Status,1699400583000,4,1,1,9,1575420000,33,40,50,1,1,1,31\n"
            // The same index again: a report of one row, then a whole one of the same time.
            "Status,1699400584000,2,0,1,9,1575420000,33,40,50,1,1,1,31\n"
            "Status,1699400584000,2,0,1,9,1575420000,33,40,50,1,1,1,31\n"
            "Status,1699400584000,2,1,1,7,1575420000,33,40,50,1,1,1,31\n",
        "");
    const auto reports = eventsOf(log, PhoneEvent::Kind::kSatellites);
    ASSERT_EQ(reports.size(), 5u);
    EXPECT_EQ(reports[0]->signals.size(), 3u);
    EXPECT_EQ(reports[1]->signals.size(), 1u);
    EXPECT_FALSE(reports[1]->complete);
    EXPECT_FALSE(reports[2]->complete);
    EXPECT_EQ(reports[3]->signals.size(), 1u);
    EXPECT_EQ(reports[4]->signals.size(), 2u);
    EXPECT_TRUE(reports[4]->complete);
    EXPECT_EQ(log.counts.incompleteReports, 3);

    const auto list = replay::toSvInfoListV2(reports[0]->signals);
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0].v1_0.svid, 5);
    EXPECT_EQ(list[1].v1_0.svid, 5);
    EXPECT_EQ(list[1].v1_0.carrierFrequencyHz, 1176450048.0f);
    EXPECT_EQ(list[1].v1_0.cN0Dbhz, 35.25f);
    const auto flags = [](SvFlags a, SvFlags b, SvFlags c) {
        return static_cast<uint8_t>(static_cast<uint8_t>(a) | static_cast<uint8_t>(b) |
                                    static_cast<uint8_t>(c));
    };
    EXPECT_EQ(list[0].v1_0.svFlag, flags(SvFlags::USED_IN_FIX, SvFlags::HAS_ALMANAC_DATA,
                                         SvFlags::HAS_CARRIER_FREQUENCY));
    EXPECT_EQ(list[1].v1_0.svFlag, flags(SvFlags::USED_IN_FIX, SvFlags::HAS_EPHEMERIS_DATA,
                                         SvFlags::HAS_CARRIER_FREQUENCY));
    EXPECT_EQ(list[2].v1_0.svFlag, 0);
    EXPECT_EQ(static_cast<int>(list[2].constellation), 6);
}

TEST(PhoneLog, OddLinesAreCountedByReasonAndTheRestIsRead) {
    const PhoneLog log = replay::parsePhoneLog(
        kV3Header +
            "#,\n"
            "\n"
            ",\n"
            "Raw,1699400582000,1\n"
            "Frob,1,2,3\n"
            "Fix,GPS,37.5,-122.25,23.5,0.0,4.2,,1699400582000,0.19,,16124559129000,3.0,0,,,\n"
            "Fix,GPS,37.5,-122.25,2x3.5,0.0,4.2,,1699400583000,0.19,,1,3.0,0,,,\n"
            "Fix,GPS,,-122.25,23.5,0.0,4.2,,1699400584000,0.19,,1,3.0,0,,,\n"
            "Fix,GPS,37.5,-122.25,23.5,0.0,4.2,,1699400581000,0.19,,1,3.0,0,,,\n"
            "Fix,GPS,37.5,-122.25,23.5,0.0,4.2,,1699500582000,0.19,,1,3.0,0,,,\n"
            "Status,1699400582000,2,2,1,5,1575420032,40,120,45,1,1,0,38\n"
            "Fix,GPS,37.6,-122.25,23.5,0.0,4.2,,1699400585000,0.19,,1,3.0,0,,,\n"
            "Fix,GPS,37.5,-122.25,23.5,0.0,4.2,,16994",
        "");
    const std::map<std::string, int> expected = {
        {skip::kBlank, 2},      {skip::kOtherType, 1}, {skip::kUnknownType, 1}, {skip::kCutOff, 1},
        {skip::kUnreadable, 2}, {skip::kMissing, 1},   {skip::kOutOfOrder, 1},  {skip::kTooLate, 1},
    };
    EXPECT_EQ(log.counts.skipped, expected);
    ASSERT_EQ(log.events.size(), 2u);
    EXPECT_EQ(log.events[1].location.v1_0.latitudeDegrees, 37.6);
}

TEST(PhoneLog, StreamsMergeInTimeOrderOnTheLogsClock) {
    const PhoneLog log = replay::parsePhoneLog(
        kV3Header +
            "Status,,1,0,1,5,1575420032,40,120,45,0,1,0,38\n"
            "Fix,GPS,37.5,-122.25,23.5,0.0,4.2,,1699400582000,0.19,,1,3.0,0,,,\n"
            "Status,1699400582000,1,0,1,5,1575420032,40,120,45,1,1,0,38\n"
            "Fix,GPS,37.5,-122.25,23.5,0.0,4.2,,1699400583000,0.19,,1,3.0,0,,,\n",
        "NMEA,$GPGGA,1*00,1699400581500\r\nNMEA,$GPRMC,A*00,1699400582500\r\n");
    std::vector<std::pair<PhoneEvent::Kind, int64_t>> order;
    for (const PhoneEvent& event : log.events) order.emplace_back(event.kind, event.atMs);
    using K = PhoneEvent::Kind;
    const std::vector<std::pair<K, int64_t>> expected = {
        // The report before the first fix has no time: it takes the log's first, and
        // ties keep the log's rows before the .nmea file's.
        {K::kSatellites, 1699400581500}, {K::kNmea, 1699400581500}, {K::kLocation, 1699400582000},
        {K::kSatellites, 1699400582000}, {K::kNmea, 1699400582500}, {K::kLocation, 1699400583000}};
    EXPECT_EQ(order, expected);
    EXPECT_EQ(log.events[1].sentence, "$GPGGA,1*00");

    const auto seconds = replay::feedEpochs(log, true);
    ASSERT_EQ(seconds.size(), 2u);
    EXPECT_EQ(seconds[0].utcLabel, "23:43:01");
    ASSERT_EQ(seconds[0].events.size(), 4u);
    EXPECT_EQ(seconds[0].events[2].atMs, 500);
    EXPECT_EQ(seconds[1].events.size(), 2u);
}

TEST(PhoneLog, BurstJoinsASecondsNmeaRowsIntoOneChunk) {
    const PhoneLog log = replay::parsePhoneLog(
        "", "NMEA,$GPGGA,1*00,1699400581100\nNMEA,$GPRMC,2*00,1699400581200\n");
    const auto seconds = replay::feedEpochs(log, true);
    ASSERT_EQ(seconds.size(), 1u);
    ASSERT_EQ(seconds[0].events.size(), 1u);
    EXPECT_EQ(seconds[0].events[0].nmea, "$GPGGA,1*00\r\n$GPRMC,2*00\r\n");
    EXPECT_EQ(seconds[0].events[0].nmeaTimestampMs, 1699400581100);
}

TEST(PhoneLog, FormatIsToldByTheHeader) {
    using replay::CaptureFormat;
    EXPECT_EQ(replay::detectFormat(kV3Header), CaptureFormat::kPhoneLog);
    EXPECT_EQ(replay::detectFormat("# \n#   GPSTest version: v3.8.4\nFix,gps,1\n"),
              CaptureFormat::kPhoneLog);
    EXPECT_EQ(replay::detectFormat("NMEA,$GPRMC,A*00,1699400581200\n"), CaptureFormat::kPhoneLog);
    EXPECT_EQ(replay::detectFormat("\r\n$GPRMC,,V*00\r\n"), CaptureFormat::kNmea);
    EXPECT_EQ(replay::detectFormat("# Firmware version: 1.2\n$GPGGA,1*00\n"), CaptureFormat::kNmea);
    EXPECT_EQ(replay::detectFormat("time,lat,lon\n1,2,3\n"), CaptureFormat::kNeither);
    EXPECT_EQ(replay::detectFormat(""), CaptureFormat::kNeither);
}

}  // namespace
