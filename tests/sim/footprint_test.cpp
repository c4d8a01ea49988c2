// What an operation reaches alone decides which pairs share state; a footprint that missed
// what a delivery the operation sets off reaches, or the calls it makes, would leave pairs
// out of the test command's share and nested operations ungenerated.
#include "footprint.h"

#include <gtest/gtest.h>

namespace gen {
namespace {

const std::vector<std::string> kConnected = {"fusd register", "call fusionD_init",
                                             "call registerCallback gnssCb geofenceCb corvaneCb"};

TEST(FootprintTest, NamesTheCallsAnOperationMakesAndWhatItsDeliveriesReach) {
    const Footprint fused =
        measureFootprint(kConnected, {"fusd reportFusdLocation loc{timestamp=10050}"});
    const Footprint kill = measureFootprint(kConnected, {"fusd kill"});
    const Footprint feed = measureFootprint(kConnected, {"call sendLocationDataToTarvi loc{}"});
    const Footprint query = measureFootprint(kConnected, {"call isFDSupport"});
    for (const Footprint* f : {&fused, &kill, &feed, &query}) EXPECT_EQ(f->problem, "");
    EXPECT_EQ(fused.calls, (RemoteCalls{"fw gnssCb.gnssLocationCb"}));
    EXPECT_EQ(feed.calls, (RemoteCalls{"fusd IFusdGnssInterface.sendLocationData"}));
    // The death notice, a delivery of its own, unlinks from the dead daemon.
    EXPECT_EQ(kill.calls, (RemoteCalls{"fusd IFusdLbs.unlinkToDeath"}));
    if (fused.objects.empty()) GTEST_SKIP() << "this build does not name the library's objects";
    EXPECT_EQ(kill.objects.count("lock fusdMutex"), 1u);
    EXPECT_EQ(fused.objects.count("lock g_feedTimingLock"), 1u);
    EXPECT_TRUE(shareState(fused, feed));
    EXPECT_TRUE(shareState(kill, query));
    EXPECT_FALSE(shareState(fused, query));
}

TEST(FootprintTest, SaysWhyARunAloneDidNotEnd) {
    const Footprint broken = measureFootprint({"fusd register"}, {"call noSuchFunction"});
    EXPECT_NE(broken.problem.find("unknown function \"noSuchFunction\""), std::string::npos)
        << broken.problem;
}

}  // namespace
}  // namespace gen
