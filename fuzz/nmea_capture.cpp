// The NMEA capture reader: cutting a capture into epochs, decoding each, and laying the
// epochs out as the replay feeds them.
// Input: one byte whose bit 0 asks for burst chunks, then the capture's text.
// Checks: every non-blank line is either a sentence in exactly one epoch or counted as no
// sentence; epochs are replayed in time order, a timed one only where it carries a time; a
// fix has a position in range and its flag; every epoch's events lie at its start and carry
// every sentence (one chunk each, or one chunk for the epoch in burst mode).
#include <cmath>
#include <string>

#include "capture/feed_epochs.h"
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

void checkFix(const replay::EpochContent& content) {
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
    int64_t lastAtMs = -1;
    for (const replay::Epoch& epoch : capture.epochs) {
        lines += epoch.lines.size();
        CAPTURE_CHECK(epoch.atMs > lastAtMs, "epochs out of time order");
        CAPTURE_CHECK(epoch.timeOfDayMs.has_value() == (epoch.rule == replay::EpochRule::kUtcTime),
                      "an epoch's time does not match its rule");
        lastAtMs = epoch.atMs;
    }
    CAPTURE_CHECK(static_cast<int>(lines) == capture.sentenceCount, "lines lost in epochs");
    CAPTURE_CHECK(capture.sentenceCount + capture.linesNotNmea == nonBlankLines(text),
                  "non-blank lines miscounted");
    CAPTURE_CHECK(capture.intervalMs > 0, "no time between epochs");

    replay::EpochDecoder decoder;
    for (const replay::Epoch& epoch : capture.epochs) checkFix(decoder.decode(epoch));

    const auto epochs = replay::feedEpochs(capture, burst);
    CAPTURE_CHECK(epochs.size() == capture.epochs.size(), "not one fed epoch per epoch");
    for (size_t k = 0; k < epochs.size(); ++k) {
        size_t chunks = 0;
        for (const FeedEvent& event : epochs[k].events) {
            CAPTURE_CHECK(event.atMs == capture.epochs[k].atMs, "event off its epoch");
            chunks += event.kind == FeedEvent::Kind::kNmea;
        }
        CAPTURE_CHECK(chunks == (burst ? 1 : capture.epochs[k].lines.size()),
                      "chunks do not match the epoch's lines");
    }
    return 0;
}
