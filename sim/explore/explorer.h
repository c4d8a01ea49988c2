// `zdgnss-sim explore`: every concurrent block of a scenario under the deterministic
// scheduler. Each block's serial orders are run first and their outcomes kept; then
// schedules are explored, each run in a fresh process: by default one run for every class
// of orders that differ only in steps that commute (partial-order reduction), or within a
// preemption bound, or by PCT. A crash, a deadlock, a run past the step bound, a hang, or an
// outcome that no serial order gives is a finding, printed with its schedule and transcript.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "scenario.h"

namespace explore {

// How one block is searched; given for every block, or for one after `--block N`.
struct Search {
    std::optional<int> bound;  // preemptions per run (depth-first); none: every order, reduced
    size_t maxRuns = 5000;     // runs per block, serial orders included
    size_t pctRuns = 0;        // > 0: PCT runs instead
};

// The bound a search falls back to when it does not finish in its share of the budget, and
// the one --compare-dfs searches within.
constexpr int kFallbackBound = 2;

struct Options {
    bool check = false;        // exit 1 on a finding the block does not declare
    bool quiet = false;        // print summaries and findings only
    bool eachRun = false;      // also print every run's schedule
    bool measure = false;      // also print the throughput against a bare fork (measure.h)
    bool compareDfs = false;   // also run plain depth-first search at kFallbackBound and
                               // hold it against the block's search
    double budget = 0;         // seconds for the whole file; 0: no limit
    size_t stepBound = 20000;  // scheduling points per run
    Search search;             // for every block
    std::map<size_t, Search> blockSearch;  // for block N (from 1), instead
    uint64_t seed = 1;
    int depth = 3;        // PCT's bug depth
    bool replay = false;  // one run of `schedule` on block `replayBlock`
    std::string schedule;
    size_t replayBlock = 1;  // from 1
    std::string file;

    const Search& searchOf(size_t block) const {
        auto it = blockSearch.find(block);
        return it != blockSearch.end() ? it->second : search;
    }
};

// One distinct finding of a block, as exploreBlock() gives it back.
struct BlockFinding {
    sim::FindingKind kind = sim::FindingKind::kNonSerial;
    std::string key;     // what makes two findings the same; a non-serial one's outcome
    std::string detail;  // who waits for whom, which mutex, which signal, which command
    size_t run = 0;      // the run that first showed it, counted from the first serial order
    std::string schedule;
    bool declared = false;  // the block declares its kind with expect-finding
};

// What exploring one block gave.
struct BlockResult {
    std::vector<BlockFinding> findings;
    std::vector<std::string> serialOutcomes;  // each distinct outcome of a serial order
    size_t runs = 0;
    bool complete = false;  // every serial order ran, and the search ran out of runs to make
    bool broken = false;    // the explorer's own error: a run did not follow its schedule
    int code = 0;           // the exit code explore() would give for this block
};

// Explores block `ordinal` (from 0) of the scenario as explore() does, printing on `out`;
// the whole of `options.budget` is the block's share.
BlockResult exploreBlock(const sim::Scenario& scenario, size_t ordinal, const Options& options,
                         std::ostream& out);

// Explores every block of the scenario (or replays one schedule) and prints the findings
// and one summary line per block on `out`. Returns the exit code.
int explore(const sim::Scenario& scenario, const std::vector<const sim::Step*>& blocks,
            const Options& options, std::ostream& out);

// The command line: `zdgnss-sim explore [options] FILE.scn`.
int exploreMain(const std::vector<std::string>& args);

}  // namespace explore
