#include "child_run.h"

#include <unistd.h>
#include <zdhost/runtime.h>

#include <memory>
#include <numeric>
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

std::unique_ptr<Policy> policyFor(const RunRequest& request) {
    switch (request.mode) {
        case RunRequest::Mode::kSerial:
            return std::make_unique<SerialPolicy>(request.order);
        case RunRequest::Mode::kPct:
            return std::make_unique<PctPolicy>(request.seed, request.depth,
                                               request.expectedDecisions);
        case RunRequest::Mode::kGuided:
            break;
    }
    return std::make_unique<GuidedPolicy>(request.deviations);
}

std::vector<std::function<void()>> branchWork(const sim::Block& block) {
    std::vector<std::function<void()>> work;
    for (const auto& branch : block.branches) {
        work.push_back([&branch] { sim::runBranch(branch); });
    }
    return work;
}

// A block other than the explored one runs its branches whole, in their written order.
void playInOrder(const sim::Block& block, const RunRequest& request) {
    std::vector<int> order(block.branches.size());
    std::iota(order.begin(), order.end(), 1);
    SerialPolicy serial(order);
    Scheduler scheduler(serial, {nullptr, stopRun}, request.stepBound);
    scheduler.run(branchWork(block));
}

}  // namespace

void runChild(const sim::Scenario& scenario, const RunRequest& request, int fd) {
    gFd = fd;
    alarm(request.watchdogSeconds);
    sim::Transcript::get().setEcho(false);
    sim::Transcript::get().setListener(
        [](int tag, const std::string& line) { send("T " + std::to_string(tag) + " " + line); });
    std::unique_ptr<Policy> policy = policyFor(request);
    auto playBlock = [&](const sim::Block& block, size_t ordinal, std::string*) {
        if (ordinal != request.block) {
            playInOrder(block, request);
            return true;
        }
        send("B");
        Scheduler scheduler(
            *policy,
            {[](const Decision& d, int chosen) { send(decisionMessage(d, chosen)); }, stopRun},
            request.stepBound);
        scheduler.run(branchWork(block));
        send("E");
        return true;
    };
    std::ostringstream report;
    const int code = sim::runScenarioWith(scenario, playBlock, report);
    if (code != sim::kExitOk) {
        std::string text = report.str();
        while (!text.empty() && text.back() == '\n') text.pop_back();
        send("F error " + text);
        _exit(2);
    }
    send("X");
    _exit(0);
}

}  // namespace explore
