// A receiver capture as the GNSS HAL would deliver it: NMEA sentences grouped into
// one-second output cycles, and what each cycle says about the fix and the satellites.
#pragma once

#include <android/hardware/gnss/1.0/IGnssCallback.h>
#include <android/hardware/gnss/1.0/types.h>
#include <android/hardware/gnss/2.0/IGnssCallback.h>

#include <cstdint>
#include <string>
#include <vector>

namespace replay {

// Sentences left out of building fixes and satellite reports, by reason. Every sentence
// still reaches the library's NMEA feed untouched; these only say what the decoder skipped.
struct SkipCounts {
    int badChecksum = 0;   // a '*hh' checksum that does not match
    int noChecksum = 0;    // no '*hh' at all
    int emptyFields = 0;   // a sentence the fix or satellites need, with a needed field empty
    int proprietary = 0;   // $P... sentences: passed on, never decoded
    int unreadable = 0;    // not an NMEA sentence at all ('$'/'!' missing, no address)
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
Capture splitCapture(const std::string& text);
bool readCapture(const std::string& path, Capture* capture, std::string* error);

// A satellite as the cycle's GSV and GSA sentences describe it.
struct SatelliteView {
    int16_t svid = 0;
    uint8_t constellation = 0;  // android.hardware.gnss@1.0::GnssConstellationType value
    float cn0Dbhz = 0;          // 0 when the receiver gave none
    float elevationDegrees = 0;
    float azimuthDegrees = 0;
    bool usedInFix = false;     // named by a GSA of the same constellation
};

// What one cycle says once decoded.
struct CycleContent {
    bool hasFix = false;  // a position with a known UTC date and time
    android::hardware::gnss::V1_0::GnssLocation fix{};  // timestamp: UTC ms since the epoch
    bool hasSatellites = false;  // the cycle held GSV or GSA sentences
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
    int64_t mDayMs = -1;  // UTC midnight of the last date seen, ms since the epoch
};

// The satellite reports a HAL of each version would send for these satellites (the 1.0
// record holds 64 entries at most; later ones are left out).
android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus toSvStatusV1(
    const std::vector<SatelliteView>& satellites);
android::hardware::hidl_vec<android::hardware::gnss::V2_0::IGnssCallback::GnssSvInfo>
toSvInfoListV2(const std::vector<SatelliteView>& satellites);

}  // namespace replay
