// The operation table that generated scenarios are made from: the init states (each a
// prelude in the scenario language, with the post part that reveals what a block left),
// the operations with the states in which each means something and its small argument
// domain, the events each party makes from inside the library's calls into it, and what
// is left out of generation and why. docs/explore.md describes the file's form.
#pragma once

#include <string>
#include <vector>

namespace gen {

struct TableState {
    std::string name;
    std::vector<std::string> prelude;  // scenario lines, the base state's first
    std::vector<std::string> post;     // the lines that reveal the state a block left
    int line = 0;
};

struct TableOperation {
    std::string name;
    std::vector<std::string> states;
    std::vector<std::string> values;  // one scenario command per value of the domain
    int line = 0;
};

// An event that `party` makes from inside each call of the library's into one of its
// interfaces whose name begins with `prefix` (every interface when empty).
struct TableNesting {
    std::string party;  // fusd, vhal or fw
    std::string prefix;
    std::vector<std::string> events;  // as after `PARTY nested-in IFACE.OP`
    int line = 0;
};

// A command left out of generation: an exported function (`call NAME`) or a world verb
// (`fusd fail`), with the reason.
struct TableLeftOut {
    std::string command;
    std::string reason;
    int line = 0;
};

struct OperationTable {
    std::string file;
    std::vector<TableState> states;
    std::vector<TableOperation> operations;
    std::vector<TableNesting> nestings;
    std::vector<TableLeftOut> leftOut;
    // Operations, or blocks (STATE:A+B), left out of the real-thread runs
    // (`explore-only NAME: REASON`): where ThreadSanitizer would report a race that is not
    // the library's to fix, such as the world writing plain memory the library reads.
    std::vector<TableLeftOut> exploreOnly;

    const TableState* state(const std::string& name) const;
};

// Reads the table at `path`; false and *error ("FILE:LINE: reason") when it is malformed.
bool readOperationTable(const std::string& path, OperationTable* table, std::string* error);
bool parseOperationTable(const std::string& text, const std::string& file, OperationTable* table,
                         std::string* error);

// The command a scenario line names, for coverage: "call NAME" for a library call, "fusd
// VERB" (`vhal`, `fw`) for a world command.
std::string commandOf(const std::string& line);

}  // namespace gen
