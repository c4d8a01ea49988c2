// Parsing and running of scenarios.
#include "scenario.h"

#include <zdhost/runtime.h>

#include "block.h"
#include "calls.h"
#include "environment.h"
#include "log_capture.h"
#include "transcript.h"
#include "world/world.h"

namespace sim {

namespace {

bool isWorldCommand(const std::string& head) {
    return head == "fusd" || head == "vhal" || head == "fw";
}

template <typename Action>
std::function<bool(std::string*)> alwaysSucceeds(Action action) {
    return [action](std::string*) {
        action();
        return true;
    };
}

// The framework's nested calls (`fw nested-in OBJECT.OP call ...`) are library calls.
bool lendLibraryCalls() {
    World::get().setLibraryCalls(
        [](const std::vector<Token>& words, WorldAction* action, std::string* error) {
            std::function<void()> call;
            if (!prepareCall(words, &call, error)) return false;
            *action = alwaysSucceeds([call] { runWithoutWaiting(call); });
            return true;
        });
    return true;
}

bool parseCommand(const Line& line, Step* step, std::string* error) {
    const std::string& head = line.tokens[0].text;
    const std::vector<Token> args(line.tokens.begin() + 1, line.tokens.end());
    std::function<void()> action;
    step->source = line;
    if (line.tokens[0].quoted) {
        *error = "a command must start with a word";
        return false;
    }
    if (isWorldCommand(head)) {
        static const bool kLent = lendLibraryCalls();
        (void)kLent;
        return World::get().prepare(head, args, &step->run, error);
    }
    if (head == "call") {
        if (!prepareCall(args, &action, error)) return false;
    } else if (isEnvironmentCommand(head)) {
        if (!prepareEnvironment(head, args, &action, error)) return false;
    } else {
        *error = "unknown command \"" + head + "\"";
        return false;
    }
    step->run = alwaysSucceeds(action);
    return true;
}

// The command's line, with its file when an include put it in another one than the
// expectation's.
std::string commandPlace(const Step& step, const Expectation& failed) {
    if (step.source.file == failed.file) return "line " + std::to_string(step.source.number);
    return location(step.source);
}

void reportFailure(const Step& step, const Expectation& failed,
                   const std::vector<std::string>& segment, std::ostream& report) {
    report << failed.file << ":" << failed.line << ": expectation failed: " << describe(failed)
           << "\n";
    report << "  held against the segment of " << commandPlace(step, failed) << " ("
           << step.source.text << "), " << segment.size()
           << (segment.size() == 1 ? " line" : " lines") << (segment.empty() ? "" : ":") << "\n";
    for (const auto& line : segment) report << "    " << line << "\n";
}

void startWorld() {
    startLogCapture();
    resetEnvironment();
    World::get().start();
    zdhost::pool::drain();
}

// A line while a concurrent block is open: a keyword, or a command of its last branch,
// which is a library call or a world event.
bool parseInBlock(const Line& line, BlockReader* reader, std::string* error) {
    const std::string& head = line.tokens[0].text;
    if (isBlockKeyword(head) && !line.tokens[0].quoted) return reader->accept(line, nullptr, error);
    if (isExpectationCommand(head) || head == "expect-finding") {
        *error = "expectations inside a concurrent block are not held; put them after `end`";
        return false;
    }
    if (head != "call" && !isWorldCommand(head)) {
        *error = "a concurrent block holds only `call`, `fusd`, `vhal` and `fw` commands";
        return false;
    }
    Step step;
    return parseCommand(line, &step, error) && reader->accept(line, &step, error);
}

// The closing steps of a scenario's run; false and *error ends it as malformed.
bool runStep(const Step& step, const BlockPlayer& playBlock, size_t* blockOrdinal,
             std::string* error) {
    if (step.block == nullptr || !playBlock) return step.run(error);
    return playBlock(*step.block, (*blockOrdinal)++, error);
}

}  // namespace

const char* findingName(FindingKind kind) {
    switch (kind) {
        case FindingKind::kCrash:
            return "crash";
        case FindingKind::kDeadlock:
            return "deadlock";
        case FindingKind::kStepBound:
            return "step-bound";
        case FindingKind::kHang:
            return "hang";
        case FindingKind::kNonSerial:
            return "non-serial";
        case FindingKind::kLockAcrossCall:
            return "lock-across-call";
        case FindingKind::kRefused:
            return "refused";
    }
    return "?";
}

bool parseFindingKind(const std::string& name, FindingKind* kind) {
    for (FindingKind k :
         {FindingKind::kCrash, FindingKind::kDeadlock, FindingKind::kStepBound, FindingKind::kHang,
          FindingKind::kNonSerial, FindingKind::kLockAcrossCall, FindingKind::kRefused}) {
        if (name == findingName(k)) {
            *kind = k;
            return true;
        }
    }
    return false;
}

bool readScenarioFile(const std::string& path, Scenario* out, std::ostream& errors) {
    std::string text;
    if (!readFile(path, &text)) {
        errors << "zdgnss-sim: cannot read " << path << "\n";
        return false;
    }
    std::vector<Line> lines;
    SourceError error;
    if (!loadScenario(path, text, &lines, &error) || !parseScenario(lines, out, &error)) {
        errors << error.file << ":" << error.line << ": " << error.reason << "\n";
        return false;
    }
    return true;
}

bool parseScenario(const std::vector<Line>& lines, Scenario* out, SourceError* sourceError) {
    out->steps.clear();
    BlockReader reader;
    for (const Line& line : lines) {
        sourceError->file = line.file;
        sourceError->line = line.number;
        std::string* error = &sourceError->reason;
        const std::string& head = line.tokens[0].text;
        if (reader.open() || (head == "parallel" && !line.tokens[0].quoted)) {
            if (!parseInBlock(line, &reader, error)) return false;
            Step closed;
            if (reader.takeClosed(&closed)) out->steps.push_back(std::move(closed));
            continue;
        }
        if ((head == "branch" || head == "end") && !line.tokens[0].quoted) {
            *error = "`" + head + "` outside a concurrent block";
            return false;
        }
        if (head == "expect-finding" && !line.tokens[0].quoted) {
            if (!addExpectedFinding(line, out->steps.empty() ? nullptr : &out->steps.back(),
                                    error)) {
                return false;
            }
            continue;
        }
        if (isExpectationCommand(line.tokens[0].text) && !line.tokens[0].quoted) {
            Expectation expectation;
            if (out->steps.empty()) {
                *error = "an expectation needs a command before it";
                return false;
            }
            if (!parseExpectation(line, &expectation, error)) return false;
            out->steps.back().expectations.push_back(expectation);
            continue;
        }
        Step step;
        if (!parseCommand(line, &step, error)) return false;
        out->steps.push_back(std::move(step));
    }
    if (reader.open()) {
        sourceError->file = reader.opening().file;
        sourceError->line = reader.opening().number;
        sourceError->reason = "a concurrent block needs an `end`";
        return false;
    }
    return true;
}

static int play(const Scenario& scenario, bool check, const BlockPlayer& playBlock,
                std::ostream& report) {
    startWorld();
    size_t blockOrdinal = 0;
    for (const Step& step : scenario.steps) {
        Transcript::get().takeSegment();
        std::string error;
        const bool ran = runStep(step, playBlock, &blockOrdinal, &error);
        zdhost::pool::drain();
        const std::vector<std::string> segment = Transcript::get().takeSegment();
        if (!ran) {
            report << location(step.source) << ": " << error << "\n";
            return kExitBadScenario;
        }
        if (!check) continue;
        const int failed = firstFailure(step.expectations, segment);
        if (failed >= 0) {
            reportFailure(step, step.expectations[failed], segment, report);
            return kExitExpectationFailed;
        }
    }
    return kExitOk;
}

int runScenario(const Scenario& scenario, bool check, std::ostream& report) {
    return play(scenario, check, nullptr, report);
}

int runScenarioWith(const Scenario& scenario, bool check, const BlockPlayer& playBlock,
                    std::ostream& report) {
    return play(scenario, check, playBlock, report);
}

}  // namespace sim
