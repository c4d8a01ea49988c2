// zdgnss-sim: runs one scenario against the library in the embedded host world and
// prints its transcript; with --check, also holds the scenario's expectations.
#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>

#include "explore_generated.h"
#include "explorer.h"
#include "generate_cli.h"
#include "replay/replay_cli.h"
#include "scenario.h"
#include "transcript.h"

namespace {

constexpr const char* kUsage =
    "usage: zdgnss-sim [--check] [--quiet] FILE.scn\n"
    "       zdgnss-sim replay CAPTURE [options]   (zdgnss-sim replay --help)\n"
    "       zdgnss-sim explore [options] FILE.scn (zdgnss-sim explore --help)\n"
    "       zdgnss-sim explore --generate [options]  (zdgnss-sim explore --generate --help)\n"
    "       zdgnss-sim generate [options]         (zdgnss-sim generate --help)\n"
    "  Runs the scenario and prints its transcript.\n"
    "  --check  also holds the expectations: exit 1 at the first that fails\n"
    "  --quiet  print no transcript (failures and errors still print)\n"
    "  Exit 2: the scenario does not parse, or a command of it is malformed.\n";

struct Options {
    bool check = false;
    bool quiet = false;
    std::string file;
};

bool parseOptions(int argc, char** argv, Options* options) {
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--check") == 0) {
            options->check = true;
        } else if (strcmp(argv[i], "--quiet") == 0) {
            options->quiet = true;
        } else if (argv[i][0] == '-' || !options->file.empty()) {
            return false;
        } else {
            options->file = argv[i];
        }
    }
    return !options->file.empty();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && strcmp(argv[1], "replay") == 0) {
        return replay::replayMain(std::vector<std::string>(argv + 2, argv + argc));
    }
    if (argc >= 2 && strcmp(argv[1], "generate") == 0) {
        return gen::generateMain(std::vector<std::string>(argv + 2, argv + argc));
    }
    if (argc >= 2 && strcmp(argv[1], "explore") == 0) {
#ifdef ZD_EXPLORE
        const std::vector<std::string> args(argv + 2, argv + argc);
        if (gen::asksForGeneration(args)) return gen::exploreGeneratedMain(args);
        return explore::exploreMain(args);
#else
        std::cerr << "zdgnss-sim explore: this build does not route the library's locks and "
                     "atomics to the scheduler; use a clang build other than ThreadSanitizer's "
                     "(the asan-ubsan preset)\n";
        return sim::kExitBadScenario;
#endif
    }
    Options options;
    if (!parseOptions(argc, argv, &options)) {
        std::cerr << kUsage;
        return sim::kExitBadScenario;
    }
    sim::Scenario scenario;
    if (!sim::readScenarioFile(options.file, &scenario, std::cerr)) return sim::kExitBadScenario;
    sim::Transcript::get().setEcho(!options.quiet);
    const int code = sim::runScenario(scenario, options.check, std::cerr);
    // What the library's static destruction may log after the run is no part of it.
    sim::Transcript::get().setEcho(false);
    return code;
}
