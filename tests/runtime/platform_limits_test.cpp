// The platform calls whose limits the library's buffers are sized against: property values
// cut to 91 characters, and bounded copies that refuse to write past their capacity. The
// scenarios never reach these limits, so a host that stopped honouring them would hide an
// overlong read or copy in the library.
#include <bounded_copy.h>
#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <zdhost/platform_control.h>

#include <cstring>
#include <string>

namespace {

// `Capacity` bytes followed by a guard region that must never change.
template <size_t Capacity>
struct Guarded {
    Guarded() { memset(bytes, '#', sizeof(bytes)); }
    char bytes[Capacity + 16];
    bool guardIntact() const {
        for (size_t i = Capacity; i < sizeof(bytes); ++i) {
            if (bytes[i] != '#') return false;
        }
        return true;
    }
};

static_assert(PROPERTY_VALUE_MAX == 92, "a device's property values hold 91 characters");
constexpr size_t kLongest = PROPERTY_VALUE_MAX - 1;

TEST(PlatformLimitsTest, PropertyValuesAndDefaultsAreCutTo91Characters) {
    const std::string longValue(150, 'v');
    zdhost::platform::setProperty("zd.test.long", longValue);
    Guarded<PROPERTY_VALUE_MAX> fromStore;
    EXPECT_EQ(property_get("zd.test.long", fromStore.bytes, "short"), static_cast<int>(kLongest));
    EXPECT_EQ(std::string(fromStore.bytes), longValue.substr(0, kLongest));
    EXPECT_TRUE(fromStore.guardIntact());

    const std::string longDefault(200, 'd');
    Guarded<PROPERTY_VALUE_MAX> fromDefault;
    EXPECT_EQ(property_get("zd.test.never_set", fromDefault.bytes, longDefault.c_str()),
              static_cast<int>(kLongest));
    EXPECT_EQ(std::string(fromDefault.bytes), longDefault.substr(0, kLongest));
    EXPECT_TRUE(fromDefault.guardIntact());
}

TEST(PlatformLimitsTest, CopyBeyondCapacityFailsAndClearsTheDestination) {
    constexpr size_t kCapacity = 8;
    const char source[kCapacity + 1] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    Guarded<kCapacity> full;
    EXPECT_EQ(memcpy_s(full.bytes, kCapacity, source, kCapacity), 0);
    EXPECT_EQ(memcmp(full.bytes, source, kCapacity), 0);

    Guarded<kCapacity> over;
    EXPECT_NE(memcpy_s(over.bytes, kCapacity, source, kCapacity + 1), 0);
    EXPECT_EQ(std::string(over.bytes, kCapacity), std::string(kCapacity, '\0'));
    EXPECT_TRUE(over.guardIntact());
}

TEST(PlatformLimitsTest, TruncatedFormatFailsWithTheBufferStillTerminated) {
    constexpr size_t kCapacity = 8;
    Guarded<kCapacity> d;
    EXPECT_EQ(snprintf_s(d.bytes, kCapacity, kCapacity - 1, "%s", "abcdefghij"), -1);
    EXPECT_EQ(std::string(d.bytes), "abcdefg");
    EXPECT_TRUE(d.guardIntact());
    EXPECT_EQ(snprintf_s(d.bytes, kCapacity, kCapacity - 1, "%u", 1234567u), 7);
}

}  // namespace
