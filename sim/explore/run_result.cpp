#include "run_result.h"

#include <algorithm>

#include "words.h"

namespace explore {

namespace {

// "THREAD/BRANCH/COST/EARLY".
Candidate readCandidate(std::string_view word) {
    Candidate c;
    int early = 0;
    for (int* field : {&c.thread, &c.branch, &c.cost, &early}) {
        const size_t slash = word.find('/');
        Words::toNumber(word.substr(0, slash), field);
        word = slash == std::string_view::npos ? std::string_view() : word.substr(slash + 1);
    }
    c.early = early != 0;
    return c;
}

TakenDecision readDecision(std::string_view rest) {
    Words words(rest);
    TakenDecision taken;
    words.number(&taken.decision.index);
    words.number(&taken.chosen);
    words.number(&taken.decision.fallback);
    words.number(&taken.decision.current);
    std::string_view word;
    while (words.next(&word)) taken.decision.candidates.push_back(readCandidate(word));
    return taken;
}

// The first word of `text`, and the rest after one blank.
std::pair<std::string_view, std::string_view> splitWord(std::string_view text) {
    const size_t blank = text.find(' ');
    if (blank == std::string_view::npos) return {text, ""};
    return {text.substr(0, blank), text.substr(blank + 1)};
}

int toInt(std::string_view word) {
    int value = 0;
    Words::toNumber(word, &value);
    return value;
}

class Reader {
  public:
    explicit Reader(RunResult* result) : mResult(result) {}

    void message(char kind, std::string_view rest) {
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
                mResult->locksAcrossCalls.emplace_back(rest);
                break;
            case 'T':
                line(rest);
                break;
            case 'F': {
                const auto [kind, detail] = splitWord(rest);
                mResult->stopKind = kind;
                mResult->stopDetail = detail;
                std::replace(mResult->stopDetail.begin(), mResult->stopDetail.end(), '\x1f', '\n');
                break;
            }
            case 'X':
                mResult->clean = true;
                break;
            default:
                break;
        }
    }

  private:
    void operationBegan(std::string_view rest) {
        const auto [keyWord, afterKey] = splitWord(rest);
        const auto [thread, label] = splitWord(afterKey);
        const std::string key(keyWord);
        mIndex[key] = mResult->operations.size();
        mResult->operations.push_back({key, toInt(thread), std::string(label), {}});
        mResult->trace.push_back({toInt(thread), key, key + " " + std::string(label), true});
    }

    void serialChoice(std::string_view rest) {
        Words words(rest);
        SerialPolicy::Choice choice;
        std::string_view key;
        if (words.next(&key)) choice.chosen = key;
        while (words.next(&key)) choice.possible.emplace_back(key);
        mResult->serialChoices.push_back(choice);
    }

    void line(std::string_view rest) {
        const auto [keyWord, textWord] = splitWord(rest);
        const std::string key(keyWord);
        const std::string text(textWord);
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
    return std::string(prefix) + " " + std::string(call.substr(0, paren));
}

void readMessages(std::string_view text, RunResult* result) {
    Reader reader(result);
    size_t start = 0;
    while (start < text.size()) {
        const size_t end = text.find('\n', start);
        if (end == std::string_view::npos) break;  // a message cut off by the end of the process
        const std::string_view message = text.substr(start, end - start);
        start = end + 1;
        if (message.empty()) continue;
        reader.message(message[0], message.size() > 2 ? message.substr(2) : std::string_view());
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
