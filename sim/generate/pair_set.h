// The generated scenarios: every unordered pair of operations (same-operation pairs
// included, as two copies with different values of the domain) from every init state in
// which both mean something, triples on request. Each is a scenario in the scenario
// language: the state's prelude, one concurrent block with a branch per operation, and
// the state's post part.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "operation_table.h"

namespace gen {

// An operation as it runs in one state: a table operation, or an event a party makes from
// inside one of the library's calls into it (a nested operation), which runs the
// operation that makes that call with the event armed in the prelude.
struct StateOperation {
    std::string name;
    // The domain: one command each, or a short sequence of commands joined by " ; " that
    // the provider makes in that order (the branch runs each as an operation of its own).
    std::vector<std::string> values;
    std::vector<std::string> arming;  // prelude lines the operation needs (nested-in)
    bool nested = false;
};

// The calls a run of one operation made: "fusd IFusdGnssInterface.sendLocationData" ...
using RemoteCalls = std::set<std::string>;

struct Operations {
    // Each state's operations, in table order, the nested ones after the others.
    std::map<std::string, std::vector<StateOperation>> byState;
    // Nested operations the table asks for that no operation's call triggers, and why.
    std::vector<std::string> untriggered;
};

// The operations of every state. `calls` gives, for a table operation's first value in a
// state, the remote calls its run alone made (key "STATE OPERATION"); in each state, each
// call that a `nest` entry covers gives a nested operation, triggered by the first
// operation in table order that makes it there.
Operations stateOperations(const OperationTable& table,
                           const std::map<std::string, RemoteCalls>& calls);

struct GeneratedBlock {
    std::string id;  // STATE:A+B, or STATE:A+B+C
    std::string state;
    std::vector<std::string> operations;  // names, one a branch
    std::vector<std::string> prelude;
    std::vector<std::vector<std::string>> branches;
    std::vector<std::string> post;
};

// Every unordered pair (with `triples`, every unordered triple) of the state's operations.
// The states with fewer operations come first; within a state, operations appear in table
// order, and a repeated operation takes its next value each time.
std::vector<GeneratedBlock> generateBlocks(const OperationTable& table, const Operations& ops,
                                           bool triples);

// The commands of one value: "A ; B" -> {"A", "B"}.
std::vector<std::string> commandsOf(const std::string& value);

// The scenario text of a block, with `comment` lines first and `declarations` (such as
// expect-finding lines) right after its `end`.
std::string scenarioText(const GeneratedBlock& block, const std::vector<std::string>& comment = {},
                         const std::vector<std::string>& declarations = {});

}  // namespace gen
