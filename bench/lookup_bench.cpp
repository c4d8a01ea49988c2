// Latency of the provider's feed calls while another thread sits in the daemon
// look-up loop, against the same calls with no look-up running.
//
// No daemon is registered, and the look-up property asks for ten attempts, so
// fusionD_init spends nine real one-second pauses in its loop with fusdMutex
// held. The provider thread meanwhile makes rounds of every feed call, timing
// each call on the wall clock. The same rounds run for a while before the
// look-up starts and after it ends: those are the idle figures. Counters:
//   p99_idle_ns, p99_lookup_ns, p99_ratio (lookup / idle), lookup_pauses,
//   lookup_seconds, samples_lookup (calls timed during the look-up).
//
// --quick shortens the pauses to a millisecond and the idle phases to 20 ms,
// so that the binary runs as a smoke test in well under a second.
#include <benchmark/benchmark.h>
#include <zdgnssprovider.h>
#include <zdhost/platform_control.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

#include "bench_rig.h"
#include "latency_histogram.h"

namespace {

using namespace bench;
using Clock = std::chrono::steady_clock;

bool gQuick = false;

struct Inputs {
    gnss_v1_0::GnssLocation fix = fixAt(1700000000000);
    gnss_v2_0::GnssLocation fix2 = fixAt2(1700000000000);
    gnss_v1_0::IGnssCallback::GnssSvStatus status = satelliteStatus();
    hidl_vec<gnss_v2_0::IGnssCallback::GnssSvInfo> list = satelliteList(64);
};

template <typename Call>
void timeCall(LatencyHistogram& into, Call&& call) {
    Clock::time_point start = Clock::now();
    call();
    into.add(std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count());
}

// Every feed call the provider makes on its own thread.
void round(const Inputs& in, LatencyHistogram& h) {
    timeCall(h, [&] { sendLocationDataToTarvi(in.fix); });
    timeCall(h, [&] { sendLocationDataToTarvi(in.fix2); });
    timeCall(h, [&] { send_nmea_update_to_tarvi(in.fix.timestamp, kRmcSentence, kRmcLength); });
    timeCall(h, [&] { sendSvInfo(in.status); });
    timeCall(h, [&] { addSvList(in.fix); });
    timeCall(h, [&] { sendSvInfo(in.list); });
    timeCall(h, [&] { addSvList(in.fix2); });
    timeCall(h, [&] { qttff_location_sourcetype(in.fix); });
    timeCall(h, [&] { send_gnss_start_cmd_to_tarvi(true); });
    timeCall(h, [&] { send_quick_ttff_start_cmd_to_tarvi(false); });
    timeCall(h, [&] { fd_add_geofence(7, -27.2, 153.0, 100.0, 1, 7, 5000, 0); });
    timeCall(h, [&] { fd_remove_geofence(7); });
}

void roundsFor(std::chrono::milliseconds duration, const Inputs& in, LatencyHistogram& h) {
    Clock::time_point end = Clock::now() + duration;
    while (Clock::now() < end) round(in, h);
}

void measureDuringLookup(benchmark::State& state) {
    dropLogLines();
    zdhost::platform::setProperty("ro.config.zd_support_geofence", "true");
    sp<NullFramework> framework = new NullFramework();
    registerCallback(framework, nullptr, nullptr);

    std::atomic<int> pauses{0};
    zdhost::platform::setSleepHook([&pauses](useconds_t micros) {
        pauses.fetch_add(1);
        zdhost::platform::realSleep(gQuick ? micros / 1000 : micros);
    });
    const std::chrono::milliseconds idlePhase(gQuick ? 20 : 2000);
    Inputs in;
    LatencyHistogram idle, lookup;
    double lookupSeconds = 0;
    for (auto _ : state) {
        roundsFor(idlePhase, in, idle);
        std::atomic<bool> done{false};
        Clock::time_point start = Clock::now();
        std::thread connector([&done] {
            fusionD_init();
            done = true;
        });
        while (!done) round(in, lookup);
        connector.join();
        lookupSeconds = std::chrono::duration<double>(Clock::now() - start).count();
        roundsFor(idlePhase, in, idle);
    }
    zdhost::platform::setSleepHook(nullptr);

    int64_t idleP99 = idle.percentile(0.99);
    int64_t lookupP99 = lookup.percentile(0.99);
    state.counters["p99_idle_ns"] = idleP99;
    state.counters["p99_lookup_ns"] = lookupP99;
    state.counters["p99_ratio"] =
        idleP99 > 0 ? static_cast<double>(lookupP99) / static_cast<double>(idleP99) : 0;
    state.counters["lookup_pauses"] = pauses.load();
    state.counters["lookup_seconds"] = lookupSeconds;
    state.counters["samples_lookup"] = lookup.count();
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--quick") == 0) {
            gQuick = true;
            for (int j = i; j + 1 < argc; ++j) argv[j] = argv[j + 1];
            --argc;
            break;
        }
    }
    // One iteration: a look-up with real pauses takes nine seconds.
    benchmark::RegisterBenchmark("lookup/feed_latency", measureDuringLookup)
        ->Iterations(1)
        ->UseRealTime()
        ->Unit(benchmark::kSecond);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
