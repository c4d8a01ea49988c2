#include "child_run.h"

#include <unistd.h>
#include <zdhost/runtime.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>

#include "block.h"
#include "scheduler.h"
#include "transcript.h"

namespace explore {

namespace {

int gFd = -1;

void send(const std::string& message) {
    std::string line = message + "\n";
    const char* data = line.data();
    size_t left = line.size();
    while (left > 0) {
        ssize_t written = write(gFd, data, left);
        if (written <= 0) _exit(4);
        data += written;
        left -= static_cast<size_t>(written);
    }
}

const char* stopName(Stop stop) {
    switch (stop) {
        case Stop::kDeadlock:
            return "deadlock";
        case Stop::kStepBound:
            return "step-bound";
        case Stop::kDiverged:
            return "diverged";
    }
    return "error";
}

[[noreturn]] void stopRun(Stop stop, const std::string& detail) {
    send(std::string("F ") + stopName(stop) + " " + detail);
    _exit(3);
}

std::string decisionMessage(const Decision& d, int chosen) {
    std::ostringstream out;
    out << "D " << d.index << ' ' << chosen << ' ' << d.fallback << ' ' << d.current;
    for (const Candidate& c : d.candidates) {
        out << ' ' << c.thread << '/' << c.branch << '/' << c.cost << '/' << (c.early ? 1 : 0);
    }
    return out.str();
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
                    send("S " + choice.chosen + joined(choice.possible));
                });
        case RunRequest::Mode::kPct:
            return std::make_unique<PctPolicy>(request.seed, request.depth,
                                               request.expectedDecisions);
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
    Scheduler scheduler(serial, {nullptr, stopRun, nullptr, nullptr}, request.stepBound);
    scheduler.run(branchWork(block, &scheduler));
}

Scheduler::Events exploredEvents() {
    Scheduler::Events events;
    events.decided = [](const Decision& d, int chosen) { send(decisionMessage(d, chosen)); };
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

void runChild(const sim::Scenario& scenario, const RunRequest& request, int fd) {
    gFd = fd;
    alarm(request.watchdogSeconds);
    sim::Transcript::get().setEcho(false);
    sim::Transcript::get().setListener([](int, const std::string& line) {
        const std::string key = Scheduler::currentOperation();
        send("T " + (key.empty() ? std::string("0") : key) + " " + line);
    });
    std::unique_ptr<Policy> policy = policyFor(request);
    auto playBlock = [&](const sim::Block& block, size_t ordinal, std::string*) {
        if (ordinal != request.block) {
            playInOrder(block, request);
            return true;
        }
        send("B");
        Scheduler scheduler(*policy, exploredEvents(), request.stepBound);
        scheduler.run(branchWork(block, &scheduler));
        std::string why;
        if (!policy->fitted(&why)) stopRun(Stop::kDiverged, why);
        send("E");
        return true;
    };
    std::ostringstream report;
    const int code = sim::runScenarioWith(scenario, request.checkExpectations, playBlock, report);
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

}  // namespace explore
