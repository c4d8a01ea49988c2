// Minimising a finding: what goes, what stays because the finding needs it, and the
// written scenario. The explorer is replaced by a runner that shows a finding exactly
// when the block holds what the finding needs, so that the fixed point is known.
#include "minimiser.h"

#include <gtest/gtest.h>

#include "generated_scenario.h"
#include "kept_hazards.h"

namespace gen {
namespace {

using explore::BlockFinding;
using explore::BlockResult;
using sim::FindingKind;

const std::string kSerial =
    "operation 1.1 call sendLocationDataToTarvi loc{timestamp=1}\n"
    "party fw gnssCb\n  fw gnssCb.gnssLocationCb(a)\n  fw gnssCb.gnssLocationCb(b)\n"
    "after\n  ret true\n";
const std::string kReversed =
    "operation 1.1 call sendLocationDataToTarvi loc{timestamp=1}\n"
    "party fw gnssCb\n  fw gnssCb.gnssLocationCb(b)\n  fw gnssCb.gnssLocationCb(a)\n"
    "after\n  ret true\n";
const std::string kOtherPart =
    "operation 1.1 call sendLocationDataToTarvi loc{timestamp=1}\n"
    "party fw gnssCb\n  fw gnssCb.gnssLocationCb(a)\n  fw gnssCb.gnssLocationCb(b)\n"
    "after\n  ret false\n";

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// The framework gets two positions in reverse while the daemon is registered and both
// branches report, the first branch's location stamped 1; without `fusd provide gnss no`
// the difference moves to the lines after the block, another kind of difference.
BlockResult fakeExplore(const std::string& text) {
    BlockResult result;
    result.serialOutcomes = {kSerial};
    result.complete = true;
    if (holds(text, "fusd register\n") && holds(text, "timestamp=1") &&
        holds(text, "branch\nfusd reportFusdLocation")) {
        const bool sameKind = holds(text, "fusd provide gnss no\n");
        result.findings.push_back(
            {FindingKind::kNonSerial, sameKind ? kReversed : kOtherPart, "", 7, "3:2", false});
    }
    return result;
}

GeneratedBlock start() {
    GeneratedBlock block;
    block.id = "gps-run:a+b";
    block.prelude = {"prop ro.config.zd_support_geofence true", "fusd provide gnss no",
                     "fusd register", "call fusionD_init"};
    block.branches = {{"fusd reportFusdLocation loc{timestamp=1 latitudeDegrees=2.5}"},
                      {"fusd reportFusdLocation loc{timestamp=3}"}};
    block.post = {"call isFdLocationReport", "call isFDSupport"};
    return block;
}

TEST(MinimiserTest, RemovesWhatTheFindingDoesNotNeedAndKeepsItsKindOfDifference) {
    const BlockResult first = fakeExplore(scenarioText(start()));
    ASSERT_EQ(first.findings.size(), 1u);
    const Minimised m = minimise(start(), first, first.findings[0], fakeExplore);
    EXPECT_EQ(m.block.prelude, (std::vector<std::string>{"fusd provide gnss no", "fusd register"}));
    EXPECT_TRUE(m.block.post.empty());
    EXPECT_EQ(m.block.branches,
              (std::vector<std::vector<std::string>>{{"fusd reportFusdLocation loc{timestamp=1}"},
                                                     {"fusd reportFusdLocation loc{}"}}));
    EXPECT_EQ(m.finding.key, kReversed);
    EXPECT_GT(m.candidates, 10u);
}

TEST(MinimiserTest, MovesAnOperationOutOfABlockOfThreeBranches) {
    GeneratedBlock three = start();
    three.branches.push_back({"call isFDSupport"});
    const BlockResult first = fakeExplore(scenarioText(three));
    const Minimised m = minimise(three, first, first.findings[0], fakeExplore);
    EXPECT_EQ(m.block.branches.size(), 2u);
}

TEST(MinimiserTest, TheScenarioWrittenDeclaresWhatItShowsAndParses) {
    const BlockResult first = fakeExplore(scenarioText(start()));
    const Minimised m = minimise(start(), first, first.findings[0], fakeExplore);
    const std::string text = minimisedScenario(m, "gps-run:a+b");
    EXPECT_TRUE(holds(text, "# Found by the generated pair gps-run:a+b, minimised"));
    EXPECT_TRUE(holds(text, "# It shows a non-serial finding in party fw gnssCb."));
    EXPECT_TRUE(holds(text, "#   -   fw gnssCb.gnssLocationCb(b)\n"));
    EXPECT_TRUE(holds(text, "#   +   fw gnssCb.gnssLocationCb(b)\n"));
    EXPECT_TRUE(holds(text, "# Schedule 3:2 (zdgnss-sim explore --schedule 3:2 FILE).\n"));
    EXPECT_TRUE(holds(text, "end\nexpect-finding non-serial 1\n"));
    sim::Scenario scenario;
    std::string error;
    EXPECT_TRUE(parseGenerated("m.scn", text, &scenario, &error)) << error;
}

TEST(MinimiserTest, ShapesTellAMutexAndARefusedCommandApart) {
    BlockResult result;
    result.findings = {{FindingKind::kLockAcrossCall, "g_feedTimingLock 1.1", "", 1, "-", false},
                       {FindingKind::kRefused, "2.1",
                        "refused fusd kill: the fusion daemon is not running", 0, "-", false}};
    EXPECT_EQ(shapeOf(result.findings[0], result).parts,
              (std::vector<std::string>{"g_feedTimingLock"}));
    EXPECT_EQ(shapeOf(result.findings[1], result).parts, (std::vector<std::string>{"fusd kill"}));
    FindingShape other{FindingKind::kLockAcrossCall, {"g_svStoreLock"}};
    EXPECT_EQ(findShape(result, other), nullptr);
}

TEST(KeptHazardsTest, ADeclarationNeedsItsReasonAndHoldsTheBlockToItsCount) {
    std::vector<KeptHazard> hazards;
    std::string error;
    EXPECT_FALSE(parseKeptHazards("keep s:a+b non-serial\n", "k", &hazards, &error));
    EXPECT_EQ(error, "k:1: a kept hazard needs its reason in a comment above it");
    EXPECT_FALSE(parseKeptHazards("# why\nkeep s:a+b nonserial\n", "k", &hazards, &error));
    ASSERT_TRUE(
        parseKeptHazards("# why\n# and more\nkeep s:a+b non-serial 2\n\n"
                         "# another\nkeep s:a+c deadlock\n",
                         "k", &hazards, &error))
        << error;
    EXPECT_EQ(hazards[0].reason, "why and more");
    const std::vector<sim::ExpectedFinding> declared = declaredFor(hazards, "s:a+b");
    const auto n = FindingKind::kNonSerial;
    EXPECT_TRUE(heldAgainst({n, n}, declared).empty());
    EXPECT_EQ(heldAgainst({n}, declared),
              (std::vector<std::string>{"declared 2 non-serial, found 1"}));
    EXPECT_EQ(heldAgainst({n, n, FindingKind::kDeadlock}, declared),
              (std::vector<std::string>{"1 deadlock finding(s), not declared"}));
    EXPECT_EQ(heldAgainst({}, declaredFor(hazards, "s:a+c")),
              (std::vector<std::string>{"declared deadlock, found 0"}));
    EXPECT_EQ(summaryOf({n, FindingKind::kDeadlock, n}), "deadlock=1 non-serial=2");
}

}  // namespace
}  // namespace gen
