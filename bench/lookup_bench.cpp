// Latency of the provider's feed calls and queries while another thread sits
// in the daemon look-up loop, against the same calls with no look-up running.
//
// No daemon is registered, and the look-up property asks for ten attempts, so
// fusionD_init spends nine real one-second pauses in its loop with fusdMutex
// held. The provider thread meanwhile makes rounds of every feed call and
// query, timing each call. The same rounds run for a while before the look-up
// starts and after it ends: those are the idle figures. Counters (ns):
//   feed_p50_idle, feed_p99_idle, feed_p99_lookup, feed_max_lookup,
//   query_p50_idle, query_p99_idle, query_p99_lookup, query_max_lookup,
// and lookup_pauses, lookup_seconds, samples_lookup.
//
// --quick shortens the pauses to a millisecond and the idle phases to 20 ms,
// so the binary can be run as a smoke test in well under a second.
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

struct Histograms {
    LatencyHistogram feed;
    LatencyHistogram query;
};

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

// Every call the provider makes on its own thread that does not connect.
void round(const Inputs& in, Histograms& h) {
    timeCall(h.feed, [&] { sendLocationDataToTarvi(in.fix); });
    timeCall(h.feed, [&] { sendLocationDataToTarvi(in.fix2); });
    timeCall(h.feed,
             [&] { send_nmea_update_to_tarvi(in.fix.timestamp, kRmcSentence, kRmcLength); });
    timeCall(h.feed, [&] { sendSvInfo(in.status); });
    timeCall(h.feed, [&] { addSvList(in.fix); });
    timeCall(h.feed, [&] { sendSvInfo(in.list); });
    timeCall(h.feed, [&] { addSvList(in.fix2); });
    timeCall(h.feed, [&] { qttff_location_sourcetype(in.fix); });
    timeCall(h.feed, [&] { send_gnss_start_cmd_to_tarvi(true); });
    timeCall(h.feed, [&] { send_quick_ttff_start_cmd_to_tarvi(false); });
    timeCall(h.feed, [&] { fd_add_geofence(7, -27.2, 153.0, 100.0, 1, 7, 5000, 0); });
    timeCall(h.feed, [&] { fd_remove_geofence(7); });
    timeCall(h.query, [] { benchmark::DoNotOptimize(isFDSupport()); });
    timeCall(h.query, [] { benchmark::DoNotOptimize(isFDGeofenceSupport()); });
    timeCall(h.query, [] { benchmark::DoNotOptimize(getBatcgingIface()); });
    timeCall(h.query, [] { benchmark::DoNotOptimize(getChipsetType()); });
    timeCall(h.query, [] { benchmark::DoNotOptimize(isFdLocationReport()); });
    timeCall(h.query, [] { benchmark::DoNotOptimize(isNeedSvIncrease()); });
    timeCall(h.query, [] { benchmark::DoNotOptimize(isReportZdSv()); });
}

void roundsFor(std::chrono::milliseconds duration, const Inputs& in, Histograms& h) {
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
    Histograms idle, lookup;
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

    state.counters["feed_p50_idle"] = idle.feed.percentile(0.50);
    state.counters["feed_p99_idle"] = idle.feed.percentile(0.99);
    state.counters["feed_p99_lookup"] = lookup.feed.percentile(0.99);
    state.counters["feed_max_lookup"] = lookup.feed.max();
    state.counters["query_p50_idle"] = idle.query.percentile(0.50);
    state.counters["query_p99_idle"] = idle.query.percentile(0.99);
    state.counters["query_p99_lookup"] = lookup.query.percentile(0.99);
    state.counters["query_max_lookup"] = lookup.query.max();
    state.counters["lookup_pauses"] = pauses.load();
    state.counters["lookup_seconds"] = lookupSeconds;
    state.counters["samples_lookup"] = lookup.feed.count() + lookup.query.count();
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
    benchmark::RegisterBenchmark("lookup/feed_and_query_latency", measureDuringLookup)
        ->Iterations(1)
        ->UseRealTime()
        ->Unit(benchmark::kSecond);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
