#include "generate_cli.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "child_process.h"
#include "generate_options.h"
#include "generated_scenario.h"
#include "transcript.h"

namespace gen {

namespace {

constexpr const char* kUsage =
    "usage: zdgnss-sim generate [options]\n"
    "  The generated blocks: every unordered pair of the operation table's operations, in\n"
    "  every init state where both mean something.\n"
    "  --table FILE      the operation table (default: the source tree's)\n"
    "  --triples         every unordered triple instead of every pair\n"
    "  --only TEXT       the blocks whose id (STATE:A+B) contains TEXT, or begins with it\n"
    "                    when it ends in a colon (a state); --id ID: that block\n"
    "  --rotation N, --day D   as for explore --generate\n"
    "  --list            print the ids of the blocks\n"
    "  --print-footprints  print what each operation reaches alone in each of its states\n"
    "  --footprint-cache FILE  read the footprints from FILE, or measure and write them there\n"
    "  --write DIR       write each block as DIR/ID.scn\n"
    "  --real N          play each block N times on real threads, each run in a process of\n"
    "                    its own; exit 1 when a run fails (a crash, a sanitizer report, a hang)\n"
    "  --stop-at-first   stop at the first block whose real-thread run fails\n";

constexpr unsigned kRealRunSeconds = 120;

std::string fileName(const std::string& id) {
    std::string name;
    for (char c : id) name += (c == ':' || c == '+' || c == '@' || c == '/') ? '-' : c;
    return name + ".scn";
}

int playOnce(const std::string& id, const std::string& text) {
    sim::Scenario scenario;
    std::string error;
    if (!parseGenerated(id, text, &scenario, &error)) {
        std::cerr << error << "\n";
        return sim::kExitBadScenario;
    }
    sim::Transcript::get().setEcho(false);
    return sim::runScenario(scenario, false, std::cerr);
}

// Plays the block `runs` times; false after printing the first run that failed.
bool playOnRealThreads(const GeneratedBlock& block, unsigned runs) {
    const std::string text = scenarioText(block);
    for (unsigned run = 1; run <= runs; ++run) {
        const ChildOutput output =
            runInChild([&](int) { return playOnce(block.id, text); }, kRealRunSeconds);
        if (output.exitCode == 0 && output.signal == 0) continue;
        std::cout << block.id << ": real-thread run " << run << " of " << runs << " failed ("
                  << (output.signal != 0 ? "signal " + std::to_string(output.signal)
                                         : "exit " + std::to_string(output.exitCode))
                  << "); its standard error:\n";
        std::istringstream errors(output.errors);
        std::string line;
        for (int n = 0; n < 60 && std::getline(errors, line); ++n)
            std::cout << "  " << line << "\n";
        return false;
    }
    return true;
}

bool runsOnlyUnderTheExplorer(const OperationTable& table, const GeneratedBlock& block) {
    for (const TableLeftOut& only : table.exploreOnly) {
        if (only.command == block.id) return true;
        for (const std::string& op : block.operations) {
            if (op == only.command) return true;
        }
    }
    return false;
}

void printFootprints(const GeneratedSet& set) {
    for (const auto& [name, footprint] : set.footprints) {
        std::cout << name << ":";
        for (const std::string& object : footprint.objects) std::cout << " " << object << ";";
        for (const std::string& call : footprint.calls) std::cout << " call " << call << ";";
        if (!footprint.problem.empty()) std::cout << " did not end cleanly: " << footprint.problem;
        std::cout << "\n";
    }
}

}  // namespace

int generateMain(const std::vector<std::string>& args) {
    GenerateOptions options = defaultGenerateOptions();
    if (!parseGenerateOptions(args, &options)) {
        std::cerr << kUsage;
        return sim::kExitBadScenario;
    }
    GeneratedSet set;
    std::string error;
    if (!buildGeneratedSet(options, std::cerr, &set, &error)) {
        std::cerr << error << "\n";
        return sim::kExitBadScenario;
    }
    if (options.printFootprints) printFootprints(set);
    const std::vector<size_t> chosen = selectBlocks(set, options.selection);
    if (!options.writeDir.empty()) std::filesystem::create_directories(options.writeDir);
    size_t failed = 0;
    size_t exploreOnly = 0;
    for (size_t index : chosen) {
        const GeneratedBlock& block = set.blocks[index];
        if (options.realRuns > 0 && runsOnlyUnderTheExplorer(set.table, block)) {
            ++exploreOnly;
            continue;
        }
        if (options.list) std::cout << block.id << "\n";
        if (!options.writeDir.empty()) {
            std::ofstream(options.writeDir + "/" + fileName(block.id))
                << scenarioText(block, {"Generated block " + block.id + "."});
        }
        if (options.realRuns > 0 && !playOnRealThreads(block, options.realRuns)) {
            ++failed;
            if (options.stopAtFirst) break;
        }
    }
    if (options.realRuns > 0) {
        std::cout << chosen.size() - exploreOnly << " generated blocks played " << options.realRuns
                  << " times each on real threads: " << failed << " failed; " << exploreOnly
                  << " left out, with an operation the table keeps to the explorer\n";
    }
    return failed > 0 ? 1 : 0;
}

}  // namespace gen
