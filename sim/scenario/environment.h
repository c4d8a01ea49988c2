// The scenario's environment: system properties and the batching-channel device-tree file.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "values.h"

namespace sim {

bool isEnvironmentCommand(const std::string& head);

// Reads `prop NAME VALUE`, `unprop NAME`, `devtree absent` or `devtree "BYTES"` and
// returns the change, ready to apply. False and *error when malformed.
bool prepareEnvironment(const std::string& head, const std::vector<Token>& args,
                        std::function<void()>* apply, std::string* error);

// The environment of a fresh world: no device-tree file. (Properties start unset.)
void resetEnvironment();

}  // namespace sim
