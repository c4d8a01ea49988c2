// RMC validity and tracked-satellite counts for the location engine, and the
// satellite store that the list augmentation reads and extends.
#include <bounded_copy.h>
#include <log/log.h>

#include <cmath>
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

// The largest float not above 1e-7: a float exceeds it exactly when its double
// value exceeds 1e-7, so the counts compare floats without widening each one.
const float kTrackedCn0Floor = [] {
    float nearest = static_cast<float>(kTrackedCn0Threshold);
    return static_cast<double>(nearest) > kTrackedCn0Threshold ? std::nextafter(nearest, 0.0f)
                                                               : nearest;
}();

bool isTracked(float cN0Dbhz) {
    return cN0Dbhz > kTrackedCn0Floor;  // NaN compares false
}

unsigned int countTracked(const gnss_v1_0::IGnssCallback::GnssSvInfo* entries, size_t count) {
    unsigned int tracked = 0;
    for (size_t i = 0; i < count; ++i) tracked += isTracked(entries[i].cN0Dbhz) ? 1 : 0;
    return tracked;
}

unsigned int countTracked(const hidl_vec<gnss_v2_0::IGnssCallback::GnssSvInfo>& list) {
    unsigned int tracked = 0;
    for (const auto& sv : list) tracked += isTracked(sv.v1_0.cN0Dbhz) ? 1 : 0;
    return tracked;
}

// Whether `text` starts with the `length` characters of `prefix`; stops at a
// terminating NUL of `text`, which never matches.
bool startsWith(const char* text, const char* prefix, size_t length) {
    for (size_t i = 0; i < length; ++i) {
        if (text[i] != prefix[i]) return false;
    }
    return true;
}

// The next '$' at or after `p`. A chunk normally starts with one.
const char* nextTag(const char* p) {
    return *p == kGpsRmc[0] ? p : strchr(p, kGpsRmc[0]);
}

// First occurrence of the GPS RMC tag in a NUL-terminated chunk. Jumps from one
// '$' to the next instead of trying every position.
const char* findGpsRmc(const char* chunk) {
    for (const char* p = nextTag(chunk); p != nullptr; p = strchr(p + 1, kGpsRmc[0])) {
        if (startsWith(p, kGpsRmc, sizeof(kGpsRmc) - 1)) return p;
    }
    return nullptr;
}

// Whether the first `length` characters of `text` contain ",A," anywhere. The
// status field comes early in an RMC sentence, so a plain scan finds it fastest.
bool containsValidStatus(const char* text, size_t length) {
    for (size_t i = 1; i + 1 < length; ++i) {
        if (text[i] == kValidStatus[1] && text[i - 1] == kValidStatus[0] &&
            text[i + 1] == kValidStatus[2]) {
            return true;
        }
    }
    return false;
}

// Shared by the exported sender and both sendSvInfo overloads, which call it
// directly rather than through the exported symbol.
void sendTrackedCount(unsigned int count) {
    PinnedHandle<g_fusdGnssIface> engine;
    if (engine == nullptr) return;
    if (engine->sendSvStatus(count).isOk()) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: [LocMgr] Debug: Sending SV status to TARVI", kLogPrefix);
    } else {
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG,
                            "%s: [LocMgr] Debug: send SV status to TARVI fail", kLogPrefix);
    }
}

}  // namespace

void send_nmea_update_to_tarvi(long long timestamp, const char* nmea, unsigned int length) {
    if (length > kMaxNmeaChunk) return;
    PinnedHandle<g_fusdGnssIface> engine;
    if (engine == nullptr || nmea == nullptr) return;
    const char* rmc = findGpsRmc(nmea);
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
    bool rmcValid = containsValidStatus(sentence, tail);
    if (engine->sendNmeaUpdate(rmcValid, timestamp).isOk()) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: [LocMgr] Debug: Sending NMEA update to TARVI", kLogPrefix);
    } else {
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG,
                            "%s: [LocMgr] Debug: send NMEA update to TARVI fail", kLogPrefix);
    }
}

void send_sv_status_to_tarvi(unsigned int count) {
    sendTrackedCount(count);
}

void sendSvInfo(const gnss_v1_0::IGnssCallback::GnssSvStatus& status) {
    uint32_t numSvs = status.numSvs;
    uint32_t stored;
    {
        std::lock_guard<StoreLock> lock(svStoreLock);
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
        std::lock_guard<StoreLock> lock(svStoreLock);
        // Keeps the capacity from report to report.
        g_svInfoList.assign(svInfoList.begin(), svInfoList.end());
    }
    unsigned int tracked = countTracked(svInfoList);
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: callback 2.0 send_svInfor is called .",
                        kLogPrefix);
    sendTrackedCount(tracked);
}
