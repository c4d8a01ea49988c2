// Building a cycle's satellite list from its GSV pages and GSA used lists.
#pragma once

#include <map>
#include <set>
#include <utility>
#include <vector>

#include "capture.h"
#include "nmea_sentence.h"

namespace replay {

// Constellation values as the 2.0 HAL numbers them; 1.0 has all but IRNSS.
enum Constellation : uint8_t {
    kUnknownConstellation = 0,
    kGps = 1,
    kSbas = 2,
    kGlonass = 3,
    kQzss = 4,
    kBeidou = 5,
    kGalileo = 6,
    kIrnss = 7,
};

struct SatelliteId {
    uint8_t constellation = kUnknownConstellation;
    int svid = 0;
};

// The satellite a PRN names, from the talker of a GSV or GSA (GN: from the PRN's range).
SatelliteId satelliteFromTalker(std::string_view talker, int prn);
// The satellite a PRN in a GN GSA names, given the NMEA 4.11 system id (0 when absent).
SatelliteId satelliteFromSystemId(int systemId, int prn);

class SatelliteCollector {
  public:
    void addGsv(const NmeaSentence& gsv, SkipCounts* skipped);
    void addGsa(const NmeaSentence& gsa);

    bool heardAny() const { return mHeardAny; }
    // Every satellite once, in the order first seen, with usedInFix set from the GSA lists.
    std::vector<SatelliteView> satellites() const;

  private:
    using Key = std::pair<uint8_t, int>;
    void addSatellite(const SatelliteView& view);

    bool mHeardAny = false;
    std::vector<SatelliteView> mSatellites;
    std::map<Key, size_t> mIndex;
    std::set<Key> mUsed;
};

}  // namespace replay
