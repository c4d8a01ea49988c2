// A scenario: its commands, each with the expectations held against its segment,
// and the runner that plays them against the library in the embedded world.
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "expectations.h"
#include "lexer.h"
#include "scenario_file.h"

namespace sim {

struct Block;

struct Step {
    Line source;                                  // the command as written
    std::function<bool(std::string* error)> run;  // false + *error: the command failed
    std::vector<Expectation> expectations;
    std::shared_ptr<Block> block;  // set for a concurrent block, whose `run` plays it
};

// Findings of the schedule explorer that a block may declare as expected.
// kLockAcrossCall: the library called another party while it held one of its own mutexes
// (the connection lock aside). kRefused: a command of a branch that the world refuses in
// every serial order of the block, so the block never races it.
enum class FindingKind {
    kCrash,
    kDeadlock,
    kStepBound,
    kHang,
    kNonSerial,
    kLockAcrossCall,
    kRefused
};
const char* findingName(FindingKind kind);
bool parseFindingKind(const std::string& name, FindingKind* kind);

// `expect-finding KIND [COUNT]`: the explorer must report KIND for the block, and with
// COUNT, exactly that many distinct findings of it (a further one is a regression).
struct ExpectedFinding {
    FindingKind kind = FindingKind::kNonSerial;
    int count = -1;  // -1: any number from 1
};

// `parallel` … `end`: branches that run at the same time, each on its own thread; each
// branch (opened by `branch`) runs its commands in order.
struct Block {
    std::vector<std::vector<Step>> branches;
    std::vector<ExpectedFinding> expectedFindings;  // `expect-finding` lines after `end`
};

struct Scenario {
    std::vector<Step> steps;
};

// Builds the steps from lexed lines, every command fully checked here; a world command may
// still be refused when it runs, by the world's state of the moment.
// False and *error, at the offending line, when a line is malformed.
bool parseScenario(const std::vector<Line>& lines, Scenario* out, SourceError* error);

// Reads the scenario file at `path`, with what it includes, and parses it. False after
// printing why on `errors`: "zdgnss-sim: cannot read PATH" or "FILE:LINE: reason".
bool readScenarioFile(const std::string& path, Scenario* out, std::ostream& errors);

// Exit codes of a run.
enum ExitCode { kExitOk = 0, kExitExpectationFailed = 1, kExitBadScenario = 2 };

// Runs the scenario in a fresh world, one step after the other; after each step the
// runtime's deliveries finish before the next begins. With check, the expectations are
// held and the first failure is reported on `report` (as "FILE:LINE: ..."), ending the run.
int runScenario(const Scenario& scenario, bool check, std::ostream& report);

// Plays a concurrent block in place of its own `run`: `ordinal` counts the scenario's
// blocks from 0. False and *error end the run as a malformed scenario.
using BlockPlayer = std::function<bool(const Block& block, size_t ordinal, std::string* error)>;
// Runs the scenario as above, with every concurrent block played by `playBlock`.
int runScenarioWith(const Scenario& scenario, bool check, const BlockPlayer& playBlock,
                    std::ostream& report);

}  // namespace sim
