#include "footprint.h"

#include <memory>
#include <mutex>
#include <sstream>

#include "block.h"
#include "child_process.h"
#include "generated_scenario.h"
#include "scheduler.h"
#include "transcript.h"

namespace gen {

namespace {

using zdhost::schedule::Point;

// The explorer's scheduler, noting every library mutex and atomic the running operation
// reaches.
class TouchingScheduler : public explore::Scheduler {
  public:
    struct Touched {
        std::set<std::string> objects;
        size_t steps = 0;
        uint64_t trace = 14695981039346656037ull;  // FNV-1a over the points in order
    };

    TouchingScheduler(explore::Policy& policy, Events events, Touched* touched)
        : Scheduler(policy, std::move(events), kStepBound), mTouched(touched) {}

    void point(Point kind, const void* object, zdhost::schedule::Access access) override {
        const bool named = object != nullptr && (kind == Point::kLock || kind == Point::kAtomic);
        note(kind == Point::kLock     ? "lock "
             : kind == Point::kAtomic ? "atomic "
                                      : "point ",
             named ? object : nullptr, static_cast<int>(kind));
        Scheduler::point(kind, object, access);
    }
    void acquire(const void* mutex) override {
        note("lock ", mutex, -1);
        Scheduler::acquire(mutex);
    }
    bool tryAcquire(const void* mutex) override {
        note("lock ", mutex, -1);
        return Scheduler::tryAcquire(mutex);
    }

  private:
    static constexpr size_t kStepBound = 20000;
    void note(const char* kind, const void* object, int point) {
        if (currentOperation().empty()) return;
        const std::string name = object != nullptr ? kind + explore::objectName(object) : "";
        if (object != nullptr) mTouched->objects.insert(name);
        ++mTouched->steps;
        // An object without a symbol is named by its address, which another build moves.
        const std::string stable = name.find(" object at ") != std::string::npos ? kind : name;
        for (unsigned char c : std::to_string(point) + stable + ";") {
            mTouched->trace = (mTouched->trace ^ c) * 1099511628211ull;
        }
    }
    Touched* mTouched;
};

// "fusd IFusdGnssInterface.sendLocationData" for a call that a party received and that went
// through; "" for any other line.
std::string callOf(const std::string& line) {
    static const std::string kFailed = " -> transport-error";
    std::istringstream in(line);
    std::string party;
    in >> party;
    if (party != "fusd" && party != "vhal" && party != "fw") return "";
    const size_t start = party.size() + 1;
    const size_t paren = line.find('(', start);
    const size_t dot = line.find('.', start);
    if (paren == std::string::npos || dot == std::string::npos || dot > paren) return "";
    if (line.find(' ', start) < paren) return "";
    if (line.size() >= kFailed.size() &&
        line.compare(line.size() - kFailed.size(), kFailed.size(), kFailed) == 0) {
        return "";
    }
    return line.substr(0, paren);
}

// The last `count` steps of the scenario become a block's one branch.
void lastStepsAsBlock(sim::Scenario* scenario, size_t count) {
    auto block = std::make_shared<sim::Block>();
    block->branches.emplace_back(scenario->steps.end() - static_cast<long>(count),
                                 scenario->steps.end());
    scenario->steps.resize(scenario->steps.size() - count);
    sim::Step step;
    step.source = block->branches[0][0].source;
    step.block = block;
    scenario->steps.push_back(step);
}

int footprintChild(const std::vector<std::string>& prelude,
                   const std::vector<std::string>& commands, int fd) {
    std::string text;
    for (const std::string& line : prelude) text += line + "\n";
    for (const std::string& line : commands) text += line + "\n";
    sim::Scenario scenario;
    std::string error;
    if (!parseGenerated("footprint", text, &scenario, &error)) {
        writeLine(fd, "F " + error);
        return 2;
    }
    lastStepsAsBlock(&scenario, commands.size());
    TouchingScheduler::Touched touched;
    std::set<std::string> calls;
    std::mutex lock;
    auto flush = [&] {
        std::lock_guard<std::mutex> guard(lock);
        writeLine(fd, "S " + std::to_string(touched.steps));
        writeLine(fd, "T " + std::to_string(touched.trace));
        for (const std::string& object : touched.objects) writeLine(fd, "O " + object);
        for (const std::string& call : calls) writeLine(fd, "C " + call);
    };
    sim::Transcript::get().setEcho(false);
    sim::Transcript::get().setListener([&](int, const std::string& line) {
        if (explore::Scheduler::currentOperation().empty()) return;
        const std::string call = callOf(line);
        std::lock_guard<std::mutex> guard(lock);
        if (!call.empty()) calls.insert(call);
    });
    auto playBlock = [&](const sim::Block& block, size_t, std::string*) {
        explore::SerialPolicy serial({});
        explore::Scheduler::Events events;
        events.stopped = [&](explore::Stop, const std::string& detail) {
            flush();
            writeLine(fd, "F " + detail);
            _exit(3);
        };
        TouchingScheduler scheduler(serial, events, &touched);
        const std::vector<sim::Step>& steps = block.branches[0];
        auto work = [&] {
            for (size_t c = 0; c < steps.size(); ++c) {
                scheduler.beginOperation("1." + std::to_string(c + 1), sim::commandText(steps[c]));
                sim::runBranchStep(steps[c]);
            }
        };
        scheduler.run({{work, "1.1", sim::commandText(steps[0])}});
        return true;
    };
    std::ostringstream report;
    const int code = sim::runScenarioWith(scenario, false, playBlock, report);
    flush();
    if (code != sim::kExitOk) {
        std::string why = report.str();
        for (char& c : why) c = c == '\n' ? ' ' : c;
        writeLine(fd, "F " + why);
        return 2;
    }
    writeLine(fd, "X");
    return 0;
}

}  // namespace

Footprint measureFootprint(const std::vector<std::string>& prelude,
                           const std::vector<std::string>& commands) {
    const ChildOutput output =
        runInChild([&](int fd) { return footprintChild(prelude, commands, fd); }, 60);
    Footprint footprint;
    bool clean = false;
    std::istringstream in(output.messages);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("O ", 0) == 0) footprint.objects.insert(line.substr(2));
        if (line.rfind("C ", 0) == 0) footprint.calls.insert(line.substr(2));
        if (line.rfind("S ", 0) == 0) footprint.steps = std::stoul(line.substr(2));
        if (line.rfind("T ", 0) == 0) footprint.trace = line.substr(2);
        if (line.rfind("F ", 0) == 0) footprint.problem = line.substr(2);
        if (line == "X") clean = true;
    }
    if (!clean && footprint.problem.empty()) {
        footprint.problem = output.signal != 0 ? "ended by signal " + std::to_string(output.signal)
                                               : "exit " + std::to_string(output.exitCode);
    }
    return footprint;
}

bool changed(const Footprint& a, const Footprint& b) {
    return a.trace != b.trace || a.calls != b.calls;
}

bool shareState(const Footprint& a, const Footprint& b) {
    for (const std::string& object : a.objects) {
        if (b.objects.count(object) != 0) return true;
    }
    return false;
}

}  // namespace gen
