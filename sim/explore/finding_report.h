// How a finding is shown: its outcome as a difference from the nearest serial outcome, and
// the run's trace with one column per thread.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "run_result.h"

namespace explore {

// One line of a difference between two texts: ' ' in both, '-' only in the first, '+' only in
// the second.
struct DiffLine {
    char mark = ' ';
    std::string text;
};

// The line-by-line difference from `from` to `to` (a longest common subsequence).
std::vector<DiffLine> diffLines(const std::string& from, const std::string& to);
// How many lines the difference adds or removes.
size_t diffSize(const std::vector<DiffLine>& diff);
// Prints the changed lines, each with the heading of the part of the outcome it belongs to
// ("operation …", "received …", "after") and a line of context around it.
void printDiff(std::ostream& out, const std::vector<DiffLine>& diff, const char* indent);

// Prints the run from the block on: one column per thread, a row per line in the order the
// lines came, each operation's beginning marked; then the lines after the block.
void printColumns(std::ostream& out, const RunResult& run, const char* indent);

}  // namespace explore
