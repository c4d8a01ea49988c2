#include "explorer.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <map>
#include <numeric>
#include <set>

#include "launcher.h"

namespace explore {

namespace {

using sim::FindingKind;

struct Finding {
    FindingKind kind;
    std::string key;  // what makes two findings the same
    size_t run = 0;
    std::string schedule;
};

// A search node: one decision of the current path, with the choices tried there.
struct Node {
    TakenDecision taken;
    std::set<int> tried;
    int preemptionsBefore = 0;
};

int costOf(const Decision& d, int thread) {
    for (const Candidate& c : d.candidates) {
        if (c.thread == thread) return c.cost;
    }
    return 0;
}

std::string orderText(const std::vector<int>& order) {
    std::string text;
    for (int branch : order) text += (text.empty() ? "" : ",") + std::to_string(branch);
    return text;
}

void printLines(std::ostream& out, const std::vector<std::string>& lines, const char* indent) {
    for (const auto& line : lines) out << indent << line << "\n";
}

void printIndented(std::ostream& out, const std::string& text, const char* indent) {
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        out << indent << text.substr(start, end - start) << "\n";
        start = end + 1;
    }
}

class BlockExplorer {
  public:
    BlockExplorer(const sim::Scenario& scenario, const sim::Step& step, size_t ordinal,
                  const Options& options, std::ostream& out)
        : mLauncher(scenario), mStep(step), mOrdinal(ordinal), mOptions(options), mOut(out) {}

    int explore();
    int replay();

  private:
    RunRequest request(RunRequest::Mode mode) const;
    bool runSerialOrders();
    void depthFirst();
    void pct();
    // Runs, judges and counts one run; false when the explorer itself went wrong.
    bool runAndJudge(const RunRequest& request, RunResult* result);
    // Whether the run is a finding; a serial run's outcome is the reference, never a finding.
    bool judge(const RunRequest& request, const RunResult& result, FindingKind* kind,
               std::string* key) const;
    void report(const Finding& finding, const RunResult& result, const std::string& detail);
    // Replays a finding's schedule once more: a finding must come back the same.
    void confirm(const Finding& finding);
    std::string where() const;
    int verdict() const;
    void summary(double seconds) const;

    Launcher mLauncher;
    const sim::Step& mStep;
    size_t mOrdinal;
    const Options& mOptions;
    std::ostream& mOut;
    std::map<std::string, std::string> mSerialOutcomes;  // outcome -> serial order
    std::vector<Finding> mFindings;
    size_t mRuns = 0;
    size_t mMostDecisions = 1;
    bool mExhausted = true;
    bool mBroken = false;
};

std::string BlockExplorer::where() const {
    return mStep.source.file + ":" + std::to_string(mStep.source.number);
}

RunRequest BlockExplorer::request(RunRequest::Mode mode) const {
    RunRequest r;
    r.mode = mode;
    r.block = mOrdinal;
    r.stepBound = mOptions.stepBound;
    return r;
}

bool BlockExplorer::runSerialOrders() {
    std::vector<int> order(mStep.block->branches.size());
    std::iota(order.begin(), order.end(), 1);
    do {
        RunRequest r = request(RunRequest::Mode::kSerial);
        r.order = order;
        RunResult result;
        if (!runAndJudge(r, &result)) return false;
        if (result.clean) mSerialOutcomes.emplace(result.outcome(), orderText(order));
    } while (std::next_permutation(order.begin(), order.end()));
    return true;
}

bool BlockExplorer::judge(const RunRequest& request, const RunResult& result, FindingKind* kind,
                          std::string* key) const {
    if (result.stopKind == "deadlock") {
        *kind = FindingKind::kDeadlock;
        *key = result.stopDetail;
    } else if (result.stopKind == "step-bound") {
        *kind = FindingKind::kStepBound;
        *key = "";
    } else if (result.signal == SIGALRM) {
        *kind = FindingKind::kHang;
        *key = "";
    } else if (!result.clean) {
        *kind = FindingKind::kCrash;
        *key = result.signal != 0 ? strsignal(result.signal)
                                  : "exit " + std::to_string(result.exitCode);
    } else if (request.mode != RunRequest::Mode::kSerial &&
               mSerialOutcomes.count(result.outcome()) == 0) {
        *kind = FindingKind::kNonSerial;
        *key = result.outcome();
    } else {
        return false;
    }
    return true;
}

bool BlockExplorer::runAndJudge(const RunRequest& request, RunResult* result) {
    *result = mLauncher.run(request);
    ++mRuns;
    if (mOptions.eachRun) mOut << "run " << mRuns << ": schedule " << result->schedule() << "\n";
    mMostDecisions = std::max(mMostDecisions, result->decisions.size());
    if (result->stopKind == "diverged" || result->stopKind == "error") {
        mOut << where() << ": error in run " << mRuns << " (schedule " << result->schedule()
             << "): " << result->stopDetail << "\n";
        mBroken = true;
        return false;
    }
    FindingKind kind;
    std::string key;
    if (!judge(request, *result, &kind, &key)) return true;
    for (const Finding& known : mFindings) {
        if (known.kind == kind && known.key == key) return true;
    }
    Finding finding{kind, key, mRuns, result->schedule()};
    mFindings.push_back(finding);
    report(finding, *result, kind == FindingKind::kCrash ? key : result->stopDetail);
    confirm(finding);
    return true;
}

void BlockExplorer::confirm(const Finding& finding) {
    RunRequest again = request(RunRequest::Mode::kGuided);
    std::string error;
    parseSchedule(finding.schedule, &again.deviations, &error);
    const RunResult result = mLauncher.run(again);
    FindingKind kind;
    std::string key;
    if (judge(again, result, &kind, &key) && kind == finding.kind && key == finding.key) {
        mOut << "  replayed with --schedule " << finding.schedule << ": the same finding\n";
    } else {
        mOut << "  replayed with --schedule " << finding.schedule
             << ": NOT the same; the run is not deterministic\n";
    }
}

void BlockExplorer::report(const Finding& finding, const RunResult& result,
                           const std::string& detail) {
    mOut << where() << ": finding: " << sim::findingName(finding.kind) << " in run " << finding.run
         << ", schedule " << finding.schedule << "\n";
    if (!detail.empty()) mOut << "  " << detail << "\n";
    if (finding.kind == FindingKind::kCrash && !result.errorOutput.empty()) {
        mOut << "  standard error of the run:\n";
        printIndented(mOut, result.errorOutput, "    ");
    }
    mOut << "  transcript from the block on ([N] is the branch):\n";
    printLines(mOut, result.transcript, "    ");
    if (finding.kind != FindingKind::kNonSerial) return;
    mOut << "  its outcome:\n";
    printIndented(mOut, result.outcome(), "    ");
    for (const auto& [outcome, order] : mSerialOutcomes) {
        mOut << "  differs from the outcome of serial order " << order << ":\n";
        printIndented(mOut, outcome, "    ");
    }
}

void BlockExplorer::depthFirst() {
    std::vector<Node> path;
    std::map<size_t, int> deviations;
    while (!mBroken) {
        if (mRuns >= mOptions.maxRuns) {
            mExhausted = false;
            return;
        }
        RunRequest r = request(RunRequest::Mode::kGuided);
        r.deviations = deviations;
        RunResult result;
        if (!runAndJudge(r, &result)) return;
        for (size_t i = path.size(); i < result.decisions.size(); ++i) {
            Node node;
            node.taken = result.decisions[i];
            node.tried.insert(node.taken.chosen);
            if (i > 0) {
                const Node& before = path[i - 1];
                node.preemptionsBefore =
                    before.preemptionsBefore + costOf(before.taken.decision, before.taken.chosen);
            }
            path.push_back(node);
        }
        // Back up to the deepest decision with a choice left within the bound.
        bool next = false;
        while (!path.empty() && !next) {
            Node& node = path.back();
            for (const Candidate& c : node.taken.decision.candidates) {
                if (node.tried.count(c.thread) != 0) continue;
                if (node.preemptionsBefore + c.cost > mOptions.bound) continue;
                node.tried.insert(c.thread);
                node.taken.chosen = c.thread;
                next = true;
                break;
            }
            if (!next) path.pop_back();
        }
        if (!next) return;
        deviations.clear();
        for (const Node& node : path) {
            if (node.taken.chosen != node.taken.decision.fallback) {
                deviations[node.taken.decision.index] = node.taken.chosen;
            }
        }
    }
}

void BlockExplorer::pct() {
    for (size_t i = 0; i < mOptions.pctRuns && !mBroken; ++i) {
        RunRequest r = request(RunRequest::Mode::kPct);
        r.seed = mOptions.seed * 1000003 + i;
        r.depth = mOptions.depth;
        r.expectedDecisions = mMostDecisions;
        RunResult result;
        runAndJudge(r, &result);
    }
}

int BlockExplorer::verdict() const {
    if (mBroken) return sim::kExitBadScenario;
    if (!mOptions.check) return 0;
    int code = 0;
    const auto& expected = mStep.block->expectedFindings;
    for (const Finding& f : mFindings) {
        if (std::none_of(expected.begin(), expected.end(),
                         [&](const sim::ExpectedFinding& e) { return e.kind == f.kind; })) {
            code = 1;
        }
    }
    for (const sim::ExpectedFinding& e : expected) {
        const auto found = std::count_if(mFindings.begin(), mFindings.end(),
                                         [&](const Finding& f) { return f.kind == e.kind; });
        if (found == 0 || (e.count >= 0 && found != e.count)) {
            mOut << where() << ": declared " << (e.count >= 0 ? std::to_string(e.count) + " " : "")
                 << sim::findingName(e.kind) << " finding" << (e.count == 1 ? "" : "s")
                 << ", found " << found << "\n";
            code = 1;
        }
    }
    return code;
}

void BlockExplorer::summary(double seconds) const {
    mOut << where() << ": block " << mOrdinal + 1 << ": " << mStep.block->branches.size()
         << " branches, " << mSerialOutcomes.size() << " serial outcome"
         << (mSerialOutcomes.size() == 1 ? "" : "s") << ", " << mRuns << " runs";
    if (mOptions.pctRuns > 0) {
        mOut << " (PCT, depth " << mOptions.depth << ", seed " << mOptions.seed << ")";
    } else {
        mOut << ", bound " << mOptions.bound << (mExhausted ? "" : " (stopped at the run budget)");
    }
    mOut << ", " << mFindings.size() << " finding" << (mFindings.size() == 1 ? "" : "s");
    for (size_t i = 0; i < mFindings.size(); ++i) {
        mOut << (i == 0 ? " (" : ", ") << sim::findingName(mFindings[i].kind) << " first in run "
             << mFindings[i].run;
        if (i + 1 == mFindings.size()) mOut << ")";
    }
    char time[32];
    snprintf(time, sizeof(time), "%.2f", seconds);
    mOut << ", " << time << " s\n";
}

int BlockExplorer::explore() {
    const auto started = std::chrono::steady_clock::now();
    if (runSerialOrders()) {
        if (mOptions.pctRuns > 0) {
            pct();
        } else {
            depthFirst();
        }
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - started;
    summary(took.count());
    return verdict();
}

int BlockExplorer::replay() {
    std::map<size_t, int> deviations;
    std::string error;
    if (!parseSchedule(mOptions.schedule, &deviations, &error)) {
        mOut << "zdgnss-sim explore: " << error << "\n";
        return sim::kExitBadScenario;
    }
    if (!runSerialOrders()) return sim::kExitBadScenario;
    RunRequest r = request(RunRequest::Mode::kGuided);
    r.deviations = deviations;
    RunResult result;
    const size_t before = mFindings.size();
    if (!runAndJudge(r, &result)) return sim::kExitBadScenario;
    if (mFindings.size() == before) {
        mOut << where() << ": schedule " << mOptions.schedule << " on block " << mOrdinal + 1
             << ": no finding\n";
        if (!mOptions.quiet) printLines(mOut, result.transcript, "  ");
        return 0;
    }
    return 1;
}

}  // namespace

int explore(const sim::Scenario& scenario, const std::vector<const sim::Step*>& blocks,
            const Options& options, std::ostream& out) {
    if (options.replay) {
        if (options.replayBlock < 1 || options.replayBlock > blocks.size()) {
            out << "zdgnss-sim explore: the scenario has no block " << options.replayBlock << "\n";
            return sim::kExitBadScenario;
        }
        const size_t ordinal = options.replayBlock - 1;
        return BlockExplorer(scenario, *blocks[ordinal], ordinal, options, out).replay();
    }
    int code = 0;
    for (size_t i = 0; i < blocks.size(); ++i) {
        code = std::max(code, BlockExplorer(scenario, *blocks[i], i, options, out).explore());
    }
    return code;
}

}  // namespace explore
