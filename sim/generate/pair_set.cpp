#include "pair_set.h"

#include <algorithm>
#include <sstream>

namespace gen {

namespace {

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

// "fusd IFusdGnssInterface.sendLocationData" -> party and IFACE.OP.
std::pair<std::string, std::string> splitCall(const std::string& call) {
    const size_t blank = call.find(' ');
    return {call.substr(0, blank), call.substr(blank + 1)};
}

// The name of the event a nested operation makes: its verb, `call` left out.
std::string eventVerb(const std::string& event) {
    std::istringstream in(event);
    std::string word;
    in >> word;
    if (word == "call") in >> word;
    return word;
}

void addNested(const OperationTable& table, const std::map<std::string, RemoteCalls>& calls,
               Operations* ops) {
    for (const TableState& state : table.states) {
        std::set<std::string> armed;  // PARTY IFACE.OP EVENT, each once a state
        std::vector<StateOperation> nested;
        for (const TableOperation& op : table.operations) {
            auto found = calls.find(state.name + " " + op.name);
            if (found == calls.end()) continue;
            for (const std::string& call : found->second) {
                auto [party, target] = splitCall(call);
                for (const TableNesting& nesting : table.nestings) {
                    if (nesting.party != party || !startsWith(target, nesting.prefix)) continue;
                    for (const std::string& event : nesting.events) {
                        const std::string arming = party + " nested-in " + target + " " + event;
                        if (!armed.insert(arming).second) continue;
                        nested.push_back(
                            {eventVerb(event) + "@" + target, {op.values[0]}, {arming}, true});
                    }
                }
            }
        }
        auto& list = ops->byState[state.name];
        list.insert(list.end(), nested.begin(), nested.end());
    }
}

bool isWorldEvent(const std::string& line) {
    return startsWith(line, "fusd ") || startsWith(line, "vhal ") || startsWith(line, "fw ");
}

bool changesDaemon(const std::string& line) {
    return startsWith(line, "fusd kill") || startsWith(line, "fusd register");
}

GeneratedBlock makeBlock(const TableState& state,
                         const std::vector<const StateOperation*>& chosen) {
    GeneratedBlock block;
    block.state = state.name;
    block.prelude = state.prelude;
    std::map<const StateOperation*, size_t> uses;
    for (const StateOperation* op : chosen) {
        block.operations.push_back(op->name);
        const size_t use = uses[op]++;
        block.branches.push_back(commandsOf(op->values[use % op->values.size()]));
        block.prelude.insert(block.prelude.end(), op->arming.begin(), op->arming.end());
    }
    block.id = state.name + ":";
    for (size_t i = 0; i < chosen.size(); ++i) block.id += (i ? "+" : "") + chosen[i]->name;
    // A world event after the block could be refused once the block killed or registered
    // the daemon (its callbacks are then gone): such a post keeps its library calls only.
    bool daemonChanges = false;
    for (const auto& branch : block.branches) {
        for (const std::string& line : branch) daemonChanges = daemonChanges || changesDaemon(line);
    }
    for (const std::string& line : state.post) {
        if (daemonChanges && isWorldEvent(line)) continue;
        block.post.push_back(line);
    }
    return block;
}

}  // namespace

Operations stateOperations(const OperationTable& table,
                           const std::map<std::string, RemoteCalls>& calls) {
    Operations ops;
    for (const TableState& state : table.states) {
        auto& list = ops.byState[state.name];
        for (const TableOperation& op : table.operations) {
            for (const std::string& name : op.states) {
                if (name == state.name) list.push_back({op.name, op.values, {}, false});
            }
        }
    }
    addNested(table, calls, &ops);
    return ops;
}

std::vector<std::string> commandsOf(const std::string& value) {
    static const std::string kThen = " ; ";
    std::vector<std::string> commands;
    size_t start = 0;
    for (size_t at = value.find(kThen); at != std::string::npos; at = value.find(kThen, start)) {
        commands.push_back(value.substr(start, at - start));
        start = at + kThen.size();
    }
    commands.push_back(value.substr(start));
    return commands;
}

std::vector<GeneratedBlock> generateBlocks(const OperationTable& table, const Operations& ops,
                                           bool triples) {
    std::vector<const TableState*> states;
    for (const TableState& state : table.states) states.push_back(&state);
    auto size = [&](const TableState* s) {
        auto found = ops.byState.find(s->name);
        return found == ops.byState.end() ? 0 : found->second.size();
    };
    std::stable_sort(states.begin(), states.end(),
                     [&](const TableState* a, const TableState* b) { return size(a) < size(b); });
    std::vector<GeneratedBlock> blocks;
    for (const TableState* statePointer : states) {
        const TableState& state = *statePointer;
        auto found = ops.byState.find(state.name);
        if (found == ops.byState.end()) continue;
        const std::vector<StateOperation>& list = found->second;
        for (size_t i = 0; i < list.size(); ++i) {
            for (size_t j = i; j < list.size(); ++j) {
                if (!triples) {
                    blocks.push_back(makeBlock(state, {&list[i], &list[j]}));
                    continue;
                }
                for (size_t k = j; k < list.size(); ++k) {
                    blocks.push_back(makeBlock(state, {&list[i], &list[j], &list[k]}));
                }
            }
        }
    }
    return blocks;
}

std::string scenarioText(const GeneratedBlock& block, const std::vector<std::string>& comment,
                         const std::vector<std::string>& declarations) {
    std::string text;
    for (const std::string& line : comment) text += (line.empty() ? "#" : "# " + line) + "\n";
    for (const std::string& line : block.prelude) text += line + "\n";
    text += "\nparallel\n";
    for (const auto& branch : block.branches) {
        text += "branch\n";
        for (const std::string& line : branch) text += line + "\n";
    }
    text += "end\n";
    for (const std::string& line : declarations) text += line + "\n";
    if (!block.post.empty()) text += "\n";
    for (const std::string& line : block.post) text += line + "\n";
    return text;
}

}  // namespace gen
