// Pads a thin satellite list: while fewer than four GPS satellites are used in
// the fix, five fixed GPS entries marked as used are added to the stored report
// and the list is reported to the framework by the library itself.
#include <log/log.h>

#include "module_state.h"

using android::sp;
using android::hardware::hidl_vec;

namespace {

using SvInfo1 = gnss_v1_0::IGnssCallback::GnssSvInfo;
using SvInfo2 = gnss_v2_0::IGnssCallback::GnssSvInfo;
using SvStatus1 = gnss_v1_0::IGnssCallback::GnssSvStatus;
using SvFlags = gnss_v1_0::IGnssCallback::GnssSvFlags;

constexpr size_t kSvCapacity = static_cast<size_t>(gnss_v1_0::GnssMax::SVS_COUNT);
constexpr uint32_t kMinUsedGps = 4;
constexpr size_t kFakeCount = 5;
constexpr size_t kLastFreeBlock = 59;  // 1.0 store: the fake block starts here when nearly full
constexpr size_t kList2Bound = 60;     // 2.0 list: no fakes from this size on

struct FakeSv {
    int16_t svid;
    float cN0Dbhz;
};
constexpr FakeSv kFakeSvs[kFakeCount] = {{4, 6.0f}, {7, 15.0f}, {1, 2.0f}, {11, 10.0f}, {17, 5.0f}};

SvInfo1 fakeEntry1(size_t i) {
    SvInfo1 sv{};
    sv.svid = kFakeSvs[i].svid;
    sv.constellation = gnss_v1_0::GnssConstellationType::GPS;
    sv.cN0Dbhz = kFakeSvs[i].cN0Dbhz;
    sv.elevationDegrees = 60.0f;
    sv.azimuthDegrees = 90.0f;
    sv.carrierFrequencyHz = 0.0f;
    sv.svFlag = static_cast<uint8_t>(SvFlags::USED_IN_FIX);
    return sv;
}

SvInfo2 fakeEntry2(size_t i) {
    SvInfo2 sv{};
    sv.v1_0 = fakeEntry1(i);
    sv.constellation = gnss_v2_0::GnssConstellationType::GPS;
    return sv;
}

bool usedInFix(uint8_t svFlag) {
    return (svFlag & static_cast<uint8_t>(SvFlags::USED_IN_FIX)) != 0;
}

uint32_t usedGpsCount(const SvStatus1& status, size_t entries) {
    uint32_t count = 0;
    for (size_t i = 0; i < entries; ++i) {
        const SvInfo1& sv = status.gnssSvList[i];
        bool gps = sv.constellation == gnss_v1_0::GnssConstellationType::GPS;
        if (gps && usedInFix(sv.svFlag)) ++count;
    }
    return count;
}

uint32_t usedGpsCount(const std::vector<SvInfo2>& list) {
    uint32_t count = 0;
    for (const SvInfo2& sv : list) {
        bool gps = sv.constellation == gnss_v2_0::GnssConstellationType::GPS;
        if (gps && usedInFix(sv.v1_0.svFlag)) ++count;
    }
    return count;
}

// 1.0 store: append after n entries, or, when fewer than five slots remain,
// fill the last five slots (fake i at 59 + ((n - 60 - i) mod 5)).
void addFakes1(SvStatus1& status, size_t n) {
    if (n <= kLastFreeBlock) {
        for (size_t i = 0; i < kFakeCount; ++i) status.gnssSvList[n + i] = fakeEntry1(i);
        status.numSvs = static_cast<uint32_t>(n + kFakeCount);
        return;
    }
    for (size_t i = 0; i < kFakeCount; ++i) {
        long offset = (static_cast<long>(n) - 60 - static_cast<long>(i)) % 5;
        if (offset < 0) offset += 5;
        status.gnssSvList[kLastFreeBlock + offset] = fakeEntry1(i);
    }
    status.numSvs = static_cast<uint32_t>(kSvCapacity);
}

void logIncrease(uint32_t count) {
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: the USED GPS SV Count is %d", kLogPrefix,
                        static_cast<int>(count));
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: start increase sv", kLogPrefix);
}

void logNoIncrease() {
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                        "%s: location is from Tarvi,but doesn't increase sv ", kLogPrefix);
}

void logIncreaseFinished() {
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: increase sv finished", kLogPrefix);
}

void reportList2(const hidl_vec<SvInfo2>& svInfoList) {
    sp<gnss_v2_0::IGnssCallback> framework = g_gnssCbIface.get();
    if (framework == nullptr) return;
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: begin to report false sv .", kLogPrefix);
    reportZdSvFlag = true;
    remoteCallWentThrough(framework->gnssSvStatusCb_2_0(svInfoList));
}

// What one location made of a store: the used-GPS count found before any
// fake entry was added, whether the store is to be reported, and (2.0 only)
// whether it was too full to pad.
struct Augmentation {
    uint32_t usedGps;
    bool report;
    bool full = false;
};

bool increases(uint32_t usedGps) {
    return usedGps < kMinUsedGps;
}

// Whether the previous location padded the store, and the mark for the next one: read and
// written in the same hold of the store's lock as the count, so that two locations never
// both read the mark before either writes it. The location's own flag is set in that hold
// too, so that isNeedSvIncrease never pairs it with the previous location's mark.
bool takeIncreaseMark(uint32_t usedGps) REQUIRES(g_svStoreLock) {
    locationFlag = true;
    const bool padded = svIncreaseFlag;
    svIncreaseFlag = increases(usedGps);
    return padded;
}

// Counts, pads and copies the 1.0 store for its report in one hold of the lock;
// the framework is called on the copy, after the lock is dropped.
Augmentation augmentStore1(SvStatus1& report) {
    std::lock_guard<std::mutex> lock(g_svStoreLock);
    SvStatus1& stored = g_svStatus;
    // A numSvs above the record's 64 entries is taken as a full record.
    size_t n = stored.numSvs < kSvCapacity ? stored.numSvs : kSvCapacity;
    const uint32_t usedGps = usedGpsCount(stored, n);
    Augmentation result{usedGps, takeIncreaseMark(usedGps)};
    if (increases(result.usedGps)) {
        addFakes1(stored, n);
        result.report = true;
    }
    if (result.report) report = stored;
    return result;
}

// The same for the 2.0 store.
Augmentation augmentStore2(hidl_vec<SvInfo2>& report) {
    std::lock_guard<std::mutex> lock(g_svStoreLock);
    std::vector<SvInfo2>& stored = g_svInfoList;
    const uint32_t usedGps = usedGpsCount(stored);
    Augmentation result{usedGps, takeIncreaseMark(usedGps)};
    result.full = stored.size() >= kList2Bound;
    if (increases(result.usedGps)) {
        if (!result.full) {
            for (size_t i = 0; i < kFakeCount; ++i) stored.push_back(fakeEntry2(i));
        }
        result.report = true;
    }
    if (result.report) report = stored;
    return result;
}

}  // namespace

void reportAddSvList(const SvStatus1& status) {
    sp<gnss_v2_0::IGnssCallback> framework = g_gnssCbIface.get();
    if (framework == nullptr) return;
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: begin to report false sv .", kLogPrefix);
    reportZdSvFlag = true;
    remoteCallWentThrough(framework->gnssSvStatusCb(status));
}

void ReportAddSvList(std::vector<SvInfo2> svInfoList) {
    reportList2(hidl_vec<SvInfo2>(svInfoList));
}

void addSvList(const gnss_v1_0::GnssLocation& location) {
    __android_log_print(ANDROID_LOG_DEBUG, LOG_TAG, "%s: location 1.0 flag is %d", kLogPrefix,
                        static_cast<int>(location.gnssLocationFlags));
    if (qttffFlag) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: location from qttff, so don't do sv_add.", kLogPrefix);
        return;
    }
    SvStatus1 report;
    Augmentation found = augmentStore1(report);
    if (!increases(found.usedGps)) {
        if (found.report) {
            logNoIncrease();
            reportAddSvList(report);
        }
        return;
    }
    logIncrease(found.usedGps);
    reportAddSvList(report);
    logIncreaseFinished();
}

void addSvList(const gnss_v2_0::GnssLocation& location) {
    __android_log_print(ANDROID_LOG_DEBUG, LOG_TAG, "%s: location 2.0 flag is %d", kLogPrefix,
                        static_cast<int>(location.v1_0.gnssLocationFlags));
    if (qttffFlag) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: location from qttff ,so don't do sv_add.", kLogPrefix);
        return;
    }
    hidl_vec<SvInfo2> list;
    Augmentation found = augmentStore2(list);
    if (!increases(found.usedGps)) {
        if (found.report) {
            logNoIncrease();
            reportList2(list);
        }
        return;
    }
    logIncrease(found.usedGps);
    if (found.full) {
        __android_log_print(ANDROID_LOG_DEBUG, LOG_TAG,
                            "%s: sv number > 58, no need add fake satellites", kLogPrefix);
    }
    reportList2(list);
    logIncreaseFinished();
}

// Both flags are read in one hold of the store's lock, where a location sets them together.
bool isNeedSvIncrease() {
    std::lock_guard<std::mutex> lock(g_svStoreLock);
    return svIncreaseFlag && locationFlag;
}

bool isReportZdSv() {
    return reportZdSvFlag;
}

void resetLocationFlag() {
    reportZdSvFlag = false;
    locationFlag = false;
}
