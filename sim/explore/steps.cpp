#include "steps.h"

#include <cctype>
#include <charconv>
#include <cstring>

#include "words.h"

namespace explore {

namespace {

using Kind = Access::Kind;
using Mode = Access::Mode;

bool unnamed(const Access& a) {
    return a.kind == Kind::kObject && a.id == 0;
}

const char kKinds[] = "ots";  // in the order of Access::Kind
const char kModes[] = "rwo";  // in the order of Access::Mode

}  // namespace

bool dependent(const Access& a, const Access& b) {
    if (unnamed(a) || unnamed(b)) return true;
    if (a.kind != b.kind || a.id != b.id) return false;
    return a.mode != Mode::kRead || b.mode != Mode::kRead;
}

bool reversible(const Access& a, const Access& b) {
    return a.mode != Mode::kOrder && b.mode != Mode::kOrder && dependent(a, b);
}

namespace {

template <typename Relation>
bool anyPair(const Step& a, const Step& b, Relation relation) {
    for (const Access& x : a.accesses) {
        for (const Access& y : b.accesses) {
            if (relation(x, y)) return true;
        }
    }
    return false;
}

}  // namespace

bool dependent(const Step& a, const Step& b) {
    return anyPair(a, b, [](const Access& x, const Access& y) { return dependent(x, y); });
}

bool reversible(const Step& a, const Step& b) {
    return anyPair(a, b, [](const Access& x, const Access& y) { return reversible(x, y); });
}

std::string formatStep(const Step& step) {
    std::string text = std::to_string(step.thread) + " " + std::to_string(step.decision);
    for (const Access& a : step.accesses) {
        char word[24] = {' ', kKinds[static_cast<int>(a.kind)], kModes[static_cast<int>(a.mode)]};
        const auto written = std::to_chars(word + 3, word + sizeof(word), a.id, 16);
        text.append(word, written.ptr);
    }
    return text;
}

bool parseAccess(const char* word, size_t length, Access* access) {
    const char* kind = length > 2 ? strchr(kKinds, word[0]) : nullptr;
    const char* mode = kind != nullptr ? strchr(kModes, word[1]) : nullptr;
    if (mode == nullptr || *kind == '\0' || *mode == '\0') return false;
    uint64_t id = 0;
    for (size_t i = 2; i < length; ++i) {
        const char c = word[i];
        const int digit = isdigit(static_cast<unsigned char>(c)) ? c - '0'
                          : (c >= 'a' && c <= 'f')               ? c - 'a' + 10
                                                                 : -1;
        if (digit < 0) return false;
        id = id * 16 + static_cast<uint64_t>(digit);
    }
    access->kind = static_cast<Kind>(kind - kKinds);
    access->mode = static_cast<Mode>(mode - kModes);
    access->id = id;
    return true;
}

bool parseStep(std::string_view text, Step* step) {
    Words words(text);
    *step = Step();
    if (!words.number(&step->thread) || !words.number(&step->decision)) return false;
    std::string_view word;
    while (words.next(&word)) {
        Access a;
        if (!parseAccess(word.data(), word.size(), &a)) return false;
        step->accesses.push_back(a);
    }
    return true;
}

}  // namespace explore
