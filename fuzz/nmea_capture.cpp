// The NMEA capture reader: splitting a capture into cycles, decoding each, and laying the
// cycles out as the seconds the replay feeds.
// Input: one byte whose bit 0 asks for burst chunks, then the capture's text.
// Checks: every non-blank line lands in exactly one cycle; a fix has a position in range
// and its flag; one second per cycle, all of it at the second's start, carrying every line
// (one chunk each, or one chunk for the cycle in burst mode).
#include <cmath>
#include <string>

#include "capture/feed_seconds.h"
#include "capture_check.h"

namespace {

using replay::FeedEvent;

int nonBlankLines(const std::string& text) {
    int count = 0;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(start, end - start);
        count += line.find_first_not_of(" \t\r\n\v\f") != std::string::npos;
        start = end + 1;
    }
    return count;
}

void checkFix(const replay::CycleContent& content) {
    if (!content.hasFix) return;
    const auto& fix = content.fix;
    CAPTURE_CHECK((fix.gnssLocationFlags & 1) != 0, "a fix without its position flag");
    CAPTURE_CHECK(std::fabs(fix.latitudeDegrees) <= 90, "latitude out of range");
    CAPTURE_CHECK(std::fabs(fix.longitudeDegrees) <= 180, "longitude out of range");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const bool burst = (data[0] & 1) != 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const replay::Capture capture = replay::splitCapture(text);

    size_t lines = 0;
    for (const replay::Cycle& cycle : capture.cycles) lines += cycle.lines.size();
    CAPTURE_CHECK(static_cast<int>(lines) == capture.sentenceCount, "lines lost in cycles");
    CAPTURE_CHECK(capture.sentenceCount == nonBlankLines(text), "non-blank lines miscounted");

    replay::CycleDecoder decoder;
    for (const replay::Cycle& cycle : capture.cycles) checkFix(decoder.decode(cycle));

    const auto seconds = replay::feedSeconds(capture, burst);
    CAPTURE_CHECK(seconds.size() == capture.cycles.size(), "not one second per cycle");
    for (size_t k = 0; k < seconds.size(); ++k) {
        size_t chunks = 0;
        for (const FeedEvent& event : seconds[k].events) {
            CAPTURE_CHECK(event.atMs == static_cast<int64_t>(k) * 1000, "event off its second");
            chunks += event.kind == FeedEvent::Kind::kNmea;
        }
        CAPTURE_CHECK(chunks == (burst ? 1 : capture.cycles[k].lines.size()),
                      "chunks do not match the cycle's lines");
    }
    return 0;
}
