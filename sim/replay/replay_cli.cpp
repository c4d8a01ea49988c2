#include "replay_cli.h"

#include <fstream>
#include <iostream>

#include "daemon_plan.h"
#include "replay_driver.h"
#include "transcript.h"

namespace replay {

namespace {

constexpr int kExitDone = 0;
constexpr int kExitBadUsage = 2;

bool writeSvg(const ReplayReport& report, const std::string& path) {
    std::ofstream out(path, std::ios::binary);
    if (!out) return false;
    writeTimelineSvg(report, out);
    out.close();
    return static_cast<bool>(out);
}

void warn(const std::string& line) {
    std::cerr << "zdgnss-sim replay: warning: " << line << "\n";
}

}  // namespace

int replayMain(const std::vector<std::string>& words) {
    for (const std::string& word : words) {
        if (word == "--help" || word == "-h") {
            std::cout << kReplayUsage;
            return kExitDone;
        }
    }
    ReplayOptions options;
    std::string error;
    if (!parseReplayOptions(words, &options, &error)) {
        std::cerr << "zdgnss-sim replay: " << error << "\n" << kReplayUsage;
        return kExitBadUsage;
    }
    ReplayInput input;
    if (!readReplayFile(options.capture, options.burst, &input, &error)) {
        std::cerr << "zdgnss-sim replay: " << error << "\n";
        return kExitBadUsage;
    }
    for (const std::string& warning : input.warnings) warn(warning);
    for (const std::string& warning :
         planWarnings(daemonPlan(options.killAt, options.restartAt), runEndMs(input))) {
        warn(warning);
    }
    const ReplayReport report = runReplay(input, options);
    // What the library's static destruction may log after the run is no part of it.
    sim::Transcript::get().setEcho(false);
    if (options.summary) writeSummary(report, std::cout);
    if (!options.svgPath.empty() && !writeSvg(report, options.svgPath)) {
        std::cerr << "zdgnss-sim replay: cannot write " << options.svgPath << "\n";
        return kExitBadUsage;
    }
    return kExitDone;
}

}  // namespace replay
