// One hour of a real receiver's output replayed through the library in the embedded world,
// with no transcript kept. The captures are minutes long, so the capture is repeated end to
// end until it covers an hour of one-second cycles.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

#include "capture/capture.h"
#include "replay_driver.h"

namespace {

constexpr size_t kHourOfCycles = 3600;

replay::Capture hourOf(const std::string& path) {
    replay::Capture once;
    std::string error;
    if (!replay::readCapture(path, &once, &error) || once.cycles.empty()) {
        fprintf(stderr, "bench_replay: %s\n", error.c_str());
        abort();
    }
    replay::Capture hour;
    while (hour.cycles.size() < kHourOfCycles) {
        hour.cycles.insert(hour.cycles.end(), once.cycles.begin(), once.cycles.end());
        hour.sentenceCount += once.sentenceCount;
    }
    return hour;
}

void replayOneHour(benchmark::State& state, const char* name) {
    const std::string path = std::string(ZD_CAPTURE_DIR) + "/" + name;
    const replay::Capture hour = hourOf(path);
    replay::ReplayOptions options;
    options.capture = path;
    options.summary = false;
    for (auto _ : state) {
        replay::ReplayReport report = replay::runReplay(hour, options);
        benchmark::DoNotOptimize(report.cycles.data());
    }
    state.counters["cycles"] = static_cast<double>(hour.cycles.size());
    state.counters["sentences"] = static_cast<double>(hour.sentenceCount);
}

// A multi-constellation receiver: 23 sentences a second, 30-odd satellites per report.
BENCHMARK_CAPTURE(replayOneHour, ublox_neo_m9n, "gpsd-ublox-neo-m9n-nmea.log")
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
// A GPS-only receiver that starts without a fix.
BENCHMARK_CAPTURE(replayOneHour, telit_he910, "gpsd-telit-he910.log")
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
