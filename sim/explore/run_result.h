// What the explorer learns from one run's process: its decisions, the operations of the
// explored block with the lines each produced, the calls each party received, what came
// after the block, and how the process ended.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "policy.h"

namespace explore {

struct TakenDecision {
    Decision decision;
    int chosen = 0;
};

// One operation of the explored block: a command of a branch, or a delivery a world event
// set off on a thread of its own.
struct OperationRecord {
    std::string key;    // "B.C", or "CAUSE/N" for the N-th delivery operation CAUSE set off
    int thread = 0;     // the scheduler's thread that ran it
    std::string label;  // the command as written, or "delivery"
    std::vector<std::string> lines;  // every line it produced, in order
};

// A line of the run from the block on, with where it came from.
struct TraceLine {
    int thread = 0;         // 0: after the block
    std::string operation;  // "" after the block
    std::string text;
    bool begins = false;  // not a line: `operation` begins, and `text` is its key and label
};

struct RunResult {
    std::vector<TakenDecision> decisions;
    std::vector<OperationRecord> operations;    // in the order they began
    std::vector<TraceLine> trace;               // from the block on, in the order emitted
    std::vector<std::string> afterLines;        // the lines after the block
    std::vector<std::string> locksAcrossCalls;  // L: a library mutex held across a remote call
    std::vector<SerialPolicy::Choice> serialChoices;  // C: a serial run's choices
    std::vector<Step> steps;                          // the explored block's, in the order they ran
    bool clean = false;                               // the run ended with its X
    std::string stopKind;                             // F: deadlock, step-bound, diverged, error
    std::string stopDetail;
    int signal = 0;  // the signal that ended the process, if any
    int exitCode = 0;
    std::string errorOutput;  // what the process wrote to standard error

    // What serial orders are compared by: each operation with its own lines (by key) but the
    // calls parties received; then, for every operation of every party the library called,
    // the calls it received, in order; then the lines after the block. Neither the order of
    // lines across threads nor the order operations began in is part of it, nor which thread
    // made a call. Calls of different operations of a party are kept apart: an operation of
    // the library that makes several calls to one party is not one step for that party.
    std::string outcome() const;
    // The run's schedule string: its decisions that differ from the default policy.
    std::string schedule() const;
    // The operations in the order they began, as their keys joined by commas.
    std::string operationOrder() const;
    const OperationRecord* operation(const std::string& key) const;
};

// The party's operation a transcript line shows receiving a call ("fusd
// IFusdGnssInterface.sendLocationData", "fw gnssCb.gnssLocationCb"), or "" when the line is
// not a call received by a party.
std::string receivedOperation(const std::string& line);

// Reads the messages of one run (the child's protocol) into *result.
void readMessages(std::string_view text, RunResult* result);

}  // namespace explore
