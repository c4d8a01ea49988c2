// `call FUNCTION ARG...`: every exported function of the library but
// getFusionDaemonInterface, with its arguments read from the scenario.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "values.h"

namespace sim {

// Reads `FUNCTION ARG...` (args[0] is the function's name) and returns the call ready
// to run on the provider thread; it prints "ret VALUE" and "out NAME=VALUE" lines.
// False and *error for an unknown function or bad arguments.
bool prepareCall(const std::vector<Token>& args, std::function<void()>* call, std::string* error);

// Runs a prepared call from inside a call that the library makes into a party (the
// framework's `nested-in` calls): it does not wait for the runtime's deliveries, since the
// delivery it runs inside may be one of them; the command around it waits for them.
void runNestedCall(const std::function<void()>& call);
// Whether the calling thread runs such a call.
bool inNestedCall();

// The names of the functions `call` knows, in alphabetical order.
std::vector<std::string> callableFunctions();

}  // namespace sim
