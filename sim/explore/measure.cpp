#include "measure.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "launcher.h"

namespace explore {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kBareForks = 200;  // before the runs, and as many after them

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Seconds for `count` forks of this process whose child only calls _exit(0), each waited for.
double bareForks(int count) {
    fflush(stdout);
    fflush(stderr);
    const auto start = Clock::now();
    for (int i = 0; i < count; ++i) {
        const pid_t pid = fork();
        if (pid == 0) _exit(0);
        if (pid > 0) waitpid(pid, nullptr, 0);
    }
    return secondsSince(start);
}

std::string fixed(double value, int decimals) {
    char text[32];
    snprintf(text, sizeof(text), "%.*f", decimals, value);
    return text;
}

}  // namespace

int measure(const sim::Scenario& scenario, const std::vector<const sim::Step*>& blocks,
            const Options& options, std::ostream& out) {
    const double bareBefore = bareForks(kBareForks);
    const Launcher::Counts before = Launcher::counts();
    const auto start = Clock::now();
    const int code = explore(scenario, blocks, options, out);
    const double seconds = secondsSince(start);
    const Launcher::Counts after = Launcher::counts();
    const double bareAfter = bareForks(kBareForks);

    const size_t atBlock = after.atBlock - before.atBlock;
    const size_t fromStart = after.fromStart - before.fromStart;
    const double runs = static_cast<double>(atBlock + fromStart);
    const double bareEach = (bareBefore + bareAfter) / (2 * kBareForks);
    out << "measure: " << options.file << ": " << atBlock + fromStart << " runs in "
        << fixed(seconds, 2) << " s, " << fixed(runs / seconds, 1) << " runs/s (" << atBlock
        << " forked at the block, " << fromStart << " from the start)\n";
    out << "measure: bare fork and _exit of this binary: " << fixed(bareEach * 1e3, 3)
        << " ms each, " << fixed(1 / bareEach, 1) << "/s ("
        << fixed(bareBefore / kBareForks * 1e3, 3) << " ms before the runs, "
        << fixed(bareAfter / kBareForks * 1e3, 3) << " ms after)\n";
    if (runs > 0) {
        out << "measure: a run takes " << fixed(seconds / runs / bareEach, 2)
            << " times a bare fork and _exit\n";
    }
    return code;
}

}  // namespace explore
