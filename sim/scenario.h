// A scenario: its commands, each with the expectations held against its segment,
// and the runner that plays them against the library in the embedded world.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "expectations.h"
#include "lexer.h"
#include "scenario_file.h"

namespace sim {

struct Step {
    Line source;                                  // the command as written
    std::function<bool(std::string* error)> run;  // false + *error: the command failed
    std::vector<Expectation> expectations;
};

struct Scenario {
    std::vector<Step> steps;
};

// Builds the steps from lexed lines: environment commands and calls are fully checked
// here; `fusd`, `vhal` and `fw` commands are checked by the world when they run.
// False and *error, at the offending line, when a line is malformed.
bool parseScenario(const std::vector<Line>& lines, Scenario* out, SourceError* error);

// Exit codes of a run.
enum ExitCode { kExitOk = 0, kExitExpectationFailed = 1, kExitBadScenario = 2 };

// Runs the scenario in a fresh world, one step after the other; after each step the
// runtime's deliveries finish before the next begins. With check, the expectations are
// held and the first failure is reported on `report` (as "FILE:LINE: ..."), ending the run.
int runScenario(const Scenario& scenario, bool check, std::ostream& report);

}  // namespace sim
