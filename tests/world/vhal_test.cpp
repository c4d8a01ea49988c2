// The fake vendor GNSS HAL: which getter hands out which extension object, the HIDL
// version it reports, registration cycles, and the SUPL DNS requests it sends.
#include <gmock/gmock.h>
#include <vendor/zendra/hardware/gnss/1.0/IZDGnss.h>
#include <vendor/zendra/hardware/gnss/2.0/IZDGnss.h>

#include "objects.h"
#include "world_harness.h"

namespace worldtest {
namespace {

using ::testing::HasSubstr;
using ZdGnss10 = vendor::zendra::hardware::gnss::V1_0::IZDGnss;
using ZdGnss20 = vendor::zendra::hardware::gnss::V2_0::IZDGnss;

// The transcript name of an object without its number: "@IZDAGnssRil2.0#3" -> "IZDAGnssRil2.0".
template <typename T>
std::string baseName(const sp<T>& object) {
    std::string name = sim::ObjectNames::get().nameOf(object);
    return name.substr(name.find('@') + 1, name.find('#') - name.find('@') - 1);
}

template <typename T>
sp<T> value(android::hardware::Return<sp<T>> result) {
    return result.isOk() ? static_cast<sp<T>>(result) : nullptr;
}

class VhalTest : public WorldTest {};

TEST_F(VhalTest, GettersOfHal10HandOutTheirExtensions) {
    run("vhal register 1.0");
    sp<ZdGnss10> hal = ZdGnss10::getService("default");
    ASSERT_NE(hal, nullptr);
    EXPECT_EQ(baseName(hal), "IZDGnss1.0");
    EXPECT_EQ(baseName(value(hal->getExtensionZdAGnssRil())), "IZDAGnssRil1.0");
    EXPECT_EQ(baseName(value(hal->getExtensionZdSuplFqdn())), "IZDAGpsSuplFqdn");
    EXPECT_EQ(baseName(value(hal->getExtensionGnssConfiguration())), "IGnssConfiguration1.0");
    EXPECT_EQ(baseName(value(hal->getExtensionGnssConfiguration_1_1())), "IGnssConfiguration1.1");
    EXPECT_EQ(value(hal->getExtensionAGnssRil()), nullptr);  // the standard getter gives none
}

TEST_F(VhalTest, GettersOfHal20FollowTheProvideKnobs) {
    run("vhal register 2.0");
    sp<ZdGnss20> hal = ZdGnss20::getService("default");
    ASSERT_NE(hal, nullptr);
    auto ril = value(hal->getExtensionZdAGnssRil_2_0());
    EXPECT_EQ(baseName(ril), "IZDAGnssRil2.0");
    EXPECT_EQ(baseName(value(hal->getExtensionZdGnssNi())), "IGnssNi");
    EXPECT_EQ(baseName(value(hal->getExtensionZdSuplFqdn())), "IZDAGpsSuplFqdn");

    run("vhal provide ril2 no");
    run("vhal provide ni no");
    EXPECT_EQ(value(hal->getExtensionZdAGnssRil_2_0()), nullptr);
    EXPECT_EQ(value(hal->getExtensionZdGnssNi()), nullptr);
    run("vhal provide ril2 yes");
    EXPECT_EQ(value(hal->getExtensionZdAGnssRil_2_0()), ril);  // the same object again
}

TEST_F(VhalTest, HidlVersionIsOneUntilSetAndKeepsSixteenBits) {
    run("vhal register 1.0");
    run("vhal register 2.0");
    sp<ZdGnss10> hal10 = ZdGnss10::getService("default");
    sp<ZdGnss20> hal20 = ZdGnss20::getService("default");
    EXPECT_EQ(hal10->getHalHidlVersion().withDefault(0), 1);
    EXPECT_EQ(hal20->getHalHidlVersion().withDefault(0), 1);
    run("vhal hidlVersion 0xFFFF");
    EXPECT_EQ(hal10->getHalHidlVersion().withDefault(0), 0xFFFF);
    EXPECT_EQ(hal20->getHalHidlVersion().withDefault(0), 0xFFFF);
    run("vhal answer IZDGnss2.0.getHalHidlVersion 2");
    EXPECT_EQ(hal20->getHalHidlVersion().withDefault(0), 2);
    EXPECT_NE(refusal("vhal hidlVersion 65536"), "");
}

TEST_F(VhalTest, RegisterAfterUnregisterBringsNewObjects) {
    run("vhal register 2.0");
    sp<ZdGnss20> first = ZdGnss20::getService("default");
    auto firstRil = value(first->getExtensionZdAGnssRil_2_0());
    run("vhal unregister 2.0");
    EXPECT_EQ(ZdGnss20::getService("default"), nullptr);
    EXPECT_TRUE(first->start().isOk());  // unregistered, not dead
    run("vhal register 2.0");
    sp<ZdGnss20> second = ZdGnss20::getService("default");
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, first);
    EXPECT_NE(value(second->getExtensionZdAGnssRil_2_0()), firstRil);
    EXPECT_THAT(refusal("vhal unregister 1.0"), HasSubstr("not registered"));
    EXPECT_NE(refusal("vhal register 3.0"), "");
}

TEST_F(VhalTest, SuplDnsRequestGoesOnThePoolToTheCallbackRegisteredLast) {
    EXPECT_THAT(refusal("vhal AgpsRequestSuplDns \"supl.example\""), HasSubstr("no"));
    run("vhal register 1.0");
    run("vhal register 2.0");
    auto supl10 = value(ZdGnss10::getService("default")->getExtensionZdSuplFqdn());
    auto supl20 = value(ZdGnss20::getService("default")->getExtensionZdSuplFqdn());
    ASSERT_NE(supl10, supl20);
    sp<SuplCallback> older = new SuplCallback();
    sp<SuplCallback> newer = new SuplCallback();
    sp<SuplCallback> refused = new SuplCallback();
    ASSERT_TRUE(supl20->setCallback(older).isOk());
    ASSERT_TRUE(supl10->setCallback(newer).isOk());
    run("vhal fail IZDAGpsSuplFqdn.setCallback once");
    EXPECT_FALSE(supl20->setCallback(refused).isOk());

    run("vhal AgpsRequestSuplDns \"supl.example\"");
    EXPECT_EQ(older->log.calls(), 0);
    EXPECT_EQ(refused->log.calls(), 0);
    ASSERT_EQ(newer->log.calls(), 1);
    EXPECT_EQ(newer->log.last, "supl.example");
    EXPECT_TRUE(newer->log.onPool);
}

}  // namespace
}  // namespace worldtest
