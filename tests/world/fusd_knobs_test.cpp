// Knobs of the fake fusion daemon: transport failures (always, once, healed), plain answers,
// sub-interface provision, and refusal of knobs that name nothing real.
#include <gmock/gmock.h>

#include "world_harness.h"

namespace worldtest {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class FusdKnobsTest : public WorldTest {
  protected:
    void SetUp() override {
        WorldTest::SetUp();
        run("fusd register");
        daemon = lookUpDaemon();
        ASSERT_NE(daemon, nullptr);
        lines();
    }
    sp<IFusdLbs> daemon;
};

TEST_F(FusdKnobsTest, FailOnceFailsTheNextCallOnly) {
    run("fusd fail IFusdLbs.setIndoorMode once");
    EXPECT_FALSE(daemon->setIndoorMode(true).isOk());
    EXPECT_TRUE(daemon->setIndoorMode(false).isOk());
    EXPECT_THAT(lines(), ElementsAre("fusd IFusdLbs.setIndoorMode(true) -> transport-error",
                                     "fusd IFusdLbs.setIndoorMode(false)"));
}

TEST_F(FusdKnobsTest, FailHoldsUntilHealedAndTouchesOnlyItsOperation) {
    run("fusd fail IFusdLbs.setIndoorMode");
    EXPECT_FALSE(daemon->setIndoorMode(true).isOk());
    EXPECT_FALSE(daemon->setIndoorMode(true).isOk());
    EXPECT_TRUE(daemon->setVehicleMode(true).isOk());
    run("fusd heal IFusdLbs.setIndoorMode");
    EXPECT_TRUE(daemon->setIndoorMode(true).isOk());
}

TEST_F(FusdKnobsTest, AnswersReplaceTheDefaults) {
    EXPECT_TRUE(daemon->setVehicleMode(true).withDefault(false));
    EXPECT_EQ(daemon->getCapabilities().withDefault(7), 0u);
    run("fusd answer IFusdLbs.setVehicleMode false");
    run("fusd answer IFusdLbs.getCapabilities 0x30");
    EXPECT_FALSE(daemon->setVehicleMode(true).withDefault(true));
    EXPECT_EQ(daemon->getCapabilities().withDefault(7), 0x30u);
}

TEST_F(FusdKnobsTest, WithheldSubInterfaceIsEmptyAndProvidedOneIsKept) {
    run("fusd provide gnss no");
    auto withheld = daemon->getFusdGnssInterface();
    ASSERT_TRUE(withheld.isOk());
    EXPECT_EQ(static_cast<sp<vendor::zendra::hardware::fusd::V1_2::IFusdGnssInterface>>(withheld),
              nullptr);
    run("fusd provide gnss yes");
    auto first = daemon->getFusdGnssInterface();
    auto second = daemon->getFusdGnssInterface();
    ASSERT_TRUE(first.isOk() && second.isOk());
    sp<vendor::zendra::hardware::fusd::V1_2::IFusdGnssInterface> object = first;
    EXPECT_NE(object, nullptr);
    EXPECT_EQ(object, static_cast<decltype(object)>(second));
}

TEST_F(FusdKnobsTest, KnobsNamingNothingRealAreRefused) {
    EXPECT_THAT(refusal("fusd fail IFusdLbs.noSuchOperation"), HasSubstr("noSuchOperation"));
    EXPECT_THAT(refusal("fusd fail IGnssNi.respond"), HasSubstr("IGnssNi"));
    EXPECT_THAT(refusal("fusd answer IFusdLbs.setVehicleMode 3"), HasSubstr("3"));
    EXPECT_THAT(refusal("fusd answer IFusdLbs.getFusdGnssInterface null"),
                HasSubstr("no plain result"));
    EXPECT_THAT(refusal("fusd answer IFusdLbs.getCapabilities true"), HasSubstr("true"));
    EXPECT_THAT(refusal("fusd provide wifi no"), HasSubstr("wifi"));
    EXPECT_NE(refusal("fusd provide gnss maybe"), "");
    EXPECT_NE(refusal("fusd fail IFusdLbs.setIndoorMode twice"), "");
}

}  // namespace
}  // namespace worldtest
