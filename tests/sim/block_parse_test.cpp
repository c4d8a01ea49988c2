// Concurrent blocks as the scenario reader takes them: a malformed block must stop the
// scenario at the right line before anything runs, since a block silently read as
// something else would run sequentially and prove nothing about interleavings.
#include <gtest/gtest.h>

#include "policy.h"
#include "scenario.h"
#include "scenario_file.h"

namespace sim {
namespace {

struct Parsed {
    bool ok = false;
    Scenario scenario;
    SourceError error;
};

Parsed parse(const std::string& text) {
    Parsed parsed;
    std::vector<Line> lines;
    parsed.ok = loadScenario("t.scn", text, &lines, &parsed.error) &&
                parseScenario(lines, &parsed.scenario, &parsed.error);
    return parsed;
}

TEST(BlockParseTest, BranchesKeepTheirCommandsInOrderAndTheDeclaredFindings) {
    Parsed p = parse(
        "call isFDSupport\n"
        "parallel\n"
        "branch\n"
        "call isFDSupport\n"
        "fusd kill\n"
        "branch\n"
        "fusd reportFusdLocation loc{timestamp=1}\n"
        "end\n"
        "expect-finding non-serial 3\n"
        "expect-finding deadlock\n"
        "call isFdLocationReport\n");
    ASSERT_TRUE(p.ok) << p.error.line << ": " << p.error.reason;
    ASSERT_EQ(p.scenario.steps.size(), 3u);
    const auto& block = p.scenario.steps[1].block;
    ASSERT_NE(block, nullptr);
    ASSERT_EQ(block->branches.size(), 2u);
    EXPECT_EQ(block->branches[0][1].source.text, "fusd kill");
    EXPECT_EQ(block->branches[1].size(), 1u);
    ASSERT_EQ(block->expectedFindings.size(), 2u);
    EXPECT_EQ(block->expectedFindings[0].kind, FindingKind::kNonSerial);
    EXPECT_EQ(block->expectedFindings[0].count, 3);
    EXPECT_EQ(block->expectedFindings[1].kind, FindingKind::kDeadlock);
    EXPECT_EQ(block->expectedFindings[1].count, -1);
    EXPECT_EQ(p.scenario.steps[1].source.number, 2);
}

TEST(BlockParseTest, MalformedBlocksStopAtTheirLine) {
    const std::string two = "branch\ncall isFDSupport\nbranch\ncall isFDSupport\n";
    const struct {
        std::string text;
        int line;
    } cases[] = {
        {"parallel\n" + two, 1},                                   // never closed
        {"parallel\nparallel\n", 2},                               // nested
        {"parallel\nbranch\ncall isFDSupport\nend\n", 4},          // one branch
        {"parallel\nbranch\nbranch\ncall isFDSupport\nend\n", 5},  // an empty branch
        {"parallel\ncall isFDSupport\n", 2},                       // a command before any branch
        {"parallel\nbranch\ncall isFDSupport\nexpect ret true\n", 4},
        {"parallel\nbranch\nprop a b\n", 3},  // environment inside
        {"parallel\nbranch\ncall noSuchFunction\n", 3},
        {"parallel\n" + two + "fusd kil\nend\n", 6},  // a world verb mistyped in a branch
        {"parallel\n" + two + "fusd fail IFusdLbs.noSuchOp\nend\n", 6},
        {"parallel\n" + two + "vhal register 3.0\nend\n", 6},
        {"parallel\n" + two + "fw hook C\nend\n", 6},
        {"parallel end\n", 1},
        {"end\n", 1},
        {"call isFDSupport\nexpect-finding crash\n", 2},  // not after a block
        {"parallel\n" + two + "end\nexpect-finding flaky\n", 7},
        {"parallel\n" + two + "end\nexpect-finding crash 0\n", 7},
        {"parallel\n" + two + "end\nexpect-finding crash\nexpect-finding crash 2\n", 8},
    };
    for (const auto& c : cases) {
        Parsed p = parse(c.text);
        EXPECT_FALSE(p.ok) << c.text;
        EXPECT_EQ(p.error.line, c.line) << c.text << p.error.reason;
    }
}

TEST(ScheduleStringTest, ReadsBackWhatItWritesAndRefusesAnythingElse) {
    std::map<size_t, int> deviations{{3, 2}, {17, 1}};
    std::map<size_t, int> read;
    std::string error;
    ASSERT_TRUE(explore::parseSchedule(explore::formatSchedule(deviations), &read, &error));
    EXPECT_EQ(read, deviations);
    ASSERT_TRUE(explore::parseSchedule("-", &read, &error));
    EXPECT_TRUE(read.empty());
    for (const char* bad : {"", "3", "3:", ":2", "3:0", "3:2,", "a:2", "3:2;4:1", "-1:2"}) {
        EXPECT_FALSE(explore::parseSchedule(bad, &read, &error)) << bad;
    }
}

}  // namespace
}  // namespace sim
