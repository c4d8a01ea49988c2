// Canonical transcript forms of values.
#include "format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "values.h"

namespace sim {
namespace {

namespace gnss_v1 = android::hardware::gnss::V1_0;
namespace gnss_v2 = android::hardware::gnss::V2_0;
namespace fusd = vendor::zendra::hardware::fusd::V1_2;
using android::hardware::hidl_vec;

Token word(const std::string& text) {
    return Token{text, false};
}

TEST(FormatTest, RealsInTheirShortestFormThatReadsBack) {
    EXPECT_EQ(fmt(6.0f), "6");
    EXPECT_EQ(fmt(0.5f), "0.5");
    EXPECT_EQ(fmt(1e-07f), "1e-07");
    EXPECT_EQ(fmt(0.1f), "0.1");                  // not 0.100000001, the float's own shortest form
    EXPECT_EQ(fmt(90.0f), "90");                  // not 9e+01
    EXPECT_EQ(fmt(1575420000.0f), "1575420000");  // the float is 1575420032
    EXPECT_EQ(fmt(0.0001), "0.0001");
    EXPECT_EQ(fmt(1.5e-05), "1.5e-05");
    EXPECT_EQ(fmt(1e16), "10000000000000000");
    EXPECT_EQ(fmt(1e17), "1e+17");
    EXPECT_EQ(fmt(-0.0), "-0");
    EXPECT_EQ(fmt(123456.75), "123456.75");
    EXPECT_EQ(fmt(0.1), "0.1");
    EXPECT_EQ(fmt(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(fmt(100.0), "100");
    EXPECT_EQ(fmt(1e20), "1e+20");
    EXPECT_EQ(fmt(-2.5), "-2.5");
    EXPECT_EQ(fmt(std::nan("")), "nan");
    EXPECT_EQ(fmt(-std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(fmt(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(fmt(-std::numeric_limits<float>::infinity()), "-inf");
}

TEST(FormatTest, RealsReadBackExactly) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const uint64_t bits = random();
        double d;
        float f;
        memcpy(&d, &bits, sizeof d);
        memcpy(&f, &bits, sizeof f);
        if (!std::isnan(d)) {
            ASSERT_EQ(strtod(fmt(d).c_str(), nullptr), d) << fmt(d);
        }
        if (!std::isnan(f)) {
            ASSERT_EQ(strtof(fmt(f).c_str(), nullptr), f) << fmt(f);
        }
    }
}

TEST(FormatTest, IntegersBooleansAndEnumerationsInDecimal) {
    EXPECT_EQ(fmt(int8_t{-128}), "-128");
    EXPECT_EQ(fmt(uint8_t{255}), "255");
    EXPECT_EQ(fmt(std::numeric_limits<int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(fmt(std::numeric_limits<uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(fmt(true), "true");
    EXPECT_EQ(fmt(gnss_v2::GnssConstellationType::IRNSS), "7");
}

TEST(FormatTest, StringsQuotedWithEscapes) {
    EXPECT_EQ(fmt(std::string("a\"b\\c\n\r\t\x01\x7f\xc3\xa9", 12)),
              "\"a\\\"b\\\\c\\n\\r\\t\\x01\\x7f\xc3\xa9\"");
    EXPECT_EQ(fmt(android::hardware::hidl_string(std::string("x\0y", 3))), "\"x\\0y\"");
    EXPECT_EQ(fmt(static_cast<const char*>(nullptr)), "null");
    EXPECT_EQ(fmt("131"), "\"131\"");
}

TEST(FormatTest, BytesInLowerCaseHex) {
    const uint8_t bytes[] = {0x0a, 0xbc, 0xff, 0x00};
    EXPECT_EQ(fmtBytes(bytes, sizeof bytes), "hex:0abcff00");
    EXPECT_EQ(fmtBytes(nullptr, 0), "hex:");
    EXPECT_EQ(fmt(hidl_vec<uint8_t>{1, 2}), "hex:0102");
}

TEST(FormatTest, LocationsShowEveryFieldInDeclarationOrder) {
    gnss_v1::GnssLocation loc{};
    loc.gnssLocationFlags = 0x1f;
    loc.latitudeDegrees = 52.5;
    loc.bearingDegrees = 90;
    loc.timestamp = 1700000000000;
    EXPECT_EQ(fmt(loc),
              "loc{gnssLocationFlags=31 latitudeDegrees=52.5 longitudeDegrees=0 altitudeMeters=0 "
              "speedMetersPerSec=0 bearingDegrees=90 horizontalAccuracyMeters=0 "
              "verticalAccuracyMeters=0 speedAccuracyMetersPerSecond=0 bearingAccuracyDegrees=0 "
              "timestamp=1700000000000}");
    gnss_v2::GnssLocation loc2{};
    loc2.v1_0.timestamp = 1000;
    loc2.elapsedRealtime.flags = 3;
    loc2.elapsedRealtime.timestampNs = 5;
    EXPECT_EQ(fmt(loc2),
              "loc2{v1_0.gnssLocationFlags=0 v1_0.latitudeDegrees=0 v1_0.longitudeDegrees=0 "
              "v1_0.altitudeMeters=0 v1_0.speedMetersPerSec=0 v1_0.bearingDegrees=0 "
              "v1_0.horizontalAccuracyMeters=0 v1_0.verticalAccuracyMeters=0 "
              "v1_0.speedAccuracyMetersPerSecond=0 v1_0.bearingAccuracyDegrees=0 "
              "v1_0.timestamp=1000 elapsedRealtime.flags=3 elapsedRealtime.timestampNs=5 "
              "elapsedRealtime.timeUncertaintyNs=0}");
}

TEST(FormatTest, SvStatusShowsTheFirstMinOfNumSvsAnd64Entries) {
    gnss_v1::IGnssCallback::GnssSvStatus status{};
    status.numSvs = 1;
    status.gnssSvList[0].svid = 4;
    status.gnssSvList[0].constellation = gnss_v1::GnssConstellationType::GPS;
    status.gnssSvList[0].cN0Dbhz = 30.5f;
    status.gnssSvList[0].svFlag = 4 | 8;
    status.gnssSvList[0].carrierFrequencyHz = 1575420000.0f;
    status.gnssSvList[1].svid = 9;  // beyond numSvs: not shown
    EXPECT_EQ(fmt(status), "sv1{numSvs=1; GPS/4/30.5/USED|CARRIER/0/0/1575420000}");
    status.numSvs = 0;
    EXPECT_EQ(fmt(status), "sv1{numSvs=0;}");
    status.numSvs = 70;
    const std::string text = fmt(status);
    EXPECT_EQ(std::count(text.begin(), text.end(), '/'), 64 * 6);
    EXPECT_EQ(text.rfind("sv1{numSvs=70; GPS/4/", 0), 0u);
}

TEST(FormatTest, SvFlagsAndConstellationsByNameOrNumber) {
    EXPECT_EQ(fmtSvFlags(0), "-");
    EXPECT_EQ(fmtSvFlags(0xff), "EPH|ALM|USED|CARRIER|16|32|64|128");
    EXPECT_EQ(fmtSvFlags(2 | 32), "ALM|32");
    EXPECT_EQ(fmtConstellation(0), "UNKNOWN");
    EXPECT_EQ(fmtConstellation(7), "IRNSS");
    EXPECT_EQ(fmtConstellation(8), "8");
}

TEST(FormatTest, SvListShowsBothConstellationsOnlyWhereTheyDiffer) {
    hidl_vec<gnss_v2::IGnssCallback::GnssSvInfo> list;
    std::string error;
    ASSERT_TRUE(parseSvList(word("sv2{GPS/4/30/USED GLONASS:GPS/7/20/-/1/2/3}"), &list, &error));
    EXPECT_EQ(fmt(list), "sv2{GPS/4/30/USED/0/0/0 GLONASS:GPS/7/20/-/1/2/3}");
    EXPECT_EQ(fmt(std::vector<gnss_v2::IGnssCallback::GnssSvInfo>(list.begin(), list.end())),
              fmt(list));
    EXPECT_EQ(fmt(hidl_vec<gnss_v2::IGnssCallback::GnssSvInfo>()), "sv2{}");
}

TEST(FormatTest, PrintedValuesParseBackToTheSameValue) {
    gnss_v1::GnssLocation loc;
    gnss_v2::GnssLocation loc2;
    gnss_v1::IGnssCallback::GnssSvStatus status;
    hidl_vec<gnss_v2::IGnssCallback::GnssSvInfo> list;
    std::string error;
    ASSERT_TRUE(parseLocation(word("loc{latitudeDegrees=0.1 speedMetersPerSec=1e-07 "
                                   "timestamp=-5 gnssLocationFlags=65535}"),
                              &loc, &error));
    gnss_v1::GnssLocation loc_back;
    ASSERT_TRUE(parseLocation(word(fmt(loc)), &loc_back, &error)) << error;
    EXPECT_EQ(loc_back, loc);
    ASSERT_TRUE(parseLocation2(word("loc2{altitudeMeters=-3.25 elapsedRealtime.timestampNs=9}"),
                               &loc2, &error));
    gnss_v2::GnssLocation loc2_back;
    ASSERT_TRUE(parseLocation2(word(fmt(loc2)), &loc2_back, &error)) << error;
    EXPECT_EQ(loc2_back, loc2);
    ASSERT_TRUE(parseSvStatus(word("sv1{numSvs=3; QZSS/193/44.25/EPH|64/1/2/3}"), &status, &error));
    gnss_v1::IGnssCallback::GnssSvStatus status_back;
    ASSERT_TRUE(parseSvStatus(word(fmt(status)), &status_back, &error)) << error;
    EXPECT_EQ(status_back, status);
    ASSERT_TRUE(parseSvList(word("sv2{BEIDOU:9/1/2/ALM}"), &list, &error));
    hidl_vec<gnss_v2::IGnssCallback::GnssSvInfo> list_back;
    ASSERT_TRUE(parseSvList(word(fmt(list)), &list_back, &error)) << error;
    EXPECT_EQ(list_back, list);
}

TEST(FormatTest, GeofenceRequestShowsAllItsWireBytesPaddingIncluded) {
    fusd::GeofenceRequest request;
    memset(&request, 0xee, sizeof request);  // padding after geofenceId keeps this
    request.geofenceId = 7;
    request.latitudeDegrees = 1.5;
    const std::string text = fmt(request);
    ASSERT_EQ(text.size(), 4u + 2 * 72);
    EXPECT_EQ(text.substr(0, 4 + 32), "hex:07000000eeeeeeee000000000000f83f");
    EXPECT_EQ(fmt(hidl_vec<fusd::GeofenceResult>{{5, 0}, {6, -3}}), "[5:0 6:-3]");
    EXPECT_EQ(fmt(hidl_vec<fusd::GeofenceResult>{}), "[]");
}

TEST(FormatTest, OtherRecordsAndListsSpreadTheirFields) {
    gnss_v1::IGnssBatching::Options options{};
    options.periodNanos = 1000000000;
    options.flags = 1;
    EXPECT_EQ(fmt(options), "{periodNanos=1000000000 flags=1}");

    gnss_v2::IGnssCallback::GnssSvInfo sv{};
    sv.v1_0.svid = 3;
    sv.constellation = gnss_v2::GnssConstellationType::IRNSS;
    EXPECT_EQ(fmt(sv),
              "{v1_0.svid=3 v1_0.constellation=0 v1_0.cN0Dbhz=0 v1_0.elevationDegrees=0 "
              "v1_0.azimuthDegrees=0 v1_0.carrierFrequencyHz=0 v1_0.svFlag=0 constellation=7}");
    EXPECT_EQ(fmt(hidl_vec<int32_t>{1, -2, 3}), "[1 -2 3]");
    EXPECT_EQ(fmt(hidl_vec<gnss_v1::IGnssBatching::Options>{options}),
              "[{periodNanos=1000000000 flags=1}]");
    android::hardware::hidl_array<uint8_t, 3> array;
    array[0] = 1;
    array[1] = 2;
    array[2] = 3;
    EXPECT_EQ(fmt(array), "[1 2 3]");
}

}  // namespace
}  // namespace sim
