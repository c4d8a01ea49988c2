// The generated set as a whole: the table read, each operation run alone in each of its
// states for its footprint, the nested operations those runs call for, every block, which
// blocks pair operations that share state, and which blocks a run selects.
#pragma once

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "footprint.h"
#include "operation_table.h"
#include "pair_set.h"

namespace gen {

// The blocks come cheapest first: by the scheduling points their operations pass alone.
struct GeneratedSet {
    OperationTable table;
    Operations operations;
    std::map<std::string, Footprint> footprints;  // "STATE OPERATION" -> its footprint
    std::vector<GeneratedBlock> blocks;
    std::vector<bool> shared;      // per block: two of its operations share state
    bool footprintsKnown = false;  // the build names the library's objects at its points
};

// Which blocks a run takes: every block pairing operations that share state, and of the
// rest the share whose turn it is (a stable hash of the block's id, modulo `rotation`,
// equal to `day` modulo `rotation`); `only` keeps the blocks whose id contains it, or,
// when it ends in a colon, begins with it (a state's blocks); `id` the one block of that id. A
// `sharedRotation` above 1 takes a share of the blocks that share state the same way, for a run
// budget that cannot take them all.
struct Selection {
    unsigned rotation = 1;        // for the blocks that share no state; 1: every block
    unsigned sharedRotation = 1;  // the same for the blocks that share state
    long day = 0;
    std::string only;
    std::string id;
};

struct GenerateOptions;
// Reads the table and builds the set (footprints from the options' cache when it has
// them); progress goes to `log`. False and *error when the table is malformed or one of
// its lines is not a scenario command.
bool buildGeneratedSet(const GenerateOptions& options, std::ostream& log, GeneratedSet* set,
                       std::string* error);
std::vector<size_t> selectBlocks(const GeneratedSet& set, const Selection& selection);
// The states a selection can take blocks from: the one its id or its `only` names before
// the colon, else every state.
std::set<std::string> statesOf(const Selection& selection, const OperationTable& table);
// Today as days since 1970, in UTC: the rotation's default turn.
long today();

// Pairs of table operations that no state lets meet, as "A + B".
std::vector<std::string> pairsWithoutState(const OperationTable& table);

}  // namespace gen
