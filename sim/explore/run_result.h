// What the explorer learns from one run's process: its decisions, its transcript split
// into the explored block's branches and what came after, and how the process ended.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "policy.h"

namespace explore {

struct TakenDecision {
    Decision decision;
    int chosen = 0;
};

struct RunResult {
    std::vector<TakenDecision> decisions;
    std::vector<Step> steps;              // the explored block's, in the order they ran
    std::vector<std::string> transcript;  // from the block on, each line marked with its branch
    std::map<int, std::vector<std::string>> branchLines;  // the block's lines by branch
    std::vector<std::string> afterLines;                  // the lines after the block
    bool clean = false;                                   // the run ended with its X
    std::string stopKind;  // F: deadlock, step-bound, diverged, error
    std::string stopDetail;
    int signal = 0;  // the signal that ended the process, if any
    int exitCode = 0;
    std::string errorOutput;  // what the process wrote to standard error

    // Each branch's lines in order, then the lines after the block: what serial orders
    // are compared by.
    std::string outcome() const;
    // The run's schedule string: its decisions that differ from the default policy.
    std::string schedule() const;
};

// Reads the messages of one run (the child's protocol) into *result.
void readMessages(const std::string& text, RunResult* result);

}  // namespace explore
