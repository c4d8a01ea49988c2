// The command line of `zdgnss-sim explore`.
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "explorer.h"
#include "measure.h"

namespace explore {

namespace {

constexpr const char* kUsage =
    "usage: zdgnss-sim explore [options] FILE.scn\n"
    "  Runs every concurrent block of the scenario under a deterministic scheduler and\n"
    "  reports crashes, deadlocks, runs past the step bound, hangs and outcomes that no\n"
    "  serial order of the block's branches gives. By default every order of a block's\n"
    "  steps is covered, one run for each class of orders that differ only in steps that\n"
    "  commute.\n"
    "  --check           exit 1 on a finding the block does not declare with expect-finding,\n"
    "                    or on a declared finding not found\n"
    "  --bound N         every schedule with at most N preemptions per run, depth first\n"
    "                    (default: no bound)\n"
    "  --max-runs N      runs per block, serial orders included (default 5000)\n"
    "  --pct RUNS        RUNS runs of PCT instead\n"
    "  --block K         the options after it, up to the next --block, apply to block K\n"
    "                    (from 1) only: --bound, --max-runs, --pct; with --schedule, the\n"
    "                    block it runs on (default 1)\n"
    "  --budget SECONDS  time for the whole file, shared out over its blocks; a block whose\n"
    "                    search without a bound does not finish in its share falls back to\n"
    "                    bound 2\n"
    "  --compare-dfs     also run plain depth-first search at bound 2 and report what it\n"
    "                    found that the block's search did not (exit 1 on any)\n"
    "  --seed S          PCT's seed (default 1)\n"
    "  --depth D         PCT's bug depth (default 3)\n"
    "  --step-bound N    scheduling points per run before it is a finding (default 20000)\n"
    "  --schedule S      one run of schedule S (as a finding prints it) on --block K\n"
    "  --each-run        print every run's schedule as it ends\n"
    "  --quiet           with --schedule, leave out the transcript of a run without finding\n"
    "  --measure         also print the runs per second, and the cost of a bare fork and\n"
    "                    _exit of this binary timed in the same run\n";

bool number(const std::string& text, uint64_t* value) {
    char* end = nullptr;
    if (text.empty() || text[0] == '-') return false;
    *value = strtoull(text.c_str(), &end, 10);
    return *end == '\0';
}

bool seconds(const std::string& text, double* value) {
    char* end = nullptr;
    if (text.empty() || text[0] == '-') return false;
    *value = strtod(text.c_str(), &end);
    return *end == '\0' && *value > 0;
}

bool flag(const std::string& arg, Options* options) {
    if (arg == "--check") {
        options->check = true;
    } else if (arg == "--quiet") {
        options->quiet = true;
    } else if (arg == "--each-run") {
        options->eachRun = true;
    } else if (arg == "--compare-dfs") {
        options->compareDfs = true;
    } else if (arg == "--measure") {
        options->measure = true;
    } else {
        return false;
    }
    return true;
}

// The options a block can have of its own, for `search`.
bool searchOption(const std::string& arg, uint64_t value, Search* search) {
    if (arg == "--bound") {
        search->bound = static_cast<int>(value);
    } else if (arg == "--max-runs") {
        search->maxRuns = value;
    } else if (arg == "--pct") {
        search->pctRuns = value;
    } else {
        return false;
    }
    return true;
}

bool parse(const std::vector<std::string>& args, Options* options) {
    Search* search = &options->search;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const bool hasValue = i + 1 < args.size();
        uint64_t value = 0;
        if (flag(arg, options)) continue;
        if (arg == "--schedule" && hasValue) {
            options->replay = true;
            options->schedule = args[++i];
        } else if (arg == "--budget" && hasValue) {
            if (!seconds(args[++i], &options->budget)) return false;
        } else if (arg[0] == '-' && arg != "-" && hasValue && number(args[i + 1], &value)) {
            ++i;
            if (searchOption(arg, value, search)) continue;
            if (arg == "--seed") {
                options->seed = value;
            } else if (arg == "--depth" && value >= 1) {
                options->depth = static_cast<int>(value);
            } else if (arg == "--step-bound") {
                options->stepBound = value;
            } else if (arg == "--block" && value >= 1) {
                options->replayBlock = value;
                search = &options->blockSearch.emplace(value, options->search).first->second;
            } else {
                return false;
            }
        } else if (arg[0] == '-' || !options->file.empty()) {
            return false;
        } else {
            options->file = arg;
        }
    }
    return !options->file.empty();
}

}  // namespace

int exploreMain(const std::vector<std::string>& args) {
    Options options;
    if (!parse(args, &options)) {
        std::cerr << kUsage;
        return sim::kExitBadScenario;
    }
    sim::Scenario scenario;
    if (!sim::readScenarioFile(options.file, &scenario, std::cerr)) return sim::kExitBadScenario;
    std::vector<const sim::Step*> blocks;
    for (const sim::Step& step : scenario.steps) {
        if (step.block != nullptr) blocks.push_back(&step);
    }
    if (blocks.empty()) {
        std::cerr << options.file << ": no concurrent block to explore\n";
        return sim::kExitBadScenario;
    }
    if (options.measure) return measure(scenario, blocks, options, std::cout);
    return explore(scenario, blocks, options, std::cout);
}

}  // namespace explore
