// What the explorer compares runs by, and how it plays one serial order. A fault here
// either hides real interleaving defects (an outcome blind to the order a party received
// its calls in) or floods a block with false alarms (an outcome that keeps the order of
// lines across threads, a serial order that cuts an operation in two).
#include <gtest/gtest.h>

#include <sstream>

#include "finding_report.h"
#include "policy.h"
#include "run_result.h"

namespace explore {
namespace {

// Two operations, each with a log line and a call to the framework, reported in `order`
// (a list of message lines of the child's protocol).
RunResult readRun(const std::vector<std::string>& messages) {
    std::string text = "B\n";
    for (const auto& message : messages) text += message + "\n";
    text += "E\nT 0 ret true\nX\n";
    RunResult result;
    readMessages(text, &result);
    return result;
}

TEST(OutcomeTest, KeepsEachOperationsLinesButNotTheirOrderAcrossThreads) {
    const RunResult one = readRun({"O 1.1 1 call a", "O 2.1 2 fusd b", "T 1.1 log I one",
                                   "T 2.1 log I two", "T 2.1 log I three"});
    const RunResult other = readRun({"O 2.1 2 fusd b", "O 1.1 1 call a", "T 2.1 log I two",
                                     "T 1.1 log I one", "T 2.1 log I three"});
    EXPECT_EQ(one.outcome(), other.outcome());
    EXPECT_EQ(one.operationOrder(), "1.1,2.1");
    EXPECT_EQ(other.operationOrder(), "2.1,1.1");
    ASSERT_NE(one.operation("2.1"), nullptr);
    EXPECT_EQ(one.operation("2.1")->lines, (std::vector<std::string>{"log I two", "log I three"}));
    EXPECT_EQ(one.afterLines, std::vector<std::string>{"ret true"});
    const RunResult swapped = readRun({"O 1.1 1 call a", "O 2.1 2 fusd b", "T 1.1 log I one",
                                       "T 2.1 log I three", "T 2.1 log I two"});
    EXPECT_NE(one.outcome(), swapped.outcome()) << "an operation's own lines keep their order";
}

TEST(OutcomeTest, KeepsTheOrderInWhichAPartyReceivedItsCalls) {
    // Two fused reports forwarded by two threads: the framework sees 10000 then 10050 in one
    // run and the reverse in the other, each operation's own lines being the same.
    const std::string first = "T 1.1 fw gnssCb.gnssLocationCb(loc{timestamp=10000})";
    const std::string second = "T 2.1 fw gnssCb.gnssLocationCb(loc{timestamp=10050})";
    const RunResult inOrder = readRun({"O 1.1 1 fusd r", "O 2.1 2 fusd r", first, second});
    const RunResult reversed = readRun({"O 1.1 1 fusd r", "O 2.1 2 fusd r", second, first});
    EXPECT_NE(inOrder.outcome(), reversed.outcome());
    EXPECT_NE(inOrder.outcome().find("received fw gnssCb.gnssLocationCb\n"), std::string::npos);
}

TEST(OutcomeTest, NamesThePartysOperationOfACallReceived) {
    EXPECT_EQ(receivedOperation("fusd IFusdGnssInterface.sendLocationData(loc{timestamp=1})"),
              "fusd IFusdGnssInterface.sendLocationData");
    EXPECT_EQ(receivedOperation("fusd IFusdLbs.getFusdGnssInterface() -> transport-error"),
              "fusd IFusdLbs.getFusdGnssInterface");
    EXPECT_EQ(receivedOperation("vhal IZDGnss2.0.getExtensionZdSuplFqdn()"),
              "vhal IZDGnss2.0.getExtensionZdSuplFqdn");
    EXPECT_EQ(receivedOperation("fw fdCallback.hookA(\"a.b\")"), "fw fdCallback.hookA");
    for (const char* line : {"log I fusd IFusdLbs.x()", "refused fusd kill: not running",
                             "sm tryGetService a/default -> null", "fw", "fusd kill"}) {
        EXPECT_EQ(receivedOperation(line), "") << line;
    }
}

Candidate candidate(int thread, int branch, const std::string& operation, bool atStart) {
    Candidate c;
    c.thread = thread;
    c.branch = branch;
    c.operation = operation;
    c.atOperationStart = atStart;
    return c;
}

Decision decision(int current, std::vector<Candidate> candidates) {
    Decision d;
    d.current = current;
    d.candidates = std::move(candidates);
    return d;
}

TEST(SerialPolicyTest, RunsAnOperationWholeThenFollowsTheOrderAndReportsEachChoice) {
    std::vector<SerialPolicy::Choice> choices;
    SerialPolicy policy({"2.1", "1.2"},
                        [&](const SerialPolicy::Choice& c) { choices.push_back(c); });
    // At the start both branches could begin: the order says 2.1.
    EXPECT_EQ(
        policy.choose(decision(0, {candidate(1, 1, "1.1", true), candidate(2, 2, "2.1", true)})),
        2);
    // 2.1 under way (it set off a delivery, thread 3): it runs on.
    EXPECT_EQ(
        policy.choose(decision(2, {candidate(1, 1, "1.1", true), candidate(2, 2, "2.1", false),
                                   candidate(3, 2, "2.1/1", true)})),
        2);
    // 2.1 ended (thread 2 finished): 1.1 or the delivery could begin. The order's next key,
    // 1.2, cannot begin here, so the default continues what branch 2 set off.
    EXPECT_EQ(
        policy.choose(decision(2, {candidate(1, 1, "1.1", true), candidate(3, 2, "2.1/1", true)})),
        3);
    ASSERT_EQ(choices.size(), 2u);
    EXPECT_EQ(choices[0].chosen, "2.1");
    EXPECT_EQ(choices[0].possible, (std::vector<std::string>{"1.1", "2.1"}));
    EXPECT_EQ(choices[1].chosen, "2.1/1");
    EXPECT_EQ(choices[1].possible, (std::vector<std::string>{"1.1", "2.1/1"}));
}

TEST(SerialPolicyTest, WithoutAnOrderPlaysEachBranchWholeWithWhatItSetsOff) {
    SerialPolicy policy({});
    EXPECT_EQ(
        policy.choose(decision(0, {candidate(1, 1, "1.1", true), candidate(2, 2, "2.1", true)})),
        1);
    // Branch 1's next command, branch 2 and a delivery branch 1 set off could begin.
    EXPECT_EQ(policy.choose(decision(1, {candidate(1, 1, "1.2", true), candidate(2, 2, "2.1", true),
                                         candidate(3, 1, "1.1/1", true)})),
              1);
    EXPECT_EQ(
        policy.choose(decision(1, {candidate(2, 2, "2.1", true), candidate(3, 1, "1.1/1", true)})),
        3);
    // A paused thread in the middle of its operation is woken at once.
    Candidate paused = candidate(3, 1, "1.1/1", false);
    paused.early = true;
    EXPECT_EQ(policy.choose(decision(3, {candidate(2, 2, "2.1", true), paused})), 3);
}

TEST(GuidedPolicyTest, ASchedulePastTheRunsDecisionsDoesNotFit) {
    GuidedPolicy policy({{1, 2}, {5, 1}});
    for (size_t i = 0; i < 3; ++i) {
        Decision d = decision(1, {candidate(1, 1, "1.1", false), candidate(2, 2, "2.1", true)});
        d.index = i;
        d.fallback = 1;
        EXPECT_EQ(policy.choose(d), i == 1 ? 2 : 1);
    }
    std::string why;
    EXPECT_FALSE(policy.fitted(&why));
    EXPECT_NE(why.find("decision 5"), std::string::npos) << why;
    GuidedPolicy fits(std::map<size_t, int>{{1, 2}});
    for (size_t i = 0; i < 2; ++i) {
        Decision d = decision(1, {candidate(1, 1, "1.1", false), candidate(2, 2, "2.1", true)});
        d.index = i;
        fits.choose(d);
    }
    EXPECT_TRUE(fits.fitted(&why));
}

TEST(DiffTest, ShowsOnlyWhatChangedUnderItsHeading) {
    const std::string serial = "operation 1.1 a\n  x\n  y\nreceived fw a.b\n  one\n  two\nafter\n";
    const std::string run = "operation 1.1 a\n  x\n  y\nreceived fw a.b\n  two\n  one\nafter\n";
    const std::vector<DiffLine> diff = diffLines(serial, run);
    EXPECT_EQ(diffSize(diff), 2u);
    std::ostringstream out;
    printDiff(out, diff, "");
    EXPECT_EQ(out.str(), "  …\n  received fw a.b\n+   two\n    one\n-   two\n  after\n");
}

}  // namespace
}  // namespace explore
