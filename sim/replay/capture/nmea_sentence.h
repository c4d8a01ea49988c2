// One NMEA 0183 line taken apart: checked, split into its address and fields. The views
// point into the line, which must outlive the sentence.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace replay {

enum class SentenceCheck {
    Ok,           // '*hh' present and matching
    BadChecksum,  // '*' present, but not followed by two hex digits that match
    NoChecksum,   // no '*' at all
    Unreadable,   // no '$'/'!' start or no address
};

struct NmeaSentence {
    SentenceCheck check = SentenceCheck::Unreadable;
    bool proprietary = false;  // address starts with 'P'
    std::string_view talker;   // "GP", "GN", ... (empty for proprietary sentences)
    std::string_view type;     // "RMC", "GSV", ... (the whole address for proprietary ones)
    std::vector<std::string_view> fields;  // after the address, up to the '*'

    // The field at index, or an empty view past the end: short sentences read as empty.
    std::string_view field(size_t index) const {
        return index < fields.size() ? fields[index] : std::string_view();
    }
    bool is(std::string_view sentenceType) const { return !proprietary && type == sentenceType; }
};

// A line is read from its last leading '$' or '!': "$$GPGGA,..." is the sentence "$GPGGA,...".
NmeaSentence parseSentence(std::string_view line);

}  // namespace replay
