// Decoding of the vendor source-type bits of gnssLocationFlags, over every 16-bit flags
// value under a chip of each flag layout. The input space is small enough to try whole,
// which no sampling of it matches.
#include <gtest/gtest.h>
#include <zdgnssprovider.h>
#include <zdhost/platform_control.h>

#include <cstring>
#include <string>

#include "harness.h"

namespace {

const char* decode(uint16_t flags) {
    android::hardware::gnss::V1_0::GnssLocation location{};
    location.gnssLocationFlags = flags;
    return qttff_location_sourcetype(location);
}

void probeChip(const char* subChip) {
    zdhost::platform::setProperty("ro.connectivity.sub_chiptype", subChip);
    zdhost::platform::setProperty("ro.boot.odm.conn.slave_chiptype", "");
    checkChipsetType();
    fuzz::takeLines();
}

// Chipset layout: bits 8-15. Daemon layout: bits 9-15, with bit 8 adding the 128 mark.
unsigned expectedFor(bool chipsetLayout, uint16_t flags) {
    if (chipsetLayout) return flags >> 8;
    return (flags >> 9) + ((flags & 0x100) ? 128 : 0);
}

void checkEveryFlagsValue(bool chipsetLayout) {
    const std::string named = std::string("log E ZdGnssLocationProviderJNI: [LocMgr] flags from ") +
                              (chipsetLayout ? "Chipset: " : "FusionDaemon: ");
    const char* buffer = decode(0);
    fuzz::takeLines();
    for (unsigned flags = 0; flags <= 0xffff; ++flags) {
        const char* text = decode(static_cast<uint16_t>(flags));
        const auto lines = fuzz::takeLines();
        ASSERT_EQ(text, buffer) << "the result moved to another buffer";
        ASSERT_NE(memchr(text, '\0', 4), nullptr) << flags;
        const unsigned expected = expectedFor(chipsetLayout, static_cast<uint16_t>(flags));
        ASSERT_EQ(std::string(text), std::to_string(expected)) << "flags " << flags;
        ASSERT_TRUE(fuzz::hasLine(lines, named + std::to_string(flags))) << flags;
        ASSERT_EQ(fuzz::contains(lines, "quickgpsLocationCb in"), expected >= 128) << flags;
    }
}

// The augmentation reads the quick-GPS state the last decoding left behind.
bool paddingSkippedAfter(uint16_t flags) {
    decode(flags);
    fuzz::takeLines();
    android::hardware::gnss::V1_0::GnssLocation plain{};
    addSvList(plain);
    return fuzz::contains(fuzz::takeLines(), "location from qttff, so don't do sv_add.");
}

TEST(QttffSourceTypeTest, EveryFlagsValueUnderBothLayouts) {
    fuzz::startWorld();
    probeChip("vk7705");
    checkEveryFlagsValue(true);
    EXPECT_TRUE(paddingSkippedAfter(0x8000));
    EXPECT_FALSE(paddingSkippedAfter(0x7fff));
    probeChip("vk7702");
    checkEveryFlagsValue(false);
    EXPECT_TRUE(paddingSkippedAfter(0x0100));
    EXPECT_FALSE(paddingSkippedAfter(0xfeff));
    decode(0);
    resetLocationFlag();
    fuzz::takeLines();
}

}  // namespace
