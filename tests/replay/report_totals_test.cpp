// Where a second's position came from, and the run's totals.
#include <gtest/gtest.h>

#include "report/replay_report.h"

namespace replay {
namespace {

CycleRecord cycleWith(bool providerReported, int forwarded, int dropped = 0) {
    CycleRecord cycle;
    cycle.providerReported = providerReported;
    cycle.fusedForwarded = forwarded;
    cycle.fusedDropped = dropped;
    return cycle;
}

TEST(ReportTotalsTest, SourceIsWhatReachedTheFramework) {
    EXPECT_EQ(cycleWith(false, 0).source(), Source::kNone);
    EXPECT_EQ(cycleWith(true, 0).source(), Source::kReceiver);
    EXPECT_EQ(cycleWith(false, 2).source(), Source::kFused);
    EXPECT_EQ(cycleWith(true, 1).source(), Source::kBoth);
    // Dropped fused locations never reached the framework.
    EXPECT_EQ(cycleWith(false, 0, 3).source(), Source::kNone);
    EXPECT_EQ(cycleWith(true, 0, 3).source(), Source::kReceiver);
}

ReplayReport mixedRun() {
    ReplayReport report;
    CycleRecord a = cycleWith(true, 0);
    a.hasFix = true;
    a.nmeaChunks = 3;
    a.rmcValidTrue = 2;
    a.chunksRejected = {{"no $GPRMC sentence", 1}};
    a.satelliteReport = true;
    a.padded = true;
    a.daemonUp = true;
    a.skipped.badChecksum = 2;
    CycleRecord b = cycleWith(false, 2, 1);
    b.nmeaChunks = 1;
    b.rmcValidFalse = 1;
    b.chunksRejected = {{"no $GPRMC sentence", 2}, {"daemon not connected", 4}};
    b.daemonDied = true;
    b.skipped.proprietary = 5;
    b.skipped.badChecksum = 1;
    CycleRecord c = cycleWith(true, 3, 2);
    c.hasFix = true;
    c.satelliteReport = true;
    c.daemonUp = true;
    c.reconnected = true;
    c.batchingReplayed = true;
    report.cycles = {a, b, c, CycleRecord{}};
    return report;
}

TEST(ReportTotalsTest, CountsFlagsAndSumsCounters) {
    const ReplayReport report = mixedRun();
    EXPECT_EQ(report.fixes(), 2);
    EXPECT_EQ(report.providerReported(), 2);
    EXPECT_EQ(report.fusedForwarded(), 5);
    EXPECT_EQ(report.fusedDropped(), 3);
    EXPECT_EQ(report.deaths(), 1);
    EXPECT_EQ(report.reconnections(), 1);
    EXPECT_EQ(report.batchingReplays(), 1);
    EXPECT_EQ(report.nmeaChunks(), 4);
    EXPECT_EQ(report.rmcValidTrue(), 2);
    EXPECT_EQ(report.rmcValidFalse(), 1);
    EXPECT_EQ(report.satelliteReports(), 2);
    EXPECT_EQ(report.paddedSeconds(), 1);
    EXPECT_EQ(report.daemonDownSeconds(), 2);
    EXPECT_EQ(report.seconds(Source::kReceiver), 1);
    EXPECT_EQ(report.seconds(Source::kFused), 1);
    EXPECT_EQ(report.seconds(Source::kBoth), 1);
    EXPECT_EQ(report.seconds(Source::kNone), 1);
}

TEST(ReportTotalsTest, RejectionsAddUpByReasonAcrossSeconds) {
    const ReplayReport report = mixedRun();
    const std::map<std::string, int> expected = {{"no $GPRMC sentence", 3},
                                                 {"daemon not connected", 4}};
    EXPECT_EQ(report.chunksRejected(), expected);
    EXPECT_EQ(report.chunksRejectedTotal(), 7);
    const SkipCounts skipped = report.skipped();
    EXPECT_EQ(skipped.badChecksum, 3);
    EXPECT_EQ(skipped.proprietary, 5);
    EXPECT_EQ(skipped.noChecksum + skipped.emptyFields + skipped.unreadable, 0);
}

TEST(ReportTotalsTest, EmptyRunHasZeroTotals) {
    const ReplayReport report;
    EXPECT_EQ(report.fixes() + report.fusedForwarded() + report.deaths() +
                  report.chunksRejectedTotal() + report.daemonDownSeconds(),
              0);
    EXPECT_TRUE(report.chunksRejected().empty());
}

}  // namespace
}  // namespace replay
