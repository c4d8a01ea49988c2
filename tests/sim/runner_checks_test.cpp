// The scenario runner's own checks, which no scenario can test: a weakened expectation
// passes every scenario, and an escape, a number form or an address reuse that no scenario
// happens to meet would change meaning unseen.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "expectations.h"
#include "format.h"
#include "lexer.h"
#include "objects.h"

namespace sim {
namespace {

Expectation parsed(const std::string& text) {
    Line line;
    std::string error;
    EXPECT_TRUE(lexLine(text, &line, &error)) << error;
    Expectation e;
    EXPECT_TRUE(parseExpectation(line, &e, &error)) << error;
    return e;
}

int failing(const std::vector<std::string>& expectations, const std::vector<std::string>& segment) {
    std::vector<Expectation> list;
    for (const auto& text : expectations) list.push_back(parsed(text));
    return firstFailure(list, segment);
}

const std::vector<std::string> kSegment = {"log I a", "sleep 1000000", "log I b ", "log I a",
                                           "ret true"};

TEST(ExpectationsTest, ExpectMatchesWholeLinesInOrder) {
    EXPECT_EQ(failing({"expect log I a", "expect log I a", "expect ret true"}, kSegment), -1);
    EXPECT_EQ(failing({"expect log I b ", "expect log I a", "expect log I a"}, kSegment), 2);
    EXPECT_EQ(failing({"expect ret true", "expect sleep 1000000"}, kSegment), 1);
    EXPECT_EQ(failing({"expect log I"}, kSegment), 0);
    EXPECT_EQ(failing({"expect log I b"}, kSegment), 0);  // trailing blanks count
}

TEST(ExpectationsTest, PrefixSharesTheCursorAndNotSeesTheWholeSegment) {
    EXPECT_EQ(failing({"expect-prefix sleep", "expect-prefix log I"}, kSegment), -1);
    EXPECT_EQ(failing({"expect ret true", "expect-prefix log"}, kSegment), 1);
    EXPECT_EQ(failing({"expect ret true", "expect-not sleep"}, kSegment), 1);
    EXPECT_EQ(failing({"expect-not lo"}, kSegment), 0);
    EXPECT_EQ(failing({"expect-not log W"}, kSegment), -1);
    EXPECT_EQ(failing({"expect-count 4"}, kSegment), 0);
    EXPECT_EQ(failing({"expect-count 5"}, kSegment), -1);
}

TEST(LexerTest, ResolvesEveryEscapeOfQuotedStrings) {
    std::vector<Token> tokens;
    std::string error;
    ASSERT_TRUE(lexTokens(R"(x "a\"b\\c\nd\re\tf\0g\x41\xfF" "")", &tokens, &error)) << error;
    ASSERT_EQ(tokens.size(), 3u);
    EXPECT_TRUE(tokens[1].quoted);
    EXPECT_EQ(tokens[1].text, std::string("a\"b\\c\nd\re\tf\0gA\xff", 15));
    EXPECT_EQ(tokens[2].text, "");
}

TEST(FormatTest, RealsInTheirShortestFormThatReadsBack) {
    EXPECT_EQ(fmt(0.1f), "0.1");  // the float's own shortest form, not 0.100000001
    EXPECT_EQ(fmt(1575420000.0f), "1575420000");
    EXPECT_EQ(fmt(90.0f), "90");
    EXPECT_EQ(fmt(0.0001), "0.0001");
    EXPECT_EQ(fmt(1.5e-05), "1.5e-05");
    EXPECT_EQ(fmt(1e16), "10000000000000000");
    EXPECT_EQ(fmt(1e17), "1e+17");
    EXPECT_EQ(fmt(-0.0), "-0");
    EXPECT_EQ(fmt(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(fmt(std::nan("")), "nan");
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const uint64_t bits = random();
        double d;
        float f;
        memcpy(&d, &bits, sizeof d);
        memcpy(&f, &bits, sizeof f);
        if (!std::isnan(d)) {
            ASSERT_EQ(strtod(fmt(d).c_str(), nullptr), d) << fmt(d);
        }
        if (!std::isnan(f)) {
            ASSERT_EQ(strtof(fmt(f).c_str(), nullptr), f) << fmt(f);
        }
    }
}

struct Widget : public android::RefBase {};

TEST(ObjectNamesTest, ALaterObjectAtTheSameAddressGetsANewName) {
    std::string first;
    const void* address = nullptr;
    {
        android::sp<Widget> w = new Widget;
        address = w.get();
        first = ObjectNames::get().nameOf(w);
    }
    // Allocate until the address comes back (the allocator reuses it at once in practice).
    std::vector<android::sp<Widget>> keep;
    for (int i = 0; i < 1000; ++i) {
        keep.push_back(new Widget);
        if (keep.back().get() == address) {
            EXPECT_NE(ObjectNames::get().nameOf(keep.back()), first);
            return;
        }
    }
    GTEST_SKIP() << "the allocator never reused the address";
}

}  // namespace
}  // namespace sim
