#include "framework_tap.h"

#include <utility>

namespace replay {

using android::hardware::hidl_bitfield;
using android::hardware::hidl_string;
using android::hardware::Return;
using android::hardware::gnss::V1_0::GnssConstellationType;
using android::hardware::gnss::V1_0::IGnssCallback;

namespace {

constexpr uint8_t kUsedInFix = static_cast<uint8_t>(IGnssCallback::GnssSvFlags::USED_IN_FIX);

}  // namespace

int usedGps(const FrameworkTap::V1Status& status) {
    const uint32_t n = status.numSvs < 64 ? status.numSvs : 64;
    int used = 0;
    for (uint32_t i = 0; i < n; ++i) {
        const auto& sv = status.gnssSvList[i];
        used += sv.constellation == GnssConstellationType::GPS && (sv.svFlag & kUsedInFix) != 0;
    }
    return used;
}

int usedGps(const FrameworkTap::V2List& list) {
    int used = 0;
    for (const auto& sv : list) {
        used += sv.constellation == android::hardware::gnss::V2_0::GnssConstellationType::GPS &&
                (sv.v1_0.svFlag & kUsedInFix) != 0;
    }
    return used;
}

FrameworkTap::FrameworkTap(android::sp<android::hardware::gnss::V2_0::IGnssCallback> inner)
    : mInner(std::move(inner)) {}

Return<void> FrameworkTap::gnssLocationCb(const V1Location& location) {
    ++mLocations;
    return mInner->gnssLocationCb(location);
}

Return<void> FrameworkTap::gnssSvStatusCb(const V1Status& svInfo) {
    mLastListUsed = usedGps(svInfo);
    return mInner->gnssSvStatusCb(svInfo);
}

Return<void> FrameworkTap::gnssLocationCb_2_0(const V2Location& location) {
    ++mLocations;
    return mInner->gnssLocationCb_2_0(location);
}

Return<void> FrameworkTap::gnssSvStatusCb_2_0(const V2List& svInfoList) {
    mLastListUsed = usedGps(svInfoList);
    return mInner->gnssSvStatusCb_2_0(svInfoList);
}

// The rest only pass through.
Return<void> FrameworkTap::gnssStatusCb(GnssStatusValue status) {
    return mInner->gnssStatusCb(status);
}
Return<void> FrameworkTap::gnssNmeaCb(int64_t timestamp, const hidl_string& nmea) {
    return mInner->gnssNmeaCb(timestamp, nmea);
}
Return<void> FrameworkTap::gnssSetCapabilitesCb(
    hidl_bitfield<IGnssCallback::Capabilities> capabilities) {
    return mInner->gnssSetCapabilitesCb(capabilities);
}
Return<void> FrameworkTap::gnssAcquireWakelockCb() {
    return mInner->gnssAcquireWakelockCb();
}
Return<void> FrameworkTap::gnssReleaseWakelockCb() {
    return mInner->gnssReleaseWakelockCb();
}
Return<void> FrameworkTap::gnssRequestTimeCb() {
    return mInner->gnssRequestTimeCb();
}
Return<void> FrameworkTap::gnssSetSystemInfoCb(const GnssSystemInfo& info) {
    return mInner->gnssSetSystemInfoCb(info);
}
Return<void> FrameworkTap::gnssNameCb(const hidl_string& name) {
    return mInner->gnssNameCb(name);
}
Return<void> FrameworkTap::gnssRequestLocationCb(bool independentFromGnss) {
    return mInner->gnssRequestLocationCb(independentFromGnss);
}
Return<void> FrameworkTap::gnssSetCapabilitiesCb_2_0(hidl_bitfield<Capabilities> capabilities) {
    return mInner->gnssSetCapabilitiesCb_2_0(capabilities);
}
Return<void> FrameworkTap::gnssRequestLocationCb_2_0(bool independentFromGnss,
                                                     bool isUserEmergency) {
    return mInner->gnssRequestLocationCb_2_0(independentFromGnss, isUserEmergency);
}

}  // namespace replay
