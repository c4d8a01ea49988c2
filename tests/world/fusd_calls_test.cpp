// Calls the fake fusion daemon makes into the library's callback objects: on a runtime
// pool thread with the command waiting for them, or nested inside the next setCallback
// on the caller's own thread.
#include <gmock/gmock.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGeofenceInterface.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGnssInterface.h>

#include "world_harness.h"

namespace worldtest {
namespace {

using ::testing::HasSubstr;
using vendor::zendra::hardware::fusd::V1_2::IFusdGeofenceInterface;
using vendor::zendra::hardware::fusd::V1_2::IFusdGnssInterface;

class FusdCallsTest : public WorldTest {
  protected:
    void SetUp() override {
        WorldTest::SetUp();
        run("fusd register");
        sp<IFusdLbs> daemon = lookUpDaemon();
        ASSERT_NE(daemon, nullptr);
        gnss = daemon->getFusdGnssInterface().withDefault(nullptr);
        geofence = daemon->getFusdGeofenceInterface().withDefault(nullptr);
        ASSERT_NE(gnss, nullptr);
        ASSERT_NE(geofence, nullptr);
    }
    sp<IFusdGnssInterface> gnss;
    sp<IFusdGeofenceInterface> geofence;
    sp<GnssCallback> gnssCallback = new GnssCallback();
    sp<GeofenceCallback> geofenceCallback = new GeofenceCallback();
};

TEST_F(FusdCallsTest, CallbackOperationRunsOnThePoolAndTheCommandWaitsForIt) {
    ASSERT_TRUE(gnss->setCallback(gnssCallback).isOk());
    // No drain in between: the command itself must have waited for the delivery.
    run("fusd reportFusdLocation loc{timestamp=77}");
    ASSERT_EQ(gnssCallback->log.calls(), 1);
    EXPECT_TRUE(gnssCallback->log.onPool);
    EXPECT_NE(gnssCallback->log.thread, std::this_thread::get_id());
    EXPECT_EQ(gnssCallback->log.last, "timestamp=77");
}

TEST_F(FusdCallsTest, CallbackGoesToTheOneRegisteredLast) {
    sp<GnssCallback> earlier = new GnssCallback();
    ASSERT_TRUE(gnss->setCallback(earlier).isOk());
    ASSERT_TRUE(gnss->setCallback(gnssCallback).isOk());
    run("fusd reportFusdLocation loc{}");
    EXPECT_EQ(earlier->log.calls(), 0);
    EXPECT_EQ(gnssCallback->log.calls(), 1);
}

TEST_F(FusdCallsTest, NestedCallRunsInsideTheNextSetCallbackOnTheCallersThread) {
    run("fusd nested reportFusdLocation loc{timestamp=5}");
    EXPECT_EQ(gnssCallback->log.calls(), 0);
    ASSERT_TRUE(gnss->setCallback(gnssCallback).isOk());
    ASSERT_EQ(gnssCallback->log.calls(), 1);  // before setCallback returned
    EXPECT_EQ(gnssCallback->log.thread, std::this_thread::get_id());
    EXPECT_FALSE(gnssCallback->log.onPool);
    EXPECT_EQ(gnssCallback->log.last, "timestamp=5");

    ASSERT_TRUE(gnss->setCallback(gnssCallback).isOk());
    EXPECT_EQ(gnssCallback->log.calls(), 1);  // made once only
}

TEST_F(FusdCallsTest, NestedGeofenceCallWaitsForTheGeofenceRegistration) {
    run("fusd nested geofenceAddResultCb [5:0 6:-3]");
    ASSERT_TRUE(gnss->setCallback(gnssCallback).isOk());
    EXPECT_EQ(gnssCallback->log.calls(), 0);
    ASSERT_TRUE(geofence->setCallback(geofenceCallback).isOk());
    ASSERT_EQ(geofenceCallback->log.calls(), 1);
    EXPECT_EQ(geofenceCallback->log.thread, std::this_thread::get_id());
    EXPECT_EQ(geofenceCallback->log.last, "add [5:0 6:-3]");
}

TEST_F(FusdCallsTest, SetCallbackFailedInTransportRegistersNothing) {
    run("fusd nested reportFusdLocation loc{}");
    run("fusd fail IFusdGnssInterface.setCallback once");
    EXPECT_FALSE(gnss->setCallback(gnssCallback).isOk());
    EXPECT_EQ(gnssCallback->log.calls(), 0);
    EXPECT_THAT(refusal("fusd reportFusdLocation loc{}"), HasSubstr("IFusdGnssCallback"));
    ASSERT_TRUE(gnss->setCallback(gnssCallback).isOk());
    EXPECT_EQ(gnssCallback->log.calls(), 1);  // the nested call was still waiting
}

TEST_F(FusdCallsTest, CallbackFailingInTransportIsCheckedNotFatal) {
    gnssCallback->failInTransport = true;
    ASSERT_TRUE(gnss->setCallback(gnssCallback).isOk());
    run("fusd reportFusdLocation loc{}");
    run("fusd nested reportFusdLocation loc{}");
    ASSERT_TRUE(gnss->setCallback(gnssCallback).isOk());
    EXPECT_EQ(gnssCallback->log.calls(), 2);
}

TEST_F(FusdCallsTest, EveryGeofenceCallbackOperationReachesTheCallback) {
    ASSERT_TRUE(geofence->setCallback(geofenceCallback).isOk());
    const char* const commands[] = {
        "fusd geofenceAddResultCb [1:0]",
        "fusd geofenceRemoveResultCb [1:0]",
        "fusd onGetCurrentLocationCb 3 loc{} 123456789 -5",
        "fusd gnssGeofenceTransitionCb 3 loc{} 2 1000",
        "fusd gnssGeofenceStatusCb 2 loc{}",
        "fusd gnssGeofencePauseCb 3 0",
        "fusd gnssGeofenceResumeCb 3 -102",
    };
    const char* const received[] = {"add [1:0]", "remove [1:0]", "currentLocation", "transition",
                                    "status",    "pause",        "resume"};
    for (size_t i = 0; i < 7; ++i) {
        run(commands[i]);
        EXPECT_EQ(geofenceCallback->log.last, received[i]) << commands[i];
    }
    EXPECT_EQ(geofenceCallback->log.calls(), 7);
}

TEST_F(FusdCallsTest, MalformedCallbackOperationsAreRefused) {
    EXPECT_THAT(refusal("fusd reportFusdLocation"), HasSubstr("1 argument"));
    EXPECT_NE(refusal("fusd reportFusdLocation 5"), "");
    EXPECT_NE(refusal("fusd gnssGeofencePauseCb 3 0x100000000"), "");
    EXPECT_NE(refusal("fusd nested setCallback x"), "");
    EXPECT_NE(refusal("fusd frobnicate"), "");
}

}  // namespace
}  // namespace worldtest
