// A receiver capture as the GNSS HAL would deliver it: NMEA sentences grouped into
// one-second output cycles, and what each cycle says about the fix and the satellites.
#pragma once

#include <android/hardware/gnss/1.0/IGnssCallback.h>
#include <android/hardware/gnss/1.0/types.h>
#include <android/hardware/gnss/2.0/IGnssCallback.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace replay {

// Sentences left out of building fixes and satellite reports, by reason. Every sentence
// still reaches the library's NMEA feed untouched; these only say what the decoder skipped.
struct SkipCounts {
    int badChecksum = 0;  // a '*hh' checksum that does not match
    int noChecksum = 0;   // no '*hh' at all
    int emptyFields = 0;  // a sentence the fix or satellites need, with a needed field empty
    int proprietary = 0;  // $P... sentences: passed on, never decoded
    int unreadable = 0;   // not an NMEA sentence at all ('$'/'!' missing, no address)
    SkipCounts& operator+=(const SkipCounts& other);
};

// One output cycle: the lines as the receiver sent them, without their line ends.
struct Cycle {
    std::vector<std::string> lines;
};

struct Capture {
    std::vector<Cycle> cycles;
    int sentenceCount = 0;  // non-blank lines, all of which are in some cycle
};

// Splits a capture's text into cycles. Blank lines are dropped; LF and CRLF both end a line.
//
// Captures carry no arrival times, so where one cycle ends is read from the sentence order.
// A new cycle begins at a sentence that
//  (a) is time-bearing (RMC, GGA, GLL, GNS or ZDA of any talker) with a non-empty UTC time
//      other than the time the current cycle already has, or
//  (b) is standard (not $P...), is not a GSV, GSA, GRS or GST (which come several to a
//      cycle), and has a talker and type that already appeared in the current cycle; this
//      splits receivers that leave the time fields empty while they have no fix.
// Lines before the first time-bearing sentence belong to the first cycle. Proprietary lines,
// lines with a mismatching checksum and lines that are not NMEA never begin a cycle; they
// stay in the cycle they arrive in.
Capture splitCapture(const std::string& text);
bool readCapture(const std::string& path, Capture* capture, std::string* error);

// A satellite as the cycle's GSV and GSA sentences describe it.
struct SatelliteView {
    // As the HAL numbers it: GLONASS 65-96 become 1-32, BeiDou 201- and Galileo 301- lose
    // the offset, QZSS 1-10 become 193-202; SBAS keeps the receiver's number.
    int16_t svid = 0;
    // android.hardware.gnss@2.0::GnssConstellationType value: the 1.0 values, plus IRNSS (7),
    // which 1.0 records report as UNKNOWN.
    uint8_t constellation = 0;
    float cn0Dbhz = 0;  // 0 when the receiver gave none
    float elevationDegrees = 0;
    float azimuthDegrees = 0;
    bool usedInFix = false;  // named by a GSA of the same constellation
    // What NMEA does not tell; a phone log's Status rows do.
    float carrierFrequencyHz = 0;  // 0: not known
    bool hasAlmanac = false;
    bool hasEphemeris = false;
};

// What one cycle says once decoded.
struct CycleContent {
    bool hasFix = false;                                // a position with a known UTC date and time
    android::hardware::gnss::V1_0::GnssLocation fix{};  // timestamp: UTC ms since the epoch
    bool hasSatellites = false;                         // the cycle held GSV or GSA sentences
    std::vector<SatelliteView> satellites;
    std::string utcLabel;  // "hh:mm:ss" of the cycle's sentences, empty when none carried a time
    SkipCounts skipped;
};

// Decodes cycles in order; the UTC date of the last RMC carries over to later cycles whose
// GGA alone gives a time.
class CycleDecoder {
  public:
    CycleContent decode(const Cycle& cycle);

  private:
    void rememberDate(std::string_view dateField, std::string_view timeField);
    // UTC midnight of the day a time of day falls on, from the last date seen.
    std::optional<int64_t> dayOf(int64_t timeOfDayMs) const;

    int64_t mDayMs = -1;            // UTC midnight of the last date seen, ms since the epoch
    int64_t mDateTimeOfDayMs = -1;  // time of day of the RMC that gave that date, -1 if none
};

// The satellite reports a HAL of each version would send for these satellites (the 1.0
// record holds 64 entries at most; later ones are left out).
android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus toSvStatusV1(
    const std::vector<SatelliteView>& satellites);
android::hardware::hidl_vec<android::hardware::gnss::V2_0::IGnssCallback::GnssSvInfo>
toSvInfoListV2(const std::vector<SatelliteView>& satellites);

}  // namespace replay
