// The library's own work per feed call, and the heap allocations it makes.
//
// One benchmark per feed path. Each iteration is a round: a block of library
// calls and a block of floor calls, back to back, in alternating order. Both
// halves of a round see the same load on the machine, so the median over the
// rounds of their difference stays put when other work shares the cores. Blocks
// are timed with the thread's CPU clock: a block that the scheduler interrupts
// is not charged for the time other processes ran. Counters:
//   library_ns, floor_ns   median CPU time per call over the rounds
//   own_ns                 median over the rounds of library time - floor time
//   own_per_floor          median over the rounds of (library time - floor
//                          time) / floor time: own work as a share of the
//                          work the calls must do anyway, which scales with
//                          the machine as own work does
//   allocs                 heap allocations per library call on the calling
//                          thread, after one warm-up call
#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "alloc_counter.h"
#include "feed_paths.h"

namespace {

using bench::FeedPath;
using bench::Rig;

constexpr int kCallsPerBlock = 256;

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    auto middle = values.begin() + values.size() / 2;
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double threadCpuNs() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

struct Block {
    double nsPerCall;
    uint64_t allocations;
};

Block runBlock(void (*call)(const Rig&), const Rig& rig) {
    uint64_t before = bench::allocationsSoFar();
    double start = threadCpuNs();
    for (int i = 0; i < kCallsPerBlock; ++i) call(rig);
    double ns = threadCpuNs() - start;
    return {ns / kCallsPerBlock, bench::allocationsSoFar() - before};
}

void measurePath(benchmark::State& state, const FeedPath* path) {
    const Rig& rig = bench::connectedRig();
    path->prepare(rig);
    path->library(rig);  // first report of its size, buffers grown
    path->floor(rig);
    std::vector<double> library, floor, own, ownPerFloor;
    uint64_t allocations = 0;
    bool libraryFirst = true;
    for (auto _ : state) {
        Block first = runBlock(libraryFirst ? path->library : path->floor, rig);
        Block second = runBlock(libraryFirst ? path->floor : path->library, rig);
        const Block& lib = libraryFirst ? first : second;
        const Block& flo = libraryFirst ? second : first;
        library.push_back(lib.nsPerCall);
        floor.push_back(flo.nsPerCall);
        own.push_back(lib.nsPerCall - flo.nsPerCall);
        if (flo.nsPerCall > 0) ownPerFloor.push_back(own.back() / flo.nsPerCall);
        allocations += lib.allocations;
        libraryFirst = !libraryFirst;
    }
    state.counters["library_ns"] = median(library);
    state.counters["floor_ns"] = median(floor);
    state.counters["own_ns"] = median(own);
    // No round with a floor to divide by gives no ratio, which the table rejects.
    state.counters["own_per_floor"] = ownPerFloor.empty() ? NAN : median(ownPerFloor);
    state.counters["allocs"] =
        library.empty() ? 0 : static_cast<double>(allocations) / (library.size() * kCallsPerBlock);
    state.SetLabel(path->description);
}

}  // namespace

int main(int argc, char** argv) {
    bench::connectedRig();
    for (const FeedPath& path : bench::feedPaths()) {
        std::string name = std::string("feed/") + path.name;
        benchmark::RegisterBenchmark(name.c_str(), measurePath, &path)->UseRealTime();
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
