// A receiver capture as the GNSS HAL would deliver it: NMEA sentences grouped into the
// receiver's epochs (one per time stamp), and what each epoch says about the fix and the
// satellites.
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

// Which rule cut an epoch out of the capture.
enum class EpochRule {
    kUtcTime,           // a run of sentences with one UTC time stamp
    kRepeatedSentence,  // where time stamps are missing: a time-carrying sentence repeated
    kLogSecond,         // a phone log: one second of the log's own clock
};

// One epoch: the sentences as the receiver sent them, without their line ends.
struct Epoch {
    std::vector<std::string> lines;
    EpochRule rule = EpochRule::kUtcTime;
    std::optional<int64_t> timeOfDayMs;  // UTC ms since midnight; none for kRepeatedSentence
    int64_t atMs = 0;                    // replay time: ms after the first epoch
};

struct Capture {
    std::vector<Epoch> epochs;
    int sentenceCount = 0;      // lines that start with '$' or '!', each in exactly one epoch
    int linesNotNmea = 0;       // other non-blank lines (binary data, comments): left out
    std::string cycleEnder;     // talker and type that most often ends a cycle; "" if none
    int64_t intervalMs = 1000;  // the usual time from one epoch to the next
    int timeBreaks = 0;         // time stamps that went back or leapt ahead (see epochTimes)
};

// Splits a capture's text into epochs. Blank lines are dropped; LF and CRLF both end a line.
// A line is a sentence when it starts with '$' or '!'; other lines are counted and left out.
//
// Captures carry no arrival times, so epochs are read from the sentences' own UTC times.
// Time-carrying sentences are RMC, GGA, GNS, GLL, ZDA, GST, GBS and GRS of any talker; only
// those with a matching checksum (or none) count.
//  - An epoch is a run of time-carrying sentences with one time (fraction included), and the
//    sentences among them.
//  - Sentences between two epochs are split after the last occurrence of the cycle ender:
//    the talker and type that most often comes last before the time changes. The part up to
//    it joins the earlier epoch, the rest the later one; without it, all join the earlier.
//  - Where time-carrying sentences come without a time (a receiver without a fix), the
//    stretch between two timed epochs (or before the first, or after the last) is cut where
//    a time-carrying sentence without a time repeats a talker and type already in the
//    current epoch. A timed sentence after such a stretch begins an epoch of its own.
//  - Lines before the first epoch join it; a capture with no time-carrying sentence at all is
//    one epoch.
Capture splitCapture(const std::string& text);
bool readCapture(const std::string& path, Capture* capture, std::string* error);

// A satellite as the epoch's GSV and GSA sentences describe it.
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

// What one epoch says once decoded.
struct EpochContent {
    bool hasFix = false;                                // a position with a known UTC date and time
    android::hardware::gnss::V1_0::GnssLocation fix{};  // timestamp: UTC ms since the epoch
    bool hasSatellites = false;                         // the epoch held GSV or GSA sentences
    std::vector<SatelliteView> satellites;
    SkipCounts skipped;
};

// Decodes epochs in order; the UTC date of the last RMC or ZDA carries over to later epochs
// whose GGA alone gives a time.
class EpochDecoder {
  public:
    EpochContent decode(const Epoch& epoch);

  private:
    void rememberDate(std::optional<int64_t> date, std::string_view timeField);
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
