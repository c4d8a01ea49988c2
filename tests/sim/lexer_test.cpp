// Lexing of scenario lines: tokens, quoting, bracketed values, comments, verbatim text.
#include "lexer.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

std::vector<std::string> texts(const std::string& line) {
    std::vector<Token> tokens;
    std::string error;
    EXPECT_TRUE(lexTokens(line, &tokens, &error)) << error;
    std::vector<std::string> out;
    for (const auto& t : tokens) out.push_back(t.text);
    return out;
}

std::string lexError(const std::string& line) {
    Line lexed;
    std::string error;
    EXPECT_FALSE(lexLine(line, &lexed, &error)) << line;
    return error;
}

TEST(LexerTest, SplitsOnBlanksAndKeepsBracketedValuesWhole) {
    EXPECT_EQ(texts("call  f\tloc{timestamp=1 latitudeDegrees=2}  [5:0 6:-3] sv1{numSvs=70; "
                    "GPS/4/30/USED}"),
              (std::vector<std::string>{"call", "f", "loc{timestamp=1 latitudeDegrees=2}",
                                        "[5:0 6:-3]", "sv1{numSvs=70; GPS/4/30/USED}"}));
}

TEST(LexerTest, ResolvesEveryEscapeOfQuotedStrings) {
    std::vector<Token> tokens;
    std::string error;
    ASSERT_TRUE(lexTokens(R"(x "a\"b\\c\nd\re\tf\0g\x41\xfF" "")", &tokens, &error)) << error;
    ASSERT_EQ(tokens.size(), 3u);
    EXPECT_FALSE(tokens[0].quoted);
    EXPECT_TRUE(tokens[1].quoted);
    EXPECT_EQ(tokens[1].text, std::string("a\"b\\c\nd\re\tf\0gA\xff", 15));
    EXPECT_TRUE(tokens[2].quoted);
    EXPECT_EQ(tokens[2].text, "");
}

TEST(LexerTest, HashStartsACommentOnlyOutsideQuotes) {
    EXPECT_EQ(texts("prop a \"x#y\" # the rest"), (std::vector<std::string>{"prop", "a", "x#y"}));
    EXPECT_EQ(texts("prop a b# glued comment"), (std::vector<std::string>{"prop", "a", "b"}));
    EXPECT_TRUE(texts("   # only a comment").empty());
    EXPECT_TRUE(texts(" \t ").empty());
}

TEST(LexerTest, RejectsMalformedLines) {
    EXPECT_EQ(lexError("prop a \"open"), "unterminated string");
    EXPECT_EQ(lexError("prop a \"bad \\q\""), "unknown escape \\q");
    EXPECT_EQ(lexError("prop a \"\\x4\""), "\\x needs two hex digits");
    EXPECT_EQ(lexError("call f loc{a=1"), "missing }");
    EXPECT_EQ(lexError("call f [1:2}"), "unexpected }");
    EXPECT_EQ(lexError("call f a]"), "unexpected ]");
    EXPECT_EQ(lexError("call f loc{a=1 # comment}"), "missing }");
    EXPECT_EQ(lexError("call f \"a\"b"), "a quoted string must be followed by a blank");
    EXPECT_EQ(lexError("call f a\"b\""), "a quote inside a word");
    EXPECT_EQ(lexError("expect"), "expect needs a text");
}

TEST(LexerTest, ExpectationTextIsVerbatimToTheEndOfTheLine) {
    Line line;
    std::string error;
    ASSERT_TRUE(lexLine("  expect log I a # not a comment \"x  ", &line, &error)) << error;
    ASSERT_TRUE(line.hasVerbatim);
    ASSERT_EQ(line.tokens.size(), 1u);
    EXPECT_EQ(line.tokens[0].text, "expect");
    EXPECT_EQ(line.verbatim, "log I a # not a comment \"x  ");

    ASSERT_TRUE(lexLine("expect-not  two blanks", &line, &error));
    EXPECT_EQ(line.verbatim, " two blanks");
    ASSERT_TRUE(lexLine("expect-prefix \\x", &line, &error));
    EXPECT_EQ(line.verbatim, "\\x");
    ASSERT_TRUE(lexLine("expect-count 3 # a comment", &line, &error));
    EXPECT_FALSE(line.hasVerbatim);
    EXPECT_EQ(line.tokens.size(), 2u);
    ASSERT_TRUE(lexLine("expected x", &line, &error));  // not a keyword
    EXPECT_FALSE(line.hasVerbatim);
}

TEST(LexerTest, ScenarioKeepsLineNumbersAndDropsLineEnds) {
    std::vector<Line> lines;
    int errorLine = 0;
    std::string error;
    ASSERT_TRUE(
        lexScenario("# header\n\ncall a\r\nexpect x \r\n  \ncall b", &lines, &errorLine, &error));
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].number, 3);
    EXPECT_EQ(lines[0].text, "call a");
    EXPECT_EQ(lines[1].number, 4);
    EXPECT_EQ(lines[1].verbatim, "x ");
    EXPECT_EQ(lines[2].number, 6);

    EXPECT_FALSE(lexScenario("call a\n\ncall \"b\n", &lines, &errorLine, &error));
    EXPECT_EQ(errorLine, 3);
}

}  // namespace
}  // namespace sim
