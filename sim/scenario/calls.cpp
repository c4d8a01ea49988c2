// `call FUNCTION ARG...`: the table of library functions.
#include "calls.h"

#include "call_args.h"

namespace sim {

namespace {

thread_local bool tNoWaiting = false;

const CallTable& table() {
    static const CallTable calls = [] {
        CallTable t;
        addLinkCalls(t);
        addGeofenceCalls(t);
        addFeedCalls(t);
        addHalCalls(t);
        return t;
    }();
    return calls;
}

}  // namespace

bool prepareCall(const std::vector<Token>& args, std::function<void()>* call, std::string* error) {
    if (args.empty() || args[0].quoted) {
        *error = "call needs a function name";
        return false;
    }
    const auto found = table().find(args[0].text);
    if (args[0].text == "getFusionDaemonInterface") {
        *error = "call: getFusionDaemonInterface is not callable from a scenario";
        return false;
    }
    if (found == table().end()) {
        *error = "call: unknown function \"" + args[0].text + "\"";
        return false;
    }
    CallArgs in(args[0].text, std::vector<Token>(args.begin() + 1, args.end()));
    if (!found->second(in, call)) {
        *error = in.error();
        return false;
    }
    return true;
}

void runWithoutWaiting(const std::function<void()>& calls) {
    const bool outer = tNoWaiting;
    tNoWaiting = true;
    calls();
    tNoWaiting = outer;
}

bool callsWait() {
    return !tNoWaiting;
}

std::vector<std::string> callableFunctions() {
    std::vector<std::string> names;
    for (const auto& entry : table()) names.push_back(entry.first);
    return names;
}

}  // namespace sim
