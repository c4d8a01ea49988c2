#include "replay_cli.h"

#include <fstream>
#include <iostream>

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
