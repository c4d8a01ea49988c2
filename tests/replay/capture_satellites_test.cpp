// Satellites from GSV and GSA: constellation and svid numbering, used-in-fix, duplicates,
// and the 1.0 and 2.0 reports built from them.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "capture/capture.h"
#include "capture_nmea_lines.h"

namespace {

using capture_test::epochOf;
using capture_test::nmea;
using SvFlags = android::hardware::gnss::V1_0::IGnssCallback::GnssSvFlags;

// (constellation, svid, used) of each satellite, in list order.
using Seen = std::vector<std::tuple<int, int, bool>>;
Seen seen(const replay::EpochContent& content) {
    Seen result;
    for (const replay::SatelliteView& view : content.satellites) {
        result.emplace_back(view.constellation, view.svid, view.usedInFix);
    }
    return result;
}

replay::EpochContent decode(std::vector<std::string> lines) {
    return replay::EpochDecoder().decode(epochOf(std::move(lines)));
}

TEST(CaptureSatellites, TalkerAndPrnGiveConstellationAndSvid) {
    replay::EpochContent content = decode({
        nmea("GPGSV,1,1,02,07,10,20,30,46,,,34"),  // 46: SBAS, as given
        nmea("GLGSV,1,1,03,65,10,20,30,96,10,20,30,05,10,20,30"),
        nmea("GAGSV,1,1,01,07,10,20,30,7"),  // trailing signal id
        nmea("BDGSV,1,1,02,219,,,47,08,10,20,30"),
        nmea("QZGSV,1,1,01,02,05,042,29"),
        nmea("GIGSV,1,1,01,03,05,042,29"),
    });
    EXPECT_EQ(seen(content), (Seen{{1, 7, false},
                                   {2, 46, false},
                                   {3, 1, false},
                                   {3, 32, false},
                                   {3, 5, false},
                                   {6, 7, false},
                                   {5, 19, false},
                                   {5, 8, false},
                                   {4, 194, false},
                                   {7, 3, false}}));
    ASSERT_GE(content.satellites.size(), 1u);
    EXPECT_FLOAT_EQ(content.satellites[0].elevationDegrees, 10);
    EXPECT_FLOAT_EQ(content.satellites[0].azimuthDegrees, 20);
    EXPECT_FLOAT_EQ(content.satellites[0].cn0Dbhz, 30);
}

// One GN GSA per system, with the NMEA 4.11 system id (GPS 1, GLONASS 2, Galileo 3,
// BeiDou 4) or, without it, the PRN's range; GPS 7 and Galileo 7 are different satellites.
TEST(CaptureSatellites, UsedInFixMatchesTheGsaOfTheSameConstellation) {
    std::vector<std::string> inView = {
        nmea("GPGSV,1,1,02,07,10,20,30,40,10,20,30"),
        nmea("GLGSV,1,1,02,66,10,20,30,70,10,20,30"),
        nmea("GAGSV,1,1,02,05,10,20,30,07,10,20,30"),
        nmea("GBGSV,1,1,01,08,10,20,30"),
        nmea("GQGSV,1,1,01,03,10,20,30"),
    };
    std::vector<std::string> withIds = inView;
    withIds.push_back(nmea("GNGSA,A,3,07,40,,,,,,,,,,,1.6,1.3,0.9,1"));
    withIds.push_back(nmea("GNGSA,A,3,66,,,,,,,,,,,,1.6,1.3,0.9,2"));
    withIds.push_back(nmea("GNGSA,A,3,05,,,,,,,,,,,,1.6,1.3,0.9,3"));
    withIds.push_back(nmea("GNGSA,A,3,208,,,,,,,,,,,,1.6,1.3,0.9,4"));
    withIds.push_back(nmea("GNGSA,A,3,03,,,,,,,,,,,,1.6,1.3,0.9,5"));
    Seen expected = {{1, 7, true}, {2, 40, true}, {3, 2, true}, {3, 6, false},
                     {6, 5, true}, {6, 7, false}, {5, 8, true}, {4, 195, true}};
    EXPECT_EQ(seen(decode(withIds)), expected);

    std::vector<std::string> byRange = inView;
    byRange.push_back(nmea("GNGSA,A,3,07,40,66,305,208,195,,,,,,,1.6,1.3,0.9"));
    EXPECT_EQ(seen(decode(byRange)), expected);

    std::vector<std::string> otherSystem = inView;
    otherSystem.push_back(nmea("GAGSA,A,3,08,66,,,,,,,,,,,1.6,1.3,0.9"));
    for (const auto& [constellation, svid, used] : seen(decode(otherSystem))) {
        EXPECT_FALSE(used) << constellation << "/" << svid;
    }
}

TEST(CaptureSatellites, RepeatedSatelliteKeptOnceWithItsSignalStrength) {
    replay::EpochContent content = decode({
        nmea("GPGSV,1,1,02,05,06,110,,10,24,284,34,1"),
        nmea("GPGSV,1,1,02,05,06,110,19,10,24,284,,6"),  // second signal of the same two
    });
    ASSERT_EQ(content.satellites.size(), 2u);
    EXPECT_FLOAT_EQ(content.satellites[0].cn0Dbhz, 19);
    EXPECT_FLOAT_EQ(content.satellites[1].cn0Dbhz, 34);
}

TEST(CaptureSatellites, EmptySvidsAreCountedOncePaddingIsNot) {
    replay::EpochContent content = decode({
        nmea("GPGSV,1,1,03,,10,20,30,,40,50,,05,,,"),
        nmea("GPGSV,1,1,01,06,10,20,30,,,,"),
    });
    EXPECT_EQ(seen(content), (Seen{{1, 5, false}, {1, 6, false}}));
    EXPECT_FLOAT_EQ(content.satellites[0].cn0Dbhz, 0);
    EXPECT_EQ(content.skipped.emptyFields, 1);

    EXPECT_TRUE(decode({nmea("GPGSA,A,1,,,,,,,,,,,,,,,")}).hasSatellites);
    EXPECT_FALSE(decode({nmea("GPVTG,,T,,M,,N,,K,N")}).hasSatellites);
}

TEST(CaptureSatellites, ReportsForBothHalVersions) {
    std::vector<replay::SatelliteView> views;
    for (int i = 0; i < 70; ++i) {
        replay::SatelliteView view;
        view.svid = static_cast<int16_t>(i + 1);
        view.constellation = i == 69 ? 7 : static_cast<uint8_t>(1 + i % 6);
        view.cn0Dbhz = static_cast<float>(i);
        view.usedInFix = i % 2 == 0;
        views.push_back(view);
    }
    views[63].constellation = 7;

    auto v1 = replay::toSvStatusV1(views);
    EXPECT_EQ(v1.numSvs, 64u);
    EXPECT_EQ(v1.gnssSvList[0].svFlag, static_cast<uint8_t>(SvFlags::USED_IN_FIX));
    EXPECT_EQ(v1.gnssSvList[1].svFlag, 0);
    EXPECT_EQ(v1.gnssSvList[62].svid, 63);
    EXPECT_FLOAT_EQ(v1.gnssSvList[62].cN0Dbhz, 62);
    EXPECT_EQ(static_cast<int>(v1.gnssSvList[63].constellation), 0);  // IRNSS unknown in 1.0
    EXPECT_FLOAT_EQ(v1.gnssSvList[63].carrierFrequencyHz, 0);

    auto v2 = replay::toSvInfoListV2(views);
    ASSERT_EQ(v2.size(), 70u);
    EXPECT_EQ(static_cast<int>(v2[63].constellation), 7);
    EXPECT_EQ(static_cast<int>(v2[63].v1_0.constellation), 0);
    EXPECT_EQ(static_cast<int>(v2[68].constellation), 1 + 68 % 6);
    EXPECT_EQ(v2[69].v1_0.svid, 70);
    EXPECT_EQ(v2[68].v1_0.svFlag, static_cast<uint8_t>(SvFlags::USED_IN_FIX));
}

// u-blox ZED-F9P, first second: 12 GPS, 10 GLONASS, 9 Galileo and 10 BeiDou satellites, each
// on two signals; its four GN GSA list 8 + 3 + 3 + 6 satellites used.
TEST(CaptureSatellites, DualFrequencyCaptureCountsEachSatelliteOnce) {
    replay::Capture capture;
    std::string error;
    ASSERT_TRUE(replay::readCapture(capture_test::capturePath("gpsd-ublox-zed-f9p-nmea.log"),
                                    &capture, &error));
    replay::EpochContent first = replay::EpochDecoder().decode(capture.epochs.at(0));
    int perConstellation[8] = {};
    int used = 0;
    for (const replay::SatelliteView& view : first.satellites) {
        ++perConstellation[view.constellation];
        used += view.usedInFix;
    }
    EXPECT_EQ(perConstellation[1], 12);
    EXPECT_EQ(perConstellation[3], 10);
    EXPECT_EQ(perConstellation[6], 9);
    EXPECT_EQ(perConstellation[5], 10);
    EXPECT_EQ(used, 20);
}

}  // namespace
