#include "generation.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <set>
#include <sstream>

#include "generate_options.h"
#include "generated_scenario.h"

namespace gen {

namespace {

std::string key(const std::string& state, const std::string& operation) {
    return state + " " + operation;
}

// FNV-1a: the same on every machine and every run.
uint64_t stableHash(const std::string& text) {
    uint64_t hash = 14695981039346656037ull;
    for (unsigned char c : text) {
        hash ^= c;
        hash *= 1099511628211ull;
    }
    return hash;
}

bool blockShares(const GeneratedSet& set, const GeneratedBlock& block) {
    for (size_t i = 0; i < block.operations.size(); ++i) {
        for (size_t j = i + 1; j < block.operations.size(); ++j) {
            auto a = set.footprints.find(key(block.state, block.operations[i]));
            auto b = set.footprints.find(key(block.state, block.operations[j]));
            if (a != set.footprints.end() && b != set.footprints.end() &&
                shareState(a->second, b->second)) {
                return true;
            }
        }
    }
    return false;
}

void measureAll(GeneratedSet* set, bool nested, const std::set<std::string>& states,
                std::ostream& log) {
    for (const TableState& state : set->table.states) {
        if (states.count(state.name) == 0) continue;
        for (const StateOperation& op : set->operations.byState[state.name]) {
            if (op.nested != nested || set->footprints.count(key(state.name, op.name)) != 0) {
                continue;
            }
            std::vector<std::string> prelude = state.prelude;
            prelude.insert(prelude.end(), op.arming.begin(), op.arming.end());
            Footprint footprint = measureFootprint(prelude, commandsOf(op.values[0]));
            if (!footprint.problem.empty()) {
                log << "footprint of " << state.name << ":" << op.name << ": " << footprint.problem
                    << "\n";
            }
            set->footprints[key(state.name, op.name)] = std::move(footprint);
        }
    }
}

// The cache holds a line per object, call or problem: "KEY\tO|C|P\tTEXT", and
// "KEY\t-" for a footprint with none.
void readCache(const std::string& path, GeneratedSet* set) {
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        std::string name, kind, text;
        std::getline(fields, name, '\t');
        std::getline(fields, kind, '\t');
        std::getline(fields, text);
        Footprint& footprint = set->footprints[name];
        if (kind == "O") footprint.objects.insert(text);
        if (kind == "C") footprint.calls.insert(text);
        if (kind == "P") footprint.problem = text;
        if (kind == "S") footprint.steps = std::stoul(text);
        if (kind == "T") footprint.trace = text;
    }
}

void writeCache(const std::string& path, const GeneratedSet& set) {
    std::ofstream out(path);
    for (const auto& [name, footprint] : set.footprints) {
        out << name << "\tS\t" << footprint.steps << "\n"
            << name << "\tT\t" << footprint.trace << "\n";
        for (const std::string& object : footprint.objects)
            out << name << "\tO\t" << object << "\n";
        for (const std::string& call : footprint.calls) out << name << "\tC\t" << call << "\n";
        if (!footprint.problem.empty()) out << name << "\tP\t" << footprint.problem << "\n";
    }
}

}  // namespace

std::set<std::string> statesOf(const Selection& selection, const OperationTable& table) {
    std::set<std::string> states;
    for (const std::string& text : {selection.id, selection.only}) {
        const size_t colon = text.find(':');
        if (colon != std::string::npos && table.state(text.substr(0, colon)) != nullptr) {
            states.insert(text.substr(0, colon));
            return states;
        }
    }
    for (const TableState& state : table.states) states.insert(state.name);
    return states;
}

bool buildGeneratedSet(const GenerateOptions& options, std::ostream& log, GeneratedSet* set,
                       std::string* error) {
    if (!readOperationTable(options.table, &set->table, error)) return false;
    const bool cached = !options.footprintCache.empty() && std::ifstream(options.footprintCache);
    if (cached) readCache(options.footprintCache, set);
    // The table operations first, alone in each of their states; what they call decides
    // the nested operations, which are then measured the same way.
    const std::set<std::string> states = statesOf(options.selection, set->table);
    set->operations = stateOperations(set->table, {});
    measureAll(set, false, states, log);
    std::map<std::string, RemoteCalls> calls;
    for (const auto& [name, footprint] : set->footprints) calls[name] = footprint.calls;
    set->operations = stateOperations(set->table, calls);
    measureAll(set, true, states, log);
    if (!options.footprintCache.empty() && !cached) writeCache(options.footprintCache, *set);
    for (const auto& [name, footprint] : set->footprints) {
        set->footprintsKnown = set->footprintsKnown || !footprint.objects.empty();
    }
    set->blocks = generateBlocks(set->table, set->operations, options.triples);
    // The blocks whose operations pass fewer scheduling points cost fewer runs: those first.
    auto cost = [&](const GeneratedBlock& block) {
        size_t steps = 0;
        for (const std::string& op : block.operations)
            steps += set->footprints[key(block.state, op)].steps;
        return steps;
    };
    std::stable_sort(
        set->blocks.begin(), set->blocks.end(),
        [&](const GeneratedBlock& a, const GeneratedBlock& b) { return cost(a) < cost(b); });
    for (const GeneratedBlock& block : set->blocks) {
        sim::Scenario scenario;
        if (!parseGenerated(block.id, scenarioText(block), &scenario, error)) return false;
        set->shared.push_back(blockShares(*set, block));
    }
    return true;
}

namespace {

// `only` names a state when it ends in a colon ("connected:"): then it must begin the id,
// so that one state does not take the blocks of another whose name ends in it
// ("unconnected:"). Otherwise the id need only hold it.
bool selectedBy(const std::string& id, const std::string& only) {
    if (only.empty()) return true;
    if (only.back() == ':') return id.compare(0, only.size(), only) == 0;
    return id.find(only) != std::string::npos;
}

}  // namespace

std::vector<size_t> selectBlocks(const GeneratedSet& set, const Selection& selection) {
    std::vector<size_t> chosen;
    auto inTurn = [&](const std::string& id, unsigned rotation) {
        rotation = std::max(rotation, 1u);
        return stableHash(id) % rotation == static_cast<uint64_t>(selection.day) % rotation;
    };
    for (size_t i = 0; i < set.blocks.size(); ++i) {
        const GeneratedBlock& block = set.blocks[i];
        if (!selectedBy(block.id, selection.only)) continue;
        if (!selection.id.empty() && block.id != selection.id) continue;
        if (inTurn(block.id, set.shared[i] ? selection.sharedRotation : selection.rotation)) {
            chosen.push_back(i);
        }
    }
    return chosen;
}

long today() {
    return static_cast<long>(time(nullptr) / 86400);
}

std::vector<std::string> pairsWithoutState(const OperationTable& table) {
    std::vector<std::string> pairs;
    const auto& ops = table.operations;
    for (size_t i = 0; i < ops.size(); ++i) {
        for (size_t j = i + 1; j < ops.size(); ++j) {
            const bool meet =
                std::any_of(ops[i].states.begin(), ops[i].states.end(), [&](const std::string& s) {
                    return std::find(ops[j].states.begin(), ops[j].states.end(), s) !=
                           ops[j].states.end();
                });
            if (!meet) pairs.push_back(ops[i].name + " + " + ops[j].name);
        }
    }
    return pairs;
}

}  // namespace gen
