// The command-line options of the generated set, shared by `zdgnss-sim explore --generate`
// and `zdgnss-sim generate`.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "generation.h"

namespace gen {

struct GenerateOptions {
    std::string table;  // the operation table
    // Footprints read from this file when it exists, else measured and written to it, so
    // that two builds of the library make the same generated set.
    std::string footprintCache;
    std::string hazards;  // the kept hazards; "" for none
    std::string handDir;  // the hand-written explore scenarios, run first; "" for none
    bool triples = false;
    Selection selection;
    // explore --generate
    bool check = false;
    std::string out;           // where minimised findings are written
    std::string report;        // where the coverage report goes (standard output when "")
    std::optional<int> bound;  // none: every order, reduced
    double blockBudget = 0;    // seconds a block's search may take before it falls back to a bound
    size_t maxRuns = 5000;
    size_t minimiseRuns = 1000;  // runs per candidate block while minimising
    bool stopAtFirst = false;    // stop at the first block that fails the check
    // A block whose findings are not what it declares fails only if this program (another
    // build of zdgnss-sim) gives other findings for it: a fault's effect, not the library's.
    std::string baseline;
    bool summary = false;  // print each block's findings as one `findings ID: KIND=N...` line
    // Explore first the blocks with an operation that this build's library runs otherwise
    // than the footprint cache says (a fault's or a change's blocks), then the rest.
    bool changedFirst = false;
    // generate
    std::string writeDir;          // write every selected block as a scenario file there
    unsigned realRuns = 0;         // play every selected block this many times on real threads
    bool list = false;             // print the selected blocks' ids
    bool printFootprints = false;  // print each operation's footprint in each state
};

// The defaults: the table, kept hazards and hand-written scenarios of this source tree.
GenerateOptions defaultGenerateOptions();

// Parses the options (`--generate` itself is skipped); false when one is unknown or lacks
// its value.
bool parseGenerateOptions(const std::vector<std::string>& args, GenerateOptions* options);

}  // namespace gen
