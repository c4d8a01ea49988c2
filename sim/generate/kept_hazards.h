// The findings that generated blocks give on purpose: behaviour the library keeps, each
// declared for one generated block with its reason, as `expect-finding` declares one in a
// hand-written scenario. A block's findings must be exactly what it declares here, so a
// new finding still fails the check.
//
//   # Why the library keeps this (a comment right above each declaration is required).
//   keep STATE:A+B KIND [COUNT]
#pragma once

#include <string>
#include <vector>

#include "scenario.h"

namespace gen {

struct KeptHazard {
    std::string block;  // the generated block's id
    sim::ExpectedFinding expected;
    std::string reason;
    int line = 0;
};

// An empty path reads as no declarations.
bool readKeptHazards(const std::string& path, std::vector<KeptHazard>* hazards, std::string* error);
bool parseKeptHazards(const std::string& text, const std::string& file,
                      std::vector<KeptHazard>* hazards, std::string* error);

// The declarations of one block.
std::vector<sim::ExpectedFinding> declaredFor(const std::vector<KeptHazard>& hazards,
                                              const std::string& block);

// What a block's findings (one kind per distinct finding) break of its declarations, one
// line each: a kind it does not declare, a declared kind not found or found another number
// of times than declared.
std::vector<std::string> heldAgainst(const std::vector<sim::FindingKind>& found,
                                     const std::vector<sim::ExpectedFinding>& declared);

// The findings' kinds with their numbers, "lock-across-call=1 non-serial=2", or "none".
std::string summaryOf(const std::vector<sim::FindingKind>& found);

}  // namespace gen
