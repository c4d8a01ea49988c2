// Lexing of scenario files: one command a line, blank-separated tokens, quoted strings
// with escapes, bracketed values (loc{...}, [5:0 6:-3]) kept whole, `#` comments.
#pragma once

#include <string>
#include <vector>

#include "values.h"

namespace sim {

// Expectation keywords whose text runs verbatim to the end of the line.
bool takesVerbatimText(const std::string& keyword);

struct Line {
    std::string file;           // the scenario file the line was read from
    int number = 0;             // in the file, from 1
    std::string text;           // as written, without the line end
    std::vector<Token> tokens;  // the command word first; just the keyword for verbatim lines
    bool hasVerbatim = false;
    std::string verbatim;  // the text after "KEYWORD ", trailing blanks and '#' included
};

// Splits one line's text into tokens; a line holding only blanks and a comment gives none.
bool lexTokens(const std::string& text, std::vector<Token>* tokens, std::string* error);

// Lexes one line of a scenario into *line (number left to the caller). Returns false and
// sets *error when the line is malformed; a blank or comment line gives no tokens.
bool lexLine(const std::string& text, Line* line, std::string* error);

// "FILE:LINE", the place errors about the line point at.
std::string location(const Line& line);

// Lexes a whole scenario. On the first malformed line, returns false with its number in
// *errorLine. Blank and comment lines are dropped.
bool lexScenario(const std::string& text, std::vector<Line>* lines, int* errorLine,
                 std::string* error);

}  // namespace sim
