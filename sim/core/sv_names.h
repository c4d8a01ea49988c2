// Names of constellations and satellite flags, as the scenario language reads
// and prints them.
#pragma once

namespace sim {

// Indexed by the constellation's numeric value (1.0 and 2.0 share 0 to 6).
inline const char* const kConstellationNames[] = {"UNKNOWN", "GPS",    "SBAS",    "GLONASS",
                                                  "QZSS",    "BEIDOU", "GALILEO", "IRNSS"};
// Flag bits in order: 1 << 0 is EPH.
inline const char* const kSvFlagNames[] = {"EPH", "ALM", "USED", "CARRIER"};

}  // namespace sim
