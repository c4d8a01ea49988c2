#include "text_escape.h"

#include <cstdint>

namespace replay {
namespace {

constexpr char kReplacement = '?';

// Length of the well-formed UTF-8 sequence at text[pos], or 0 when it is not one.
size_t utf8SequenceLength(const std::string& text, size_t pos, uint32_t* codePoint) {
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byte(pos);
    size_t length = 0;
    uint32_t value = 0;
    uint32_t smallest = 0;  // below this the sequence is an overlong form
    if (lead < 0x80) {
        *codePoint = lead;
        return 1;
    } else if ((lead & 0xE0) == 0xC0) {
        length = 2, value = lead & 0x1F, smallest = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3, value = lead & 0x0F, smallest = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4, value = lead & 0x07, smallest = 0x10000;
    } else {
        return 0;
    }
    if (pos + length > text.size()) return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((byte(pos + i) & 0xC0) != 0x80) return 0;
        value = (value << 6) | (byte(pos + i) & 0x3F);
    }
    if (value < smallest || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return 0;
    *codePoint = value;
    return length;
}

bool isControlOrNonCharacter(uint32_t codePoint) {
    return codePoint < 0x20 || (codePoint >= 0x7F && codePoint <= 0x9F) || codePoint == 0xFFFE ||
           codePoint == 0xFFFF;
}

}  // namespace

std::string oneLine(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (size_t pos = 0; pos < text.size();) {
        uint32_t codePoint = 0;
        const size_t length = utf8SequenceLength(text, pos, &codePoint);
        if (length == 0) {
            out += kReplacement;
            ++pos;
            continue;
        }
        if (codePoint == ' ' || codePoint == '\t' || codePoint == '\n' || codePoint == '\r') {
            if (out.empty() || out.back() != ' ') out += ' ';
        } else if (isControlOrNonCharacter(codePoint)) {
            out += kReplacement;
        } else {
            out.append(text, pos, length);
        }
        pos += length;
    }
    return out;
}

std::string xmlEscaped(const std::string& text) {
    std::string out;
    for (char c : oneLine(text)) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&apos;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

size_t characterCount(const std::string& text) {
    size_t count = 0;
    for (char c : text) count += (static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0;
    return count;
}

}  // namespace replay
