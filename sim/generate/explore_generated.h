// `zdgnss-sim explore --generate`: the hand-written explore scenarios first, then every
// generated block under the explorer, each block's findings held against the kept
// hazards, new findings minimised into ready-to-commit scenarios, and a coverage report.
#pragma once

#include <string>
#include <vector>

namespace gen {

int exploreGeneratedMain(const std::vector<std::string>& args);

// Whether the arguments of `zdgnss-sim explore` ask for the generated set.
bool asksForGeneration(const std::vector<std::string>& args);

}  // namespace gen
