// Feed calls against their floors, and the heap allocations they make.
//
// One benchmark per feed path. Each of its iterations is a round: a block of
// library calls and a block of floor calls, back to back, in alternating order.
// Both halves of a round see the same load on the machine, so the median of the
// rounds' ratios stays put when other work shares the cores. Blocks are timed
// with the thread's CPU clock: a block that the scheduler interrupts is not
// charged for the time other processes ran. Counters:
//   library_ns, floor_ns   median CPU time per call over the rounds
//   ratio                  median over the rounds of library time / floor time
//   library_allocs, floor_allocs   heap allocations per call on the calling
//                          thread, after one warm-up call (-1: not counted in
//                          this build)
// and, apart, parts that every implementation pays (parts/...): one of the
// library's handle reads and the bounded copies of the NMEA and 1.0 paths.
#include <benchmark/benchmark.h>
#include <bounded_copy.h>
#include <time.h>
#include <zdgnssprovider.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "alloc_counter.h"
#include "feed_paths.h"
#include "null_parties.h"

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

struct Block {
    double nsPerCall;
    uint64_t allocations;
};

double threadCpuNs() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

Block runBlock(void (*call)(const Rig&), const Rig& rig) {
    bench::AllocCount before = bench::allocationsSoFar();
    double start = threadCpuNs();
    for (int i = 0; i < kCallsPerBlock; ++i) call(rig);
    double ns = threadCpuNs() - start;
    uint64_t allocations = (bench::allocationsSoFar() - before).mallocs;
    return {ns / kCallsPerBlock, allocations};
}

double allocationsPerCall(uint64_t allocations, size_t rounds) {
    if (!bench::countingAllocations()) return -1;
    return rounds == 0 ? 0 : static_cast<double>(allocations) / (rounds * kCallsPerBlock);
}

void measurePath(benchmark::State& state, const FeedPath* path) {
    const Rig& rig = bench::connectedRig();
    path->prepare(rig);
    path->library(rig);  // first report of its size, buffers grown
    path->floor(rig);
    std::vector<double> library, floor, ratios;
    uint64_t libraryAllocations = 0, floorAllocations = 0;
    bool libraryFirst = true;
    for (auto _ : state) {
        Block first = runBlock(libraryFirst ? path->library : path->floor, rig);
        Block second = runBlock(libraryFirst ? path->floor : path->library, rig);
        const Block& lib = libraryFirst ? first : second;
        const Block& flo = libraryFirst ? second : first;
        library.push_back(lib.nsPerCall);
        floor.push_back(flo.nsPerCall);
        ratios.push_back(lib.nsPerCall / flo.nsPerCall);
        libraryAllocations += lib.allocations;
        floorAllocations += flo.allocations;
        libraryFirst = !libraryFirst;
    }
    state.counters["library_ns"] = median(library);
    state.counters["floor_ns"] = median(floor);
    state.counters["ratio"] = median(ratios);
    state.counters["library_allocs"] = allocationsPerCall(libraryAllocations, library.size());
    state.counters["floor_allocs"] = allocationsPerCall(floorAllocations, floor.size());
    state.SetLabel(path->description);
}

// For reading the ratios, the parts of the paths' cost that no implementation
// avoids: the library's own handle read (isFDSupport is one pinned read and a
// test for null), and the bounded platform calls that the NMEA and 1.0 satellite
// paths must make.
void measurePinnedRead(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(isFDSupport());
}

template <size_t kSize>
void measureClear(benchmark::State& state) {
    alignas(8) static char buffer[kSize];
    for (auto _ : state) {
        memset_s(buffer, kSize, 0, kSize);
        benchmark::ClobberMemory();
    }
}

template <size_t kSize>
void measureCopy(benchmark::State& state, size_t count) {
    alignas(8) static char from[kSize];
    alignas(8) static char to[kSize];
    for (auto _ : state) {
        memcpy_s(to, kSize, from, count);
        benchmark::ClobberMemory();
    }
}

constexpr size_t kRmcBuffer = 256;
constexpr size_t kSvStatusRecord = sizeof(bench::gnss_v1_0::IGnssCallback::GnssSvStatus);

}  // namespace

int main(int argc, char** argv) {
    bench::connectedRig();
    for (const FeedPath& path : bench::feedPaths()) {
        std::string name = std::string("feed/") + path.name;
        benchmark::RegisterBenchmark(name.c_str(), measurePath, &path)->UseRealTime();
    }
    benchmark::RegisterBenchmark("parts/pinned_read", measurePinnedRead);
    benchmark::RegisterBenchmark("parts/memset_s_rmc_buffer", measureClear<kRmcBuffer>);
    benchmark::RegisterBenchmark("parts/memcpy_s_rmc_sentence", measureCopy<kRmcBuffer>,
                                 size_t{bench::kRmcLength});
    benchmark::RegisterBenchmark("parts/memset_s_sv_record", measureClear<kSvStatusRecord>);
    benchmark::RegisterBenchmark("parts/memcpy_s_sv_record", measureCopy<kSvStatusRecord>,
                                 kSvStatusRecord);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
