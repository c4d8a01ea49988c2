#include "nmea_sentence.h"

#include <cctype>

namespace replay {
namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

bool isBlank(std::string_view text) {
    for (char c : text) {
        if (!std::isspace(static_cast<unsigned char>(c))) return false;
    }
    return true;
}

// The checksum covers every character between the start character and the '*'; only
// whitespace may follow the two hex digits.
SentenceCheck checkChecksum(std::string_view body, std::string_view afterStar) {
    if (afterStar.size() < 2 || !isBlank(afterStar.substr(2))) return SentenceCheck::BadChecksum;
    int high = hexValue(afterStar[0]);
    int low = hexValue(afterStar[1]);
    if (high < 0 || low < 0) return SentenceCheck::BadChecksum;
    unsigned char sum = 0;
    for (char c : body) sum ^= static_cast<unsigned char>(c);
    return sum == high * 16 + low ? SentenceCheck::Ok : SentenceCheck::BadChecksum;
}

bool isAddress(std::string_view address) {
    if (address.empty()) return false;
    for (char c : address) {
        if (!std::isalnum(static_cast<unsigned char>(c))) return false;
    }
    return true;
}

std::vector<std::string_view> splitFields(std::string_view text) {
    std::vector<std::string_view> fields;
    size_t start = 0;
    for (;;) {
        size_t comma = text.find(',', start);
        if (comma == std::string_view::npos) {
            fields.push_back(text.substr(start));
            return fields;
        }
        fields.push_back(text.substr(start, comma - start));
        start = comma + 1;
    }
}

}  // namespace

NmeaSentence parseSentence(std::string_view line) {
    NmeaSentence sentence;
    if (line.empty() || (line[0] != '$' && line[0] != '!')) return sentence;
    // A start character written twice ("$$GPGGA", a logging program's echo) counts once.
    const size_t start = line.find_first_not_of("$!");
    if (start == std::string_view::npos) return sentence;
    std::string_view rest = line.substr(start);
    size_t star = rest.find('*');
    std::string_view body = rest.substr(0, star);
    size_t comma = body.find(',');
    std::string_view address = body.substr(0, comma);
    // Without the '*' the line may end in whitespace the receiver left behind.
    if (star == std::string_view::npos && comma == std::string_view::npos) {
        while (!address.empty() && std::isspace(static_cast<unsigned char>(address.back()))) {
            address.remove_suffix(1);
        }
    }
    if (!isAddress(address)) return sentence;

    sentence.proprietary = address[0] == 'P';
    if (!sentence.proprietary && address.size() < 3) return sentence;
    sentence.check = star == std::string_view::npos ? SentenceCheck::NoChecksum
                                                    : checkChecksum(body, rest.substr(star + 1));
    if (sentence.proprietary) {
        sentence.type = address;
    } else {
        sentence.talker = address.substr(0, 2);
        sentence.type = address.substr(2);
    }
    if (comma != std::string_view::npos) sentence.fields = splitFields(body.substr(comma + 1));
    return sentence;
}

}  // namespace replay
