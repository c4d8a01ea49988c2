// Reading a generated scenario's text as a scenario file would be read.
#pragma once

#include <string>

#include "scenario.h"

namespace gen {

// Parses `text` as the scenario file `name`; false and *error ("NAME:LINE: reason") when it
// is malformed.
bool parseGenerated(const std::string& name, const std::string& text, sim::Scenario* scenario,
                    std::string* error);

}  // namespace gen
