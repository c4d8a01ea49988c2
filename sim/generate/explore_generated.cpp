#include "explore_generated.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>

#include "child_process.h"
#include "coverage_report.h"
#include "explorer.h"
#include "generate_options.h"
#include "generated_scenario.h"
#include "kept_hazards.h"
#include "minimiser.h"

namespace gen {

namespace {

constexpr const char* kUsage =
    "usage: zdgnss-sim explore --generate [options]\n"
    "  Explores the hand-written scenarios of the explore folder, then every generated block:\n"
    "  each unordered pair of the operation table's operations, in every init state where\n"
    "  both mean something. Each block's findings are held against the kept hazards.\n"
    "  --table FILE       the operation table (default: the source tree's)\n"
    "  --hazards FILE     the kept hazards (default: kept-hazards.table beside the table)\n"
    "  --hand DIR         the hand-written scenarios run first; --no-hand: none\n"
    "  --triples          every unordered triple instead of every pair\n"
    "  --only TEXT        the blocks whose id (STATE:A+B) contains TEXT, or begins with\n"
    "                     it when it ends in a colon (a state)\n"
    "  --rotation N       every block pairing operations that share state, and one share\n"
    "                     in N of the rest, by --day D (default: days since 1970, UTC)\n"
    "  --shared-rotation M  also only one share in M of the blocks that share state\n"
    "  --check            exit 1 when a block's findings are not what it declares\n"
    "  --stop-at-first    stop at the first block that fails the check\n"
    "  --out DIR          minimise each finding not declared into DIR/ID.KIND.scn\n"
    "  --report FILE      the coverage report (default: standard output)\n"
    "  --bound N, --max-runs N   as for explore, per block (default: no bound, 5000)\n"
    "  --block-budget S   seconds a block's search may take before it falls back to bound 2\n"
    "  --minimise-runs N  the run budget of each smaller block tried (default 1000)\n"
    "  --id ID            only the block of that id\n"
    "  --footprint-cache FILE  read the footprints from FILE, or measure and write them there\n"
    "  --baseline PROGRAM a block whose findings are not what it declares fails only when\n"
    "                     PROGRAM (another build) gives it other findings\n"
    "  --summary          print each block's findings as `findings ID: KIND=N ...`\n"
    "  --changed-first    explore first the blocks with an operation this build runs otherwise\n"
    "                     than the footprint cache says\n";

using explore::BlockFinding;
using explore::BlockResult;

constexpr unsigned kBaselineSeconds = 3600;

explore::Options exploreOptions(const GenerateOptions& o, size_t maxRuns, const std::string& id) {
    explore::Options options;
    options.search.bound = o.bound;
    options.search.maxRuns = maxRuns;
    options.budget = o.blockBudget;
    options.file = id;
    return options;
}

BlockResult exploreText(const std::string& id, const std::string& text,
                        const explore::Options& options, std::ostream& out) {
    sim::Scenario scenario;
    std::string error;
    if (!parseGenerated(id, text, &scenario, &error)) {
        out << error << "\n";
        BlockResult broken;
        broken.broken = true;
        return broken;
    }
    return explore::exploreBlock(scenario, 0, options, out);
}

std::vector<sim::FindingKind> kindsOf(const BlockResult& result) {
    std::vector<sim::FindingKind> kinds;
    for (const BlockFinding& f : result.findings) kinds.push_back(f.kind);
    return kinds;
}

// The kinds with their numbers, and a digest of the findings themselves (their outcomes,
// mutexes, signals), so that two builds giving the same number of other findings differ.
std::string findingSummary(const BlockResult& result) {
    // An object without a symbol is named by its address, which another build moves.
    static const std::regex kAddress("object at 0x[0-9a-f]+");
    std::vector<std::string> keys;
    for (const BlockFinding& f : result.findings) {
        keys.push_back(std::string(sim::findingName(f.kind)) + "\n" +
                       std::regex_replace(f.key, kAddress, "object"));
    }
    std::sort(keys.begin(), keys.end());
    uint64_t digest = 14695981039346656037ull;
    for (const std::string& key : keys) {
        for (unsigned char c : key + "\n") digest = (digest ^ c) * 1099511628211ull;
    }
    char hex[24];
    snprintf(hex, sizeof(hex), " #%016llx", static_cast<unsigned long long>(digest));
    return summaryOf(kindsOf(result)) + (keys.empty() ? "" : hex);
}

// The findings another build of zdgnss-sim gives for the block, as findingSummary() writes
// them; "" when it gave no answer. The answers are kept in `<footprint cache>.baseline`,
// one "ID\tSUMMARY" a line, for the next run against the same baseline.
std::string askBaseline(const GenerateOptions& o, const std::string& id);

std::string baselineSummary(const GenerateOptions& o, const std::string& id) {
    const std::string cache = o.footprintCache.empty() ? "" : o.footprintCache + ".baseline";
    std::ifstream in(cache);
    std::string line;
    while (std::getline(in, line)) {
        if (line.compare(0, id.size() + 1, id + "\t") == 0) return line.substr(id.size() + 1);
    }
    const std::string summary = askBaseline(o, id);
    if (!cache.empty() && !summary.empty())
        std::ofstream(cache, std::ios::app) << id << "\t" << summary << "\n";
    return summary;
}

std::string askBaseline(const GenerateOptions& o, const std::string& id) {
    std::vector<std::string> args = {o.baseline,
                                     "explore",
                                     "--generate",
                                     "--no-hand",
                                     "--summary",
                                     "--table",
                                     o.table,
                                     "--hazards",
                                     o.hazards,
                                     "--id",
                                     id,
                                     "--max-runs",
                                     std::to_string(o.maxRuns),
                                     "--block-budget",
                                     std::to_string(o.blockBudget)};
    if (o.bound) {
        args.push_back("--bound");
        args.push_back(std::to_string(*o.bound));
    }
    if (!o.footprintCache.empty()) {
        args.push_back("--footprint-cache");
        args.push_back(o.footprintCache);
    }
    const ChildOutput output = runInChild(
        [&](int fd) {
            std::vector<char*> argv;
            for (std::string& arg : args) argv.push_back(arg.data());
            argv.push_back(nullptr);
            dup2(fd, STDOUT_FILENO);
            execv(argv[0], argv.data());
            return 127;
        },
        kBaselineSeconds);
    const std::string marker = "findings " + id + ": ";
    const size_t at = output.messages.find(marker);
    if (at == std::string::npos) return "";
    const size_t end = output.messages.find('\n', at);
    return output.messages.substr(at + marker.size(), end - at - marker.size());
}

std::string fileName(const std::string& id, sim::FindingKind kind) {
    std::string name;
    for (char c : id) name += (c == ':' || c == '+' || c == '@' || c == '/') ? '-' : c;
    return name + "." + sim::findingName(kind) + ".scn";
}

class GeneratedRun {
  public:
    GeneratedRun(const GenerateOptions& options, const GeneratedSet& set,
                 std::vector<KeptHazard> hazards)
        : mOptions(options), mSet(set), mHazards(std::move(hazards)) {}

    // Explores the block; false when it fails the check.
    bool run(size_t index, CoverageReport* report) {
        const GeneratedBlock& block = mSet.blocks[index];
        std::ostringstream log;
        const auto started = std::chrono::steady_clock::now();
        const BlockResult result =
            exploreText(block.id, scenarioText(block),
                        exploreOptions(mOptions, mOptions.maxRuns, block.id), log);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - started;
        const std::vector<sim::ExpectedFinding> declared = declaredFor(mHazards, block.id);
        std::vector<std::string> broken = heldAgainst(kindsOf(result), declared);
        if (mOptions.summary) {
            std::cout << "findings " << block.id << ": " << findingSummary(result) << "\n";
        }
        if (!broken.empty() && !mOptions.baseline.empty()) {
            const std::string theirs = baselineSummary(mOptions, block.id);
            if (theirs == findingSummary(result)) {
                std::cout << block.id << ": the baseline build gives the same findings (" << theirs
                          << ")\n";
                broken.clear();
            } else {
                broken.push_back("the baseline build gives " +
                                 (theirs.empty() ? "no answer" : theirs));
            }
        }
        report->add(block, result, took.count(), !broken.empty());
        std::cout << block.id << ": " << summary(result, took.count()) << "\n";
        if (result.broken || !broken.empty()) {
            std::cout << log.str();
            for (const std::string& line : broken) {
                std::cout << block.id << ": check failed: " << line << "\n";
            }
        }
        if (!mOptions.out.empty()) minimiseNew(block, result, declared);
        return !result.broken && broken.empty();
    }

  private:
    static std::string summary(const BlockResult& r, double seconds) {
        std::ostringstream text;
        text << r.runs << " runs, " << (r.complete ? "complete" : "stopped at the run budget")
             << ", " << r.findings.size() << " finding" << (r.findings.size() == 1 ? "" : "s");
        for (size_t i = 0; i < r.findings.size(); ++i) {
            text << (i == 0 ? " (" : ", ") << sim::findingName(r.findings[i].kind)
                 << (r.findings[i].declared ? " declared" : "");
            if (i + 1 == r.findings.size()) text << ")";
        }
        char time[32];
        snprintf(time, sizeof(time), ", %.2f s", seconds);
        return text.str() + time;
    }

    void minimiseNew(const GeneratedBlock& block, const BlockResult& result,
                     const std::vector<sim::ExpectedFinding>& declared) {
        std::set<sim::FindingKind> done;
        for (const BlockFinding& f : result.findings) {
            const bool isDeclared = std::any_of(declared.begin(), declared.end(),
                                                [&](const auto& d) { return d.kind == f.kind; });
            if (isDeclared || !done.insert(f.kind).second) continue;
            const explore::Options options =
                exploreOptions(mOptions, mOptions.minimiseRuns, block.id + " (smaller)");
            std::ostringstream quiet;
            const Minimised minimised = minimise(block, result, f, [&](const std::string& text) {
                quiet.str("");
                return exploreText(block.id, text, options, quiet);
            });
            const std::string path = mOptions.out + "/" + fileName(block.id, f.kind);
            std::ofstream(path) << minimisedScenario(minimised, block.id);
            std::cout << block.id << ": minimised its " << sim::findingName(f.kind)
                      << " finding into " << path << "\n";
        }
    }

    const GenerateOptions& mOptions;
    const GeneratedSet& mSet;
    const std::vector<KeptHazard> mHazards;
};

// The hand-written scenarios, each explored as `zdgnss-sim explore [--check] FILE` would.
int exploreHandWritten(const GenerateOptions& o) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(o.handDir)) {
        if (entry.path().extension() == ".scn") files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    int code = 0;
    for (const std::string& file : files) {
        sim::Scenario scenario;
        if (!sim::readScenarioFile(file, &scenario, std::cerr)) return sim::kExitBadScenario;
        std::vector<const sim::Step*> blocks;
        for (const sim::Step& step : scenario.steps) {
            if (step.block != nullptr) blocks.push_back(&step);
        }
        explore::Options options = exploreOptions(o, o.maxRuns, file);
        options.check = o.check;
        code = std::max(code, explore::explore(scenario, blocks, options, std::cout));
    }
    return code;
}

// Hazards declared for blocks the table does not generate: a renamed operation or state.
// Only the states the selection measured are judged: a state left out has no nested
// operations, so its nested blocks are not generated in this run.
std::vector<std::string> staleHazards(const std::string& file,
                                      const std::vector<KeptHazard>& hazards,
                                      const GeneratedSet& set, const Selection& selection) {
    const std::set<std::string> measured = statesOf(selection, set.table);
    std::vector<std::string> stale;
    for (const KeptHazard& hazard : hazards) {
        if (measured.count(hazard.block.substr(0, hazard.block.find(':'))) == 0) continue;
        const bool known =
            std::any_of(set.blocks.begin(), set.blocks.end(),
                        [&](const GeneratedBlock& b) { return b.id == hazard.block; });
        if (!known) stale.push_back(file + ":" + std::to_string(hazard.line) + ": " + hazard.block);
    }
    return stale;
}

// The chosen blocks with an operation that this build runs otherwise than the set's
// (cached) footprints say come first, each part in its order.
void changedFirst(const GenerateOptions& options, const GeneratedSet& set,
                  std::vector<size_t>* chosen) {
    GenerateOptions measured = options;
    measured.footprintCache.clear();
    GeneratedSet own;
    std::string error;
    std::ostringstream log;
    if (!buildGeneratedSet(measured, log, &own, &error)) return;
    std::set<std::string> changedOps;
    for (const auto& [name, footprint] : set.footprints) {
        auto mine = own.footprints.find(name);
        if (mine != own.footprints.end() && changed(footprint, mine->second)) {
            changedOps.insert(name);
        }
    }
    auto touchesChanged = [&](size_t index) {
        const GeneratedBlock& block = set.blocks[index];
        return std::any_of(
            block.operations.begin(), block.operations.end(),
            [&](const std::string& op) { return changedOps.count(block.state + " " + op) != 0; });
    };
    std::stable_partition(chosen->begin(), chosen->end(), touchesChanged);
    std::cout << changedOps.size() << " operations run otherwise than the footprint cache says";
    for (const std::string& name : changedOps) std::cout << "; " << name;
    std::cout << "\n";
}

}  // namespace

bool asksForGeneration(const std::vector<std::string>& args) {
    return std::find(args.begin(), args.end(), "--generate") != args.end();
}

int exploreGeneratedMain(const std::vector<std::string>& args) {
    GenerateOptions options = defaultGenerateOptions();
    if (!parseGenerateOptions(args, &options)) {
        std::cerr << kUsage;
        return sim::kExitBadScenario;
    }
    int code = options.handDir.empty() ? 0 : exploreHandWritten(options);
    if (code == sim::kExitBadScenario) return code;
    GeneratedSet set;
    std::vector<KeptHazard> hazards;
    std::string error;
    if (!buildGeneratedSet(options, std::cout, &set, &error) ||
        !readKeptHazards(options.hazards, &hazards, &error)) {
        std::cerr << error << "\n";
        return sim::kExitBadScenario;
    }
    for (const std::string& stale :
         staleHazards(options.hazards, hazards, set, options.selection)) {
        std::cout << stale << ": check failed: no generated block has this id\n";
        code = std::max(code, 1);
    }
    if (!options.out.empty()) std::filesystem::create_directories(options.out);
    std::vector<size_t> chosen = selectBlocks(set, options.selection);
    if (options.changedFirst) changedFirst(options, set, &chosen);
    CoverageReport report(set, options.selection, chosen);
    std::cout << report.selectionLine() << "\n";
    GeneratedRun run(options, set, hazards);
    for (size_t index : chosen) {
        if (run.run(index, &report)) continue;
        code = std::max(code, 1);
        if (options.stopAtFirst) break;
    }
    if (options.report.empty()) {
        report.print(std::cout);
    } else {
        std::ofstream file(options.report);
        report.print(file);
        std::cout << "coverage report: " << options.report << "\n";
    }
    return options.check ? code : (code == sim::kExitBadScenario ? code : 0);
}

}  // namespace gen
