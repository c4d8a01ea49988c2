#include "run_result.h"

#include <algorithm>
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

// The first word of `text`, and the rest after one blank.
std::pair<std::string, std::string> splitWord(const std::string& text) {
    const size_t blank = text.find(' ');
    if (blank == std::string::npos) return {text, ""};
    return {text.substr(0, blank), text.substr(blank + 1)};
}

class Reader {
  public:
    explicit Reader(RunResult* result) : mResult(result) {}

    void message(char kind, const std::string& rest) {
        switch (kind) {
            case 'D':
                mResult->decisions.push_back(readDecision(rest));
                break;
            case 'B':
                mInBlock = true;
                break;
            case 'E':
                mInBlock = false;
                mAfterBlock = true;
                break;
            case 'O':
                operationBegan(rest);
                break;
            case 'C':
                serialChoice(rest);
                break;
            case 'S': {
                Step step;
                if (parseStep(rest, &step)) mResult->steps.push_back(step);
                break;
            }
            case 'L':
                mResult->locksAcrossCalls.push_back(rest);
                break;
            case 'T':
                line(rest);
                break;
            case 'F':
                std::tie(mResult->stopKind, mResult->stopDetail) = splitWord(rest);
                std::replace(mResult->stopDetail.begin(), mResult->stopDetail.end(), '\x1f', '\n');
                break;
            case 'X':
                mResult->clean = true;
                break;
            default:
                break;
        }
    }

  private:
    void operationBegan(const std::string& rest) {
        auto [key, afterKey] = splitWord(rest);
        auto [thread, label] = splitWord(afterKey);
        mIndex[key] = mResult->operations.size();
        mResult->operations.push_back({key, atoi(thread.c_str()), label, {}});
        mResult->trace.push_back({atoi(thread.c_str()), key, key + " " + label, true});
    }

    void serialChoice(const std::string& rest) {
        std::istringstream in(rest);
        SerialPolicy::Choice choice;
        in >> choice.chosen;
        std::string key;
        while (in >> key) choice.possible.push_back(key);
        mResult->serialChoices.push_back(choice);
    }

    void line(const std::string& rest) {
        auto [key, text] = splitWord(rest);
        if (mInBlock) {
            auto it = mIndex.find(key);
            if (it == mIndex.end()) {  // a line of no operation: kept under its own key
                mIndex[key] = mResult->operations.size();
                mResult->operations.push_back({key, 0, "", {}});
                it = mIndex.find(key);
            }
            OperationRecord& op = mResult->operations[it->second];
            op.lines.push_back(text);
            mResult->trace.push_back({op.thread, key, text, false});
        } else if (mAfterBlock) {
            mResult->afterLines.push_back(text);
            mResult->trace.push_back({0, "", text, false});
        }
    }

    RunResult* mResult;
    std::map<std::string, size_t> mIndex;
    bool mInBlock = false;
    bool mAfterBlock = false;
};

}  // namespace

std::string receivedOperation(const std::string& line) {
    auto [prefix, call] = splitWord(line);
    if (prefix != "fusd" && prefix != "vhal" && prefix != "fw") return "";
    const size_t paren = call.find('(');
    if (paren == std::string::npos || call.find(' ') < paren) return "";
    const size_t dot = call.rfind('.', paren);  // interface names may hold dots: IZDGnss2.0
    if (dot == std::string::npos || dot == 0 || dot + 1 == paren) return "";
    return prefix + " " + call.substr(0, paren);
}

void readMessages(const std::string& text, RunResult* result) {
    Reader reader(result);
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) break;  // a message cut off by the end of the process
        const std::string message = text.substr(start, end - start);
        start = end + 1;
        if (message.empty()) continue;
        reader.message(message[0], message.size() > 2 ? message.substr(2) : "");
    }
}

std::string RunResult::outcome() const {
    std::vector<const OperationRecord*> byKey;
    for (const OperationRecord& op : operations) byKey.push_back(&op);
    std::sort(byKey.begin(), byKey.end(),
              [](const OperationRecord* a, const OperationRecord* b) { return a->key < b->key; });
    std::string text;
    std::map<std::string, std::vector<std::string>> received;
    for (const OperationRecord* op : byKey) {
        text += "operation " + op->key + " " + op->label + "\n";
        for (const std::string& line : op->lines) {
            if (receivedOperation(line).empty()) text += "  " + line + "\n";
        }
    }
    for (const TraceLine& line : trace) {
        if (line.operation.empty() || line.begins) continue;
        const std::string operation = receivedOperation(line.text);
        if (!operation.empty()) received[operation].push_back(line.text);
    }
    for (const auto& [operation, calls] : received) {
        text += "received " + operation + "\n";
        for (const std::string& call : calls) text += "  " + call + "\n";
    }
    text += "after\n";
    for (const std::string& line : afterLines) text += "  " + line + "\n";
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

std::string RunResult::operationOrder() const {
    std::string text;
    for (const OperationRecord& op : operations) text += (text.empty() ? "" : ",") + op.key;
    return text;
}

const OperationRecord* RunResult::operation(const std::string& key) const {
    for (const OperationRecord& op : operations) {
        if (op.key == key) return &op;
    }
    return nullptr;
}

}  // namespace explore
