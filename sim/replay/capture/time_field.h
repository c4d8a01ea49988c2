// Which sentences carry the UTC time of their epoch, and where.
#pragma once

#include <string>
#include <string_view>

#include "nmea_sentence.h"

namespace replay {

// RMC, GGA, GNS, GLL, ZDA, GST, GBS and GRS of any talker carry their epoch's UTC time.
bool isTimeBearing(const NmeaSentence& sentence);

// The sentence's UTC time field, empty when it has none or left it empty.
std::string_view utcTimeField(const NmeaSentence& sentence);

// A time field as a key that the sentences of one epoch share: "hhmmss" and the fraction
// without its trailing zeros, so that "120000.50" and "120000.5" match and "120000.3" does
// not. Empty when the field does not read as a time of day.
std::string timeKey(std::string_view field);

}  // namespace replay
