#include "feed_seconds.h"

#include <cstdint>
#include <cstdio>

namespace replay {
namespace {

constexpr int64_t kSecondMs = 1000;

std::string burstOf(const std::vector<std::string>& sentences) {
    std::string burst;
    for (const std::string& sentence : sentences) burst += sentence + "\r\n";
    return burst;
}

FeedEvent nmeaEvent(int64_t atMs, std::string chunk, int64_t timestampMs) {
    FeedEvent event;
    event.atMs = atMs;
    event.nmea = std::move(chunk);
    event.nmeaTimestampMs = timestampMs;
    return event;
}

// The time stamp the HAL gives a cycle's NMEA: the cycle's fix time, else the last one
// carried on by the seconds since, else the virtual time.
class NmeaClock {
  public:
    int64_t stamp(int index, const CycleContent& content) {
        if (content.hasFix) {
            mLastUtcMs = content.fix.timestamp;
            mLastUtcIndex = index;
            return mLastUtcMs;
        }
        if (mLastUtcMs >= 0) return mLastUtcMs + (index - mLastUtcIndex) * kSecondMs;
        return index * kSecondMs;
    }

  private:
    int64_t mLastUtcMs = -1;
    int mLastUtcIndex = 0;
};

std::string clockLabel(int64_t utcMs) {
    const int64_t ofDay = ((utcMs / kSecondMs) % 86400 + 86400) % 86400;
    char label[16];
    std::snprintf(label, sizeof(label), "%02d:%02d:%02d", static_cast<int>(ofDay / 3600),
                  static_cast<int>(ofDay / 60 % 60), static_cast<int>(ofDay % 60));
    return label;
}

FeedEvent fromPhoneEvent(const PhoneEvent& phone, int64_t startMs) {
    FeedEvent event;
    event.atMs = phone.atMs - startMs;
    switch (phone.kind) {
        case PhoneEvent::Kind::kNmea:
            event.kind = FeedEvent::Kind::kNmea;
            event.nmea = phone.sentence;
            event.nmeaTimestampMs = phone.atMs;
            break;
        case PhoneEvent::Kind::kSatellites:
            event.kind = FeedEvent::Kind::kSatellites;
            event.satellites = phone.signals;
            break;
        case PhoneEvent::Kind::kLocation:
            event.kind = FeedEvent::Kind::kLocation;
            event.location = phone.location;
            break;
    }
    return event;
}

// Folds the NMEA events of a second into its first one, sentences joined as a receiver
// sends them.
void joinNmea(std::vector<FeedEvent>* events) {
    std::vector<FeedEvent> joined;
    size_t first = SIZE_MAX;
    for (FeedEvent& event : *events) {
        if (event.kind != FeedEvent::Kind::kNmea) {
            joined.push_back(std::move(event));
        } else if (first == SIZE_MAX) {
            first = joined.size();
            event.nmea += "\r\n";
            joined.push_back(std::move(event));
        } else {
            joined[first].nmea += event.nmea + "\r\n";
        }
    }
    *events = std::move(joined);
}

}  // namespace

std::vector<FeedSecond> feedSeconds(const Capture& capture, bool burst) {
    std::vector<FeedSecond> seconds(capture.cycles.size());
    CycleDecoder decoder;
    NmeaClock clock;
    for (size_t i = 0; i < capture.cycles.size(); ++i) {
        const Cycle& cycle = capture.cycles[i];
        const CycleContent content = decoder.decode(cycle);
        const int64_t startMs = static_cast<int64_t>(i) * kSecondMs;
        const int64_t stamp = clock.stamp(static_cast<int>(i), content);
        FeedSecond& second = seconds[i];
        second.utcLabel = content.utcLabel;
        second.skipped = content.skipped;
        if (burst) {
            second.events.push_back(nmeaEvent(startMs, burstOf(cycle.lines), stamp));
        } else {
            for (const std::string& line : cycle.lines) {
                second.events.push_back(nmeaEvent(startMs, line, stamp));
            }
        }
        if (content.hasSatellites) {
            FeedEvent event;
            event.kind = FeedEvent::Kind::kSatellites;
            event.atMs = startMs;
            event.satellites = content.satellites;
            second.events.push_back(std::move(event));
        }
        if (content.hasFix) {
            FeedEvent event;
            event.kind = FeedEvent::Kind::kLocation;
            event.atMs = startMs;
            event.location.v1_0 = content.fix;
            second.events.push_back(std::move(event));
        }
    }
    return seconds;
}

std::vector<FeedSecond> feedSeconds(const PhoneLog& log, bool burst) {
    if (log.events.empty()) return {};
    const int64_t startMs = log.events.front().atMs;
    const int64_t spanMs = log.events.back().atMs - startMs;
    std::vector<FeedSecond> seconds(static_cast<size_t>(spanMs / kSecondMs + 1));
    for (size_t k = 0; k < seconds.size(); ++k) {
        seconds[k].utcLabel = clockLabel(startMs + static_cast<int64_t>(k) * kSecondMs);
    }
    for (const PhoneEvent& phone : log.events) {
        FeedEvent event = fromPhoneEvent(phone, startMs);
        seconds[static_cast<size_t>(event.atMs / kSecondMs)].events.push_back(std::move(event));
    }
    if (burst) {
        for (FeedSecond& second : seconds) joinNmea(&second.events);
    }
    return seconds;
}

}  // namespace replay
