#include "bench_rig.h"

#include <android/log.h>
#include <zdgnssprovider.h>
#include <zdhost/runtime.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {

namespace {

using SvInfo1 = gnss_v1_0::IGnssCallback::GnssSvInfo;
using SvFlags = gnss_v1_0::IGnssCallback::GnssSvFlags;
constexpr size_t kSvCapacity = static_cast<size_t>(gnss_v1_0::GnssMax::SVS_COUNT);

std::atomic<uint64_t> gDroppedLines{0};

// Measurements log from one thread; an unlocked increment keeps the hook cheap.
void dropLine(const struct __android_logger_data*, const char*) {
    gDroppedLines.store(gDroppedLines.load(std::memory_order_relaxed) + 1,
                        std::memory_order_relaxed);
}

void failSetup(const char* what) {
    fprintf(stderr, "bench: the library did not connect: %s\n", what);
    abort();
}

Rig connect() {
    dropLogLines();
    Rig rig;
    rig.engine = new NullEngine();
    rig.daemon = new NullDaemon(rig.engine);
    rig.framework = new NullFramework();
    rig.engineIface = rig.engine;
    rig.frameworkIface = rig.framework;
    if (!zdhost::ServiceManager::get().add("default", rig.daemon)) failSetup("daemon registration");
    fusionD_init();
    registerCallback(rig.frameworkIface, nullptr, nullptr);
    zdhost::pool::drain();
    rig.fusedCallback = rig.engine->callback();
    if (!isFDSupport()) failSetup("no location engine");
    if (rig.fusedCallback == nullptr) failSetup("no fused-location callback");
    return rig;
}

// Constellations in the mix a multi-constellation receiver reports: GPS,
// GLONASS, Galileo and BeiDou in turn.
gnss_v1_0::GnssConstellationType constellationOf(size_t i) {
    static const gnss_v1_0::GnssConstellationType kMix[] = {
        gnss_v1_0::GnssConstellationType::GPS, gnss_v1_0::GnssConstellationType::GLONASS,
        gnss_v1_0::GnssConstellationType::GALILEO, gnss_v1_0::GnssConstellationType::BEIDOU};
    return kMix[i % 4];
}

SvInfo1 satellite(size_t i) {
    SvInfo1 sv{};
    sv.svid = static_cast<int16_t>(1 + i);
    sv.constellation = constellationOf(i);
    sv.cN0Dbhz = 20.0f + static_cast<float>(i % 25);
    sv.elevationDegrees = 10.0f + static_cast<float>(i);
    sv.azimuthDegrees = static_cast<float>((i * 37) % 360);
    sv.carrierFrequencyHz = 1575.42e6f;
    // GPS entries 0, 4 and 8 are used in the fix: kUsedGps of them.
    bool used = i < 4 * kUsedGps && i % 4 == 0;
    sv.svFlag = static_cast<uint8_t>(used ? SvFlags::USED_IN_FIX : SvFlags::HAS_EPHEMERIS_DATA);
    return sv;
}

gnss_v2_0::GnssConstellationType constellation2Of(gnss_v1_0::GnssConstellationType type) {
    return static_cast<gnss_v2_0::GnssConstellationType>(static_cast<uint8_t>(type));
}

}  // namespace

void dropLogLines() {
    __android_log_set_logger(dropLine);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

uint64_t droppedLines() {
    return gDroppedLines.load(std::memory_order_relaxed);
}

const Rig& connectedRig() {
    static const Rig rig = connect();
    return rig;
}

// Line 32 of examples/captures/gpsd-haicom-305N.log, with the receiver's line end.
const char kRmcSentence[] =
    "$GPRMC,095304.802,A,2712.6520,S,15303.1397,E,0.00,133.96,080407,,,A*78\r\n";
const unsigned int kRmcLength = sizeof(kRmcSentence) - 1;

gnss_v1_0::GnssLocation fixAt(int64_t timestamp) {
    gnss_v1_0::GnssLocation location{};
    location.gnssLocationFlags = kLocationFlags;
    location.latitudeDegrees = -27.210867;
    location.longitudeDegrees = 153.052328;
    location.altitudeMeters = 4.0;
    location.speedMetersPerSec = 0.0f;
    location.bearingDegrees = 133.96f;
    location.horizontalAccuracyMeters = 5.0f;
    location.timestamp = timestamp;
    return location;
}

gnss_v2_0::GnssLocation fixAt2(int64_t timestamp) {
    gnss_v2_0::GnssLocation location{};
    location.v1_0 = fixAt(timestamp);
    return location;
}

gnss_v1_0::IGnssCallback::GnssSvStatus satelliteStatus() {
    gnss_v1_0::IGnssCallback::GnssSvStatus status{};
    status.numSvs = static_cast<uint32_t>(kSvCapacity);
    for (size_t i = 0; i < kSvCapacity; ++i) status.gnssSvList[i] = satellite(i);
    return status;
}

hidl_vec<gnss_v2_0::IGnssCallback::GnssSvInfo> satelliteList(size_t count) {
    hidl_vec<gnss_v2_0::IGnssCallback::GnssSvInfo> list(count);
    for (size_t i = 0; i < count; ++i) {
        list[i].v1_0 = satellite(i);
        list[i].constellation = constellation2Of(list[i].v1_0.constellation);
    }
    return list;
}

}  // namespace bench
