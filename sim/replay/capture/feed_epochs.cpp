#include "feed_epochs.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "nmea_fields.h"

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

// The time stamp the HAL gives an epoch's NMEA: the epoch's fix time, else the last one
// carried on by the replay time since, else the replay time.
class NmeaClock {
  public:
    int64_t stamp(int64_t atMs, const EpochContent& content) {
        if (content.hasFix) {
            mLastUtcMs = content.fix.timestamp;
            mLastAtMs = atMs;
            return mLastUtcMs;
        }
        if (mLastUtcMs >= 0) return mLastUtcMs + (atMs - mLastAtMs);
        return atMs;
    }

  private:
    int64_t mLastUtcMs = -1;
    int64_t mLastAtMs = 0;
};

// "hh:mm:ss", with as many fraction digits as `digits` asks (0 to 3).
std::string clockLabel(int64_t utcMs, int digits) {
    const int64_t ofDay = ((utcMs % kMsPerDay) + kMsPerDay) % kMsPerDay;
    const int64_t seconds = ofDay / kSecondMs;
    char label[24];
    std::snprintf(label, sizeof(label), "%02d:%02d:%02d", static_cast<int>(seconds / 3600),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
    std::string text = label;
    if (digits > 0) {
        std::snprintf(label, sizeof(label), ".%03d", static_cast<int>(ofDay % kSecondMs));
        text += std::string(label).substr(0, 1 + digits);
    }
    return text;
}

// Fraction digits that tell a capture's epochs apart: none at one epoch a second or slower.
int fractionDigits(const Capture& capture) {
    int digits = 0;
    for (const Epoch& epoch : capture.epochs) {
        if (!epoch.timeOfDayMs) continue;
        const int64_t ms = *epoch.timeOfDayMs % kSecondMs;
        digits = std::max(digits, ms == 0 ? 0 : ms % 100 == 0 ? 1 : ms % 10 == 0 ? 2 : 3);
    }
    return digits;
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

std::vector<FeedEpoch> feedEpochs(const Capture& capture, bool burst) {
    std::vector<FeedEpoch> epochs(capture.epochs.size());
    EpochDecoder decoder;
    NmeaClock clock;
    const int digits = fractionDigits(capture);
    for (size_t i = 0; i < capture.epochs.size(); ++i) {
        const Epoch& source = capture.epochs[i];
        const EpochContent content = decoder.decode(source);
        const int64_t atMs = source.atMs;
        const int64_t stamp = clock.stamp(atMs, content);
        FeedEpoch& epoch = epochs[i];
        epoch.atMs = atMs;
        epoch.rule = source.rule;
        if (source.timeOfDayMs) epoch.utcLabel = clockLabel(*source.timeOfDayMs, digits);
        epoch.skipped = content.skipped;
        if (burst) {
            epoch.events.push_back(nmeaEvent(atMs, burstOf(source.lines), stamp));
        } else {
            for (const std::string& line : source.lines) {
                epoch.events.push_back(nmeaEvent(atMs, line, stamp));
            }
        }
        if (content.hasSatellites) {
            FeedEvent event;
            event.kind = FeedEvent::Kind::kSatellites;
            event.atMs = atMs;
            event.satellites = content.satellites;
            epoch.events.push_back(std::move(event));
        }
        if (content.hasFix) {
            FeedEvent event;
            event.kind = FeedEvent::Kind::kLocation;
            event.atMs = atMs;
            event.location.v1_0 = content.fix;
            epoch.events.push_back(std::move(event));
        }
    }
    return epochs;
}

std::vector<FeedEpoch> feedEpochs(const PhoneLog& log, bool burst) {
    if (log.events.empty()) return {};
    const int64_t startMs = log.events.front().atMs;
    const int64_t spanMs = log.events.back().atMs - startMs;
    std::vector<FeedEpoch> seconds(static_cast<size_t>(spanMs / kSecondMs + 1));
    for (size_t k = 0; k < seconds.size(); ++k) {
        seconds[k].atMs = static_cast<int64_t>(k) * kSecondMs;
        seconds[k].rule = EpochRule::kLogSecond;
        seconds[k].utcLabel = clockLabel(startMs + seconds[k].atMs, 0);
    }
    for (const PhoneEvent& phone : log.events) {
        FeedEvent event = fromPhoneEvent(phone, startMs);
        seconds[static_cast<size_t>(event.atMs / kSecondMs)].events.push_back(std::move(event));
    }
    if (burst) {
        for (FeedEpoch& second : seconds) joinNmea(&second.events);
    }
    return seconds;
}

}  // namespace replay
