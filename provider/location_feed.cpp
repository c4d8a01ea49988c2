// GNSS locations and run start/stop commands for the location engine, and the
// feed timing state that decides whether the provider reports a fix itself or
// leaves the position to the fused stream.
#include <log/log.h>

#include "module_state.h"

using android::sp;
using android::hardware::Return;

namespace {

constexpr int64_t kFusedFreshnessMs = 3000;
constexpr int32_t kDefaultReportingIntervalMs = 1000;

using CommandType = fusd_v1_2::GnssCommandType;

void resetTimingOncePerRun() REQUIRES(g_feedTimingLock) {
    if (tarviParamReset) return;
    lastSentLocUpdateTime = 0;
    lastFusdLocUpdateTime = 0;
    fusdGnssMinReportingInterval = kDefaultReportingIntervalMs;
    tarviParamReset = true;
}

// A run of the location engine: its command type and its log texts. A GPS stop
// ends the run, so the next start resets the timing state again.
struct RunKind {
    CommandType type;
    bool stopEndsRun;
    const char* startFail;
    const char* startOk;
    const char* stopFail;
    const char* stopOk;
};

constexpr RunKind kGpsRun = {CommandType::GPS,
                             true,
                             "%s: [LocMgr] Debug: send GPS start to TARVI fail",
                             "%s: [LocMgr] Debug: Sending GPS start to TARVI",
                             "%s: [LocMgr] Debug: send GPS stop to TARVI fail",
                             "%s: [LocMgr] Debug: Sending GPS stop to TARVI"};
constexpr RunKind kQuickTtffRun = {CommandType::QUICK_TTFF,
                                   false,
                                   "%s: [LocMgr] Debug: send Quick TTFF start to TARVI fail",
                                   "%s: [LocMgr] Debug: Sending Quick TTFF start to TARVI",
                                   "%s: [LocMgr] Debug: send Quick TTFF stop to TARVI fail",
                                   "%s: [LocMgr] Debug: Sending Quick TTFF stop to TARVI"};

void sendRunCommand(const RunKind& run, bool start) {
    sp<fusd_v1_3::IFusdLbs> daemon = g_fusdLbsIface.get();
    if (daemon == nullptr) return;
    if (start) {
        std::lock_guard<std::mutex> timing(g_feedTimingLock);
        resetTimingOncePerRun();
    }
    Return<void> sent = daemon->sendGnssStartCmd(run.type, start);
    if (!start && run.stopEndsRun) {
        std::lock_guard<std::mutex> timing(g_feedTimingLock);
        tarviParamReset = false;
    }
    if (checkRemoteCall(sent, ANDROID_LOG_WARN, start ? run.startFail : run.stopFail, kLogPrefix)) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, start ? run.startOk : run.stopOk,
                            kLogPrefix);
    }
}

// The provider reports this fix itself: record it as the last delivered one.
bool reportedByProvider(int64_t timestamp) {
    std::lock_guard<std::mutex> timing(g_feedTimingLock);
    lastSentLocUpdateTime = timestamp;
    return false;
}

// Whether the fused stream is fresh enough to carry this fix (dt within 3000 ms of the
// last fused location). When it is not, the provider reports the fix itself and it is
// recorded as the last delivered one in the same step.
bool fusedStreamCovers(int64_t timestamp, int64_t* dt) {
    std::lock_guard<std::mutex> timing(g_feedTimingLock);
    *dt = absDiffMs(timestamp, lastFusdLocUpdateTime);
    if (*dt <= kFusedFreshnessMs) return true;
    lastSentLocUpdateTime = timestamp;
    return false;
}

}  // namespace

bool sendLocationDataToTarvi(const gnss_v1_0::GnssLocation& location) {
    sp<fusd_v1_2::IFusdGnssInterface> engine = g_fusdGnssIface.get();
    if (engine == nullptr) return reportedByProvider(location.timestamp);
    if (!checkRemoteCall(engine->sendLocationData(location), ANDROID_LOG_WARN,
                         "%s: [LocMgr] Debug: send GPS update to TARVI fail", kLogPrefix)) {
        return reportedByProvider(location.timestamp);
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                        "%s: [LocMgr] Debug: Sending GPS update to TARVI", kLogPrefix);
    int64_t dt = 0;
    if (fusedStreamCovers(location.timestamp, &dt)) return true;
    __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                        "%s: [LocMgr] Reverting to GPS based position dt: %lli time: %lli",
                        kLogPrefix, static_cast<long long>(dt),
                        static_cast<long long>(location.timestamp));
    return false;
}

bool sendLocationDataToTarvi(const gnss_v2_0::GnssLocation& location) {
    return sendLocationDataToTarvi(location.v1_0);
}

void send_gnss_start_cmd_to_tarvi(bool start) {
    sendRunCommand(kGpsRun, start);
}

void send_quick_ttff_start_cmd_to_tarvi(bool start) {
    sendRunCommand(kQuickTtffRun, start);
}

void reset_tarvi_param() {
    std::lock_guard<std::mutex> timing(g_feedTimingLock);
    resetTimingOncePerRun();
}

void setFusdGnssMinReportingInterval(int intervalMs) {
    std::lock_guard<std::mutex> timing(g_feedTimingLock);
    fusdGnssMinReportingInterval = intervalMs;
}
