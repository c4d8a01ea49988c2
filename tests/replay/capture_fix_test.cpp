// Fixes decoded from RMC and GGA: time, position, the optional values and their flags.
#include <gtest/gtest.h>

#include "capture/capture.h"
#include "capture_nmea_lines.h"

namespace {

using capture_test::epochOf;
using capture_test::nmea;
using Flags = android::hardware::gnss::V1_0::GnssLocationFlags;

uint16_t flags(std::initializer_list<Flags> list) {
    uint16_t bits = 0;
    for (Flags flag : list) bits |= static_cast<uint16_t>(flag);
    return bits;
}

TEST(CaptureFix, RmcGivesTimeSouthEastPositionSpeedAndCourse) {
    replay::EpochContent content = replay::EpochDecoder().decode(epochOf({
        nmea("GPRMC,095257.809,A,2712.6404,S,15303.1201,E,1.93,133.96,080407,,,A"),
    }));
    ASSERT_TRUE(content.hasFix);
    // 2007-04-08T09:52:57.809Z: 1970..2006 are 37 years with 9 leap days (13514 days), then
    // 31 + 28 + 31 + 7 days into 2007 (13611 days). 13611 * 86400000 ms = 1175990400000 ms,
    // plus 9:52:57.809 = 35577809 ms.
    EXPECT_EQ(content.fix.timestamp, 1176025977809);
    EXPECT_NEAR(content.fix.latitudeDegrees, -(27 + 12.6404 / 60), 1e-9);
    EXPECT_NEAR(content.fix.longitudeDegrees, 153 + 3.1201 / 60, 1e-9);
    EXPECT_NEAR(content.fix.speedMetersPerSec, 1.93 * 0.514444, 1e-5);
    EXPECT_FLOAT_EQ(content.fix.bearingDegrees, 133.96f);
    EXPECT_EQ(content.fix.gnssLocationFlags,
              flags({Flags::HAS_LAT_LONG, Flags::HAS_SPEED, Flags::HAS_BEARING}));
}

TEST(CaptureFix, GgaAddsAltitudeAndAccuracyNorthWest) {
    replay::EpochContent content = replay::EpochDecoder().decode(epochOf({
        "$GNRMC,223745.00,A,3806.62964,N,12237.61382,W,0.040,,110720,,,D,V*0E",
        "$GNGGA,223745.00,3806.62964,N,12237.61382,W,2,12,0.54,83.1,M,-29.5,M,,0000*44",
    }));
    ASSERT_TRUE(content.hasFix);
    // 2020-07-11: 18262 days to 2020-01-01, then 182 + 10 days; 22:37:45 is 81465000 ms.
    EXPECT_EQ(content.fix.timestamp, 18454 * 86400000LL + 81465000);
    EXPECT_NEAR(content.fix.latitudeDegrees, 38 + 6.62964 / 60, 1e-9);
    EXPECT_NEAR(content.fix.longitudeDegrees, -(122 + 37.61382 / 60), 1e-9);
    EXPECT_NEAR(content.fix.altitudeMeters, 83.1 - 29.5, 1e-9);  // above the ellipsoid
    EXPECT_FLOAT_EQ(content.fix.horizontalAccuracyMeters, 0.54f * 5);
    EXPECT_EQ(content.fix.gnssLocationFlags,  // course empty: no bearing
              flags({Flags::HAS_LAT_LONG, Flags::HAS_SPEED, Flags::HAS_ALTITUDE,
                     Flags::HAS_HORIZONTAL_ACCURACY}));
}

TEST(CaptureFix, TwoDigitYearsAndDatesFromEarlierCycles) {
    replay::EpochDecoder decoder;
    std::string gga = nmea("GPGGA,000000.000,5000.0,N,02000.0,E,1,05,00.0,,M,,M,,");
    EXPECT_FALSE(decoder.decode(epochOf({gga})).hasFix);  // no date yet

    // 1980-01-05 is 3652 + 4 days after the epoch; an RMC without a fix still gives the date.
    replay::EpochContent boot =
        decoder.decode(epochOf({gga, nmea("GPRMC,000000.000,V,,,,,,,050180,,,N")}));
    ASSERT_TRUE(boot.hasFix);
    EXPECT_EQ(boot.fix.timestamp, 3656 * 86400000LL);
    EXPECT_EQ(boot.fix.gnssLocationFlags, flags({Flags::HAS_LAT_LONG}));  // HDOP 0: none

    // 79 is 2079: 2079-12-31 is day 40176 (3471206400000 ms). The next second's GGA alone
    // is past midnight, on the following day.
    const int64_t lastDay = 3471206400000LL;
    replay::EpochContent late =
        decoder.decode(epochOf({nmea("GPRMC,235959.5,A,5000.0,N,02000.0,E,,,311279,,,A")}));
    EXPECT_EQ(late.fix.timestamp, lastDay + 86399500);
    replay::EpochContent next =
        decoder.decode(epochOf({nmea("GPGGA,000000.5,5000.0,N,02000.0,E,1,05,1.0,,M,,M,,")}));
    EXPECT_EQ(next.fix.timestamp, lastDay + 86400000 + 500);
    // An RMC whose date field is empty takes the day from earlier epochs as well.
    replay::EpochContent undated =
        decoder.decode(epochOf({nmea("GPRMC,000001.5,A,5000.0,N,02000.0,E,,,,,,A")}));
    ASSERT_TRUE(undated.hasFix);
    EXPECT_EQ(undated.fix.timestamp, lastDay + 86400000 + 1500);
}

TEST(CaptureFix, ZdaGivesTheDateToAReceiverWithoutRmc) {
    replay::EpochDecoder decoder;
    const std::string gga = nmea("GNGGA,120000.00,5000.0,N,02000.0,E,1,05,1.0,,M,,M,,");
    // 2020-02-29 is day 18321; a ZDA later in the epoch dates its GGA.
    replay::EpochContent dated =
        decoder.decode(epochOf({gga, nmea("GNZDA,120000.00,29,02,2020,00,00")}));
    ASSERT_TRUE(dated.hasFix);
    EXPECT_EQ(dated.fix.timestamp, 18321 * 86400000LL + 12 * 3600000LL);
    for (const char* bad : {"GNZDA,120000.00,30,02,20,00,00", "GNZDA,120000.00,1,2,2020,00,00",
                            "GNZDA,120000.00,00,02,2020,00,00"}) {
        EXPECT_FALSE(replay::EpochDecoder().decode(epochOf({gga, nmea(bad)})).hasFix) << bad;
    }
}

TEST(CaptureFix, ClaimedFixWithEmptyFieldsIsCountedNotUsed) {
    replay::EpochContent content = replay::EpochDecoder().decode(epochOf({
        nmea("GPRMC,,A,2712.6404,S,15303.1201,E,,,080407,,,A"),
        nmea("GPGGA,095257.809,,,15303.1201,E,1,04,2.0,,M,,M,,"),
        nmea("GPGGA,,,,,,0,,,,M,,M,,"),  // no fix claimed: nothing missing
        nmea("GPRMC,095257.809,V,,,,,,,080407,,,N"),
    }));
    EXPECT_FALSE(content.hasFix);
    EXPECT_EQ(content.skipped.emptyFields, 2);
}

TEST(CaptureFix, FirstUsableRmcWins) {
    replay::EpochContent content = replay::EpochDecoder().decode(epochOf({
        nmea("GPRMC,043539.00,A,,,,,0.0,,040925,,,A,V"),
        nmea("GARMC,043539.00,A,4333.190206,N,00127.618380,E,0.0,,040925,,,A,V"),
        nmea("GLRMC,043539.00,A,1000.0,N,01000.0,E,0.0,,040925,,,A,V"),
    }));
    ASSERT_TRUE(content.hasFix);
    EXPECT_NEAR(content.fix.latitudeDegrees, 43 + 33.190206 / 60, 1e-9);
    EXPECT_EQ(content.skipped.emptyFields, 1);
}

}  // namespace
