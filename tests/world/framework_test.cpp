// The fake framework: its objects' transcript names and failure knobs, the fence client's
// print of the arrays it receives, and the SUPL DNS hook record.
#include <gmock/gmock.h>

#include "world.h"
#include "world_harness.h"

namespace worldtest {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class FrameworkTest : public WorldTest {
  protected:
    sim::World& world = sim::World::get();
};

TEST_F(FrameworkTest, CallbackCallsPrintUnderTheObjectsNamesAndCanFailOnce) {
    run("fw fail geofenceCb.gnssGeofencePauseCb once");
    EXPECT_FALSE(world.geofenceCb()->gnssGeofencePauseCb(3, {}).isOk());
    EXPECT_TRUE(world.geofenceCb()->gnssGeofencePauseCb(3, {}).isOk());
    EXPECT_TRUE(world.gnssCb()->gnssNameCb("fw").isOk());
    EXPECT_THAT(lines(), ElementsAre("fw geofenceCb.gnssGeofencePauseCb(3, 0) -> transport-error",
                                     "fw geofenceCb.gnssGeofencePauseCb(3, 0)",
                                     "fw gnssCb.gnssNameCb(\"fw\")"));
}

TEST_F(FrameworkTest, FenceClientPrintsBothArraysAndTheCount) {
    int32_t ids[] = {5, 6};
    int32_t results[] = {0, -3};
    world.corvaneCb()->geofenceAddResult(ids, results, 2);
    world.corvaneCb()->geofenceAddResult(nullptr, nullptr, 0);
    EXPECT_THAT(lines(), ElementsAre("fw corvaneCb.geofenceAddResult([5 6], [0 -3], 2)",
                                     "fw corvaneCb.geofenceAddResult(null, null, 0)"));
    EXPECT_THAT(refusal("fw fail corvaneCb.geofenceAddResult"), HasSubstr("corvaneCb"));
}

TEST_F(FrameworkTest, HookRecordSwitchesAndAFreshWorldRestoresHookA) {
    FdCallback* record = world.fdCallback();
    record->sendAgpsRequestSuplDns("a.example");
    run("fw hook B");
    record->sendAgpsRequestSuplDns("b.example");
    run("fw hook null");
    EXPECT_EQ(record->sendAgpsRequestSuplDns, nullptr);
    EXPECT_NE(refusal("fw hook C"), "");
    EXPECT_THAT(lines(), ElementsAre("fw fdCallback.hookA(\"a.example\")",
                                     "fw fdCallback.hookB(\"b.example\")"));
    world.start();
    ASSERT_NE(record->sendAgpsRequestSuplDns, nullptr);
    record->sendAgpsRequestSuplDns("c.example");
    EXPECT_THAT(lines(), ElementsAre("fw fdCallback.hookA(\"c.example\")"));
}

}  // namespace
}  // namespace worldtest
