// The bounded copy functions: they succeed within the destination's capacity, refuse to
// write past it, and leave the destination in a defined state when they fail.
#include <bounded_copy.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// A destination of `kCapacity` bytes followed by a guard region that must never change.
constexpr size_t kCapacity = 8;
struct Destination {
    Destination() { memset(bytes, 0xAA, sizeof(bytes)); }
    unsigned char bytes[kCapacity + 8];
    bool guardIntact() const {
        for (size_t i = kCapacity; i < sizeof(bytes); ++i) {
            if (bytes[i] != 0xAA) return false;
        }
        return true;
    }
    bool zeroed() const {
        for (size_t i = 0; i < kCapacity; ++i) {
            if (bytes[i] != 0) return false;
        }
        return true;
    }
    char* text() { return reinterpret_cast<char*>(bytes); }
};

TEST(MemcpySTest, CopiesWithinCapacity) {
    const unsigned char src[kCapacity] = {1, 2, 3, 4, 5, 6, 7, 8};
    Destination d;
    EXPECT_EQ(memcpy_s(d.bytes, kCapacity, src, 3), 0);
    EXPECT_EQ(memcmp(d.bytes, src, 3), 0);
    EXPECT_EQ(d.bytes[3], 0xAA);  // nothing beyond count

    Destination full;
    EXPECT_EQ(memcpy_s(full.bytes, kCapacity, src, kCapacity), 0);
    EXPECT_EQ(memcmp(full.bytes, src, kCapacity), 0);
    EXPECT_TRUE(full.guardIntact());

    Destination none;
    EXPECT_EQ(memcpy_s(none.bytes, kCapacity, src, 0), 0);
    EXPECT_EQ(none.bytes[0], 0xAA);
}

TEST(MemcpySTest, CountBeyondCapacityFailsAndClearsTheDestination) {
    const unsigned char src[kCapacity + 8] = {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
    Destination d;
    EXPECT_NE(memcpy_s(d.bytes, kCapacity, src, kCapacity + 1), 0);
    EXPECT_TRUE(d.zeroed());
    EXPECT_TRUE(d.guardIntact());
}

TEST(MemcpySTest, NullSourceFailsAndClearsTheDestination) {
    Destination d;
    EXPECT_NE(memcpy_s(d.bytes, kCapacity, nullptr, 4), 0);
    EXPECT_TRUE(d.zeroed());
    EXPECT_TRUE(d.guardIntact());
}

TEST(MemcpySTest, NullOrEmptyDestinationFails) {
    const char src[4] = "abc";
    EXPECT_NE(memcpy_s(nullptr, kCapacity, src, 3), 0);
    Destination d;
    EXPECT_NE(memcpy_s(d.bytes, 0, src, 3), 0);
    EXPECT_EQ(d.bytes[0], 0xAA);
}

TEST(MemsetSTest, FillsWithinCapacity) {
    Destination d;
    EXPECT_EQ(memset_s(d.bytes, kCapacity, 0x11, 5), 0);
    for (size_t i = 0; i < 5; ++i) EXPECT_EQ(d.bytes[i], 0x11);
    EXPECT_EQ(d.bytes[5], 0xAA);
    EXPECT_TRUE(d.guardIntact());
}

TEST(MemsetSTest, CountBeyondCapacityFillsTheCapacityAndFails) {
    Destination d;
    EXPECT_NE(memset_s(d.bytes, kCapacity, 0, kCapacity + 4), 0);
    EXPECT_TRUE(d.zeroed());
    EXPECT_TRUE(d.guardIntact());
}

TEST(SnprintfSTest, ReturnsTheCharactersWritten) {
    Destination d;
    EXPECT_EQ(snprintf_s(d.text(), kCapacity, kCapacity - 1, "%u", 1234u), 4);
    EXPECT_STREQ(d.text(), "1234");

    // Exactly filling the capacity, terminator included.
    Destination full;
    EXPECT_EQ(snprintf_s(full.text(), kCapacity, kCapacity - 1, "%s", "abcdefg"), 7);
    EXPECT_STREQ(full.text(), "abcdefg");
    EXPECT_TRUE(full.guardIntact());
}

TEST(SnprintfSTest, TruncationFailsWithTheBufferStillTerminated) {
    Destination d;
    EXPECT_EQ(snprintf_s(d.text(), kCapacity, kCapacity - 1, "%s", "abcdefghij"), -1);
    EXPECT_EQ(d.text()[kCapacity - 1], '\0');
    EXPECT_EQ(std::string(d.text()), "abcdefg");
    EXPECT_TRUE(d.guardIntact());

    // A count at or above the capacity is limited by the capacity.
    Destination wide;
    EXPECT_EQ(snprintf_s(wide.text(), kCapacity, 100, "%s", "abcdefghij"), -1);
    EXPECT_EQ(wide.text()[kCapacity - 1], '\0');
    EXPECT_TRUE(wide.guardIntact());
}

TEST(SnprintfSTest, CountLimitsTheOutput) {
    Destination d;
    EXPECT_EQ(snprintf_s(d.text(), kCapacity, 3, "%s", "abcdef"), -1);
    EXPECT_STREQ(d.text(), "abc");

    Destination fits;
    EXPECT_EQ(snprintf_s(fits.text(), kCapacity, 3, "%d", 42), 2);
    EXPECT_STREQ(fits.text(), "42");
}

}  // namespace
