// One run of a scenario in a process of its own, so that every run begins from the same
// state of the library and keeps nothing of an earlier run. A block's server plays the
// scenario up to the explored block once, ends the runtime's threads there and forks each
// run from that point (serveBlock); where no server reaches the block, a run is forked from
// the explorer and plays the whole scenario (runChild). Either way the run plays the
// explored block under the scheduler, the scenario's other blocks in their written order,
// and appends what happens to a log the explorer reads when the run has ended
// (message_log.h), one message a line:
//   D INDEX CHOSEN FALLBACK CURRENT THREAD/BRANCH/COST/EARLY...   a decision
//   S THREAD DECISION ACCESS...  a step of the explored block, once it ended (steps.h)
//   B, E                  the explored block begins, ends
//   O KEY THREAD LABEL    an operation of the block begins on THREAD
//   C CHOSEN POSSIBLE...  in a serial run, operation CHOSEN began where any of POSSIBLE could
//   L MUTEX KEY           operation KEY makes a remote call holding library mutex MUTEX
//   T KEY LINE            a transcript line; KEY is its operation's, 0 outside the block
//   F KIND DETAIL         the run stopped early: deadlock, step-bound, diverged, redundant,
//                         error, or expectation (an expect line failed; DETAIL is the
//                         runner's report)
//   X                     the run ended cleanly
// A crash, an abort or a sanitizer report ends the child without its X.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "message_log.h"
#include "policy.h"
#include "scenario.h"
#include "steps.h"

namespace explore {

struct RunRequest {
    enum class Mode { kGuided, kSerial, kPct, kPlanned };
    Mode mode = Mode::kGuided;
    size_t block = 0;                  // the explored block, counted from 0
    std::map<size_t, int> deviations;  // kGuided: the schedule; kPlanned: the choices
    size_t sleepAt = 0;                // kPlanned: where the sleeping threads begin to sleep
    std::vector<Step> sleeping;        // kPlanned
    std::vector<std::string> order;    // kSerial: operations to begin where there is a choice
    uint64_t seed = 0;                 // kPct
    int depth = 3;                     // kPct
    size_t expectedDecisions = 1;      // kPct
    size_t stepBound = 20000;
    bool checkExpectations = false;  // hold the scenario's expect lines; a failure ends the run
    unsigned watchdogSeconds = 20;   // a run still going then is a hang
};

// A request as text, one field a line, and back. A planned run's plan is read straight
// into `planned`, so that reading it takes nothing of the heap.
std::string formatRequest(const RunRequest& request);
bool parseRequest(const char* text, size_t size, RunRequest* request, PlannedPolicy* planned);

// Plays the whole scenario as one run, its messages into `log`. `planned`: the policy of a
// kPlanned request.
[[noreturn]] void runChild(const sim::Scenario& scenario, const RunRequest& request,
                           PlannedPolicy* planned, MessageLog* log);

// Reads a request from `requestFd` into fixed storage, then runs it as runChild does.
[[noreturn]] void runRequested(const sim::Scenario& scenario, int requestFd, MessageLog* log);

// A block's server. Plays the scenario up to `first.block`, the earlier blocks under
// `first`'s step bound and expectation checks, which all of its runs share; there it ends
// the runtime's threads and writes R to `control`. Then, run after run, it forks a run that
// goes on from the block and waits for its request, sends the explorer over `control` a
// pair of pipe ends (where to write the run's request, and an end that closes when the run
// has ended), waits for the run and writes its wait status, an int, back. A run's messages
// go into `log`, its standard error to `errorFd`. A server that cannot reach the block, or
// is not single-threaded there, ends without its R. Between two forks the server changes
// no memory, so the objects a run makes have the same addresses in every run that takes
// the same steps.
[[noreturn]] void serveBlock(const sim::Scenario& scenario, const RunRequest& first, int control,
                             int errorFd, MessageLog* log);

}  // namespace explore
