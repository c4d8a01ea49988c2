// The NMEA and satellite feed paths, and the 1.0 padding, make no heap
// allocation per call once a report of the same size has gone through. Counted
// on the calling thread; each check also sees the null party receive every
// call, so a path that silently did nothing cannot pass.
#include <gtest/gtest.h>

#include <vector>

#include "alloc_counter.h"
#include "feed_paths.h"

namespace {

using bench::Rig;

constexpr int kCalls = 100;

// Allocations made by kCalls calls of the path, after one call that may grow
// buffers to the size the path needs.
uint64_t allocationsOf(const char* pathName) {
    const bench::FeedPath& path = bench::feedPath(pathName);
    const Rig& rig = bench::connectedRig();
    path.prepare(rig);
    path.library(rig);
    uint64_t before = bench::allocationsSoFar();
    for (int i = 0; i < kCalls; ++i) path.library(rig);
    return bench::allocationsSoFar() - before;
}

// Without this, a counter that no longer sees allocations would let every
// check below pass.
TEST(FeedAllocations, CounterSeesAllocationsOnThisThread) {
    // Stored through a volatile pointer so that the optimiser cannot drop the pair.
    static std::vector<int>* volatile box;
    uint64_t before = bench::allocationsSoFar();
    box = new std::vector<int>(8);
    uint64_t used = bench::allocationsSoFar() - before;
    delete box;
    EXPECT_EQ(used, 2u) << "the vector object and its buffer";
}

TEST(FeedAllocations, NmeaPathAllocatesNothing) {
    const Rig& rig = bench::connectedRig();
    uint64_t fed = rig.engine->feedCalls.value();
    uint64_t lines = bench::droppedLines();
    EXPECT_EQ(allocationsOf("send_nmea_update_to_tarvi.rmc"), 0u);
    EXPECT_EQ(rig.engine->feedCalls.value() - fed, kCalls + 1u);
    EXPECT_EQ(bench::droppedLines() - lines, kCalls + 1u) << "one INFO line per sentence";
}

TEST(FeedAllocations, SatellitePath1_0AllocatesNothing) {
    const Rig& rig = bench::connectedRig();
    uint64_t reports = rig.framework->svReports.value();
    EXPECT_EQ(allocationsOf("sendSvInfo_1_0+addSvList_1_0.64"), 0u);
    EXPECT_EQ(rig.framework->svReports.value() - reports, kCalls + 1u);
    EXPECT_EQ(rig.framework->lastSvCount(), 64u);
}

// The 2.0 satellite feed reuses the store's capacity. Padding a 2.0 list is
// left out: the framework receives its own copy of the list, which allocates.
TEST(FeedAllocations, SatellitePath2_0AllocatesNothingOnceASizeWasReported) {
    const Rig& rig = bench::connectedRig();
    uint64_t fed = rig.engine->feedCalls.value();
    EXPECT_EQ(allocationsOf("sendSvInfo_2_0.64"), 0u);
    EXPECT_EQ(rig.engine->feedCalls.value() - fed, kCalls + 1u);
}

}  // namespace
