// One epoch of the timeline's detail: a <g class="epoch"> row with a cell in every column,
// and a tooltip that spells out all of the epoch's figures.
#include <algorithm>
#include <string>
#include <utility>

#include "svg_elements.h"
#include "text_escape.h"
#include "timeline_layout.h"

namespace replay::timeline {
namespace {

constexpr int kCellTop = 1;
constexpr int kCellHeight = kRowHeight - 2;
constexpr int kBarTop = 3;
constexpr int kBarHeight = kRowHeight - 6;


std::string times(int count) {
    return count > 1 ? " \u00d7" + std::to_string(count) : "";
}

// The rejections of one kind (expected or not), "reason ×N; reason".
std::string rejectedText(const EpochRecord& epoch, bool expected) {
    std::string text;
    for (const auto& [reason, count] : epoch.chunksRejected) {
        if (count <= 0 || isExpectedRejection(reason) != expected) continue;
        if (!text.empty()) text += "; ";
        text += oneLine(reason) + times(count);
    }
    return text;
}

std::string rejectedText(const EpochRecord& epoch) {
    const std::string faults = rejectedText(epoch, false);
    const std::string expected = rejectedText(epoch, true);
    return faults + (faults.empty() || expected.empty() ? "" : "; ") + expected;
}

int skippedTotal(const SkipCounts& skipped) {
    return skipped.badChecksum + skipped.noChecksum + skipped.emptyFields + skipped.proprietary +
           skipped.unreadable;
}

std::string satellitesText(const EpochRecord& epoch) {
    if (epoch.usedBefore < 0 && epoch.usedAfter < 0) return "none reported";
    const std::string before = epoch.usedBefore < 0 ? "?" : std::to_string(epoch.usedBefore);
    if (epoch.usedAfter < 0 || (epoch.usedAfter == epoch.usedBefore && !epoch.padded)) {
        return before;
    }
    return before + " \u2192 " + std::to_string(epoch.usedAfter);
}

std::string daemonEvents(const EpochRecord& epoch) {
    std::string text;
    for (const auto& [happened, word] : {std::pair<bool, const char*>{epoch.daemonDied, "died"},
                                         {epoch.reconnected, "reconnected"},
                                         {epoch.batchingReplayed, "+batching"}}) {
        if (happened) text += (text.empty() ? "" : " ") + std::string(word);
    }
    return text;
}

std::string details(const EpochRecord& epoch) {
    std::string text =
        "epoch " + std::to_string(epoch.index) + " at " + std::to_string(epoch.atMs) + " ms";
    if (!epoch.utcLabel.empty()) text += " (" + epoch.utcLabel + ")";
    text += std::string(epoch.hasFix ? ": fix" : ": no fix") +
            "; position to the framework: " + sourceName(epoch.source()) +
            (epoch.providerReported ? " (provider reported)" : "") + "; fused forwarded " +
            std::to_string(epoch.fusedForwarded) + ", dropped " +
            std::to_string(epoch.fusedDropped) + "; NMEA chunks " +
            std::to_string(epoch.nmeaChunks) + ", RMC valid true " +
            std::to_string(epoch.rmcValidTrue) + ", false " + std::to_string(epoch.rmcValidFalse);
    const std::string rejected = rejectedText(epoch);
    if (!rejected.empty()) text += "; rejected: " + rejected;
    text += "; satellites used " + satellitesText(epoch) + (epoch.padded ? " (padded)" : "") +
            (epoch.satelliteReport ? "" : ", no satellite report");
    text += std::string("; daemon ") + (epoch.daemonUp ? "up" : "down");
    if (epoch.daemonDied) text += ", died";
    if (epoch.reconnected) text += ", reconnected";
    if (epoch.batchingReplayed) text += ", batching replayed";
    const SkipCounts& s = epoch.skipped;
    if (skippedTotal(s) > 0) {
        text += "; skipped: bad checksum " + std::to_string(s.badChecksum) + ", no checksum " +
                std::to_string(s.noChecksum) + ", empty fields " + std::to_string(s.emptyFields) +
                ", proprietary " + std::to_string(s.proprietary) + ", unreadable " +
                std::to_string(s.unreadable);
    }
    return text;
}

void writeSource(const EpochRecord& epoch, const Columns& c, std::ostream& out) {
    const std::string name = sourceName(epoch.source());
    svg::rect(out, c.source, kCellTop, kSourceWidth, kCellHeight, "src-" + name);
    svg::text(out, c.source + 4, kBaseline, name, epoch.source() == Source::kNone ? "dim" : "on");
}

void writeFused(const RowTexts& texts, const Columns& c, std::ostream& out) {
    if (!texts.fused.empty()) svg::text(out, c.fused, kBaseline, texts.fused);
    if (!texts.dropped.empty()) svg::text(out, c.drop, kBaseline, texts.dropped, "drop");
}

int barLength(int satellites) {
    return std::clamp(satellites, 0, kSatellitesDrawn) * kSatelliteWidth;
}

void writeSatellites(const EpochRecord& epoch, const Columns& c, std::ostream& out) {
    const bool counted = epoch.usedBefore >= 0;
    const bool listed = epoch.usedAfter >= 0;
    int end = c.satellites;
    const auto bar = [&](int length, const char* cssClass) {
        if (length <= 0) return false;
        svg::rect(out, end, kBarTop, length, kBarHeight, cssClass);
        end += length;
        return true;
    };
    bool padShown = false;
    if (counted) {
        bar(barLength(epoch.usedBefore), "used");
        if (epoch.padded && epoch.usedAfter > epoch.usedBefore) {
            padShown = bar(barLength(epoch.usedAfter) - barLength(epoch.usedBefore), "pad");
        }
    } else if (listed) {
        // The framework got a list, but the receiver sent no count this second.
        bar(barLength(epoch.usedAfter), "unknown");
    }
    // A padded second always shows some orange, even when the counts do not say how much.
    if (epoch.padded && !padShown) bar(2, "pad");
    const bool any = counted || listed;
    svg::text(out, c.satelliteNumbers, kBaseline, any ? satellitesText(epoch) : "-",
              epoch.padded ? "padded" : (any ? "" : "dim"));
}

void writeRmc(const EpochRecord& epoch, const Columns& c, std::ostream& out) {
    const int trues = epoch.rmcValidTrue;
    const int falses = epoch.rmcValidFalse;
    if (trues > 0 && falses > 0) {
        svg::rect(out, c.rmc, kCellTop, kRmcWidth / 2, kCellHeight, "rmc-true");
        svg::rect(out, c.rmc + kRmcWidth / 2, kCellTop, kRmcWidth / 2, kCellHeight, "rmc-false");
        svg::text(out, c.rmc + 3, kBaseline, "T" + std::to_string(trues), "on");
        svg::text(out, c.rmc + kRmcWidth / 2 + 3, kBaseline, "F" + std::to_string(falses), "on");
    } else if (trues > 0 || falses > 0) {
        svg::rect(out, c.rmc, kCellTop, kRmcWidth, kCellHeight,
                  trues > 0 ? "rmc-true" : "rmc-false");
        svg::text(out, c.rmc + 3, kBaseline, (trues > 0 ? "true" : "false") + times(trues + falses),
                  "on");
    } else {
        svg::text(out, c.rmc + 3, kBaseline, "-", "dim");
    }
}

void writeDaemon(const EpochRecord& epoch, const Columns& c, std::ostream& out) {
    svg::rect(out, c.daemon, 0, kDaemonWidth, kRowHeight, epoch.daemonUp ? "up" : "down");
    int x = c.events;
    const auto event = [&](bool happened, const std::string& word, const std::string& cssClass) {
        if (!happened) return;
        svg::text(out, x, kBaseline, word, cssClass);
        x += svg::textWidth(word + " ");
    };
    event(epoch.daemonDied, "died", "died");
    event(epoch.reconnected, "reconnected", "back");
    event(epoch.batchingReplayed, "+batching", "batch");
}

// Rejections that point at a fault in red, those that come with the input in grey.
void writeRejectedAndSkipped(const EpochRecord& epoch, const RowTexts& texts, const Columns& c,
                             std::ostream& out) {
    const std::string faults = rejectedText(epoch, false);
    const std::string expected = rejectedText(epoch, true);
    if (!faults.empty()) svg::text(out, c.rejected, kBaseline, faults, "rej");
    if (!expected.empty()) {
        const int x = c.rejected + (faults.empty() ? 0 : svg::textWidth(faults + "; "));
        svg::text(out, x, kBaseline, expected, "dim");
    }
    if (!texts.skipped.empty()) svg::text(out, c.skipped, kBaseline, texts.skipped, "dim");
}

}  // namespace

const char* sourceName(Source source) {
    switch (source) {
        case Source::kReceiver:
            return "receiver";
        case Source::kFused:
            return "fused";
        case Source::kBoth:
            return "both";
        case Source::kNone:
            break;
    }
    return "none";
}

bool isExpectedRejection(const std::string& reason) {
    return reason == "no $GPRMC sentence";
}

RowTexts rowTexts(const EpochRecord& epoch) {
    RowTexts texts;
    texts.index = std::to_string(epoch.index);
    texts.utc = epoch.utcLabel;
    if (epoch.fusedForwarded > 0) texts.fused = "fwd " + std::to_string(epoch.fusedForwarded);
    if (epoch.fusedDropped > 0) texts.dropped = "drop " + std::to_string(epoch.fusedDropped);
    const bool any = epoch.usedBefore >= 0 || epoch.usedAfter >= 0;
    texts.satellites = any ? satellitesText(epoch) : "-";
    texts.daemonEvents = daemonEvents(epoch);
    texts.rejected = rejectedText(epoch);
    const int skipped = skippedTotal(epoch.skipped);
    if (skipped > 0) texts.skipped = std::to_string(skipped);
    return texts;
}

void writeEpochRow(const EpochRecord& epoch, const Columns& c, int y, std::ostream& out) {
    const RowTexts texts = rowTexts(epoch);
    out << "<g class=\"epoch\" data-index=\"" << epoch.index << "\" transform=\"translate(0," << y
        << ")\"><title>" << xmlEscaped(details(epoch)) << "</title>";
    if (epoch.index % 2 != 0) svg::rect(out, kMargin, 0, c.right - kMargin, kRowHeight, "zebra");
    svg::text(out, c.indexEnd, kBaseline, texts.index, "", true);
    svg::text(out, c.utc, kBaseline, texts.utc, epoch.hasFix ? "" : "dim");
    writeSource(epoch, c, out);
    writeFused(texts, c, out);
    writeSatellites(epoch, c, out);
    writeRmc(epoch, c, out);
    writeDaemon(epoch, c, out);
    writeRejectedAndSkipped(epoch, texts, c, out);
    out << "</g>\n";
}

}  // namespace replay::timeline
