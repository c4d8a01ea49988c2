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
    report.hal = "1.0";
    report.burst = false;
    report.latencyMs = 250, report.jitterMs = 40, report.coastMs = 3000;
    report.sentences = 123;
    for (const Row& row : rows) {
        CycleRecord c;
        c.index = static_cast<int>(report.cycles.size());
        c.hasFix = row.fix, c.providerReported = row.reported;
        c.fusedForwarded = row.forwarded, c.fusedDropped = row.dropped;
        c.nmeaChunks = row.chunks, c.rmcValidTrue = row.rmcTrue, c.rmcValidFalse = row.rmcFalse;
        c.chunksRejected = row.rejected;
        c.satelliteReport = row.satellites, c.padded = row.padded;
        c.daemonUp = row.up, c.daemonDied = row.died, c.reconnected = row.reconnected;
        c.batchingReplayed = row.batching;
        c.skipped = row.skipped;
        report.cycles.push_back(c);
    }
    return report;
}

const std::map<std::string, long> kExpectedFigures = {
    {"cycles", 7},
    {"sentences", 123},
    {"fixes", 5},
    {"locations reported by the provider", 3},
    {"fused locations forwarded", 9},
    {"fused locations dropped (interval rule)", 6},
    {"seconds source receiver", 1},
    {"seconds source fused", 1},
    {"seconds source both", 2},
    {"seconds source none", 3},
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

TEST(ReportSummaryTest, HeaderNamesCaptureAndOptions) {
    const auto lines = summaryLines(handBuiltRun("gpsd-quectel.log", "x"));
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], "Replay of gpsd-quectel.log");
    EXPECT_EQ(lines[1], "HAL 1.0, NMEA per sentence, latency 250 ms, jitter 40 ms, coast 3000 ms");
    ReplayReport burst;
    burst.burst = true;
    EXPECT_NE(summaryLines(burst)[1].find("HAL 2.0, NMEA burst"), std::string::npos);
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
