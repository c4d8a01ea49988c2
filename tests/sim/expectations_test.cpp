// Expectations held against a segment.
#include "expectations.h"

#include <gtest/gtest.h>

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

TEST(ExpectationsTest, ExpectFindsLinesInOrderWithGaps) {
    EXPECT_EQ(failing({"expect log I a", "expect ret true"}, kSegment), -1);
    EXPECT_EQ(failing({"expect log I a", "expect log I a"}, kSegment), -1);
    EXPECT_EQ(failing({"expect log I b ", "expect log I a", "expect log I a"}, kSegment), 2);
    EXPECT_EQ(failing({"expect ret true", "expect sleep 1000000"}, kSegment), 1);
    EXPECT_EQ(failing({"expect log I"}, kSegment), 0);  // whole lines only
}

TEST(ExpectationsTest, TrailingBlanksAreSignificant) {
    EXPECT_EQ(failing({"expect log I b"}, kSegment), 0);
    EXPECT_EQ(failing({"expect log I b "}, kSegment), -1);
}

TEST(ExpectationsTest, PrefixMatchesLikeExpectAndSharesItsCursor) {
    EXPECT_EQ(failing({"expect-prefix sleep", "expect-prefix log I"}, kSegment), -1);
    EXPECT_EQ(failing({"expect ret true", "expect-prefix log"}, kSegment), 1);
    EXPECT_EQ(failing({"expect-prefix log I b", "expect log I b "}, kSegment), 1);
}

TEST(ExpectationsTest, NotLooksAtTheWholeSegment) {
    EXPECT_EQ(failing({"expect ret true", "expect-not sleep"}, kSegment), 1);
    EXPECT_EQ(failing({"expect-not log W"}, kSegment), -1);
    EXPECT_EQ(failing({"expect-not lo"}, kSegment), 0);
}

TEST(ExpectationsTest, CountIsTheSegmentSize) {
    EXPECT_EQ(failing({"expect-count 5"}, kSegment), -1);
    EXPECT_EQ(failing({"expect-count 4"}, kSegment), 0);
    EXPECT_EQ(failing({"expect-count 0"}, {}), -1);
}

TEST(ExpectationsTest, ParseAndDescribe) {
    EXPECT_EQ(describe(parsed("expect-prefix x # y ")), "expect-prefix x # y ");
    EXPECT_EQ(describe(parsed("expect-count 0x10")), "expect-count 16");
    Line line;
    Expectation e;
    std::string error;
    ASSERT_TRUE(lexLine("expect-count -1", &line, &error));
    EXPECT_FALSE(parseExpectation(line, &e, &error));
    ASSERT_TRUE(lexLine("expect-count", &line, &error));
    EXPECT_FALSE(parseExpectation(line, &e, &error));
}

}  // namespace
}  // namespace sim
