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

bool isTracked(float cN0Dbhz) {
    return static_cast<double>(cN0Dbhz) > kTrackedCn0Threshold;  // NaN compares false
}

}  // namespace

void send_nmea_update_to_tarvi(long long timestamp, const char* nmea, unsigned int length) {
    if (length > kMaxNmeaChunk) return;
    sp<fusd_v1_2::IFusdGnssInterface> engine = loadHandle(g_fusdGnssIface);
    if (engine == nullptr || nmea == nullptr) return;
    const char* rmc = strstr(nmea, "$GPRMC");
    if (rmc == nullptr) return;
    size_t tail = strlen(rmc);
    if (tail >= kRmcBufferSize) {
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG, "%s: [LocMgr] invalid nmea data: %d",
                            kLogPrefix, static_cast<int>(tail));
        return;
    }
    char sentence[kRmcBufferSize];
    memset(sentence, 0, sizeof(sentence));
    if (memcpy_s(sentence, sizeof(sentence), rmc, tail) != 0) {
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG, "%s: [LocMgr] memcpy_s nmea error",
                            kLogPrefix);
        return;
    }
    sentence[tail] = '\0';
    bool rmcValid = strstr(sentence, ",A,") != nullptr;
    if (engine->sendNmeaUpdate(rmcValid, timestamp).isOk()) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: [LocMgr] Debug: Sending NMEA update to TARVI", kLogPrefix);
    } else {
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG,
                            "%s: [LocMgr] Debug: send NMEA update to TARVI fail", kLogPrefix);
    }
}

void send_sv_status_to_tarvi(unsigned int count) {
    sp<fusd_v1_2::IFusdGnssInterface> engine = loadHandle(g_fusdGnssIface);
    if (engine == nullptr) return;
    if (engine->sendSvStatus(count).isOk()) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: [LocMgr] Debug: Sending SV status to TARVI", kLogPrefix);
    } else {
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG,
                            "%s: [LocMgr] Debug: send SV status to TARVI fail", kLogPrefix);
    }
}

void sendSvInfo(const gnss_v1_0::IGnssCallback::GnssSvStatus& status) {
    uint32_t numSvs = status.numSvs;
    uint32_t stored;
    {
        std::lock_guard<std::mutex> lock(svStoreLock());
        memset_s(&g_svStatus, sizeof(g_svStatus), 0, sizeof(g_svStatus));
        memcpy_s(&g_svStatus, sizeof(g_svStatus), &status, sizeof(status));
        stored = g_svStatus.numSvs;
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: callback 1.0 sv number is %d .", kLogPrefix,
                        static_cast<int>(stored));
    // The record holds 64 entries whatever numSvs claims.
    size_t entries = numSvs < kSvCapacity ? numSvs : kSvCapacity;
    unsigned int tracked = 0;
    for (size_t i = 0; i < entries; ++i) {
        if (isTracked(status.gnssSvList[i].cN0Dbhz)) ++tracked;
    }
    send_sv_status_to_tarvi(tracked);
}

void sendSvInfo(const hidl_vec<gnss_v2_0::IGnssCallback::GnssSvInfo>& svInfoList) {
    unsigned int tracked = 0;
    {
        std::lock_guard<std::mutex> lock(svStoreLock());
        g_svInfoList.clear();  // keeps the capacity from report to report
        for (const auto& sv : svInfoList) {
            g_svInfoList.push_back(sv);
            if (isTracked(sv.v1_0.cN0Dbhz)) ++tracked;
        }
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: callback 2.0 send_svInfor is called .",
                        kLogPrefix);
    send_sv_status_to_tarvi(tracked);
}
