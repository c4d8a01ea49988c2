// RMC validity and tracked-satellite counts for the location engine, and the
// satellite store that the list augmentation reads and extends.
#include <bounded_copy.h>
#include <log/log.h>

#include <cstring>

#include "module_state.h"

using android::sp;
using android::hardware::hidl_vec;

namespace {

constexpr unsigned int kMaxNmeaChunk = 10240;
constexpr size_t kRmcBufferSize = 256;
constexpr double kTrackedCn0Threshold = 1e-7;
constexpr size_t kSvCapacity = static_cast<size_t>(gnss_v1_0::GnssMax::SVS_COUNT);
constexpr char kGpsRmc[] = "$GPRMC";
constexpr char kValidStatus[] = ",A,";

bool isTracked(float cN0Dbhz) {
    return cN0Dbhz > kTrackedCn0Threshold;  // NaN compares false
}

unsigned int countTracked(const gnss_v1_0::IGnssCallback::GnssSvInfo* entries, size_t count) {
    unsigned int tracked = 0;
    for (size_t i = 0; i < count; ++i) {
        if (isTracked(entries[i].cN0Dbhz)) ++tracked;
    }
    return tracked;
}

unsigned int countTracked(const hidl_vec<gnss_v2_0::IGnssCallback::GnssSvInfo>& list) {
    unsigned int tracked = 0;
    for (const auto& sv : list) {
        if (isTracked(sv.v1_0.cN0Dbhz)) ++tracked;
    }
    return tracked;
}

// Shared by the exported sender and both sendSvInfo overloads, which call it
// directly rather than through the exported symbol.
void sendTrackedCount(unsigned int count) {
    sp<fusd_v1_2::IFusdGnssInterface> engine = g_fusdGnssIface.get();
    if (engine == nullptr) return;
    if (checkRemoteCall(engine->sendSvStatus(count), ANDROID_LOG_WARN,
                        "%s: [LocMgr] Debug: send SV status to TARVI fail", kLogPrefix)) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: [LocMgr] Debug: Sending SV status to TARVI", kLogPrefix);
    }
}

}  // namespace

void send_nmea_update_to_tarvi(long long timestamp, const char* nmea, unsigned int length) {
    if (length > kMaxNmeaChunk) return;
    sp<fusd_v1_2::IFusdGnssInterface> engine = g_fusdGnssIface.get();
    if (engine == nullptr || nmea == nullptr) return;
    const char* rmc = strstr(nmea, kGpsRmc);
    if (rmc == nullptr) return;
    size_t tail = strlen(rmc);
    if (tail >= kRmcBufferSize) {
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG, "%s: [LocMgr] invalid nmea data: %d",
                            kLogPrefix, static_cast<int>(tail));
        return;
    }
    char sentence[kRmcBufferSize];
    memset_s(sentence, sizeof(sentence), 0, sizeof(sentence));
    if (memcpy_s(sentence, sizeof(sentence), rmc, tail) != 0) {
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG, "%s: [LocMgr] memcpy_s nmea error",
                            kLogPrefix);
        return;
    }
    sentence[tail] = '\0';
    bool rmcValid = strstr(sentence, kValidStatus) != nullptr;
    if (checkRemoteCall(engine->sendNmeaUpdate(rmcValid, timestamp), ANDROID_LOG_WARN,
                        "%s: [LocMgr] Debug: send NMEA update to TARVI fail", kLogPrefix)) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: [LocMgr] Debug: Sending NMEA update to TARVI", kLogPrefix);
    }
}

void send_sv_status_to_tarvi(unsigned int count) {
    sendTrackedCount(count);
}

void sendSvInfo(const gnss_v1_0::IGnssCallback::GnssSvStatus& status) {
    uint32_t numSvs = status.numSvs;
    uint32_t stored;
    {
        std::lock_guard<std::mutex> lock(g_svStoreLock);
        memset_s(&g_svStatus, sizeof(g_svStatus), 0, sizeof(g_svStatus));
        memcpy_s(&g_svStatus, sizeof(g_svStatus), &status, sizeof(status));
        stored = g_svStatus.numSvs;
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: callback 1.0 sv number is %d .", kLogPrefix,
                        static_cast<int>(stored));
    // The record holds 64 entries whatever numSvs claims.
    size_t entries = numSvs < kSvCapacity ? numSvs : kSvCapacity;
    sendTrackedCount(countTracked(status.gnssSvList.data(), entries));
}

void sendSvInfo(const hidl_vec<gnss_v2_0::IGnssCallback::GnssSvInfo>& svInfoList) {
    {
        std::lock_guard<std::mutex> lock(g_svStoreLock);
        g_svInfoList.assign(svInfoList.begin(), svInfoList.end());
    }
    unsigned int tracked = countTracked(svInfoList);
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: callback 2.0 send_svInfor is called .",
                        kLogPrefix);
    sendTrackedCount(tracked);
}
