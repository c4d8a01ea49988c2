// Expectations held against one command's segment of the transcript.
#pragma once

#include <string>
#include <vector>

#include "lexer.h"

namespace sim {

struct Expectation {
    enum class Kind {
        Line,    // expect LINE: LINE occurs after the previous expect's match
        Prefix,  // expect-prefix PREFIX: a line beginning with PREFIX occurs likewise
        Not,     // expect-not PREFIX: no line of the segment begins with PREFIX
        Count,   // expect-count N: the segment has exactly N lines
    };
    Kind kind = Kind::Line;
    std::string text;  // LINE or PREFIX
    size_t count = 0;  // N
    std::string file;  // the scenario file that holds it
    int line = 0;      // in that file
};

bool isExpectationCommand(const std::string& head);

// Reads an expectation line. False and *error when malformed.
bool parseExpectation(const Line& line, Expectation* out, std::string* error);

// The expectation as the scenario wrote it ("expect-count 3").
std::string describe(const Expectation& e);

// Holds the expectations, in order, against the segment; returns the index of the
// first that fails, or -1 when all hold.
int firstFailure(const std::vector<Expectation>& expectations,
                 const std::vector<std::string>& segment);

}  // namespace sim
