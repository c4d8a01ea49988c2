#include "capture.h"

#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <string_view>

#include "nmea_fields.h"
#include "nmea_sentence.h"
#include "time_field.h"

namespace replay {
namespace {

bool isBlank(std::string_view line) {
    for (char c : line) {
        if (!std::isspace(static_cast<unsigned char>(c))) return false;
    }
    return true;
}

// Two time fields name the same second when they read as the same time of day; fields that
// do not read as a time are compared as text.
bool sameTime(std::string_view a, std::string_view b) {
    std::optional<int64_t> aMs = readTimeOfDayMs(a);
    std::optional<int64_t> bMs = readTimeOfDayMs(b);
    if (aMs && bMs) return *aMs == *bMs;
    return a == b;
}

// Sentences that a receiver sends several of in one cycle (one per constellation, or one
// per page), so a repeat of them says nothing about a new cycle.
bool repeatsWithinCycle(const NmeaSentence& sentence) {
    return sentence.type == "GSV" || sentence.type == "GSA" || sentence.type == "GRS" ||
           sentence.type == "GST";
}

class CycleSplitter {
  public:
    void add(std::string line) {
        NmeaSentence sentence = parseSentence(line);
        if (drivesBoundaries(sentence)) {
            if (startsNewCycle(sentence)) beginCycle();
            remember(sentence);
        }
        if (mCapture.cycles.empty()) mCapture.cycles.emplace_back();
        mCapture.cycles.back().lines.push_back(std::move(line));
        ++mCapture.sentenceCount;
    }

    Capture finish() { return std::move(mCapture); }

  private:
    // A line whose checksum does not match could carry a corrupted time and split a second
    // in two; proprietary lines follow no common layout.
    static bool drivesBoundaries(const NmeaSentence& sentence) {
        bool readable =
            sentence.check == SentenceCheck::Ok || sentence.check == SentenceCheck::NoChecksum;
        return readable && !sentence.proprietary;
    }

    bool startsNewCycle(const NmeaSentence& sentence) const {
        if (mCapture.cycles.empty()) return false;
        std::string_view time = utcTimeField(sentence);
        if (!time.empty() && !mCycleTime.empty() && !sameTime(time, mCycleTime)) return true;
        return !repeatsWithinCycle(sentence) && mSeenAddresses.count(address(sentence)) > 0;
    }

    void remember(const NmeaSentence& sentence) {
        std::string_view time = utcTimeField(sentence);
        if (mCycleTime.empty() && !time.empty()) mCycleTime = std::string(time);
        mSeenAddresses.insert(address(sentence));
    }

    void beginCycle() {
        mCapture.cycles.emplace_back();
        mCycleTime.clear();
        mSeenAddresses.clear();
    }

    static std::string address(const NmeaSentence& sentence) {
        return std::string(sentence.talker).append(sentence.type);
    }

    Capture mCapture;
    std::string mCycleTime;  // the first non-empty time field of the current cycle
    std::set<std::string> mSeenAddresses;
};

}  // namespace

SkipCounts& SkipCounts::operator+=(const SkipCounts& other) {
    badChecksum += other.badChecksum;
    noChecksum += other.noChecksum;
    emptyFields += other.emptyFields;
    proprietary += other.proprietary;
    unreadable += other.unreadable;
    return *this;
}

Capture splitCapture(const std::string& text) {
    CycleSplitter splitter;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string_view line(text.data() + start, end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (!isBlank(line)) splitter.add(std::string(line));
        start = end + 1;
    }
    return splitter.finish();
}

bool readCapture(const std::string& path, Capture* capture, std::string* error) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        *error = "cannot open " + path + ": " + std::strerror(errno);
        return false;
    }
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (file.bad()) {
        *error = "cannot read " + path;
        return false;
    }
    *capture = splitCapture(text);
    return true;
}

}  // namespace replay
