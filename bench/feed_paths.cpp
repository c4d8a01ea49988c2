#include "feed_paths.h"

#include <log/log.h>
#include <zdgnssprovider.h>

#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

using SvStatus1 = gnss_v1_0::IGnssCallback::GnssSvStatus;
using SvList2 = hidl_vec<gnss_v2_0::IGnssCallback::GnssSvInfo>;

// Times in milliseconds since the epoch. Each path runs at its own times, so
// the state one path leaves does not change the branch another takes.
constexpr int64_t kFusedAt = 1700000000000;
constexpr int64_t kFreshFixAt = kFusedAt + 1000;   // within 3000 ms of the fused fix
constexpr int64_t kStaleFixAt = kFusedAt + 10000;  // beyond it: the provider reports
constexpr int64_t kForwardedFrom = 1800000000000;  // fused reports 1000 ms apart
constexpr int64_t kFusedStepMs = 1000;
constexpr int kAugmentedCount = 5;  // the fake entries added to a short list

struct Inputs {
    gnss_v1_0::GnssLocation freshFix = fixAt(kFreshFixAt);
    gnss_v1_0::GnssLocation staleFix = fixAt(kStaleFixAt);
    gnss_v2_0::GnssLocation fix2 = fixAt2(kFreshFixAt);
    SvStatus1 fullStatus = satelliteStatus();
    SvList2 fullList = satelliteList(64);
    SvList2 shortList = satelliteList(10);
    SvList2 paddedShortList = satelliteList(10 + kAugmentedCount);
    int64_t fusedAt = kForwardedFrom;
};

Inputs& in() {
    static Inputs inputs;
    return inputs;
}

// ---- Floors: the null party's call and the library's log lines on that path.

void logInfo(const char* format) {
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, format, kLogPrefix);
}

void floorSvStatus(const Rig& rig, unsigned int tracked) {
    rig.engineIface->sendSvStatus(tracked).isOk();
    logInfo("%s: [LocMgr] Debug: Sending SV status to TARVI");
}

void floorSendSvInfo1(const Rig& rig) {
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: callback 1.0 sv number is %d .", kLogPrefix,
                        static_cast<int>(in().fullStatus.numSvs));
    floorSvStatus(rig, in().fullStatus.numSvs);
}

void floorSendSvInfo2(const Rig& rig, const SvList2& list) {
    logInfo("%s: callback 2.0 send_svInfor is called .");
    floorSvStatus(rig, static_cast<unsigned int>(list.size()));
}

void floorIncreaseStart(const char* flagFormat) {
    __android_log_print(ANDROID_LOG_DEBUG, LOG_TAG, flagFormat, kLogPrefix,
                        static_cast<int>(kLocationFlags));
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: the USED GPS SV Count is %d", kLogPrefix,
                        kUsedGps);
    logInfo("%s: start increase sv");
}

void floorAddSvList1(const Rig& rig) {
    floorIncreaseStart("%s: location 1.0 flag is %d");
    logInfo("%s: begin to report false sv .");
    rig.frameworkIface->gnssSvStatusCb(in().fullStatus).isOk();
    logInfo("%s: increase sv finished");
}

void floorAddSvList2(const Rig& rig, const SvList2& reported, bool listFull) {
    floorIncreaseStart("%s: location 2.0 flag is %d");
    if (listFull) {
        __android_log_print(ANDROID_LOG_DEBUG, LOG_TAG,
                            "%s: sv number > 58, no need add fake satellites", kLogPrefix);
    }
    logInfo("%s: begin to report false sv .");
    rig.frameworkIface->gnssSvStatusCb_2_0(reported).isOk();
    logInfo("%s: increase sv finished");
}

// A 2.0 satellite list followed by a fix, and its floor. A list of 60 entries
// or more is reported as it is; a shorter one with the five entries added.
void cycle2(const SvList2& list) {
    sendSvInfo(list);
    addSvList(in().fix2);
}

void floorCycle2(const Rig& rig, const SvList2& list, const SvList2& reported) {
    floorSendSvInfo2(rig, list);
    floorAddSvList2(rig, reported, list.size() == reported.size());
}

// ---- The paths.

void nothingToPrepare(const Rig&) {}

void prepareFusedFix(const Rig& rig) {
    rig.fusedCallback->reportFusdLocation(fixAt(kFusedAt)).isOk();
}

void prepareFullList(const Rig&) {
    sendSvInfo(in().fullList);
}

void prepareForwarding(const Rig&) {
    in().fusedAt = kForwardedFrom;
}

gnss_v1_0::GnssLocation nextFusedFix() {
    in().fusedAt += kFusedStepMs;
    return fixAt(in().fusedAt);
}

const std::vector<FeedPath> kPaths = {
    {"sendLocationDataToTarvi.fresh",
     "GNSS fix within 3000 ms of the last fused one: sent, left to the fused stream",
     prepareFusedFix, [](const Rig&) { sendLocationDataToTarvi(in().freshFix); },
     [](const Rig& rig) {
         rig.engineIface->sendLocationData(in().freshFix).isOk();
         logInfo("%s: [LocMgr] Debug: Sending GPS update to TARVI");
     }},
    {"sendLocationDataToTarvi.reverting",
     "GNSS fix 10 s after the last fused one: sent, reported by the provider", prepareFusedFix,
     [](const Rig&) { sendLocationDataToTarvi(in().staleFix); },
     [](const Rig& rig) {
         rig.engineIface->sendLocationData(in().staleFix).isOk();
         logInfo("%s: [LocMgr] Debug: Sending GPS update to TARVI");
         __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                             "%s: [LocMgr] Reverting to GPS based position dt: %lli time: %lli",
                             kLogPrefix, static_cast<long long>(kStaleFixAt - kFusedAt),
                             static_cast<long long>(kStaleFixAt));
     }},
    {"send_nmea_update_to_tarvi.rmc", "one RMC sentence with a valid fix", nothingToPrepare,
     [](const Rig&) { send_nmea_update_to_tarvi(kFreshFixAt, kRmcSentence, kRmcLength); },
     [](const Rig& rig) {
         rig.engineIface->sendNmeaUpdate(true, kFreshFixAt).isOk();
         logInfo("%s: [LocMgr] Debug: Sending NMEA update to TARVI");
     }},
    {"sendSvInfo_1_0.64", "1.0 satellite report of 64 entries", nothingToPrepare,
     [](const Rig&) { sendSvInfo(in().fullStatus); }, floorSendSvInfo1},
    {"sendSvInfo_2_0.64", "2.0 satellite list of 64 entries", nothingToPrepare,
     [](const Rig&) { sendSvInfo(in().fullList); },
     [](const Rig& rig) { floorSendSvInfo2(rig, in().fullList); }},
    {"sendSvInfo_1_0+addSvList_1_0.64",
     "1.0 report of 64 entries (3 GPS used), then a fix: padded and reported", nothingToPrepare,
     [](const Rig&) {
         sendSvInfo(in().fullStatus);
         addSvList(in().freshFix);
     },
     [](const Rig& rig) {
         floorSendSvInfo1(rig);
         floorAddSvList1(rig);
     }},
    {"addSvList_2_0.64",
     "fix against a stored 2.0 list of 64 entries (3 GPS used): too full to pad, reported",
     prepareFullList, [](const Rig&) { addSvList(in().fix2); },
     [](const Rig& rig) { floorAddSvList2(rig, in().fullList, true); }},
    {"sendSvInfo_2_0+addSvList_2_0.64", "2.0 list of 64 entries, then a fix: reported",
     nothingToPrepare, [](const Rig&) { cycle2(in().fullList); },
     [](const Rig& rig) { floorCycle2(rig, in().fullList, in().fullList); }},
    {"sendSvInfo_2_0+addSvList_2_0.10",
     "2.0 list of 10 entries, then a fix: padded to 15 and reported", nothingToPrepare,
     [](const Rig&) { cycle2(in().shortList); },
     [](const Rig& rig) { floorCycle2(rig, in().shortList, in().paddedShortList); }},
    {"reportFusdLocation.forwarded",
     "fused fix 1000 ms after the last delivered one: forwarded to the framework",
     prepareForwarding,
     [](const Rig& rig) { rig.fusedCallback->reportFusdLocation(nextFusedFix()).isOk(); },
     [](const Rig& rig) {
         gnss_v1_0::GnssLocation fix = nextFusedFix();
         logInfo("%s: get location from Tarvi1.5");
         rig.frameworkIface->gnssLocationCb(fix).isOk();
         __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                             "%s: [LocMgr] Updating lastSentLocUpdateTime: %lli", kLogPrefix,
                             static_cast<long long>(fix.timestamp));
     }},
    {"qttff_location_sourcetype.fusion_daemon",
     "source type from the fusion daemon's flag layout, not quick-GPS", nothingToPrepare,
     [](const Rig&) { qttff_location_sourcetype(in().freshFix); },
     [](const Rig&) {
         __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                             "%s: [LocMgr] flags from FusionDaemon: %lli", kLogPrefix,
                             static_cast<long long>(kLocationFlags));
         __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: [LocMgr] sourceType: %s", kLogPrefix,
                             kLocationSourceType);
     }},
};

}  // namespace

const std::vector<FeedPath>& feedPaths() {
    return kPaths;
}

const FeedPath& feedPath(const std::string& name) {
    for (const FeedPath& path : kPaths) {
        if (name == path.name) return path;
    }
    fprintf(stderr, "bench: no feed path %s\n", name.c_str());
    abort();
}

}  // namespace bench
