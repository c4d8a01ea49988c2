#include "explorer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstring>
#include <iostream>
#include <map>
#include <set>

#include "bounded.h"
#include "dpor.h"
#include "finding_report.h"
#include "launcher.h"

namespace explore {

namespace {

using sim::FindingKind;

struct Finding {
    FindingKind kind;
    std::string key;     // what makes two findings the same
    std::string detail;  // one line: who waits for whom, which mutex, which signal
    size_t run = 0;
    std::string schedule;
};

using Time = std::chrono::steady_clock;

// A run's steps with the threads that could have run in each one's place.
std::vector<TracedStep> traced(const RunResult& result) {
    std::map<long, const Decision*> decisions;
    for (const TakenDecision& taken : result.decisions) {
        decisions[static_cast<long>(taken.decision.index)] = &taken.decision;
    }
    std::vector<TracedStep> steps;
    for (const Step& step : result.steps) {
        TracedStep t;
        t.step = step;
        auto it = decisions.find(step.decision);
        if (it != decisions.end()) {
            t.candidates = it->second->candidates;
        } else {
            t.candidates.push_back({step.thread, 0, 0, false, "", false});
        }
        steps.push_back(std::move(t));
    }
    return steps;
}

// Steps that touched something no point or hook named: the search takes each of them as
// touching everything, which is sound but loses the reduction around it.
size_t unnamedSteps(const std::vector<Step>& steps) {
    return static_cast<size_t>(std::count_if(steps.begin(), steps.end(), [](const Step& step) {
        return std::any_of(step.accesses.begin(), step.accesses.end(), [](const Access& a) {
            return a.kind == Access::Kind::kObject && a.id == 0;
        });
    }));
}

uint64_t classOf(const std::vector<Step>& steps) {
    Causality causality;
    for (const Step& step : steps) causality.append(step);
    return std::hash<std::string>()(causality.className());
}

std::string fixed(double value, int decimals) {
    char text[32];
    snprintf(text, sizeof(text), "%.*f", decimals, value);
    return text;
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
    // `share`: the seconds the search may take before it falls back to a bound.
    BlockExplorer(const sim::Scenario& scenario, const sim::Step& step, size_t ordinal,
                  const Options& options, double share, std::ostream& out)
        : mLauncher(scenario),
          mStep(step),
          mOrdinal(ordinal),
          mOptions(options),
          mSearch(options.searchOf(ordinal + 1)),
          mShare(share),
          mOut(out) {}

    int explore();
    int replay();
    BlockResult result(int code) const;

  private:
    RunRequest request(RunRequest::Mode mode) const;
    // Runs every serial order of the block's operations and keeps their outcomes.
    bool runSerialOrders();
    // Keeps a serial run's outcome; notes its refused commands and failed expectations.
    void keepSerial(const RunResult& result);
    void reportRefusedEverywhere();
    void search();
    // Runs what `search` plans until it has nothing more, the run limit or `deadline`;
    // true when it finished.
    template <typename Planner>
    bool drive(Planner& search, Time::time_point deadline);
    RunRequest planned(const Plan& plan) const;
    void pct();
    // Plain depth-first search at kFallbackBound, held against what the search found.
    void compareWithDepthFirst();
    void showProgress();
    // Runs, judges and counts one run; false when the explorer itself went wrong.
    bool runAndJudge(const RunRequest& request, RunResult* result);
    // The findings a run shows; a serial run's outcome is the reference, never non-serial.
    std::vector<Finding> judge(const RunRequest& request, const RunResult& result) const;
    bool declares(FindingKind kind) const;
    void report(const Finding& finding, const RunResult& result);
    void reportNonSerial(const RunResult& result);
    // Replays a finding's schedule once more: a finding must come back the same.
    void confirm(const Finding& finding);
    std::string where() const;
    std::string describe(const Finding& finding) const;
    int verdict() const;
    void summary(double seconds) const;
    std::string coverage() const;

    Launcher mLauncher;
    const sim::Step& mStep;
    size_t mOrdinal;
    const Options& mOptions;
    const Search& mSearch;
    double mShare;
    std::ostream& mOut;
    std::map<std::string, std::string> mSerialOutcomes;  // outcome -> serial order
    std::set<std::string> mRefusedEverywhere;      // branch commands refused in every serial run
    std::map<std::string, std::string> mRefusals;  // command key -> why, as the world said
    size_t mSerialRuns = 0;
    bool mSerialCut = false;  // the serial orders stopped at the run budget
    bool mExpectationFailed = false;
    std::vector<Finding> mFindings;
    size_t mRuns = 0;
    size_t mMostDecisions = 1;
    std::set<uint64_t> mClasses;       // of the runs that were not redundant
    size_t mUnnamed = 0;               // steps that touched something unnamed
    std::set<std::string> mOutcomes;   // of the search's clean runs
    int mBound = -1;                   // the bound searched within; -1 for none
    bool mFinished = false;            // the search ran out of runs to make
    bool mFellBack = false;            // it passed its share and fell back to a bound
    size_t mDepthFirstRuns = 0;        // with --compare-dfs
    std::vector<std::string> mMissed;  // what depth-first search found and it did not
    Time::time_point mStarted = Time::now();
    Time::time_point mShown = mStarted;
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
    for (size_t b = 0; b < mStep.block->branches.size(); ++b) {
        for (size_t c = 0; c < mStep.block->branches[b].size(); ++c) {
            mRefusedEverywhere.insert(std::to_string(b + 1) + "." + std::to_string(c + 1));
        }
    }
    // Depth first over the points where more than one operation could begin: each run
    // follows `order` (a prefix of an earlier run's choices and one new choice), then the
    // default; every choice past the prefix opens the orders that choose otherwise there.
    std::vector<std::vector<std::string>> pending = {{}};
    while (!pending.empty() && !mBroken) {
        if (mSerialRuns >= mSearch.maxRuns) {
            mSerialCut = true;
            break;
        }
        RunRequest r = request(RunRequest::Mode::kSerial);
        r.order = std::move(pending.back());
        r.checkExpectations = mOptions.check;
        pending.pop_back();
        RunResult result;
        ++mSerialRuns;
        if (!runAndJudge(r, &result)) return false;
        keepSerial(result);
        std::vector<std::string> chosen;
        for (const auto& choice : result.serialChoices) chosen.push_back(choice.chosen);
        for (size_t i = chosen.size(); i-- > r.order.size();) {
            const auto& possible = result.serialChoices[i].possible;
            for (auto alt = possible.rbegin(); alt != possible.rend(); ++alt) {
                if (*alt == chosen[i]) continue;
                std::vector<std::string> next(chosen.begin(), chosen.begin() + i);
                next.push_back(*alt);
                pending.push_back(std::move(next));
            }
        }
    }
    reportRefusedEverywhere();
    return !mBroken;
}

void BlockExplorer::keepSerial(const RunResult& result) {
    if (result.stopKind == "expectation") {
        mOut << where() << ": in serial order " << result.operationOrder() << ":\n";
        printIndented(mOut, result.stopDetail, "  ");
        mExpectationFailed = true;
    }
    if (!result.clean) return;
    mSerialOutcomes.emplace(result.outcome(), result.operationOrder());
    for (auto it = mRefusedEverywhere.begin(); it != mRefusedEverywhere.end();) {
        const OperationRecord* op = result.operation(*it);
        const std::string* refusal = nullptr;
        if (op != nullptr) {
            for (const std::string& line : op->lines) {
                if (line.rfind("refused ", 0) == 0) refusal = &line;
            }
        }
        if (refusal == nullptr) {
            it = mRefusedEverywhere.erase(it);
        } else {
            mRefusals[*it] = *refusal;
            ++it;
        }
    }
}

void BlockExplorer::reportRefusedEverywhere() {
    if (mSerialOutcomes.empty() || mSerialCut) return;
    for (const std::string& key : mRefusedEverywhere) {
        Finding finding{FindingKind::kRefused, key, mRefusals[key], 0, "-"};
        mFindings.push_back(finding);
        mOut << where() << ": finding: " << describe(finding) << "\n";
        mOut << "  command " << key << " of the block is refused in every serial order, so no "
             << "run races it:\n    " << mRefusals[key] << "\n";
    }
}

std::vector<Finding> BlockExplorer::judge(const RunRequest& request,
                                          const RunResult& result) const {
    std::vector<Finding> found;
    auto add = [&](FindingKind kind, const std::string& key, const std::string& detail) {
        found.push_back({kind, key, detail, mRuns, result.schedule()});
    };
    for (const std::string& held : result.locksAcrossCalls) {
        const size_t blank = held.find(' ');
        const std::string mutex = held.substr(0, blank);
        const std::string op = blank == std::string::npos ? "" : held.substr(blank + 1);
        const OperationRecord* record = result.operation(op);
        add(FindingKind::kLockAcrossCall, held,
            "operation " + op + (record != nullptr ? " (" + record->label + ")" : "") +
                " calls another party while it holds " + mutex);
    }
    if (result.stopKind == "deadlock") {
        add(FindingKind::kDeadlock, result.stopDetail, result.stopDetail);
    } else if (result.stopKind == "step-bound") {
        add(FindingKind::kStepBound, "", result.stopDetail);
    } else if (result.signal == SIGALRM) {
        add(FindingKind::kHang, "", "the run was still going after its time");
    } else if (!result.clean && result.stopKind != "expectation") {
        const std::string how = result.signal != 0 ? strsignal(result.signal)
                                                   : "exit " + std::to_string(result.exitCode);
        add(FindingKind::kCrash, how, how);
    } else if (result.clean && request.mode != RunRequest::Mode::kSerial &&
               mSerialOutcomes.count(result.outcome()) == 0) {
        add(FindingKind::kNonSerial, result.outcome(), "");
    }
    return found;
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
    if (result->stopKind == "redundant") return true;
    for (const Finding& finding : judge(request, *result)) {
        const bool known = std::any_of(mFindings.begin(), mFindings.end(), [&](const Finding& f) {
            return f.kind == finding.kind && f.key == finding.key;
        });
        if (known) continue;
        mFindings.push_back(finding);
        report(finding, *result);
        confirm(finding);
    }
    return true;
}

void BlockExplorer::confirm(const Finding& finding) {
    RunRequest again = request(RunRequest::Mode::kGuided);
    std::string error;
    parseSchedule(finding.schedule, &again.deviations, &error);
    const RunResult result = mLauncher.run(again);
    const std::vector<Finding> found = judge(again, result);
    const bool same = std::any_of(found.begin(), found.end(), [&](const Finding& f) {
        return f.kind == finding.kind && f.key == finding.key;
    });
    mOut << "  replayed with --schedule " << finding.schedule
         << (same ? ": the same finding\n" : ": NOT the same; the run is not deterministic\n");
}

bool BlockExplorer::declares(FindingKind kind) const {
    const auto& expected = mStep.block->expectedFindings;
    return std::any_of(expected.begin(), expected.end(),
                       [&](const sim::ExpectedFinding& e) { return e.kind == kind; });
}

std::string BlockExplorer::describe(const Finding& finding) const {
    std::string text = sim::findingName(finding.kind);
    if (finding.run > 0) text += " in run " + std::to_string(finding.run);
    text += ", schedule " + finding.schedule;
    if (declares(finding.kind)) text += " (declared)";
    return text;
}

void BlockExplorer::report(const Finding& finding, const RunResult& result) {
    mOut << where() << ": finding: " << describe(finding) << "\n";
    if (!finding.detail.empty()) mOut << "  " << finding.detail << "\n";
    if (finding.kind == FindingKind::kCrash && !result.errorOutput.empty()) {
        mOut << "  standard error of the run:\n";
        printIndented(mOut, result.errorOutput, "    ");
    }
    if (finding.kind == FindingKind::kNonSerial) reportNonSerial(result);
    mOut << "  the run from the block on, a column per thread (» an operation begins):\n";
    printColumns(mOut, result, "    ");
}

void BlockExplorer::reportNonSerial(const RunResult& result) {
    const std::string outcome = result.outcome();
    const std::string* nearestOrder = nullptr;
    std::vector<DiffLine> nearest;
    for (const auto& [serial, order] : mSerialOutcomes) {
        std::vector<DiffLine> diff = diffLines(serial, outcome);
        if (nearestOrder == nullptr || diffSize(diff) < diffSize(nearest)) {
            nearest = std::move(diff);
            nearestOrder = &order;
        }
    }
    if (nearestOrder == nullptr) {
        mOut << "  no serial order ended cleanly; its outcome:\n";
        printIndented(mOut, outcome, "    ");
        return;
    }
    mOut << "  its outcome against the nearest serial outcome (serial order " << *nearestOrder
         << ", - only there, + only in this run):\n";
    printDiff(mOut, nearest, "    ");
}

RunRequest BlockExplorer::planned(const Plan& plan) const {
    RunRequest r = request(RunRequest::Mode::kPlanned);
    r.deviations = plan.choices;
    r.sleepAt = plan.sleepAt;
    r.sleeping = plan.sleeping;
    return r;
}

template <typename Planner>
bool BlockExplorer::drive(Planner& search, Time::time_point deadline) {
    Plan plan;
    while (!mBroken && mRuns < mSearch.maxRuns && Time::now() < deadline) {
        if (!search.next(&plan)) return true;
        RunResult result;
        if (!runAndJudge(planned(plan), &result)) return false;
        mUnnamed += unnamedSteps(result.steps);
        std::string error;
        if (!search.record(traced(result), &error)) {
            mOut << where() << ": error in run " << mRuns << " (schedule " << result.schedule()
                 << "): " << error << "\n";
            mBroken = true;
            return false;
        }
        if (result.stopKind != "redundant") {
            mClasses.insert(std::hash<std::string>()(search.className()));
            if (result.clean) mOutcomes.insert(result.outcome());
        }
        showProgress();
    }
    return false;
}

// Every order, one run per class, unless a bound is given: then every schedule within it. A
// search that does not finish in its share of the budget starts again within the fallback
// bound.
void BlockExplorer::search() {
    const Time::time_point never = Time::time_point::max();
    if (mSearch.bound) {
        mBound = *mSearch.bound;
        BoundedSearch bounded(mBound);
        mFinished = drive(bounded, never);
        return;
    }
    const auto share = std::chrono::duration_cast<Time::duration>(
        std::chrono::duration<double>(std::min(mShare, 1e9)));
    PartialOrderSearch every;
    mFinished = drive(every, mStarted + share);
    if (mFinished || mBroken || mRuns >= mSearch.maxRuns) return;
    mFellBack = true;
    mBound = kFallbackBound;
    BoundedSearch bounded(mBound);
    mFinished = drive(bounded, never);
}

void BlockExplorer::compareWithDepthFirst() {
    BoundedSearch depthFirst(kFallbackBound);
    Plan plan;
    std::set<std::string> missed;
    while (!mBroken && mDepthFirstRuns < mSearch.maxRuns && depthFirst.next(&plan)) {
        const RunRequest r = planned(plan);
        const RunResult result = mLauncher.run(r);
        ++mDepthFirstRuns;
        std::string error;
        if (result.stopKind == "diverged" || result.stopKind == "error" ||
            !depthFirst.record(traced(result), &error)) {
            mOut << where() << ": error in depth-first run " << mDepthFirstRuns << ": "
                 << result.stopDetail << error << "\n";
            mBroken = true;
            return;
        }
        if (result.clean && mOutcomes.count(result.outcome()) == 0) {
            missed.insert("the outcome of schedule " + result.schedule() + ":\n" +
                          result.outcome());
        }
        for (const Finding& found : judge(r, result)) {
            const bool known = std::any_of(
                mFindings.begin(), mFindings.end(),
                [&](const Finding& f) { return f.kind == found.kind && f.key == found.key; });
            if (!known) {
                missed.insert(std::string(sim::findingName(found.kind)) + " in schedule " +
                              result.schedule() + ": " + found.detail);
            }
        }
    }
    mMissed.assign(missed.begin(), missed.end());
    for (const std::string& what : mMissed) {
        mOut << where() << ": depth-first search at bound " << kFallbackBound
             << " found what the search did not: ";
        printIndented(mOut, what, "  ");
    }
}

void BlockExplorer::showProgress() {
    const Time::time_point now = Time::now();
    if (now - mShown < std::chrono::seconds(10)) return;
    mShown = now;
    const std::chrono::duration<double> took = now - mStarted;
    std::cerr << where() << ": block " << mOrdinal + 1 << ": " << mRuns << " runs, "
              << mClasses.size() << " classes, " << fixed(took.count(), 0) << " s so far\n";
}

void BlockExplorer::pct() {
    for (size_t i = 0; i < mSearch.pctRuns && !mBroken; ++i) {
        RunRequest r = request(RunRequest::Mode::kPct);
        r.seed = mOptions.seed * 1000003 + i;
        r.depth = mOptions.depth;
        r.expectedDecisions = mMostDecisions;
        RunResult result;
        if (!runAndJudge(r, &result)) return;
        mClasses.insert(classOf(result.steps));
        if (result.clean) mOutcomes.insert(result.outcome());
        showProgress();
    }
    mFinished = true;
}

int BlockExplorer::verdict() const {
    if (mBroken) return sim::kExitBadScenario;
    if (!mOptions.check) return mMissed.empty() ? 0 : 1;
    int code = mExpectationFailed || !mMissed.empty() ? 1 : 0;
    for (size_t i = 0; i < mFindings.size(); ++i) {
        if (declares(mFindings[i].kind)) continue;
        mOut << where() << ": check failed: finding " << i + 1 << " (" << describe(mFindings[i])
             << ") is not declared\n";
        code = 1;
    }
    for (const sim::ExpectedFinding& e : mStep.block->expectedFindings) {
        std::vector<size_t> found;
        for (size_t i = 0; i < mFindings.size(); ++i) {
            if (mFindings[i].kind == e.kind) found.push_back(i);
        }
        if (!found.empty() && (e.count < 0 || found.size() == static_cast<size_t>(e.count))) {
            continue;
        }
        mOut << where() << ": check failed: declared "
             << (e.count >= 0 ? std::to_string(e.count) + " " : "") << sim::findingName(e.kind)
             << " finding" << (e.count == 1 ? "" : "s") << ", found " << found.size();
        for (size_t n = 0; n < found.size(); ++n) {
            mOut << (n == 0 ? ": " : "; ") << "finding " << found[n] + 1 << " (run "
                 << mFindings[found[n]].run << ", schedule " << mFindings[found[n]].schedule << ")";
        }
        mOut << "\n";
        code = 1;
    }
    return code;
}

// How far the search went: "exhaustive" when it ran every class of orders.
std::string BlockExplorer::coverage() const {
    std::string text;
    if (mSearch.pctRuns > 0) {
        return "PCT (depth " + std::to_string(mOptions.depth) + ", seed " +
               std::to_string(mOptions.seed) + ")";
    }
    if (mBound < 0) {
        text = "exhaustive";
    } else {
        text = "bound " + std::to_string(mBound);
    }
    if (mFellBack) text += " (no bound did not finish in its " + fixed(mShare, 1) + " s share)";
    if (!mFinished) text = (mBound < 0 ? "not exhaustive" : text) + " (stopped at the run limit)";
    return text;
}

void BlockExplorer::summary(double seconds) const {
    mOut << where() << ": block " << mOrdinal + 1 << ": " << mStep.block->branches.size()
         << " branches, " << mSerialOutcomes.size() << " serial outcome"
         << (mSerialOutcomes.size() == 1 ? "" : "s") << " of " << mSerialRuns << " serial order"
         << (mSerialRuns == 1 ? "" : "s") << (mSerialCut ? " (stopped at the run limit)" : "")
         << ", " << mRuns << " runs, " << mClasses.size() << " class"
         << (mClasses.size() == 1 ? "" : "es") << ", " << coverage();
    mOut << ", " << mFindings.size() << " finding" << (mFindings.size() == 1 ? "" : "s");
    for (size_t i = 0; i < mFindings.size(); ++i) {
        mOut << (i == 0 ? " (" : ", ") << sim::findingName(mFindings[i].kind) << " first in run "
             << mFindings[i].run;
        if (i + 1 == mFindings.size()) mOut << ")";
    }
    mOut << ", " << fixed(seconds, 2) << " s, " << fixed(seconds > 0 ? mRuns / seconds : 0, 1)
         << " runs/s";
    if (mUnnamed > 0) mOut << ", " << mUnnamed << " steps touched something unnamed";
    if (mOptions.compareDfs) {
        mOut << "; depth-first search at bound " << kFallbackBound << ": " << mDepthFirstRuns
             << " runs, " << (mMissed.empty() ? "nothing" : std::to_string(mMissed.size()))
             << " more";
    }
    mOut << "\n";
}

int BlockExplorer::explore() {
    if (runSerialOrders()) {
        if (mSearch.pctRuns > 0) {
            pct();
        } else {
            search();
        }
    }
    const std::chrono::duration<double> took = Time::now() - mStarted;
    if (mOptions.compareDfs && !mBroken) compareWithDepthFirst();
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
        if (!mOptions.quiet) printColumns(mOut, result, "  ");
        return 0;
    }
    return 1;
}

}  // namespace

BlockResult BlockExplorer::result(int code) const {
    BlockResult r;
    for (const Finding& f : mFindings) {
        r.findings.push_back({f.kind, f.key, f.detail, f.run, f.schedule, declares(f.kind)});
    }
    for (const auto& [outcome, order] : mSerialOutcomes) r.serialOutcomes.push_back(outcome);
    r.runs = mRuns;
    r.complete = !mBroken && !mSerialCut && mFinished && mSearch.pctRuns == 0;
    r.broken = mBroken;
    r.code = code;
    return r;
}

BlockResult exploreBlock(const sim::Scenario& scenario, size_t ordinal, const Options& options,
                         std::ostream& out) {
    std::vector<const sim::Step*> blocks;
    for (const sim::Step& step : scenario.steps) {
        if (step.block != nullptr) blocks.push_back(&step);
    }
    BlockResult none;
    none.broken = true;
    if (ordinal >= blocks.size()) return none;
    const double share = options.budget > 0 ? options.budget : HUGE_VAL;
    BlockExplorer explorer(scenario, *blocks[ordinal], ordinal, options, share, out);
    const int code = explorer.explore();
    return explorer.result(code);
}

int explore(const sim::Scenario& scenario, const std::vector<const sim::Step*>& blocks,
            const Options& options, std::ostream& out) {
    const size_t named =
        std::max(options.replayBlock,
                 options.blockSearch.empty() ? size_t{1} : options.blockSearch.rbegin()->first);
    if (named > blocks.size()) {
        out << "zdgnss-sim explore: the scenario has no block " << named << "\n";
        return sim::kExitBadScenario;
    }
    if (options.replay) {
        const size_t ordinal = options.replayBlock - 1;
        return BlockExplorer(scenario, *blocks[ordinal], ordinal, options, 0, out).replay();
    }
    // Each block's share of the budget is what is left of it over the blocks left, so that
    // the time a quick block leaves goes to the ones after it.
    double left = options.budget > 0 ? options.budget : HUGE_VAL;
    int code = 0;
    for (size_t i = 0; i < blocks.size(); ++i) {
        const Time::time_point started = Time::now();
        const double share = std::max(0.0, left) / static_cast<double>(blocks.size() - i);
        code =
            std::max(code, BlockExplorer(scenario, *blocks[i], i, options, share, out).explore());
        left -= std::chrono::duration<double>(Time::now() - started).count();
    }
    return code;
}

}  // namespace explore
