// The summary table: every figure once, right number, one parseable line each.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sstream>

#include "report/replay_report.h"

namespace replay {
namespace {

struct Row {
    bool fix, reported;
    int forwarded, dropped, chunks, rmcTrue, rmcFalse;
    std::map<std::string, int> rejected;
    bool satellites, padded, up, died, reconnected, batching;
    SkipCounts skipped;
};

SkipCounts skips(int bad, int none, int empty, int proprietary, int unreadable) {
    SkipCounts s;
    s.badChecksum = bad, s.noChecksum = none, s.emptyFields = empty, s.proprietary = proprietary;
    s.unreadable = unreadable;
    return s;
}

ReplayReport handBuiltRun(const std::string& capture, const std::string& oddReason) {
    // clang-format off
    const std::vector<Row> rows = {
        // fix   reported fwd drop chunks true false rejected                          sats   padded up     died   recon  batch  skipped
        {false, false,    0,  0,   1,     0,   1,    {},                               false, false, true,  false, false, false, skips(0, 0, 0, 0, 1)},
        {true,  true,     0,  0,   5,     4,   0,    {{"no $GPRMC sentence", 1}},      true,  true,  true,  false, false, false, skips(2, 0, 0, 0, 0)},
        {true,  true,     2,  1,   5,     4,   0,    {},                               true,  true,  true,  true,  false, false, skips(0, 3, 0, 0, 0)},
        {true,  false,    0,  0,   5,     0,   0,    {{"daemon not connected", 5}},    true,  false, false, false, false, false, skips(0, 0, 4, 0, 0)},
        {true,  false,    3,  2,   5,     0,   0,    {{"daemon not connected", 4}},    true,  false, true,  false, true,  true,  skips(0, 0, 0, 0, 0)},
        {true,  true,     4,  3,   5,     5,   1,    {{oddReason, 1}},                 true,  true,  true,  false, false, false, skips(0, 0, 0, 6, 0)},
        {false, false,    0,  0,   5,     0,   5,    {},                               false, false, false, true,  false, false, skips(0, 0, 0, 0, 0)},
    };
    // clang-format on
    ReplayReport report;
    report.capture = capture;
    report.settings.hal = "1.0";
    report.settings.latencyMs = 250, report.settings.jitterMs = 40;
    report.settings.coastMs = 3000, report.settings.seed = 7, report.settings.intervalMs = 500;
    report.settings.killAt = {3}, report.settings.restartAt = {4, 9};
    report.cut.linesNotNmea = 2, report.cut.timeBreaks = 1, report.cut.cycleEnder = "GPRMC";
    report.sentences = 123;
    report.endMs = 6500, report.downtimes = {{3000, 4000}, {5900, 6500}};
    for (const Row& row : rows) {
        EpochRecord c;
        c.index = static_cast<int>(report.epochs.size());
        c.hasFix = row.fix, c.providerReported = row.reported;
        c.fusedForwarded = row.forwarded, c.fusedDropped = row.dropped;
        c.nmeaChunks = row.chunks, c.rmcValidTrue = row.rmcTrue, c.rmcValidFalse = row.rmcFalse;
        c.chunksRejected = row.rejected;
        c.satelliteReport = row.satellites, c.padded = row.padded;
        if (row.satellites) c.satelliteReportsSent.push_back({12, 3});
        c.rule = c.index == 6 ? EpochRule::kRepeatedSentence : EpochRule::kUtcTime;
        c.daemonUp = row.up, c.daemonDied = row.died, c.reconnected = row.reconnected;
        c.batchingReplayed = row.batching;
        c.skipped = row.skipped;
        report.epochs.push_back(c);
    }
    return report;
}

const std::map<std::string, long> kExpectedFigures = {
    {"epochs", 7},
    {"epochs by UTC time", 6},
    {"epochs by repeated sentence", 1},
    {"epoch interval ms", 1000},
    {"seconds replayed", 7},
    {"time breaks", 1},
    {"sentences", 123},
    {"lines not NMEA", 2},
    {"fixes", 5},
    {"locations reported by the provider", 3},
    {"fused locations forwarded", 9},
    {"fused locations dropped (interval rule)", 6},
    {"epochs source receiver", 1},
    {"epochs source fused", 1},
    {"epochs source both", 2},
    {"epochs source none", 3},
    {"NMEA chunks sent", 31},
    {"RMC valid sent true", 13},
    {"RMC valid sent false", 7},
    {"NMEA chunks rejected", 11},
    {"rejected: no $GPRMC sentence", 1},
    {"rejected: daemon not connected", 9},
    {"rejected: RMC tail of 256+ characters", 1},
    {"satellite reports", 5},
    {"satellite lists padded", 3},
    {"daemon deaths", 2},
    {"reconnections", 1},
    {"batching replays", 1},
    {"seconds daemon down", 2},
    {"epochs daemon down", 2},
    {"skipped bad checksum", 2},
    {"skipped no checksum", 3},
    {"skipped empty fields", 4},
    {"skipped proprietary", 6},
    {"skipped unreadable", 1},
};

std::vector<std::string> summaryLines(const ReplayReport& report) {
    std::ostringstream out;
    writeSummary(report, out);
    std::vector<std::string> lines;
    std::istringstream in(out.str());
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// "<label>  <number>" lines, the way other tools read the summary; a label seen twice fails.
std::map<std::string, long> figures(const std::vector<std::string>& lines) {
    static const std::regex kFigure(R"(^(\S.*\S) {2,}(\d+)$)");
    std::map<std::string, long> found;
    for (const std::string& line : lines) {
        std::smatch m;
        if (!std::regex_match(line, m, kFigure)) continue;
        EXPECT_TRUE(found.emplace(m[1], std::stol(m[2])).second) << "twice: " << m[1];
    }
    return found;
}

TEST(ReportSummaryTest, EveryFigureOnceWithItsNumber) {
    const auto lines =
        summaryLines(handBuiltRun("gpsd-quectel.log", "RMC tail of 256+ characters"));
    EXPECT_EQ(figures(lines), kExpectedFigures);
}

TEST(ReportSummaryTest, HeaderNamesCaptureEveryOptionAndTheEpochRules) {
    const auto lines = summaryLines(handBuiltRun("gpsd-quectel.log", "x"));
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[0], "Replay of gpsd-quectel.log");
    EXPECT_EQ(lines[1],
              "HAL 1.0, NMEA per sentence, latency 250 ms, jitter 40 ms, seed 7, coast 3000 ms, "
              "reporting interval 500 ms, batching, daemon killed at 3 s, registered again at "
              "4, 9 s");
    EXPECT_EQ(lines[2],
              "Epochs: 6 where the UTC time changes, 1 where a time-carrying sentence without a "
              "time repeats; 1 a second (every 1000 ms); the cycle ends with GPRMC; 1 break in "
              "time");
    ReplayReport other;
    other.settings.burst = true, other.settings.batching = false;
    other.cut.intervalMs = 200;
    other.epochs.resize(3);
    const auto otherLines = summaryLines(other);
    EXPECT_EQ(otherLines[1],
              "HAL 2.0, NMEA burst (whole epoch as one chunk), latency 0 ms, jitter 0 ms, seed 1, "
              "coast 0 ms, reporting interval of the library, no batching, daemon never killed");
    EXPECT_EQ(otherLines[2], "Epochs: 3 where the UTC time changes; 5 a second (every 200 ms)");
}

TEST(ReportSummaryTest, NumbersEndInOneColumnAndLabelsStartTheLine) {
    const auto lines = summaryLines(handBuiltRun("a.log", "RMC tail of 256+ characters"));
    size_t width = 0;
    for (const std::string& line : lines) {
        if (line.empty() || !isdigit(static_cast<unsigned char>(line.back()))) continue;
        if (width == 0) width = line.size();
        EXPECT_EQ(line.size(), width) << line;
        EXPECT_NE(line.front(), ' ') << line;
    }
    EXPECT_GT(width, 0u);
}

TEST(ReportSummaryTest, OutsideTextCannotForgeOrBreakFigures) {
    // A file name and a reason that try to start lines of their own.
    const auto lines =
        summaryLines(handBuiltRun("evil\nfixes  999\r\n x  5", "RMC tail  of\t256+\ncharacters"));
    EXPECT_EQ(figures(lines), kExpectedFigures);
    EXPECT_EQ(lines[0], "Replay of evil fixes 999 x 5");
}

}  // namespace
}  // namespace replay
