// Expectations held against one command's segment of the transcript.
#include "expectations.h"

namespace sim {

namespace {

bool beginsWith(const std::string& line, const std::string& prefix) {
    return line.compare(0, prefix.size(), prefix) == 0;
}

// Looks for a matching line from *cursor on; moves the cursor past it when found.
bool findInOrder(const Expectation& e, const std::vector<std::string>& segment, size_t* cursor) {
    for (size_t i = *cursor; i < segment.size(); ++i) {
        const bool match = e.kind == Expectation::Kind::Line ? segment[i] == e.text
                                                             : beginsWith(segment[i], e.text);
        if (match) {
            *cursor = i + 1;
            return true;
        }
    }
    return false;
}

bool holds(const Expectation& e, const std::vector<std::string>& segment, size_t* cursor) {
    switch (e.kind) {
        case Expectation::Kind::Line:
        case Expectation::Kind::Prefix:
            return findInOrder(e, segment, cursor);
        case Expectation::Kind::Not:
            for (const auto& line : segment) {
                if (beginsWith(line, e.text)) return false;
            }
            return true;
        case Expectation::Kind::Count:
            return segment.size() == e.count;
    }
    return false;
}

}  // namespace

bool isExpectationCommand(const std::string& head) {
    return takesVerbatimText(head) || head == "expect-count";
}

bool parseExpectation(const Line& line, Expectation* out, std::string* error) {
    const std::string& head = line.tokens[0].text;
    out->file = line.file;
    out->line = line.number;
    if (head == "expect-count") {
        out->kind = Expectation::Kind::Count;
        uint64_t count = 0;
        if (line.tokens.size() != 2 || !parseUint64(line.tokens[1], &count, error)) {
            *error = "usage: expect-count N";
            return false;
        }
        out->count = count;
        return true;
    }
    out->kind = head == "expect"          ? Expectation::Kind::Line
                : head == "expect-prefix" ? Expectation::Kind::Prefix
                                          : Expectation::Kind::Not;
    out->text = line.verbatim;
    return true;
}

std::string describe(const Expectation& e) {
    switch (e.kind) {
        case Expectation::Kind::Line:
            return "expect " + e.text;
        case Expectation::Kind::Prefix:
            return "expect-prefix " + e.text;
        case Expectation::Kind::Not:
            return "expect-not " + e.text;
        case Expectation::Kind::Count:
            return "expect-count " + std::to_string(e.count);
    }
    return "";
}

int firstFailure(const std::vector<Expectation>& expectations,
                 const std::vector<std::string>& segment) {
    size_t cursor = 0;
    for (size_t i = 0; i < expectations.size(); ++i) {
        if (!holds(expectations[i], segment, &cursor)) return static_cast<int>(i);
    }
    return -1;
}

}  // namespace sim
