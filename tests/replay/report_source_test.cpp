// Where a second's position came from: the replay checks count the seconds of each source
// only against the picture, which draws them from the same classification.
#include <gtest/gtest.h>

#include "report/replay_report.h"

namespace replay {
namespace {

EpochRecord cycleWith(bool providerReported, int forwarded, int dropped = 0) {
    EpochRecord epoch;
    epoch.providerReported = providerReported;
    epoch.fusedForwarded = forwarded;
    epoch.fusedDropped = dropped;
    return epoch;
}

TEST(ReportSourceTest, SourceIsWhatReachedTheFramework) {
    EXPECT_EQ(cycleWith(false, 0).source(), Source::kNone);
    EXPECT_EQ(cycleWith(true, 0).source(), Source::kReceiver);
    EXPECT_EQ(cycleWith(false, 2).source(), Source::kFused);
    EXPECT_EQ(cycleWith(true, 1).source(), Source::kBoth);
    // Dropped fused locations never reached the framework.
    EXPECT_EQ(cycleWith(false, 0, 3).source(), Source::kNone);
    EXPECT_EQ(cycleWith(true, 0, 3).source(), Source::kReceiver);
}

}  // namespace
}  // namespace replay
