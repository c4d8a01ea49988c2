// Parsing of the scenario language's value forms.
#include "values.h"

#include <gtest/gtest.h>

#include <cmath>

namespace sim {
namespace {

namespace gnss_v1 = android::hardware::gnss::V1_0;
namespace gnss_v2 = android::hardware::gnss::V2_0;

Token word(const std::string& text) {
    return Token{text, false};
}

TEST(ValuesTest, IntegersInDecimalNegativeAndHex) {
    int64_t v = 0;
    std::string error;
    ASSERT_TRUE(parseInt64(word("-42"), &v, &error));
    EXPECT_EQ(v, -42);
    ASSERT_TRUE(parseInt64(word("0x0100"), &v, &error));
    EXPECT_EQ(v, 256);
    ASSERT_TRUE(parseInt64(word("-9223372036854775808"), &v, &error));
    EXPECT_EQ(v, INT64_MIN);
    for (const char* bad :
         {"", "-", "0x", "1.5", "+1", " 1", "12a", "9223372036854775808", "nan"}) {
        EXPECT_FALSE(parseInt64(word(bad), &v, &error)) << bad;
    }
    EXPECT_FALSE(parseInt64(Token{"5", true}, &v, &error));

    uint64_t u = 0;
    ASSERT_TRUE(parseUint64(word("0xffffffffffffffff"), &u, &error));
    EXPECT_EQ(u, UINT64_MAX);
    EXPECT_FALSE(parseUint64(word("-1"), &u, &error));
}

TEST(ValuesTest, IntegersMustFitTheirType) {
    std::string error;
    uint8_t u8 = 0;
    int16_t i16 = 0;
    uint32_t u32 = 0;
    EXPECT_TRUE(parseInteger(word("255"), &u8, &error));
    EXPECT_FALSE(parseInteger(word("256"), &u8, &error));
    EXPECT_EQ(error, "\"256\" is out of range (0..255)");
    EXPECT_TRUE(parseInteger(word("-32768"), &i16, &error));
    EXPECT_EQ(i16, -32768);
    EXPECT_FALSE(parseInteger(word("-32769"), &i16, &error));
    EXPECT_FALSE(parseInteger(word("-1"), &u32, &error));
    EXPECT_TRUE(parseInteger(word("0xffffffff"), &u32, &error));
}

TEST(ValuesTest, RealsInAnyCFormAndNan) {
    double d = 0;
    float f = 0;
    std::string error;
    ASSERT_TRUE(parseDouble(word("nan"), &d, &error));
    EXPECT_TRUE(std::isnan(d));
    ASSERT_TRUE(parseDouble(word("-1.5e3"), &d, &error));
    EXPECT_EQ(d, -1500);
    ASSERT_TRUE(parseDouble(word("0x1p-2"), &d, &error));
    EXPECT_EQ(d, 0.25);
    ASSERT_TRUE(parseFloat(word("0.1"), &f, &error));
    EXPECT_EQ(f, 0.1f);
    EXPECT_FALSE(parseDouble(word("1.5x"), &d, &error));
    EXPECT_FALSE(parseDouble(word(""), &d, &error));
    EXPECT_FALSE(parseDouble(Token{"1", true}, &d, &error));
}

TEST(ValuesTest, BooleansAreExactlyTrueOrFalse) {
    bool b = false;
    std::string error;
    EXPECT_TRUE(parseBool(word("true"), &b, &error) && b);
    EXPECT_TRUE(parseBool(word("false"), &b, &error) && !b);
    EXPECT_FALSE(parseBool(word("1"), &b, &error));
    EXPECT_FALSE(parseBool(Token{"true", true}, &b, &error));
}

TEST(ValuesTest, LocationSetsTheNamedFieldsAndZeroesTheRest) {
    gnss_v1::GnssLocation loc;
    loc.altitudeMeters = 99;
    std::string error;
    ASSERT_TRUE(
        parseLocation(word("loc{timestamp=1000 latitudeDegrees=1.5 gnssLocationFlags=0x0100 "
                           "bearingDegrees=0.1}"),
                      &loc, &error))
        << error;
    EXPECT_EQ(loc.timestamp, 1000);
    EXPECT_EQ(loc.latitudeDegrees, 1.5);
    EXPECT_EQ(loc.gnssLocationFlags, 0x100);
    EXPECT_EQ(loc.bearingDegrees, 0.1f);
    EXPECT_EQ(loc.altitudeMeters, 0);
    ASSERT_TRUE(parseLocation(word("loc{}"), &loc, &error));
    EXPECT_EQ(loc.timestamp, 0);
}

TEST(ValuesTest, LocationRejectsUnknownRepeatedAndMalformedFields) {
    gnss_v1::GnssLocation loc;
    std::string error;
    EXPECT_FALSE(parseLocation(word("loc{altitude=1}"), &loc, &error));
    EXPECT_EQ(error, "unknown field \"altitude\"");
    EXPECT_FALSE(parseLocation(word("loc{timestamp=1 timestamp=2}"), &loc, &error));
    EXPECT_FALSE(parseLocation(word("loc{timestamp}"), &loc, &error));
    EXPECT_FALSE(parseLocation(word("loc{gnssLocationFlags=65536}"), &loc, &error));
    EXPECT_FALSE(parseLocation(word("loc{timestamp=1.5}"), &loc, &error));
    EXPECT_FALSE(parseLocation(word("loc2{timestamp=1}"), &loc, &error));
    EXPECT_FALSE(parseLocation(word("loc{v1_0.timestamp=1}"), &loc, &error));
}

TEST(ValuesTest, Location2TakesV1FieldsWithOrWithoutPrefix) {
    gnss_v2::GnssLocation loc;
    std::string error;
    ASSERT_TRUE(parseLocation2(word("loc2{timestamp=1000 v1_0.speedMetersPerSec=2 "
                                    "elapsedRealtime.flags=3 elapsedRealtime.timestampNs=5 "
                                    "elapsedRealtime.timeUncertaintyNs=18446744073709551615}"),
                               &loc, &error))
        << error;
    EXPECT_EQ(loc.v1_0.timestamp, 1000);
    EXPECT_EQ(loc.v1_0.speedMetersPerSec, 2);
    EXPECT_EQ(loc.elapsedRealtime.flags, 3);
    EXPECT_EQ(loc.elapsedRealtime.timestampNs, 5u);
    EXPECT_EQ(loc.elapsedRealtime.timeUncertaintyNs, UINT64_MAX);
    EXPECT_FALSE(parseLocation2(word("loc2{timestamp=1 v1_0.timestamp=2}"), &loc, &error));
    EXPECT_FALSE(parseLocation2(word("loc2{flags=1}"), &loc, &error));
}

TEST(ValuesTest, SvStatusEntriesAndNumSvs) {
    gnss_v1::IGnssCallback::GnssSvStatus status;
    std::string error;
    ASSERT_TRUE(parseSvStatus(word("sv1{GPS/4/30.5/USED GLONASS/7/20/-/45/90.5/1575420000 "
                                   "7/1/1/EPH|ALM|CARRIER|16}"),
                              &status, &error))
        << error;
    EXPECT_EQ(status.numSvs, 3u);
    const auto& first = status.gnssSvList[0];
    EXPECT_EQ(first.constellation, gnss_v1::GnssConstellationType::GPS);
    EXPECT_EQ(first.svid, 4);
    EXPECT_EQ(first.cN0Dbhz, 30.5f);
    EXPECT_EQ(first.svFlag, 4);
    const auto& second = status.gnssSvList[1];
    EXPECT_EQ(second.svFlag, 0);
    EXPECT_EQ(second.elevationDegrees, 45);
    EXPECT_EQ(second.azimuthDegrees, 90.5f);
    EXPECT_EQ(second.carrierFrequencyHz, 1575420000.0f);
    EXPECT_EQ(static_cast<int>(status.gnssSvList[2].constellation), 7);
    EXPECT_EQ(status.gnssSvList[2].svFlag, 1 | 2 | 8 | 16);

    ASSERT_TRUE(parseSvStatus(word("sv1{numSvs=70; GPS/4/30/USED}"), &status, &error)) << error;
    EXPECT_EQ(status.numSvs, 70u);
    EXPECT_EQ(status.gnssSvList[1].svid, 0);
    ASSERT_TRUE(parseSvStatus(word("sv1{numSvs=0;}"), &status, &error)) << error;
    EXPECT_EQ(status.numSvs, 0u);
    EXPECT_EQ(status.gnssSvList[0].svid, 0);
}

TEST(ValuesTest, SvStatusRejectsMalformedEntries) {
    gnss_v1::IGnssCallback::GnssSvStatus status;
    std::string error;
    std::string many = "sv1{";
    for (int i = 0; i < 65; ++i) many += "GPS/1/1/- ";
    EXPECT_FALSE(parseSvStatus(word(many + "}"), &status, &error));
    for (const char* bad : {"sv1{GPS/4/30}", "sv1{GPS/4/30/USED/1/2/3/4}", "sv1{MARS/4/30/USED}",
                            "sv1{GPS/4/30/USED|}", "sv1{GPS/4/30/FIX}", "sv1{GPS/40000/30/-}",
                            "sv1{numSvs=3 GPS/4/30/-}", "sv1{GPS:GPS/4/30/-}"}) {
        EXPECT_FALSE(parseSvStatus(word(bad), &status, &error)) << bad;
    }
}

TEST(ValuesTest, SvListSetsBothConstellations) {
    android::hardware::hidl_vec<gnss_v2::IGnssCallback::GnssSvInfo> list;
    std::string error;
    ASSERT_TRUE(parseSvList(word("sv2{GPS/4/30/USED IRNSS:GLONASS/7/20/USED}"), &list, &error))
        << error;
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].constellation, gnss_v2::GnssConstellationType::GPS);
    EXPECT_EQ(list[0].v1_0.constellation, gnss_v1::GnssConstellationType::GPS);
    EXPECT_EQ(list[1].constellation, gnss_v2::GnssConstellationType::IRNSS);
    EXPECT_EQ(list[1].v1_0.constellation, gnss_v1::GnssConstellationType::GLONASS);
    ASSERT_TRUE(parseSvList(word("sv2{}"), &list, &error));
    EXPECT_EQ(list.size(), 0u);
    EXPECT_FALSE(parseSvList(word("sv2{A:B:C/1/1/-}"), &list, &error));
}

TEST(ValuesTest, GeofenceResultsArePairs) {
    android::hardware::hidl_vec<vendor::zendra::hardware::fusd::V1_2::GeofenceResult> results;
    std::string error;
    ASSERT_TRUE(parseGeofenceResults(word("[5:0 6:-3]"), &results, &error)) << error;
    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[1].geofenceId, 6);
    EXPECT_EQ(results[1].result, -3);
    ASSERT_TRUE(parseGeofenceResults(word("[]"), &results, &error));
    EXPECT_EQ(results.size(), 0u);
    EXPECT_FALSE(parseGeofenceResults(word("[5]"), &results, &error));
    EXPECT_FALSE(parseGeofenceResults(word("[5:0:1]"), &results, &error));
    EXPECT_FALSE(parseGeofenceResults(word("5:0"), &results, &error));
}

TEST(ValuesTest, BytesAreHexPairsOrNull) {
    std::vector<uint8_t> bytes;
    bool isNull = true;
    std::string error;
    ASSERT_TRUE(parseBytes(word("hex:0aFF00"), &bytes, &isNull, &error));
    EXPECT_FALSE(isNull);
    EXPECT_EQ(bytes, (std::vector<uint8_t>{0x0a, 0xff, 0x00}));
    ASSERT_TRUE(parseBytes(word("hex:"), &bytes, &isNull, &error));
    EXPECT_TRUE(bytes.empty());
    EXPECT_FALSE(isNull);
    ASSERT_TRUE(parseBytes(word("null"), &bytes, &isNull, &error));
    EXPECT_TRUE(isNull);
    EXPECT_FALSE(parseBytes(word("hex:abc"), &bytes, &isNull, &error));
    EXPECT_FALSE(parseBytes(word("hex:zz"), &bytes, &isNull, &error));
    EXPECT_FALSE(parseBytes(Token{"null", true}, &bytes, &isNull, &error));
    EXPECT_FALSE(parseBytes(word("0a0b"), &bytes, &isNull, &error));
}

}  // namespace
}  // namespace sim
