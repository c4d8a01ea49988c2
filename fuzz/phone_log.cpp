// The phone-log reader: a GnssLogger/GPSTest log and its .nmea file, read into events on
// the log's clock and laid out as the seconds the replay feeds.
// Input: one byte whose bit 0 asks for burst chunks, then the log's text; after the first
// NUL byte, the .nmea file's text.
// Checks: every row is accounted for once (an event, a signal of a report, a fix of another
// provider, or a skip by reason); events are in time order within a day; locations carry a
// position in range with its flag; each second holds exactly the events of its 1000 ms, in
// order, and in burst mode at most one NMEA chunk.
#include <cmath>
#include <string>

#include "capture/feed_epochs.h"
#include "capture/replay_input.h"
#include "capture_check.h"

namespace {

using replay::FeedEvent;
using replay::PhoneEvent;

constexpr int64_t kDayMs = 86400000;

int rowsOf(const std::string& text) {
    int rows = 0;
    size_t start = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        rows += text[start] != '#';
        start = end + 1;
    }
    return rows;
}

int accountedRows(const replay::PhoneLog& log) {
    int rows = 0;
    for (const PhoneEvent& event : log.events) {
        rows += event.kind == PhoneEvent::Kind::kSatellites ? static_cast<int>(event.signals.size())
                                                            : 1;
    }
    for (const auto& [provider, count] : log.counts.fixesByProvider) {
        if (provider != "GPS") rows += count;
    }
    for (const auto& entry : log.counts.skipped) rows += entry.second;
    return rows;
}

void checkEvents(const replay::PhoneLog& log) {
    for (size_t i = 0; i < log.events.size(); ++i) {
        const PhoneEvent& event = log.events[i];
        CAPTURE_CHECK(i == 0 || log.events[i - 1].atMs <= event.atMs, "events out of order");
        CAPTURE_CHECK(event.atMs - log.events[0].atMs <= kDayMs, "events span over a day");
        if (event.kind == PhoneEvent::Kind::kSatellites) {
            CAPTURE_CHECK(!event.signals.empty(), "an empty satellite report");
        }
        if (event.kind != PhoneEvent::Kind::kLocation) continue;
        const auto& fix = event.location.v1_0;
        CAPTURE_CHECK((fix.gnssLocationFlags & 1) != 0, "a location without its position flag");
        CAPTURE_CHECK(std::fabs(fix.latitudeDegrees) <= 90, "latitude out of range");
        CAPTURE_CHECK(std::fabs(fix.longitudeDegrees) <= 180, "longitude out of range");
        CAPTURE_CHECK(fix.timestamp == event.atMs, "a location off its own time");
    }
}

void checkSeconds(const replay::PhoneLog& log, bool burst) {
    const auto seconds = replay::feedEpochs(log, burst);
    size_t events = 0;
    for (size_t k = 0; k < seconds.size(); ++k) {
        const int64_t start = static_cast<int64_t>(k) * 1000;
        int64_t previous = start;
        int chunks = 0;
        for (const FeedEvent& event : seconds[k].events) {
            CAPTURE_CHECK(event.atMs >= previous && event.atMs < start + 1000,
                          "an event outside its second or out of order");
            previous = event.atMs;
            chunks += event.kind == FeedEvent::Kind::kNmea;
        }
        CAPTURE_CHECK(!burst || chunks <= 1, "burst mode sent several chunks in a second");
        events += seconds[k].events.size();
    }
    if (!burst) CAPTURE_CHECK(events == log.events.size(), "events lost in the seconds");
    if (!log.events.empty()) {
        const int64_t span = log.events.back().atMs - log.events.front().atMs;
        CAPTURE_CHECK(seconds.size() == static_cast<size_t>(span / 1000 + 1), "seconds miscounted");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const bool burst = (data[0] & 1) != 0;
    const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
    const size_t nul = input.find('\0');
    const std::string text = input.substr(0, nul);
    const std::string nmeaText = nul == std::string::npos ? "" : input.substr(nul + 1);

    (void)replay::detectFormat(text);
    const replay::PhoneLog log = replay::parsePhoneLog(text, nmeaText);
    CAPTURE_CHECK(log.counts.rows == rowsOf(text) + rowsOf(nmeaText), "rows miscounted");
    CAPTURE_CHECK(accountedRows(log) == log.counts.rows, "a row not accounted for exactly once");
    checkEvents(log);
    checkSeconds(log, burst);
    return 0;
}
