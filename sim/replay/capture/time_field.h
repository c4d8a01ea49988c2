// Which sentences carry the UTC time of their output cycle, and where.
#pragma once

#include <string_view>

#include "nmea_sentence.h"

namespace replay {

// RMC, GGA, GLL, GNS and ZDA of any talker carry the cycle's UTC time.
bool isTimeBearing(const NmeaSentence& sentence);

// The sentence's UTC time field, empty when it has none or left it empty.
std::string_view utcTimeField(const NmeaSentence& sentence);

}  // namespace replay
