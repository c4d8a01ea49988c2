// One second of the timeline: a <g class="epoch"> row with a cell in every lane, and a
// tooltip that spells out all of the second's figures.
#include <algorithm>
#include <string>

#include "svg_elements.h"
#include "text_escape.h"
#include "timeline_layout.h"

namespace replay::timeline {
namespace {

constexpr int kCellTop = 1;
constexpr int kCellHeight = kRowHeight - 2;
constexpr int kBarTop = 3;
constexpr int kBarHeight = kRowHeight - 6;

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

std::string times(int count) {
    return count > 1 ? " \u00d7" + std::to_string(count) : "";
}

std::string rejectedText(const EpochRecord& epoch) {
    std::string text;
    for (const auto& [reason, count] : epoch.chunksRejected) {
        if (count <= 0) continue;
        if (!text.empty()) text += "; ";
        text += oneLine(reason) + times(count);
    }
    return text;
}

int skippedTotal(const SkipCounts& skipped) {
    return skipped.badChecksum + skipped.noChecksum + skipped.emptyFields + skipped.proprietary +
           skipped.unreadable;
}

// Cuts text to `limit` characters, the last one an ellipsis, without splitting a character.
std::string clipped(const std::string& text, size_t limit) {
    if (characterCount(text) <= limit) return text;
    size_t kept = 0;
    size_t end = 0;
    for (; end < text.size(); ++end) {
        if ((static_cast<unsigned char>(text[end]) & 0xC0) != 0x80 && ++kept == limit) break;
    }
    return text.substr(0, end) + "\u2026";
}

std::string satellitesText(const EpochRecord& epoch) {
    if (epoch.usedBefore < 0 && epoch.usedAfter < 0) return "none reported";
    const std::string before = epoch.usedBefore < 0 ? "?" : std::to_string(epoch.usedBefore);
    if (epoch.usedAfter < 0 || (epoch.usedAfter == epoch.usedBefore && !epoch.padded)) {
        return before;
    }
    return before + " \u2192 " + std::to_string(epoch.usedAfter);
}

std::string details(const EpochRecord& epoch) {
    std::string text = "second " + std::to_string(epoch.index);
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

void writeSource(const EpochRecord& epoch, std::ostream& out) {
    const std::string name = sourceName(epoch.source());
    svg::rect(out, kSourceX, kCellTop, kSourceWidth, kCellHeight, "src-" + name);
    svg::text(out, kSourceX + 4, kBaseline, name, epoch.source() == Source::kNone ? "dim" : "on");
}

void writeFused(const EpochRecord& epoch, std::ostream& out) {
    if (epoch.fusedForwarded > 0) {
        svg::text(out, kFusedX, kBaseline, "fwd " + std::to_string(epoch.fusedForwarded));
    }
    if (epoch.fusedDropped > 0) {
        svg::text(out, kDropX, kBaseline, "drop " + std::to_string(epoch.fusedDropped), "drop");
    }
}

int barLength(int satellites) {
    return std::clamp(satellites, 0, kSatellitesDrawn) * kSatelliteWidth;
}

void writeSatellites(const EpochRecord& epoch, std::ostream& out) {
    const bool counted = epoch.usedBefore >= 0;
    const bool listed = epoch.usedAfter >= 0;
    int end = kSatellitesX;
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
    svg::text(out, kSatelliteNumbersX, kBaseline, any ? satellitesText(epoch) : "-",
              epoch.padded ? "padded" : (any ? "" : "dim"));
}

void writeRmc(const EpochRecord& epoch, std::ostream& out) {
    const int trues = epoch.rmcValidTrue;
    const int falses = epoch.rmcValidFalse;
    if (trues > 0 && falses > 0) {
        svg::rect(out, kRmcX, kCellTop, kRmcWidth / 2, kCellHeight, "rmc-true");
        svg::rect(out, kRmcX + kRmcWidth / 2, kCellTop, kRmcWidth / 2, kCellHeight, "rmc-false");
        svg::text(out, kRmcX + 3, kBaseline, "T" + std::to_string(trues), "on");
        svg::text(out, kRmcX + kRmcWidth / 2 + 3, kBaseline, "F" + std::to_string(falses), "on");
    } else if (trues > 0 || falses > 0) {
        svg::rect(out, kRmcX, kCellTop, kRmcWidth, kCellHeight,
                  trues > 0 ? "rmc-true" : "rmc-false");
        svg::text(out, kRmcX + 3, kBaseline, (trues > 0 ? "true" : "false") + times(trues + falses),
                  "on");
    } else {
        svg::text(out, kRmcX + 3, kBaseline, "-", "dim");
    }
}

void writeDaemon(const EpochRecord& epoch, std::ostream& out) {
    svg::rect(out, kDaemonX, 0, kDaemonWidth, kRowHeight, epoch.daemonUp ? "up" : "down");
    int x = kEventsX;
    const auto event = [&](bool happened, const std::string& word, const std::string& cssClass) {
        if (!happened) return;
        svg::text(out, x, kBaseline, word, cssClass);
        x += svg::textWidth(word) + 7;
    };
    event(epoch.daemonDied, "died", "died");
    event(epoch.reconnected, "reconnected", "back");
    event(epoch.batchingReplayed, "+batching", "batch");
}

void writeRejectedAndSkipped(const EpochRecord& epoch, std::ostream& out) {
    const std::string rejected = rejectedText(epoch);
    if (!rejected.empty()) {
        svg::text(out, kRejectedX, kBaseline, clipped(rejected, kRejectedCharacters), "rej");
    }
    const int skipped = skippedTotal(epoch.skipped);
    if (skipped > 0) svg::text(out, kSkippedX, kBaseline, std::to_string(skipped), "dim");
}

}  // namespace

void writeEpochRow(const EpochRecord& epoch, int y, std::ostream& out) {
    out << "<g class=\"epoch\" data-index=\"" << epoch.index << "\" transform=\"translate(0," << y
        << ")\"><title>" << xmlEscaped(details(epoch)) << "</title>";
    if (epoch.index % 2 != 0) svg::rect(out, kMargin, 0, kWidth - 2 * kMargin, kRowHeight, "zebra");
    svg::text(out, kIndexEnd, kBaseline, std::to_string(epoch.index), "", true);
    svg::text(out, kUtcX, kBaseline, epoch.utcLabel, epoch.hasFix ? "" : "dim");
    writeSource(epoch, out);
    writeFused(epoch, out);
    writeSatellites(epoch, out);
    writeRmc(epoch, out);
    writeDaemon(epoch, out);
    writeRejectedAndSkipped(epoch, out);
    out << "</g>\n";
}

}  // namespace replay::timeline
