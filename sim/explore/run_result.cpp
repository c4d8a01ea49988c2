#include "run_result.h"

#include <sstream>

namespace explore {

namespace {

Candidate readCandidate(const std::string& word) {
    Candidate c;
    int early = 0;
    sscanf(word.c_str(), "%d/%d/%d/%d", &c.thread, &c.branch, &c.cost, &early);
    c.early = early != 0;
    return c;
}

TakenDecision readDecision(const std::string& rest) {
    std::istringstream in(rest);
    TakenDecision taken;
    in >> taken.decision.index >> taken.chosen >> taken.decision.fallback >> taken.decision.current;
    std::string word;
    while (in >> word) taken.decision.candidates.push_back(readCandidate(word));
    return taken;
}

struct Phase {
    bool inBlock = false;
    bool afterBlock = false;
};

void readLine(const std::string& rest, Phase& phase, RunResult* result) {
    const size_t blank = rest.find(' ');
    const int tag = atoi(rest.substr(0, blank).c_str());
    const std::string line = blank == std::string::npos ? "" : rest.substr(blank + 1);
    if (phase.inBlock) {
        result->branchLines[tag].push_back(line);
        result->transcript.push_back("[" + std::to_string(tag) + "] " + line);
    } else if (phase.afterBlock) {
        result->afterLines.push_back(line);
        result->transcript.push_back("[after] " + line);
    }
}

}  // namespace

void readMessages(const std::string& text, RunResult* result) {
    Phase phase;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) break;  // a message cut off by the end of the process
        const std::string message = text.substr(start, end - start);
        start = end + 1;
        const char kind = message.empty() ? ' ' : message[0];
        const std::string rest = message.size() > 2 ? message.substr(2) : "";
        if (kind == 'D') {
            result->decisions.push_back(readDecision(rest));
        } else if (kind == 'S') {
            Step step;
            if (parseStep(rest, &step)) result->steps.push_back(step);
        } else if (kind == 'B') {
            phase.inBlock = true;
        } else if (kind == 'E') {
            phase = {false, true};
        } else if (kind == 'T') {
            readLine(rest, phase, result);
        } else if (kind == 'F') {
            const size_t blank = rest.find(' ');
            result->stopKind = rest.substr(0, blank);
            result->stopDetail = blank == std::string::npos ? "" : rest.substr(blank + 1);
        } else if (kind == 'X') {
            result->clean = true;
        }
    }
}

std::string RunResult::outcome() const {
    std::string text;
    for (const auto& [branch, lines] : branchLines) {
        text += "branch " + std::to_string(branch) + "\n";
        for (const auto& line : lines) text += "  " + line + "\n";
    }
    text += "after\n";
    for (const auto& line : afterLines) text += "  " + line + "\n";
    return text;
}

std::string RunResult::schedule() const {
    std::map<size_t, int> deviations;
    for (const TakenDecision& taken : decisions) {
        if (taken.chosen != taken.decision.fallback) {
            deviations[taken.decision.index] = taken.chosen;
        }
    }
    return formatSchedule(deviations);
}

}  // namespace explore
