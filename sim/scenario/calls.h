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

// The names of the functions `call` knows, in alphabetical order.
std::vector<std::string> callableFunctions();

}  // namespace sim
