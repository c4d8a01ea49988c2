// Reading a scenario file with the shared preludes it includes.
#pragma once

#include <string>
#include <vector>

#include "lexer.h"

namespace sim {

struct SourceError {
    std::string file;  // the file holding the offending line
    int line = 0;
    std::string reason;
};

// Lexes the scenario `text` read from `file`. Each `include "PATH"` line is replaced by
// the lines of PATH (resolved against the including file's directory), lexed and expanded
// in turn, so that its commands and expectations run as if written in its place. Every
// line keeps the file and line number it was read from. False and *error on a malformed
// line, an include that names no readable file, or an include cycle.
bool loadScenario(const std::string& file, const std::string& text, std::vector<Line>* lines,
                  SourceError* error);

// The whole content of the file at path; false when it cannot be read.
bool readFile(const std::string& path, std::string* text);

}  // namespace sim
