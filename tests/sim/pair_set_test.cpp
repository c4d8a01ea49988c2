// The generated blocks: which pairs a table gives, which values each branch takes, where a
// nested operation lives and what it arms, and what a post part keeps.
#include "pair_set.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "generated_scenario.h"
#include "generation.h"
#include "operation_table.h"

namespace gen {
namespace {

constexpr const char* kTable =
    "state one\n"
    "  fusd register\n"
    "post one\n"
    "  call isFDSupport\n"
    "  fusd reportFusdLocation loc{timestamp=1}\n"
    "state two after one\n"
    "  call fusionD_init\n"
    "op query in one two\n"
    "  call isFDSupport\n"
    "  call isFDGeofenceSupport\n"
    "op connect in two\n"
    "  call FdGetService ; call isFDSupport\n"
    "op kill in two\n"
    "  fusd kill\n"
    "nest fusd IFusdLbs\n"
    "  reportFusdLocation loc{timestamp=5}\n";

struct Generated {
    OperationTable table;
    Operations ops;
    std::vector<GeneratedBlock> blocks;

    const GeneratedBlock& block(const std::string& id) const {
        auto found = std::find_if(blocks.begin(), blocks.end(),
                                  [&](const GeneratedBlock& b) { return b.id == id; });
        EXPECT_NE(found, blocks.end()) << id;
        return *found;
    }
};

Generated generate(const std::map<std::string, RemoteCalls>& calls, bool triples = false) {
    Generated g;
    std::string error;
    EXPECT_TRUE(parseOperationTable(kTable, "t", &g.table, &error)) << error;
    g.ops = stateOperations(g.table, calls);
    g.blocks = generateBlocks(g.table, g.ops, triples);
    return g;
}

std::vector<std::string> ids(const Generated& g) {
    std::vector<std::string> all;
    for (const GeneratedBlock& b : g.blocks) all.push_back(b.id);
    return all;
}

TEST(PairSetTest, EveryUnorderedPairOfEachStateOnceTheSmallerStatesFirst) {
    EXPECT_EQ(ids(generate({})),
              (std::vector<std::string>{"one:query+query", "two:query+query", "two:query+connect",
                                        "two:query+kill", "two:connect+connect", "two:connect+kill",
                                        "two:kill+kill"}));
    EXPECT_EQ(generate({}, true).blocks.size(), 1u + 10u);  // one triple in one, C(5,3) in two
}

// A state's test selects "STATE:"; another state whose name ends in it keeps its blocks.
TEST(PairSetTest, OnlyAStateWithItsColonTakesThatStatesBlocksAndOtherTextAnyIdHoldingIt) {
    GeneratedSet set;
    for (const char* id : {"connected:a+b", "unconnected:a+b", "connected:b+b"}) {
        GeneratedBlock block;
        block.id = id;
        set.blocks.push_back(block);
        set.shared.push_back(true);
    }
    Selection selection;
    selection.only = "connected:";
    EXPECT_EQ(selectBlocks(set, selection), (std::vector<size_t>{0, 2}));
    selection.only = "a+b";
    EXPECT_EQ(selectBlocks(set, selection), (std::vector<size_t>{0, 1}));
}

TEST(PairSetTest, ACopyOfAnOperationTakesItsNextValueAndASequenceIsOneBranch) {
    const Generated g = generate({});
    EXPECT_EQ(g.block("two:query+query").branches,
              (std::vector<std::vector<std::string>>{{"call isFDSupport"},
                                                     {"call isFDGeofenceSupport"}}));
    EXPECT_EQ(g.block("two:kill+kill").branches,
              (std::vector<std::vector<std::string>>{{"fusd kill"}, {"fusd kill"}}));
    EXPECT_EQ(g.block("two:query+connect").branches[1],
              (std::vector<std::string>{"call FdGetService", "call isFDSupport"}));
    EXPECT_EQ(g.block("two:query+connect").prelude,
              (std::vector<std::string>{"fusd register", "call fusionD_init"}));
}

TEST(PairSetTest, APostKeepsItsWorldEventsUnlessTheBlockKillsOrRegistersTheDaemon) {
    const Generated g = generate({});
    EXPECT_EQ(g.block("two:query+connect").post.size(), 2u);
    EXPECT_EQ(g.block("two:query+kill").post, (std::vector<std::string>{"call isFDSupport"}));
}

TEST(PairSetTest, ACallANestingCoversGivesANestedOperationInEachStateThatMakesIt) {
    const RemoteCalls calls = {"fusd IFusdLbs.linkToDeath", "fusd IFusdGnssInterface.setCallback"};
    const Generated g =
        generate({{"two connect", calls}, {"two kill", calls}, {"one query", calls}});
    const std::vector<StateOperation>& two = g.ops.byState.at("two");
    ASSERT_EQ(two.size(), 4u);  // setCallback is not on an interface the nesting covers
    EXPECT_EQ(two[3].name, "reportFusdLocation@IFusdLbs.linkToDeath");
    EXPECT_TRUE(two[3].nested);
    EXPECT_EQ(two[3].values, (std::vector<std::string>{"call FdGetService ; call isFDSupport"}));
    const std::string arming =
        "fusd nested-in IFusdLbs.linkToDeath reportFusdLocation loc{timestamp=5}";
    const GeneratedBlock& pair = g.block("two:query+reportFusdLocation@IFusdLbs.linkToDeath");
    EXPECT_EQ(pair.prelude.back(), arming);
    const GeneratedBlock& same = g.block(
        "two:reportFusdLocation@IFusdLbs.linkToDeath+reportFusdLocation@IFusdLbs.linkToDeath");
    EXPECT_EQ(std::count(same.prelude.begin(), same.prelude.end(), arming), 2);
    ASSERT_EQ(g.ops.byState.at("one").size(), 2u);
    EXPECT_EQ(g.ops.byState.at("one")[1].values, (std::vector<std::string>{"call isFDSupport"}));
}

TEST(PairSetTest, ABlockIsAScenarioWithItsCommentAndDeclarations) {
    const Generated g = generate({});
    const std::string text =
        scenarioText(g.block("two:query+connect"), {"Made here."}, {"expect-finding non-serial 2"});
    EXPECT_EQ(text,
              "# Made here.\n"
              "fusd register\n"
              "call fusionD_init\n"
              "\n"
              "parallel\n"
              "branch\n"
              "call isFDSupport\n"
              "branch\n"
              "call FdGetService\n"
              "call isFDSupport\n"
              "end\n"
              "expect-finding non-serial 2\n"
              "\n"
              "call isFDSupport\n"
              "fusd reportFusdLocation loc{timestamp=1}\n");
    sim::Scenario scenario;
    std::string error;
    ASSERT_TRUE(parseGenerated("t", text, &scenario, &error)) << error;
    ASSERT_NE(scenario.steps[2].block, nullptr);
    EXPECT_EQ(scenario.steps[2].block->expectedFindings.at(0).count, 2);
}

}  // namespace
}  // namespace gen
