// Heap allocations of the feed paths that must not allocate per call: the NMEA
// path, the 1.0 satellite path, and the 2.0 satellite path once a list of the
// same size has been reported. Counted on the calling thread; each check also
// sees the null party receive every call, so a path that silently did nothing
// cannot pass.
#include <gtest/gtest.h>

#include <vector>

#include "alloc_counter.h"
#include "feed_paths.h"

namespace {

using bench::AllocCount;
using bench::Rig;

constexpr int kCalls = 100;

// Sanitizer builds bring their own allocator and count nothing here.
class FeedAllocations : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!bench::countingAllocations())
            GTEST_SKIP() << "allocations are not counted in this build";
    }
};

// Allocations made by kCalls calls of the path, after one call that may grow
// buffers to the size the path needs.
AllocCount allocationsOf(const char* pathName) {
    const bench::FeedPath& path = bench::feedPath(pathName);
    const Rig& rig = bench::connectedRig();
    path.prepare(rig);
    path.library(rig);
    AllocCount before = bench::allocationsSoFar();
    for (int i = 0; i < kCalls; ++i) path.library(rig);
    return bench::allocationsSoFar() - before;
}

TEST_F(FeedAllocations, CounterSeesAllocationsOnThisThread) {
    // Stored through a volatile pointer so that the optimiser cannot drop the pair.
    static std::vector<int>* volatile box;
    AllocCount before = bench::allocationsSoFar();
    box = new std::vector<int>(8);
    AllocCount used = bench::allocationsSoFar() - before;
    delete box;
    EXPECT_EQ(used.news, 2u) << "the vector object and its buffer";
    EXPECT_EQ(used.mallocs, 2u) << "operator new allocates through malloc";
}

TEST_F(FeedAllocations, NmeaPathAllocatesNothing) {
    const Rig& rig = bench::connectedRig();
    uint64_t fed = rig.engine->feedCalls.value();
    uint64_t lines = bench::droppedLines();
    EXPECT_EQ(allocationsOf("send_nmea_update_to_tarvi.rmc").mallocs, 0u);
    EXPECT_EQ(rig.engine->feedCalls.value() - fed, kCalls + 1u);
    EXPECT_EQ(bench::droppedLines() - lines, kCalls + 1u) << "one INFO line per sentence";
}

TEST_F(FeedAllocations, SatellitePath1_0AllocatesNothing) {
    const Rig& rig = bench::connectedRig();
    uint64_t reports = rig.framework->svReports.value();
    EXPECT_EQ(allocationsOf("sendSvInfo_1_0+addSvList_1_0.64").mallocs, 0u);
    EXPECT_EQ(rig.framework->svReports.value() - reports, kCalls + 1u);
    EXPECT_EQ(rig.framework->lastSvCount(), 64u);
}

TEST_F(FeedAllocations, SatellitePath2_0AllocatesNothingOnceASizeWasReported) {
    const Rig& rig = bench::connectedRig();
    for (const char* path : {"sendSvInfo_2_0+addSvList_2_0.64", "sendSvInfo_2_0+addSvList_2_0.10",
                             "addSvList_2_0.64"}) {
        SCOPED_TRACE(path);
        uint64_t reports = rig.framework->svReports.value();
        EXPECT_EQ(allocationsOf(path).mallocs, 0u);
        EXPECT_EQ(rig.framework->svReports.value() - reports, kCalls + 1u);
    }
    EXPECT_EQ(rig.framework->lastSvCount(), 64u);
    allocationsOf("sendSvInfo_2_0+addSvList_2_0.10");
    EXPECT_EQ(rig.framework->lastSvCount(), 15u) << "ten entries and the five added";
}

}  // namespace
