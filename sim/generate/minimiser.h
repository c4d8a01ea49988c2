// Minimising a generated block's finding to a fixed point: post commands and prelude
// commands removed, an operation moved into the prelude or the post part, argument detail
// dropped (a field of a record, an entry of a list), each change kept only when the
// block still gives the same kind of finding (for non-serial, a difference in the same
// part of the outcome). The result is a ready-to-commit scenario.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "explorer.h"
#include "pair_set.h"

namespace gen {

// What a finding is, for telling whether a smaller block still shows it.
struct FindingShape {
    sim::FindingKind kind = sim::FindingKind::kNonSerial;
    // The parts of the outcome that differ from the nearest serial outcome (non-serial),
    // the mutex (lock-across-call), the command's verb (refused).
    std::vector<std::string> parts;
    std::string describe() const;
};

// The shape of `finding` among the block's results.
FindingShape shapeOf(const explore::BlockFinding& finding, const explore::BlockResult& result);
// Whether some finding of `result` has the shape `wanted`.
const explore::BlockFinding* findShape(const explore::BlockResult& result,
                                       const FindingShape& wanted);

// The difference of a non-serial outcome from the nearest serial one, changed lines only,
// each with the heading of its part.
std::vector<std::string> differenceLines(const std::string& outcome,
                                         const std::vector<std::string>& serialOutcomes);

// Explores one candidate block's scenario text (its first block).
using BlockRunner = std::function<explore::BlockResult(const std::string& text)>;

struct Minimised {
    GeneratedBlock block;
    explore::BlockResult result;    // the minimised block's exploration
    explore::BlockFinding finding;  // its finding of the wanted shape
    size_t candidates = 0;          // blocks tried
};

Minimised minimise(const GeneratedBlock& start, const explore::BlockResult& startResult,
                   const explore::BlockFinding& finding, const BlockRunner& run);

// The minimised block as a scenario file: what it shows, its schedule, and its
// expect-finding line.
std::string minimisedScenario(const Minimised& minimised, const std::string& origin);

}  // namespace gen
