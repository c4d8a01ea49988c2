#include "time_field.h"

#include "nmea_fields.h"

namespace replay {
namespace {

constexpr size_t kNoTimeField = static_cast<size_t>(-1);

size_t timeFieldIndex(const NmeaSentence& sentence) {
    if (sentence.proprietary) return kNoTimeField;
    for (const char* type : {"RMC", "GGA", "GNS", "ZDA", "GST", "GBS", "GRS"}) {
        if (sentence.type == type) return 0;
    }
    if (sentence.type == "GLL") return 4;
    return kNoTimeField;
}

}  // namespace

bool isTimeBearing(const NmeaSentence& sentence) {
    return timeFieldIndex(sentence) != kNoTimeField;
}

std::string_view utcTimeField(const NmeaSentence& sentence) {
    size_t index = timeFieldIndex(sentence);
    return index == kNoTimeField ? std::string_view() : sentence.field(index);
}

std::string timeKey(std::string_view field) {
    if (!readTimeOfDayMs(field)) return std::string();
    std::string key(field);
    if (key.size() > 6) {
        key.erase(key.find_last_not_of('0') + 1);
        if (key.back() == '.') key.pop_back();
    }
    return key;
}

}  // namespace replay
