// property_get as the library calls it, over the host property store that the world sets.
#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <zdhost/platform_control.h>

#include <cstring>
#include <string>

namespace {

using ::zdhost::platform::setProperty;

constexpr size_t kLongest = PROPERTY_VALUE_MAX - 1;  // 91 characters

// A value buffer with a guard region, so an overlong copy shows.
struct ValueBuffer {
    ValueBuffer() { memset(bytes, '#', sizeof(bytes)); }
    char bytes[PROPERTY_VALUE_MAX + 16];
    char* value() { return bytes; }
    bool guardIntact() const {
        for (size_t i = PROPERTY_VALUE_MAX; i < sizeof(bytes); ++i) {
            if (bytes[i] != '#') return false;
        }
        return true;
    }
};

static_assert(PROPERTY_VALUE_MAX == 92, "a device's property values hold 91 characters");

TEST(PropertyGetTest, ReturnsTheValueAndItsLength) {
    setProperty("zd.test.set", "alpha");
    ValueBuffer buf;
    EXPECT_EQ(property_get("zd.test.set", buf.value(), "fallback"), 5);
    EXPECT_STREQ(buf.value(), "alpha");
}

TEST(PropertyGetTest, UnsetOrEmptyPropertyGivesTheDefault) {
    ValueBuffer buf;
    EXPECT_EQ(property_get("zd.test.never_set", buf.value(), "false"), 5);
    EXPECT_STREQ(buf.value(), "false");

    setProperty("zd.test.cleared", "value");
    setProperty("zd.test.cleared", "");
    ValueBuffer cleared;
    EXPECT_EQ(property_get("zd.test.cleared", cleared.value(), "dflt"), 4);
    EXPECT_STREQ(cleared.value(), "dflt");
}

TEST(PropertyGetTest, NoDefaultGivesAnEmptyValue) {
    ValueBuffer buf;
    EXPECT_EQ(property_get("zd.test.never_set", buf.value(), nullptr), 0);
    EXPECT_STREQ(buf.value(), "");

    setProperty("zd.test.empty", "");
    ValueBuffer empty;
    EXPECT_EQ(property_get("zd.test.empty", empty.value(), nullptr), 0);
    EXPECT_STREQ(empty.value(), "");
}

TEST(PropertyGetTest, LongValuesAndDefaultsAreCutTo91Characters) {
    const std::string longDefault(200, 'd');
    ValueBuffer fromDefault;
    EXPECT_EQ(property_get("zd.test.never_set", fromDefault.value(), longDefault.c_str()),
              static_cast<int>(kLongest));
    EXPECT_EQ(std::string(fromDefault.value()), longDefault.substr(0, kLongest));
    EXPECT_TRUE(fromDefault.guardIntact());

    const std::string longValue(150, 'v');
    setProperty("zd.test.long", longValue);
    ValueBuffer fromStore;
    EXPECT_EQ(property_get("zd.test.long", fromStore.value(), "short"), static_cast<int>(kLongest));
    EXPECT_EQ(std::string(fromStore.value()), longValue.substr(0, kLongest));
    EXPECT_TRUE(fromStore.guardIntact());

    const std::string exact(kLongest, 'x');
    setProperty("zd.test.exact", exact);
    ValueBuffer fromExact;
    EXPECT_EQ(property_get("zd.test.exact", fromExact.value(), nullptr),
              static_cast<int>(kLongest));
    EXPECT_EQ(std::string(fromExact.value()), exact);
    EXPECT_TRUE(fromExact.guardIntact());
}

TEST(PropertyGetTest, LaterSettingsReplaceEarlierOnes) {
    setProperty("zd.test.changing", "one");
    setProperty("zd.test.changing", "two");
    ValueBuffer buf;
    EXPECT_EQ(property_get("zd.test.changing", buf.value(), nullptr), 3);
    EXPECT_STREQ(buf.value(), "two");
}

// The library reads read-only (ro.*) properties; a host world that runs several setups in
// one process has to be able to change them.
TEST(PropertyGetTest, ReadOnlyNamesCanBeChangedOnTheHost) {
    setProperty("ro.zd.test.chip", "first");
    setProperty("ro.zd.test.chip", "second");
    ValueBuffer buf;
    property_get("ro.zd.test.chip", buf.value(), nullptr);
    EXPECT_STREQ(buf.value(), "second")
        << "setProperty could not change a ro.* property: the host store keeps the first "
           "value of read-only names";

    setProperty("ro.zd.test.chip", "");
    ValueBuffer cleared;
    EXPECT_EQ(property_get("ro.zd.test.chip", cleared.value(), "none"), 4)
        << "setProperty could not clear a ro.* property";
}

}  // namespace
