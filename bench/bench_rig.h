// The library connected to do-nothing parties, with its log lines routed to a
// logger that drops them, and the inputs the measurements feed it.
#pragma once

#include <vector>

#include "null_parties.h"

namespace bench {

// Every line logged in this process, DEBUG included, is formatted by liblog as
// usual and then dropped by the logger hook, which only counts it.
void dropLogLines();
uint64_t droppedLines();

struct Rig {
    sp<NullDaemon> daemon;
    sp<NullEngine> engine;
    sp<NullFramework> framework;
    // The same objects as the library sees them: the floors call through these.
    sp<fusd_v1_2::IFusdGnssInterface> engineIface;
    sp<gnss_v2_0::IGnssCallback> frameworkIface;
    // The fused-location callback the library registered with the engine.
    sp<fusd_v1_2::IFusdGnssCallback> fusedCallback;
};

// Registers the daemon, runs fusionD_init, hands the framework callback over and
// waits until the runtime has delivered what that set off. The first call
// connects; later calls return the same rig. Aborts when the library did not
// connect, since nothing measured afterwards would mean anything.
const Rig& connectedRig();

// The leading text of the library's log lines.
constexpr const char* kLogPrefix = "ZdGnssLocationProviderJNI";

// ---- Inputs

// An RMC sentence with a valid fix, as a receiver sends it (haicom 305N capture).
extern const char kRmcSentence[];
extern const unsigned int kRmcLength;

// Location flags: latitude/longitude, altitude, speed, bearing and horizontal
// accuracy, with the fusion daemon's source type 2 in the upper byte (not quick-GPS).
constexpr uint16_t kLocationFlags = 0x041f;
// The source type kLocationFlags decodes to, as the library writes it.
constexpr const char* kLocationSourceType = "2";

gnss_v1_0::GnssLocation fixAt(int64_t timestamp);
gnss_v2_0::GnssLocation fixAt2(int64_t timestamp);

// How many entries of the satellite inputs are GPS satellites used in the fix:
// fewer than four, so that a location makes the library pad the list.
constexpr int kUsedGps = 3;
// A full 1.0 satellite report (64 entries) and a 2.0 list of `count` entries,
// every entry with a signal.
gnss_v1_0::IGnssCallback::GnssSvStatus satelliteStatus();
hidl_vec<gnss_v2_0::IGnssCallback::GnssSvInfo> satelliteList(size_t count);

}  // namespace bench
