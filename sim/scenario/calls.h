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

// Runs prepared calls without waiting for the runtime's deliveries at the end of each; the
// command or block around them waits. So run the framework's `nested-in` calls (the
// delivery they run inside may be one of those waited for) and a concurrent branch's
// calls (a provider thread does not wait for the hwbinder pool, and waiting would order the
// branch against the pool's threads, hiding a race between them from ThreadSanitizer).
void runWithoutWaiting(const std::function<void()>& calls);
// Whether the calling thread runs calls that way.
bool callsWait();

// The names of the functions `call` knows, in alphabetical order.
std::vector<std::string> callableFunctions();

}  // namespace sim
