// The fake fusion daemon's process: deaths, restarts with new objects, knobs that outlive
// both, death links as a device's proxy makes them, and registration at the K-th look-up.
#include <gmock/gmock.h>
#include <zdhost/runtime.h>

#include "objects.h"
#include "world_harness.h"

namespace worldtest {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using vendor::zendra::hardware::fusd::V1_2::IFusdGnssInterface;

sp<IFusdGnssInterface> gnssInterfaceOf(const sp<IFusdLbs>& daemon) {
    auto result = daemon->getFusdGnssInterface();
    return result.isOk() ? static_cast<sp<IFusdGnssInterface>>(result) : nullptr;
}

class FusdLifecycleTest : public WorldTest {
  protected:
    sp<IFusdLbs> startDaemon() {
        run("fusd register");
        sp<IFusdLbs> daemon = lookUpDaemon();
        EXPECT_NE(daemon, nullptr);
        return daemon;
    }
};

TEST_F(FusdLifecycleTest, RestartBringsNewObjectsAndKeepsKnobs) {
    sp<IFusdLbs> first = startDaemon();
    sp<IFusdGnssInterface> firstGnss = gnssInterfaceOf(first);
    run("fusd fail IFusdLbs.setIndoorMode");
    run("fusd provide geofence no");
    run("fusd kill");
    EXPECT_EQ(lookUpDaemon(), nullptr);

    sp<IFusdLbs> second = startDaemon();
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, first);
    sp<IFusdGnssInterface> secondGnss = gnssInterfaceOf(second);
    EXPECT_NE(secondGnss, nullptr);
    EXPECT_NE(secondGnss, firstGnss);
    const std::string firstName = sim::ObjectNames::get().nameOf(first);
    const std::string secondName = sim::ObjectNames::get().nameOf(second);
    EXPECT_THAT(firstName, StartsWith("@IFusdLbs#"));
    EXPECT_EQ(std::stoi(secondName.substr(10)), std::stoi(firstName.substr(10)) + 1);

    EXPECT_FALSE(second->setIndoorMode(true).isOk());
    auto geofence = second->getFusdGeofenceInterface();
    ASSERT_TRUE(geofence.isOk());
    EXPECT_EQ(
        static_cast<sp<vendor::zendra::hardware::fusd::V1_2::IFusdGeofenceInterface>>(geofence),
        nullptr);
}

TEST_F(FusdLifecycleTest, DeadDaemonFailsCallsButItsProxyAnswersDeathLinks) {
    sp<IFusdLbs> daemon = startDaemon();
    sp<IFusdGnssInterface> gnss = gnssInterfaceOf(daemon);
    sp<DeathRecipient> recipient = new DeathRecipient();
    run("fusd kill");
    lines();

    EXPECT_FALSE(daemon->setIndoorMode(true).isOk());
    EXPECT_FALSE(gnss->sendSvStatus(3).isOk());
    auto linked = daemon->linkToDeath(recipient, 5);
    ASSERT_TRUE(linked.isOk());
    EXPECT_FALSE(linked);
    auto unlinked = daemon->unlinkToDeath(recipient);
    ASSERT_TRUE(unlinked.isOk());
    EXPECT_FALSE(unlinked);

    std::vector<std::string> seen = lines();
    ASSERT_EQ(seen.size(), 4u);
    EXPECT_EQ(seen[0], "fusd IFusdLbs.setIndoorMode(true) -> transport-error");
    EXPECT_EQ(seen[1], "fusd IFusdGnssInterface.sendSvStatus(3) -> transport-error");
    EXPECT_THAT(seen[2], StartsWith("fusd IFusdLbs.linkToDeath(@DeathRecipient#"));
    EXPECT_THAT(seen[2], HasSubstr(", 5)"));
    EXPECT_THAT(seen[3], StartsWith("fusd IFusdLbs.unlinkToDeath(@DeathRecipient#"));
    EXPECT_EQ(recipient->log.calls(), 0);
}

TEST_F(FusdLifecycleTest, DeathReachesLinkedRecipientOnThePoolWithPromotableWho) {
    sp<IFusdLbs> daemon = startDaemon();
    sp<DeathRecipient> recipient = new DeathRecipient();
    ASSERT_TRUE(daemon->linkToDeath(recipient, 42).withDefault(false));
    lines();
    run("fusd kill");
    std::vector<std::string> seen = lines();

    ASSERT_EQ(recipient->log.calls(), 1);
    EXPECT_TRUE(recipient->log.onPool);
    EXPECT_NE(recipient->log.thread, std::this_thread::get_id());
    EXPECT_EQ(recipient->cookie, 42u);
    EXPECT_TRUE(recipient->whoPromoted);
    EXPECT_EQ(recipient->who, sp<android::hidl::base::V1_0::IBase>(daemon));
    EXPECT_THAT(seen, Contains(StartsWith("sm serviceDied @DeathRecipient#")));
    EXPECT_THAT(seen, Contains(HasSubstr(" cookie=42")));
}

TEST_F(FusdLifecycleTest, UnpromotableDeathHandsAWhoThatCannotBePromoted) {
    sp<IFusdLbs> daemon = startDaemon();
    sp<DeathRecipient> recipient = new DeathRecipient();
    ASSERT_TRUE(daemon->linkToDeath(recipient, 0).withDefault(false));
    run("fusd kill unpromotable");
    lines();
    ASSERT_EQ(recipient->log.calls(), 1);
    EXPECT_FALSE(recipient->whoPromoted);
}

TEST_F(FusdLifecycleTest, LinksNotMadeOrUndoneAreNeverNotified) {
    sp<IFusdLbs> daemon = startDaemon();
    sp<DeathRecipient> answeredFalse = new DeathRecipient();
    sp<DeathRecipient> failed = new DeathRecipient();
    sp<DeathRecipient> unlinked = new DeathRecipient();
    sp<DeathRecipient> kept = new DeathRecipient();

    run("fusd answer IFusdLbs.linkToDeath false");
    EXPECT_FALSE(daemon->linkToDeath(answeredFalse, 1).withDefault(true));
    run("fusd answer IFusdLbs.linkToDeath true");
    run("fusd fail IFusdLbs.linkToDeath once");
    EXPECT_FALSE(daemon->linkToDeath(failed, 2).isOk());
    EXPECT_TRUE(daemon->linkToDeath(unlinked, 3).withDefault(false));
    EXPECT_TRUE(daemon->unlinkToDeath(unlinked).withDefault(false));
    EXPECT_TRUE(daemon->linkToDeath(kept, 4).withDefault(false));
    run("fusd kill");
    lines();

    EXPECT_EQ(answeredFalse->log.calls(), 0);
    EXPECT_EQ(failed->log.calls(), 0);
    EXPECT_EQ(unlinked->log.calls(), 0);
    EXPECT_EQ(kept->log.calls(), 1);
}

TEST_F(FusdLifecycleTest, RegisterAtLookupCountsDaemonLookupsOnly) {
    run("fusd register-at-lookup 3");
    EXPECT_EQ(lookUpDaemon(), nullptr);
    EXPECT_EQ(vendor::zendra::hardware::fusd::V1_2::IFusdLbs::tryGetService("default"), nullptr);
    EXPECT_EQ(IFusdGnssInterface::tryGetService("default"), nullptr);  // not a daemon look-up
    sp<IFusdLbs> found = lookUpDaemon();
    ASSERT_NE(found, nullptr);
    const std::string name = sim::ObjectNames::get().nameOf(found);
    EXPECT_THAT(
        lines(),
        ElementsAre(
            "sm tryGetService vendor.zendra.hardware.fusd@1.3::IFusdLbs/default -> null",
            "sm tryGetService vendor.zendra.hardware.fusd@1.2::IFusdLbs/default -> null",
            "sm tryGetService vendor.zendra.hardware.fusd@1.2::IFusdGnssInterface/default -> null",
            "sm tryGetService vendor.zendra.hardware.fusd@1.3::IFusdLbs/default -> " + name));
    EXPECT_EQ(lookUpDaemon(), found);  // registered once, not again
}

TEST_F(FusdLifecycleTest, CommandsWithoutARunningDaemonAreRefused) {
    EXPECT_THAT(refusal("fusd kill"), HasSubstr("not running"));
    EXPECT_THAT(refusal("fusd reportFusdLocation loc{timestamp=1}"), HasSubstr("not running"));
    EXPECT_NE(refusal("fusd register-at-lookup 0"), "");
    EXPECT_NE(refusal("fusd register now"), "");
}

}  // namespace
}  // namespace worldtest
