// Fused locations from the location engine, forwarded to the framework under
// the reporting-interval rule, and the decoding of the vendor source-type bits
// carried in the upper byte of gnssLocationFlags.
#include <bounded_copy.h>
#include <log/log.h>

#include "fusd_callbacks.h"

using android::sp;
using android::hardware::Return;
using android::hardware::Void;

namespace {

constexpr int32_t kIntervalSlackMs = 100;

// Interval minus the slack in 32-bit two's complement, as the device computes it.
int64_t reportingThreshold() REQUIRES(g_feedTimingLock) {
    uint32_t interval = static_cast<uint32_t>(fusdGnssMinReportingInterval);
    return static_cast<int32_t>(interval - static_cast<uint32_t>(kIntervalSlackMs));
}

void deliverToFramework(const gnss_v1_0::GnssLocation& location) {
    sp<gnss_v2_0::IGnssCallback> framework = g_gnssCbIface.get();
    if (framework == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                            "%s: [LocMgr] FD location report, g_gnssCbIface is null", kLogPrefix);
        return;
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get location from Tarvi1.5", kLogPrefix);
    remoteCallWentThrough(framework->gnssLocationCb(location));
}

// Records the fused location stamped `t` and decides, in the same step, whether it is far
// enough from the last delivered position to be forwarded; a forwarded one is recorded as
// delivered at once, before the framework call that no lock may span.
bool takeForForwarding(int64_t t, int64_t* dt) {
    std::lock_guard<std::mutex> timing(g_feedTimingLock);
    *dt = absDiffMs(t, lastSentLocUpdateTime);
    lastFusdLocUpdateTime = t;
    if (*dt < reportingThreshold()) return false;
    fdLocationFlag = true;
    lastSentLocUpdateTime = t;
    return true;
}

}  // namespace

Return<void> FusdGnssCallback::reportFusdLocation(const gnss_v1_0::GnssLocation& location) {
    int64_t t = location.timestamp;
    int64_t dt = 0;
    if (!takeForForwarding(t, &dt)) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                            "%s: [LocMgr] no need to send_location_callback: %lli", kLogPrefix,
                            static_cast<long long>(dt));
        return Void();
    }
    deliverToFramework(location);
    __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                        "%s: [LocMgr] Updating lastSentLocUpdateTime: %lli", kLogPrefix,
                        static_cast<long long>(t));
    return Void();
}

bool isFdLocationReport() {
    return fdLocationFlag;
}

void resetFdLocationFlag() {
    fdLocationFlag = false;
}

char* qttff_location_sourcetype(const gnss_v1_0::GnssLocation& location) {
    uint16_t flags = location.gnssLocationFlags;
    unsigned int sourceType;
    bool quickGps;
    if (g_flagsFromChipset) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: [LocMgr] flags from Chipset: %lli",
                            kLogPrefix, static_cast<long long>(flags));
        sourceType = flags >> 8;
        quickGps = (flags & 0x8000) != 0;
    } else {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                            "%s: [LocMgr] flags from FusionDaemon: %lli", kLogPrefix,
                            static_cast<long long>(flags));
        sourceType = flags >> 9;
        quickGps = (flags & 0x0100) != 0;
        if (quickGps) sourceType += 128;
    }
    if (quickGps) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: [LocMgr] Debug: quickgpsLocationCb in",
                            kLogPrefix);
    }
    qttffFlag = quickGps;
    if (snprintf_s(sourceTypeBuf, sizeof(sourceTypeBuf), sizeof(sourceTypeBuf) - 1, "%u",
                   sourceType) == -1) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                            "%s: [LocMgr] snprintf_s sourceType message error", kLogPrefix);
    } else {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: [LocMgr] sourceType: %s", kLogPrefix,
                            sourceTypeBuf);
    }
    return sourceTypeBuf;
}
