// Value semantics of hidl_string, hidl_vec, hidl_array and hidl_handle, and the byte layout
// that records embedding them rely on.
#include <cutils/native_handle.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace {

using ::android::hardware::hidl_array;
using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;

// A device lays these out as 16 bytes, 8-aligned; generated records embed them by value.
static_assert(sizeof(hidl_string) == 16, "hidl_string must be 16 bytes");
static_assert(alignof(hidl_string) == 8, "hidl_string must be 8-aligned");
static_assert(sizeof(hidl_vec<int>) == 16, "hidl_vec must be 16 bytes");
static_assert(sizeof(hidl_vec<hidl_string>) == 16, "hidl_vec must be 16 bytes");
static_assert(alignof(hidl_vec<int>) == 8, "hidl_vec must be 8-aligned");
static_assert(sizeof(hidl_handle) == 16, "hidl_handle must be 16 bytes");
static_assert(alignof(hidl_handle) == 8, "hidl_handle must be 8-aligned");
// Fixed-size arrays are plain storage.
static_assert(sizeof(hidl_array<uint8_t, 32>) == 32, "hidl_array has no header");
static_assert(sizeof(hidl_array<double, 3>) == 24, "hidl_array has no header");

TEST(HidlStringTest, CopiesAreIndependent) {
    hidl_string original("supl.example.net");
    hidl_string copy(original);
    copy = "other";
    EXPECT_EQ(original, "supl.example.net");
    EXPECT_EQ(copy, "other");

    hidl_string assigned;
    assigned = original;
    original = "changed";
    EXPECT_EQ(assigned, "supl.example.net");
    EXPECT_NE(assigned.c_str(), original.c_str());
}

TEST(HidlStringTest, CopyOfABorrowedBufferOwnsItsBytes) {
    char buffer[] = "borrowed";
    hidl_string view;
    view.setToExternal(buffer, strlen(buffer));
    EXPECT_EQ(view.c_str(), buffer);
    hidl_string copy(view);
    buffer[0] = 'X';
    EXPECT_EQ(copy, "borrowed");
    EXPECT_EQ(view, "Xorrowed");
    // Destroying `view` must not free the stack buffer (AddressSanitizer would report it).
}

TEST(HidlStringTest, MoveLeavesTheSourceEmpty) {
    hidl_string source("location");
    const char* bytes = source.c_str();
    hidl_string target(std::move(source));
    EXPECT_EQ(target, "location");
    EXPECT_EQ(target.c_str(), bytes);  // moved, not copied
    EXPECT_TRUE(source.empty());       // NOLINT(bugprone-use-after-move)
    ASSERT_NE(source.c_str(), nullptr);
    EXPECT_STREQ(source.c_str(), "");

    hidl_string assigned("old");
    assigned = std::move(target);
    EXPECT_EQ(assigned, "location");
    EXPECT_TRUE(target.empty());  // NOLINT(bugprone-use-after-move)
    EXPECT_STREQ(target.c_str(), "");
}

TEST(HidlStringTest, EmbeddedNulsAreKeptByLength) {
    const char raw[] = {'a', '\0', 'b', 'c'};
    hidl_string s(raw, sizeof(raw));
    EXPECT_EQ(s.size(), 4u);
    EXPECT_EQ(s.c_str()[4], '\0');  // always terminated past the counted bytes
    std::string converted = s;
    EXPECT_EQ(converted, std::string(raw, sizeof(raw)));

    hidl_string copy(s);
    EXPECT_EQ(copy.size(), 4u);
    EXPECT_EQ(copy, s);
    EXPECT_NE(s, hidl_string("a"));
    EXPECT_NE(s, "a");  // a C string stops at its NUL, the hidl_string does not

    hidl_string fromStd(std::string("x\0y", 3));
    EXPECT_EQ(fromStd.size(), 3u);
}

TEST(HidlStringTest, LengthConstructorStopsAtTheLength) {
    const char text[] = "abcdef";
    hidl_string prefix(text, 3);
    EXPECT_EQ(prefix.size(), 3u);
    EXPECT_STREQ(prefix.c_str(), "abc");
}

TEST(HidlStringTest, Comparison) {
    hidl_string ab("ab");
    hidl_string abc("abc");
    EXPECT_TRUE(ab == hidl_string("ab"));
    EXPECT_TRUE(ab != abc);
    EXPECT_TRUE(ab < abc);
    EXPECT_FALSE(abc < ab);
    EXPECT_TRUE(hidl_string("abd") < hidl_string("abe"));
    EXPECT_FALSE(ab < ab);
    EXPECT_TRUE(ab == "ab");
    EXPECT_TRUE("ab" == ab);
    EXPECT_TRUE(ab != "abc");
    EXPECT_TRUE("abc" != ab);
    EXPECT_TRUE(hidl_string() == "");
    // A null C string equals nothing, not even an empty hidl_string.
    const char* null = nullptr;
    EXPECT_FALSE(hidl_string() == null);
    EXPECT_TRUE(ab != null);
}

TEST(HidlStringTest, NullAndSelfAssignment) {
    const char* null = nullptr;
    hidl_string fromNull(null);
    EXPECT_TRUE(fromNull.empty());
    EXPECT_STREQ(fromNull.c_str(), "");

    hidl_string s("keep");
    s = null;
    EXPECT_TRUE(s.empty());

    s = "again";
    const hidl_string& alias = s;
    s = alias;
    EXPECT_EQ(s, "again");
    s = s.c_str();  // from its own buffer
    EXPECT_EQ(s, "again");
    s = std::string(s);
    EXPECT_EQ(s, "again");
}

TEST(HidlVecTest, CopiesAreIndependent) {
    hidl_vec<int32_t> original{1, 2, 3};
    hidl_vec<int32_t> copy(original);
    copy[0] = 100;
    EXPECT_EQ(original[0], 1);
    EXPECT_NE(copy.data(), original.data());

    hidl_vec<int32_t> assigned;
    assigned = original;
    original[2] = 300;
    EXPECT_EQ(assigned, (hidl_vec<int32_t>{1, 2, 3}));
}

TEST(HidlVecTest, CopiesOfStringsAreDeep) {
    hidl_vec<hidl_string> names{"gps", "glonass"};
    hidl_vec<hidl_string> copy = names;
    names[0] = "beidou";
    EXPECT_EQ(copy[0], "gps");
    EXPECT_EQ(copy[1], "glonass");
}

TEST(HidlVecTest, MoveLeavesTheSourceEmpty) {
    hidl_vec<int32_t> source{7, 8};
    const int32_t* bytes = source.data();
    hidl_vec<int32_t> target(std::move(source));
    EXPECT_EQ(target.data(), bytes);
    EXPECT_EQ(source.size(), 0u);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(source.begin(), source.end());

    hidl_vec<int32_t> assigned{1};
    assigned = std::move(target);
    EXPECT_EQ(assigned, (hidl_vec<int32_t>{7, 8}));
    EXPECT_EQ(target.size(), 0u);  // NOLINT(bugprone-use-after-move)
}

TEST(HidlVecTest, ResizeKeepsThePrefixAndZeroesTheRest) {
    hidl_vec<int32_t> v{5, 6, 7};
    v.resize(5);
    EXPECT_EQ(v, (hidl_vec<int32_t>{5, 6, 7, 0, 0}));
    v.resize(2);
    EXPECT_EQ(v, (hidl_vec<int32_t>{5, 6}));
    v.resize(0);
    EXPECT_EQ(v.size(), 0u);

    hidl_vec<uint8_t> sized(4);
    for (uint8_t b : sized) EXPECT_EQ(b, 0);
}

TEST(HidlVecTest, ComparisonAndConversion) {
    hidl_vec<int32_t> a{1, 2};
    EXPECT_EQ(a, (hidl_vec<int32_t>{1, 2}));
    EXPECT_NE(a, (hidl_vec<int32_t>{1, 2, 3}));
    EXPECT_NE(a, (hidl_vec<int32_t>{1, 3}));
    EXPECT_EQ(hidl_vec<int32_t>(), hidl_vec<int32_t>(std::vector<int32_t>{}));

    std::vector<int32_t> plain = a;
    EXPECT_EQ(plain, (std::vector<int32_t>{1, 2}));
    hidl_vec<int32_t> back(plain);
    EXPECT_EQ(back, a);
}

TEST(HidlVecTest, ExternalBufferIsBorrowedUnlessOwned) {
    int32_t stack[3] = {1, 2, 3};
    {
        hidl_vec<int32_t> view;
        view.setToExternal(stack, 3);
        EXPECT_EQ(view.data(), stack);
        hidl_vec<int32_t> copy(view);
        stack[0] = 9;
        EXPECT_EQ(copy[0], 1);
        EXPECT_EQ(view[0], 9);
    }  // `view` must not delete[] the stack array
    EXPECT_EQ(stack[1], 2);

    hidl_vec<int32_t> owner;
    owner.setToExternal(new int32_t[2]{4, 5}, 2, true);  // freed by `owner`
    EXPECT_EQ(owner, (hidl_vec<int32_t>{4, 5}));

    hidl_vec<int32_t> giver{6, 7};
    int32_t* released = giver.releaseData();
    EXPECT_EQ(giver.size(), 0u);
    EXPECT_EQ(released[1], 7);
    delete[] released;  // ownership came with it
}

TEST(HidlArrayTest, ValueSemantics) {
    const double source[3] = {1.5, 2.5, 3.5};
    hidl_array<double, 3> a(source);
    hidl_array<double, 3> copy = a;
    copy[0] = 0;
    EXPECT_EQ(a[0], 1.5);
    EXPECT_NE(a, copy);
    copy[0] = 1.5;
    EXPECT_EQ(a, copy);
    EXPECT_EQ(a.size(), 3u);
    EXPECT_EQ(static_cast<const void*>(a.data()), static_cast<const void*>(&a));
}

// The handle tests use a pipe so that descriptor ownership is observable.
class HidlHandleTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(pipe(mPipe), 0);
        mNative = native_handle_create(1, 1);
        ASSERT_NE(mNative, nullptr);
        mNative->data[0] = mPipe[0];
        mNative->data[1] = 42;
    }
    void TearDown() override {
        native_handle_close(mNative);
        native_handle_delete(mNative);
        close(mPipe[1]);
    }
    static bool isOpen(int fd) { return fcntl(fd, F_GETFD) != -1; }

    int mPipe[2] = {-1, -1};
    native_handle_t* mNative = nullptr;
};

TEST_F(HidlHandleTest, OwnsACopyOfTheHandle) {
    int copiedFd;
    {
        hidl_handle h(mNative);
        const native_handle_t* held = h.getNativeHandle();
        ASSERT_NE(held, nullptr);
        EXPECT_NE(held, mNative);
        EXPECT_EQ(held->numFds, 1);
        EXPECT_EQ(held->numInts, 1);
        EXPECT_EQ(held->data[1], 42);
        copiedFd = held->data[0];
        EXPECT_NE(copiedFd, mPipe[0]);
        EXPECT_TRUE(isOpen(copiedFd));
    }
    EXPECT_FALSE(isOpen(copiedFd));  // closed with the hidl_handle
    EXPECT_TRUE(isOpen(mPipe[0]));   // the caller's handle is untouched
}

TEST_F(HidlHandleTest, CopiesAreIndependentAndMoveLeavesNull) {
    hidl_handle a(mNative);
    hidl_handle b(a);
    ASSERT_NE(b.getNativeHandle(), nullptr);
    EXPECT_NE(b.getNativeHandle(), a.getNativeHandle());
    EXPECT_NE(b.getNativeHandle()->data[0], a.getNativeHandle()->data[0]);

    const native_handle_t* held = a.getNativeHandle();
    hidl_handle c(std::move(a));
    EXPECT_EQ(c.getNativeHandle(), held);
    EXPECT_EQ(a.getNativeHandle(), nullptr);  // NOLINT(bugprone-use-after-move)

    int bFd = b.getNativeHandle()->data[0];
    b = hidl_handle();
    EXPECT_EQ(b.getNativeHandle(), nullptr);
    EXPECT_FALSE(isOpen(bFd));
    EXPECT_TRUE(isOpen(c.getNativeHandle()->data[0]));

    hidl_handle empty(nullptr);
    EXPECT_EQ(empty.getNativeHandle(), nullptr);
    hidl_handle emptyCopy(empty);
    EXPECT_EQ(emptyCopy.getNativeHandle(), nullptr);
}

}  // namespace
