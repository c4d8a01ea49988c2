#include "time_field.h"

namespace replay {
namespace {

constexpr size_t kNoTimeField = static_cast<size_t>(-1);

size_t timeFieldIndex(const NmeaSentence& sentence) {
    if (sentence.proprietary) return kNoTimeField;
    if (sentence.type == "RMC" || sentence.type == "GGA" || sentence.type == "GNS" ||
        sentence.type == "ZDA") {
        return 0;
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

}  // namespace replay
