// Percentiles of the look-up latency figure: the p99 that the table compares
// must be the smallest latency that 99 % of the calls did not exceed.
#include "latency_histogram.h"

#include <gtest/gtest.h>

namespace {

using bench::LatencyHistogram;

TEST(LatencyHistogram, PercentilesOfAKnownSpread) {
    LatencyHistogram h;
    for (int ns = 1; ns <= 200; ++ns) h.add(ns);
    EXPECT_EQ(h.percentile(0.50), 100);
    EXPECT_EQ(h.percentile(0.99), 198);
    EXPECT_EQ(h.percentile(1.0), 200);
    EXPECT_EQ(h.count(), 200u);
}

TEST(LatencyHistogram, ATailBelowOnePercentDoesNotMoveP99) {
    LatencyHistogram h;
    for (int i = 0; i < 999; ++i) h.add(40);
    h.add(5000000);  // one call preempted for 5 ms
    EXPECT_EQ(h.percentile(0.99), 40);
    EXPECT_EQ(h.max(), 5000000);
}

TEST(LatencyHistogram, CallsPastTheLastBucketCountAtItsLimit) {
    LatencyHistogram h;
    for (int i = 0; i < 10; ++i) h.add(LatencyHistogram::kLimitNs * 3);
    EXPECT_EQ(h.percentile(0.99), LatencyHistogram::kLimitNs);
    EXPECT_EQ(h.max(), LatencyHistogram::kLimitNs * 3);
}

TEST(LatencyHistogram, EmptyReadsZero) {
    LatencyHistogram h;
    EXPECT_EQ(h.percentile(0.99), 0);
    EXPECT_EQ(h.max(), 0);
}

}  // namespace
