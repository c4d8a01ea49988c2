// The timeline's title, options, epochs, totals and legend, and the column titles over each
// block of rows.
#include <algorithm>
#include <string>
#include <vector>

#include "run_options.h"
#include "svg_elements.h"
#include "timeline_layout.h"

namespace replay::timeline {
namespace {

constexpr int kLineHeight = 16;
constexpr int kLegendTextX = 150;
constexpr int kSwatchWidth = 12;

struct LegendItem {
    std::string swatchClass;  // empty: text only
    std::string text;
    std::string textClass;
};

struct LegendLine {
    std::string lane;
    std::vector<LegendItem> items;
};

const std::vector<LegendLine>& legend() {
    static const std::vector<LegendLine> lines = {
        {"source",
         {{"src-receiver", "receiver: the provider reported the receiver's own fix", ""},
          {"src-fused", "fused: the daemon's fused locations were forwarded", ""}}},
        {"",
         {{"src-both", "both in the same epoch", ""},
          {"src-none", "none: no position reached the framework", ""}}},
        {"fused", {{"", "fwd N: fused locations passed to the framework", ""}}},
        {"",
         {{"",
           "drop N: held back, closer than the reporting interval minus 100 ms to the "
           "last one delivered",
           "drop"}}},
        {"satellites used",
         {{"used", "used in the receiver's fix", ""},
          {"pad", "fake GPS entries the library added (fewer than 4 used)", ""},
          {"", "dashed line: 4 used", "dim"}}},
        {"",
         {{"unknown", "used in the list the framework got, without a count from the receiver", ""},
          {"", "numbers: receiver \u2192 framework", "dim"}}},
        {"RMC valid",
         {{"rmc-true", "true", ""},
          {"rmc-false", "false: what the library told the daemon of the GPS RMC sentence", ""},
          {"", "-: none", "dim"}}},
        {"daemon",
         {{"up", "up", ""},
          {"down", "down at the end of the epoch", ""},
          {"", "died / reconnected / +batching: during the epoch", "died"}}},
        {"rejected",
         {{"", "NMEA chunks that sent no update: reason, \u00d7N when N of them", "rej"},
          {"", "grey: no $GPRMC in the chunk, as the input sends it", "dim"}}},
        {"skip",
         {{"",
           "sentences the decoder skipped (bad or no checksum, empty fields, "
           "proprietary, unreadable)",
           "dim"}}},
        {"overview",
         {{"",
           "the whole run on one time axis, a lane per track; the satellite bars rise with "
           "the GPS satellites used (full at 12)",
           "dim"}}},
        {"", {{"", "Hover over a row, or a stretch of the overview, for its figures.", "dim"}}},
    };
    return lines;
}

void writeLegendLine(const LegendLine& line, int baseline, std::ostream& out) {
    svg::text(out, kMargin, baseline, line.lane, "lane");
    int x = kLegendTextX;
    for (const LegendItem& item : line.items) {
        if (!item.swatchClass.empty()) {
            svg::rect(out, x, baseline - 9, kSwatchWidth, 10, item.swatchClass);
            x += kSwatchWidth + 4;
        }
        svg::text(out, x, baseline, item.text, item.textClass);
        x += svg::textWidth(item.text) + 20;
    }
}

std::string totalsLine(const ReplayReport& report) {
    return std::to_string(report.epochs.size()) + " epochs in " +
           std::to_string((report.endMs + 999) / 1000) + " s, " + std::to_string(report.sentences) +
           " sentences, " + std::to_string(report.fixes()) + " fixes; provider reported " +
           std::to_string(report.providerReported()) + ", fused forwarded " +
           std::to_string(report.fusedForwarded()) + ", dropped " +
           std::to_string(report.fusedDropped()) + "; padded " +
           std::to_string(report.paddedEpochs()) + " epochs; daemon deaths " +
           std::to_string(report.deaths()) + ", reconnections " +
           std::to_string(report.reconnections());
}

// What only a phone log shows: its fixes by provider and the satellite reports sent.
std::string phoneLogLine(const ReplayReport& report) {
    std::string line = "phone log: GPS fixes sent " + std::to_string(report.locationsSent());
    for (const auto& [provider, count] : report.phoneLog->fixesByProvider) {
        if (provider != "GPS") line += ", " + provider + " skipped " + std::to_string(count);
    }
    int fewUsed = 0;
    const std::vector<EpochRecord::SatelliteReport> reports = report.satelliteReportsSent();
    for (const EpochRecord::SatelliteReport& sent : reports) fewUsed += sent.usedGps < 4;
    line += "; satellite reports " + std::to_string(reports.size()) + ", " +
            std::to_string(fewUsed) + " with fewer than 4 GPS used";
    int skipped = 0;
    for (const auto& entry : report.phoneLog->skipped) skipped += entry.second;
    return line + "; rows skipped " + std::to_string(skipped);
}

std::vector<std::string> headingLines(const ReplayReport& report) {
    std::vector<std::string> lines = {describeOptions(report), describeEpochs(report),
                                      totalsLine(report)};
    if (report.phoneLog) lines.push_back(phoneLogLine(report));
    return lines;
}

int legendLineWidth(const LegendLine& line) {
    int x = kLegendTextX;
    for (const LegendItem& item : line.items) {
        if (!item.swatchClass.empty()) x += kSwatchWidth + 4;
        x += svg::textWidth(item.text) + 20;
    }
    return x;
}

}  // namespace

int headingWidth(const ReplayReport& report) {
    int width = kMargin + svg::textWidth("Replay of " + report.capture) * 3 / 2;
    for (const std::string& line : headingLines(report)) {
        width = std::max(width, kMargin + svg::textWidth(line));
    }
    for (const LegendLine& line : legend()) width = std::max(width, legendLineWidth(line));
    return width + kMargin;
}

int writeHeading(const ReplayReport& report, int y, std::ostream& out) {
    y += 16;
    out << "<g class=\"heading\">";
    svg::text(out, kMargin, y, "Replay of " + report.capture, "title");
    y += 4;
    for (const std::string& line : headingLines(report)) {
        y += kLineHeight;
        svg::text(out, kMargin, y, line);
    }
    out << "</g>\n";
    return y + 8;
}

int writeLegend(int y, std::ostream& out) {
    out << "<g class=\"legend\">";
    y += kLineHeight;
    for (const LegendLine& line : legend()) {
        writeLegendLine(line, y, out);
        y += kLineHeight;
    }
    out << "</g>\n";
    return y;
}

void writeColumnTitles(const Columns& c, int y, std::ostream& out) {
    const int baseline = y + 13;
    out << "<g class=\"columns\">";
    svg::text(out, c.indexEnd, baseline, "epoch", "lane", true);
    svg::text(out, c.utc, baseline, "utc", "lane");
    svg::text(out, c.source, baseline, "source", "lane");
    svg::text(out, c.fused, baseline, "fused", "lane");
    svg::text(out, c.satellites, baseline, "satellites used", "lane");
    svg::text(out, c.rmc, baseline, "RMC valid", "lane");
    svg::text(out, c.daemon, baseline, "daemon", "lane");
    svg::text(out, c.rejected, baseline, "rejected chunks", "lane");
    svg::text(out, c.skipped, baseline, "skip", "lane");
    svg::line(out, kMargin, y + kColumnTitleHeight - 1, c.right - kMargin,
              y + kColumnTitleHeight - 1, "rule");
    out << "</g>\n";
}

void writeThresholdLine(const Columns& c, int y, int rows, std::ostream& out) {
    const int x = c.satellites + kPaddingThreshold * kSatelliteWidth;
    svg::line(out, x, y, x, y + rows * kRowHeight, "threshold");
    out << '\n';
}

}  // namespace replay::timeline
