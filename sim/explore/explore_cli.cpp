// The command line of `zdgnss-sim explore`.
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "explorer.h"

namespace explore {

namespace {

constexpr const char* kUsage =
    "usage: zdgnss-sim explore [options] FILE.scn\n"
    "  Runs every concurrent block of the scenario under a deterministic scheduler and\n"
    "  reports crashes, deadlocks, runs past the step bound, hangs and outcomes that no\n"
    "  serial order of the block's branches gives.\n"
    "  --check           exit 1 on a finding the block does not declare with expect-finding,\n"
    "                    or on a declared finding not found\n"
    "  --bound N         preemptions per run in the depth-first search (default 2)\n"
    "  --max-runs N      runs per block in the depth-first search (default 5000)\n"
    "  --pct RUNS        RUNS runs of PCT instead of the depth-first search\n"
    "  --seed S          PCT's seed (default 1)\n"
    "  --depth D         PCT's bug depth (default 3)\n"
    "  --step-bound N    scheduling points per run before it is a finding (default 20000)\n"
    "  --schedule S      one run of schedule S (as a finding prints it) on --block K\n"
    "  --block K         the block --schedule runs on, from 1 (default 1)\n"
    "  --each-run        print every run's schedule as it ends\n"
    "  --quiet           with --schedule, leave out the transcript of a run without finding\n";

bool number(const std::string& text, uint64_t* value) {
    char* end = nullptr;
    if (text.empty() || text[0] == '-') return false;
    *value = strtoull(text.c_str(), &end, 10);
    return *end == '\0';
}

bool parse(const std::vector<std::string>& args, Options* options) {
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const bool hasValue = i + 1 < args.size();
        uint64_t value = 0;
        if (arg == "--check") {
            options->check = true;
        } else if (arg == "--quiet") {
            options->quiet = true;
        } else if (arg == "--each-run") {
            options->eachRun = true;
        } else if (arg == "--schedule" && hasValue) {
            options->replay = true;
            options->schedule = args[++i];
        } else if (arg[0] == '-' && arg != "-" && hasValue && number(args[i + 1], &value)) {
            ++i;
            if (arg == "--bound") {
                options->bound = static_cast<int>(value);
            } else if (arg == "--max-runs") {
                options->maxRuns = value;
            } else if (arg == "--pct") {
                options->pctRuns = value;
            } else if (arg == "--seed") {
                options->seed = value;
            } else if (arg == "--depth" && value >= 1) {
                options->depth = static_cast<int>(value);
            } else if (arg == "--step-bound") {
                options->stepBound = value;
            } else if (arg == "--block") {
                options->replayBlock = value;
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
    return explore(scenario, blocks, options, std::cout);
}

}  // namespace explore
