// The operation table covers the library and the world: an exported function or a world
// verb that is neither an operation nor left out with a reason would never be generated,
// and no test would say so. Every line of the table must also be a scenario command, so
// that a typo fails here and not after an hour of exploration.
#include "operation_table.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "generated_scenario.h"
#include "pair_set.h"
#include "world/world.h"

namespace gen {
namespace {

const std::string kSource = ZD_SOURCE_DIR;

OperationTable committedTable() {
    OperationTable table;
    std::string error;
    EXPECT_TRUE(
        readOperationTable(kSource + "/tests/explore/generated/operations.table", &table, &error))
        << error;
    return table;
}

// The functions the header declares at file level: a line that starts in the first column
// with a return type and then NAME( .
std::set<std::string> exportedFunctions() {
    std::ifstream header(kSource + "/include/zdgnssprovider.h");
    const std::regex declaration(R"(^[A-Za-z_][\w:<>, *&]*[ *&](\w+)\()");
    std::set<std::string> names;
    std::string line;
    while (std::getline(header, line)) {
        std::smatch match;
        if (std::regex_search(line, match, declaration)) names.insert(match[1]);
    }
    return names;
}

// Every command the table names: "call NAME", "fusd VERB" ...
std::set<std::string> namedCommands(const OperationTable& table) {
    std::set<std::string> named;
    for (const TableOperation& op : table.operations) {
        for (const std::string& value : op.values) {
            for (const std::string& command : commandsOf(value)) named.insert(commandOf(command));
        }
    }
    for (const TableNesting& nesting : table.nestings) {
        for (const std::string& event : nesting.events) {
            named.insert(commandOf(nesting.party == "fw" ? event : nesting.party + " " + event));
        }
    }
    for (const TableLeftOut& left : table.leftOut) {
        EXPECT_FALSE(left.reason.empty()) << left.command;
        named.insert(left.command);
    }
    return named;
}

TEST(OperationTableTest, EveryExportedFunctionIsAnOperationOrLeftOutWithItsReason) {
    const std::set<std::string> named = namedCommands(committedTable());
    const std::set<std::string> functions = exportedFunctions();
    ASSERT_GT(functions.size(), 40u) << "the header was not read";
    for (const std::string& function : functions) {
        EXPECT_EQ(named.count("call " + function), 1u)
            << function << " is neither an operation of the table nor left out with a reason";
    }
}

TEST(OperationTableTest, EveryWorldVerbIsAnOperationOrLeftOutWithItsReason) {
    const std::set<std::string> named = namedCommands(committedTable());
    for (const std::string& verb : sim::World::verbs()) {
        EXPECT_EQ(named.count(verb), 1u)
            << verb << " is neither an operation of the table nor left out with a reason";
    }
}

TEST(OperationTableTest, EveryLineIsAScenarioCommand) {
    const OperationTable table = committedTable();
    // A call of each party the library surely makes, to arm the nested events on.
    const std::map<std::string, std::string> armedOn = {{"fusd", "IFusdLbs.linkToDeath"},
                                                        {"vhal", "IZDGnss2.0.getHalHidlVersion"},
                                                        {"fw", "gnssCb.gnssLocationCb"}};
    for (const TableState& state : table.states) {
        std::string text;
        for (const std::string& line : state.prelude) text += line + "\n";
        for (const TableNesting& nesting : table.nestings) {
            for (const std::string& event : nesting.events) {
                text +=
                    nesting.party + " nested-in " + armedOn.at(nesting.party) + " " + event + "\n";
            }
        }
        for (const TableOperation& op : table.operations) {
            for (const std::string& value : op.values) {
                for (const std::string& command : commandsOf(value)) text += command + "\n";
            }
        }
        for (const std::string& line : state.post) text += line + "\n";
        sim::Scenario scenario;
        std::string error;
        EXPECT_TRUE(parseGenerated(state.name, text, &scenario, &error)) << error;
    }
}

TEST(OperationTableTest, AMisreadTableIsRefusedAtItsLine) {
    const struct {
        std::string text;
        std::string error;
    } cases[] = {
        {"op a in s\n  call isFDSupport\n", "t:1: operation a names no state \"s\""},
        {"state s\nop a in s\n", "t:2: operation a has no value"},
        {"  call isFDSupport\n", "t:1: an indented line belongs to an entry above it"},
        {"state s\nstate s\n", "t:2: state s is declared twice"},
        {"state s after r\n", "t:1: no state \"r\" before this one"},
        {"left-out call x\n", "t:1: usage: left-out NAME: REASON"},
        {"state s\nop a in s\n  fusd kill\nexplore-only b: why\n",
         "t:4: explore-only names no operation \"b\""},
        {"nest daemon\n", "t:1: usage: nest fusd|vhal|fw [INTERFACE-PREFIX]"},
        {"nest fusd\n", "t:1: a nest entry needs an event"},
        {"operation a\n", "t:1: unknown entry \"operation\""},
    };
    for (const auto& c : cases) {
        OperationTable table;
        std::string error;
        EXPECT_FALSE(parseOperationTable(c.text, "t", &table, &error)) << c.text;
        EXPECT_EQ(error, c.error) << c.text;
    }
}

TEST(OperationTableTest, AStateTakesItsBasePreludeAndPostUnlessItGivesItsOwnPost) {
    OperationTable table;
    std::string error;
    ASSERT_TRUE(
        parseOperationTable("state a\n  fusd register\npost a\n  call isFDSupport\n"
                            "state b after a\n  call fusionD_init\n"
                            "state c after b\n  fusd kill\npost c\n  call getBatcgingIface\n",
                            "t", &table, &error))
        << error;
    EXPECT_EQ(table.state("b")->prelude,
              (std::vector<std::string>{"fusd register", "call fusionD_init"}));
    EXPECT_EQ(table.state("b")->post, (std::vector<std::string>{"call isFDSupport"}));
    EXPECT_EQ(table.state("c")->prelude.size(), 3u);
    EXPECT_EQ(table.state("c")->post, (std::vector<std::string>{"call getBatcgingIface"}));
}

}  // namespace
}  // namespace gen
