// Fused locations from the location engine, forwarded to the framework under
// the reporting-interval rule, and the decoding of the vendor source-type bits
// carried in the upper byte of gnssLocationFlags.
#include <bounded_copy.h>
#include <log/log.h>

#include <vector>

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

// A fused location taken for the framework, with the framework callback it was taken for.
struct Delivery {
    sp<gnss_v2_0::IGnssCallback> framework;
    gnss_v1_0::GnssLocation location;
};

// Fused locations taken for the framework and not yet handed to it, in the order they were
// taken. Whichever report finds no delivery under way hands them all over, in that order,
// with no lock held across a framework call; a report that finds one under way leaves its
// location to it. So two reports racing on two hwbinder threads reach the framework in the
// order of their decisions, and a report the framework makes back on the delivering thread
// waits its turn instead of overtaking. The list keeps its capacity from report to report.
std::vector<Delivery> g_pendingDeliveries GUARDED_BY(g_feedTimingLock);
size_t g_nextDelivery GUARDED_BY(g_feedTimingLock) = 0;
bool g_delivering GUARDED_BY(g_feedTimingLock) = false;

// Records the fused location and decides, in the same step, whether it is far enough from
// the last delivered position to be forwarded; a forwarded one is recorded as delivered at
// once and queued for the framework callback registered now, if there is one.
bool takeForForwarding(const gnss_v1_0::GnssLocation& location, int64_t* dt, bool* queued) {
    const int64_t t = location.timestamp;
    std::lock_guard<std::mutex> timing(g_feedTimingLock);
    *dt = absDiffMs(t, lastSentLocUpdateTime);
    lastFusdLocUpdateTime = t;
    if (*dt < reportingThreshold()) return false;
    fdLocationFlag = true;
    lastSentLocUpdateTime = t;
    sp<gnss_v2_0::IGnssCallback> framework = g_gnssCbIface.get();
    *queued = framework != nullptr;
    if (*queued) g_pendingDeliveries.push_back({std::move(framework), location});
    return true;
}

// The next queued location; false when none is left, which ends the delivery.
bool nextDelivery(Delivery* next) {
    std::lock_guard<std::mutex> timing(g_feedTimingLock);
    if (g_nextDelivery == g_pendingDeliveries.size()) {
        g_pendingDeliveries.clear();
        g_nextDelivery = 0;
        g_delivering = false;
        return false;
    }
    *next = std::move(g_pendingDeliveries[g_nextDelivery++]);
    return true;
}

void deliverQueued() {
    {
        std::lock_guard<std::mutex> timing(g_feedTimingLock);
        if (g_delivering) return;  // the delivery under way hands this location over too
        g_delivering = true;
    }
    Delivery next;
    while (nextDelivery(&next)) {
        remoteCallWentThrough(next.framework->gnssLocationCb(next.location));
        next.framework = nullptr;  // released with no lock held
    }
}

}  // namespace

Return<void> FusdGnssCallback::reportFusdLocation(const gnss_v1_0::GnssLocation& location) {
    int64_t dt = 0;
    bool queued = false;
    if (!takeForForwarding(location, &dt, &queued)) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                            "%s: [LocMgr] no need to send_location_callback: %lli", kLogPrefix,
                            static_cast<long long>(dt));
        return Void();
    }
    if (queued) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get location from Tarvi1.5",
                            kLogPrefix);
        deliverQueued();
    } else {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                            "%s: [LocMgr] FD location report, g_gnssCbIface is null", kLogPrefix);
    }
    __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                        "%s: [LocMgr] Updating lastSentLocUpdateTime: %lli", kLogPrefix,
                        static_cast<long long>(location.timestamp));
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
