// Names of objects as the transcript shows them.
#include "objects.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

struct Widget : public android::RefBase {};
namespace inner {
struct Gadget : public android::RefBase {};
}  // namespace inner

TEST(ObjectNamesTest, NamesByAssignmentOrDynamicClassNumberedPerName) {
    ObjectNames& names = ObjectNames::get();
    android::sp<Widget> a = new Widget;
    android::sp<Widget> b = new Widget;
    android::sp<inner::Gadget> g = new inner::Gadget;
    android::sp<Widget> framework = new Widget;
    names.assign(framework.get(), "gnssCb", false);
    names.assign(b.get(), "IFusdLbs");

    EXPECT_EQ(names.nameOf(android::sp<Widget>()), "null");
    EXPECT_EQ(names.nameOf(framework), "@gnssCb");
    EXPECT_EQ(names.nameOf(b), "@IFusdLbs#1");
    EXPECT_EQ(names.nameOf(a), "@Widget#1");  // first sight
    EXPECT_EQ(names.nameOf(g), "@Gadget#1");  // namespaces dropped
    EXPECT_EQ(names.nameOf(a), "@Widget#1");  // stable
    android::sp<Widget> c = new Widget;
    EXPECT_EQ(names.nameOf(c), "@Widget#2");
}

TEST(ObjectNamesTest, ALaterObjectAtTheSameAddressGetsANewName) {
    ObjectNames& names = ObjectNames::get();
    std::string first;
    const void* address = nullptr;
    {
        android::sp<Widget> w = new Widget;
        address = w.get();
        first = names.nameOf(w);
    }
    // Allocate until the address comes back (the allocator reuses it at once in practice).
    std::vector<android::sp<Widget>> keep;
    for (int i = 0; i < 1000; ++i) {
        keep.push_back(new Widget);
        if (keep.back().get() == address) {
            EXPECT_NE(names.nameOf(keep.back()), first);
            return;
        }
    }
    GTEST_SKIP() << "the allocator never reused the address";
}

}  // namespace
}  // namespace sim
