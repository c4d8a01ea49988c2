#include "child_run.h"

#include <dirent.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zdhost/runtime.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>

#include "block.h"
#include "line_channel.h"
#include "message_log.h"
#include "scheduler.h"
#include "transcript.h"

namespace explore {

namespace {

MessageLog* gLog = nullptr;  // null in a block's server, which sends nothing of what it plays

void send(const std::string& message) {
    if (gLog != nullptr) gLog->append(message);
}

const char* stopName(Stop stop) {
    switch (stop) {
        case Stop::kDeadlock:
            return "deadlock";
        case Stop::kStepBound:
            return "step-bound";
        case Stop::kDiverged:
            return "diverged";
        case Stop::kRedundant:
            return "redundant";
    }
    return "error";
}

[[noreturn]] void stopRun(Stop stop, const std::string& detail) {
    send(std::string("F ") + stopName(stop) + " " + detail);
    _exit(3);
}

std::string decisionMessage(const Decision& d, int chosen) {
    using std::to_string;
    std::string text = "D " + to_string(d.index) + ' ' + to_string(chosen) + ' ' +
                       to_string(d.fallback) + ' ' + to_string(d.current);
    for (const Candidate& c : d.candidates) {
        text += ' ' + to_string(c.thread) + '/' + to_string(c.branch) + '/' + to_string(c.cost) +
                (c.early ? "/1" : "/0");
    }
    return text;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += " " + word;
    return text;
}

std::unique_ptr<Policy> policyFor(const RunRequest& request) {
    switch (request.mode) {
        case RunRequest::Mode::kSerial:
            return std::make_unique<SerialPolicy>(
                request.order, [](const SerialPolicy::Choice& choice) {
                    send("C " + choice.chosen + joined(choice.possible));
                });
        case RunRequest::Mode::kPct:
            return std::make_unique<PctPolicy>(request.seed, request.depth,
                                               request.expectedDecisions);
        case RunRequest::Mode::kPlanned:
        case RunRequest::Mode::kGuided:
            break;
    }
    return std::make_unique<GuidedPolicy>(request.deviations);
}

// Each branch's commands as operations "B.C" of the scheduler, each begun before it runs.
std::vector<Scheduler::Branch> branchWork(const sim::Block& block, Scheduler* scheduler) {
    std::vector<Scheduler::Branch> work;
    for (size_t b = 0; b < block.branches.size(); ++b) {
        const std::vector<sim::Step>& steps = block.branches[b];
        const std::string branch = std::to_string(b + 1);
        work.push_back({[&steps, branch, scheduler] {
                            for (size_t c = 0; c < steps.size(); ++c) {
                                scheduler->beginOperation(branch + "." + std::to_string(c + 1),
                                                          sim::commandText(steps[c]));
                                sim::runBranchStep(steps[c]);
                            }
                        },
                        branch + ".1", sim::commandText(steps.front())});
    }
    return work;
}

// A block other than the explored one runs its branches whole, in their written order.
void playInOrder(const sim::Block& block, const RunRequest& request) {
    SerialPolicy serial({});
    Scheduler scheduler(serial, {nullptr, nullptr, stopRun, nullptr, nullptr}, request.stepBound);
    scheduler.run(branchWork(block, &scheduler));
}

Scheduler::Events exploredEvents() {
    Scheduler::Events events;
    events.decided = [](const Decision& d, int chosen) { send(decisionMessage(d, chosen)); };
    events.stepped = [](const Step& step) { send("S " + formatStep(step)); };
    events.stopped = stopRun;
    events.operationBegan = [](const OperationStart& op) {
        send("O " + op.key + " " + std::to_string(op.thread) + " " + op.label);
    };
    events.lockHeldAcrossCall = [](const std::string& mutex) {
        send("L " + mutex + " " + Scheduler::currentOperation());
    };
    return events;
}

}  // namespace

std::string formatRequest(const RunRequest& r) {
    std::ostringstream out;
    out << "mode " << static_cast<int>(r.mode) << "\nblock " << r.block << "\nseed " << r.seed
        << "\ndepth " << r.depth << "\nexpected " << r.expectedDecisions << "\nstep-bound "
        << r.stepBound << "\nwatchdog " << r.watchdogSeconds << "\nsleep-at " << r.sleepAt << "\n";
    for (const auto& [index, thread] : r.deviations)
        out << "choice " << index << ' ' << thread << "\n";
    for (const std::string& key : r.order) out << "order " << key << "\n";
    if (r.checkExpectations) out << "check-expectations 1\n";
    for (const Step& step : r.sleeping) out << "sleeping " << formatStep(step) << "\n";
    return out.str();
}

namespace {

// The words of one line of a request, without the heap.
struct Words {
    const char* at;
    const char* end;

    bool next(const char** word, size_t* length) {
        while (at < end && *at == ' ') ++at;
        if (at == end) return false;
        *word = at;
        while (at < end && *at != ' ') ++at;
        *length = static_cast<size_t>(at - *word);
        return true;
    }
    bool number(long long* value) {
        const char* word;
        size_t length;
        if (!next(&word, &length)) return false;
        char* stop = nullptr;
        *value = strtoll(word, &stop, 10);
        return stop == word + length;
    }
    bool is(const char* word, size_t length, const char* name) {
        return strlen(name) == length && strncmp(word, name, length) == 0;
    }
};

bool readSleeping(Words& words, PlannedPolicy* planned) {
    long long thread = 0;
    long long decision = 0;
    if (!words.number(&thread) || !words.number(&decision)) return false;
    std::array<Access, PlannedPolicy::kMostAccesses + 1> accesses;
    size_t count = 0;
    const char* word;
    size_t length;
    while (words.next(&word, &length)) {
        Access a;
        if (!parseAccess(word, length, &a)) return false;
        if (count < accesses.size()) accesses[count] = a;
        ++count;
    }
    planned->addSleeping(static_cast<int>(thread), accesses.data(), count);
    return true;
}

}  // namespace

bool parseRequest(const char* text, size_t size, RunRequest* r, PlannedPolicy* planned) {
    const char* end = text + size;
    for (const char* line = text; line < end;) {
        const char* stop = static_cast<const char*>(memchr(line, '\n', end - line));
        if (stop == nullptr) stop = end;
        Words words{line, stop};
        line = stop + 1;
        const char* name;
        size_t length;
        if (!words.next(&name, &length)) continue;
        long long a = 0;
        long long b = 0;
        bool ok = true;
        if (words.is(name, length, "sleeping")) {
            ok = readSleeping(words, planned);
        } else if (words.is(name, length, "order")) {  // a serial run's: it may allocate
            ok = words.next(&name, &length);
            if (ok) r->order.emplace_back(name, length);
        } else if (words.is(name, length, "choice")) {
            ok = words.number(&a) && words.number(&b);
            if (r->mode == RunRequest::Mode::kPlanned) {
                planned->addChoice(static_cast<size_t>(a), static_cast<int>(b));
            } else {
                r->deviations[static_cast<size_t>(a)] = static_cast<int>(b);
            }
        } else {
            ok = words.number(&a);
            if (words.is(name, length, "mode")) {
                r->mode = static_cast<RunRequest::Mode>(a);
            } else if (words.is(name, length, "block")) {
                r->block = static_cast<size_t>(a);
            } else if (words.is(name, length, "seed")) {
                r->seed = static_cast<uint64_t>(a);
            } else if (words.is(name, length, "depth")) {
                r->depth = static_cast<int>(a);
            } else if (words.is(name, length, "expected")) {
                r->expectedDecisions = static_cast<size_t>(a);
            } else if (words.is(name, length, "step-bound")) {
                r->stepBound = static_cast<size_t>(a);
            } else if (words.is(name, length, "watchdog")) {
                r->watchdogSeconds = static_cast<unsigned>(a);
            } else if (words.is(name, length, "sleep-at")) {
                r->sleepAt = static_cast<size_t>(a);
                planned->setSleepAt(r->sleepAt);
            } else if (words.is(name, length, "check-expectations")) {
                r->checkExpectations = a != 0;
            } else {
                ok = false;
            }
        }
        if (!ok) return false;
    }
    return true;
}

namespace {

// A planned run's policy is `planned`, read with its request; any other is made here.
Policy* policyOf(const RunRequest& request, PlannedPolicy* planned,
                 std::unique_ptr<Policy>* owned) {
    if (request.mode == RunRequest::Mode::kPlanned) return planned;
    *owned = policyFor(request);
    return owned->get();
}

// The explored block under `policy`, the run's messages from its B to its E.
void playExplored(const sim::Block& block, const RunRequest& request, Policy* policy) {
    send("B");
    Scheduler scheduler(*policy, exploredEvents(), request.stepBound);
    scheduler.run(branchWork(block, &scheduler));
    std::string why;
    if (!policy->fitted(&why)) stopRun(Stop::kDiverged, why);
    send("E");
}

void listenToTranscript() {
    sim::Transcript::get().setEcho(false);
    sim::Transcript::get().setListener([](int, const std::string& line) {
        const std::string key = Scheduler::currentOperation();
        send("T " + (key.empty() ? std::string("0") : key) + " " + line);
    });
}

// The run's last message, by how the scenario ended.
[[noreturn]] void finish(int code, const std::ostringstream& report) {
    if (code != sim::kExitOk) {
        std::string text = report.str();
        while (!text.empty() && text.back() == '\n') text.pop_back();
        std::replace(text.begin(), text.end(), '\n', '\x1f');  // one message, one line
        send((code == sim::kExitExpectationFailed ? "F expectation " : "F error ") + text);
        _exit(2);
    }
    send("X");
    _exit(0);
}

// Only one of a run's threads runs at a time, and each step ends in a hand-over to the
// next. With all of them on the CPU the run began on, a hand-over is a switch on that CPU
// instead of a wake-up sent to another, and the other CPU stays free for the explorer.
void keepOnOneCpu() {
    const int cpu = sched_getcpu();
    if (cpu < 0) return;
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(cpu, &only);
    sched_setaffinity(0, sizeof(only), &only);
}

bool singleThreaded() {
    DIR* tasks = opendir("/proc/self/task");
    if (tasks == nullptr) return false;
    int count = 0;
    while (const dirent* entry = readdir(tasks)) {
        if (entry->d_name[0] != '.') ++count;
    }
    closedir(tasks);
    return count == 1;
}

// The server's loop. It forks each run ahead of its request, while the explorer still
// looks at the run before, and gives the explorer the run's two pipe ends over `control`:
// the one to write the request to, and the one whose end tells that the run has ended. It
// then waits for the run and answers its wait status. Returns in the run's process only,
// with the run's own ends (its request to read, its end to hold open). Nothing here takes
// memory of the heap, so every run is forked from the same memory.
void forkRuns(int control, int errorFd, int fds[2]) {
    for (;;) {
        int request[2];
        int ended[2];
        if (pipe(request) != 0) _exit(0);
        if (pipe(ended) != 0) _exit(0);
        const pid_t pid = fork();
        if (pid == 0) {
            close(control);
            close(request[1]);
            close(ended[0]);
            if (errorFd >= 0) dup2(errorFd, STDERR_FILENO);
            fds[0] = request[0];
            fds[1] = ended[1];
            return;
        }
        close(request[0]);
        close(ended[1]);
        const int theirs[2] = {request[1], ended[0]};
        const bool sent = pid > 0 && sendPair(control, theirs);
        close(request[1]);
        close(ended[0]);
        int status = 0;
        if (pid < 0 || waitpid(pid, &status, 0) != pid) status = -1;
        if (!sent || !writeAll(control, &status, sizeof(status))) _exit(0);
    }
}

// A run's request, read without the heap: see PlannedPolicy.
char gRequest[1 << 22];

bool readRequest(int fd, RunRequest* request, PlannedPolicy* planned) {
    size_t size = 0;
    for (;;) {
        const ssize_t got = read(fd, gRequest + size, sizeof(gRequest) - size);
        if (got <= 0) break;
        size += static_cast<size_t>(got);
    }
    close(fd);
    return size < sizeof(gRequest) && parseRequest(gRequest, size, request, planned);
}

}  // namespace

void runChild(const sim::Scenario& scenario, const RunRequest& request, PlannedPolicy* planned,
              MessageLog* log) {
    gLog = log;
    keepOnOneCpu();
    alarm(request.watchdogSeconds);
    listenToTranscript();
    std::unique_ptr<Policy> owned;
    Policy* policy = policyOf(request, planned, &owned);
    auto playBlock = [&](const sim::Block& block, size_t ordinal, std::string*) {
        if (ordinal != request.block) {
            playInOrder(block, request);
        } else {
            playExplored(block, request, policy);
        }
        return true;
    };
    std::ostringstream report;
    finish(sim::runScenarioWith(scenario, request.checkExpectations, playBlock, report), report);
}

void runRequested(const sim::Scenario& scenario, int requestFd, MessageLog* log) {
    RunRequest request;
    PlannedPolicy planned;
    if (!readRequest(requestFd, &request, &planned)) _exit(5);
    runChild(scenario, request, &planned, log);
}

void serveBlock(const sim::Scenario& scenario, const RunRequest& first, int control, int errorFd,
                MessageLog* log) {
    alarm(first.watchdogSeconds);
    listenToTranscript();
    auto playBlock = [&](const sim::Block& block, size_t ordinal, std::string*) {
        if (ordinal != first.block) {
            playInOrder(block, first);
            return true;
        }
        alarm(0);
        zdhost::pool::stopThreads();
        if (!singleThreaded() || !writeAll(control, "R", 1)) _exit(0);
        int fds[2];
        forkRuns(control, errorFd, fds);
        RunRequest request;
        PlannedPolicy planned;
        if (!readRequest(fds[0], &request, &planned)) _exit(5);
        gLog = log;
        keepOnOneCpu();
        alarm(request.watchdogSeconds);
        if (request.block != first.block || request.stepBound != first.stepBound ||
            request.checkExpectations != first.checkExpectations) {
            stopRun(Stop::kDiverged, "the run asks for other settings than its server plays");
        }
        std::unique_ptr<Policy> owned;
        Policy* policy = policyOf(request, &planned, &owned);
        playExplored(block, request, policy);
        return true;
    };
    std::ostringstream report;
    finish(sim::runScenarioWith(scenario, first.checkExpectations, playBlock, report), report);
}

}  // namespace explore
