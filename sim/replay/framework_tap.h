// The framework's GNSS callback as the replay registers it with the library: every call
// goes on to the world's recording callback (so the transcript reads as in a scenario),
// and what the library itself reports is noted for the cycle records.
#pragma once

#include <android/hardware/gnss/2.0/IGnssCallback.h>

#include <atomic>
#include <cstdint>

namespace replay {

// Entries that are GPS satellites used in the fix, as the library counts them.
int usedGps(const android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus& status);
int usedGps(
    const android::hardware::hidl_vec<android::hardware::gnss::V2_0::IGnssCallback::GnssSvInfo>&
        list);

class FrameworkTap : public android::hardware::gnss::V2_0::IGnssCallback {
  public:
    using V1Location = android::hardware::gnss::V1_0::GnssLocation;
    using V2Location = android::hardware::gnss::V2_0::GnssLocation;
    using V1Status = android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus;
    using V2List =
        android::hardware::hidl_vec<android::hardware::gnss::V2_0::IGnssCallback::GnssSvInfo>;

    explicit FrameworkTap(android::sp<android::hardware::gnss::V2_0::IGnssCallback> inner);

    // Locations and satellite lists the library reported since the last take.
    int takeLocations() { return mLocations.exchange(0); }
    // Used GPS satellites in the last list the library reported since the last take; -1: none.
    int takeLastListUsed() { return mLastListUsed.exchange(-1); }

    android::hardware::Return<void> gnssLocationCb(const V1Location& location) override;
    android::hardware::Return<void> gnssStatusCb(GnssStatusValue status) override;
    android::hardware::Return<void> gnssSvStatusCb(const V1Status& svInfo) override;
    android::hardware::Return<void> gnssNmeaCb(int64_t timestamp,
                                               const android::hardware::hidl_string& nmea) override;
    android::hardware::Return<void> gnssSetCapabilitesCb(
        android::hardware::hidl_bitfield<android::hardware::gnss::V1_0::IGnssCallback::Capabilities>
            capabilities) override;
    android::hardware::Return<void> gnssAcquireWakelockCb() override;
    android::hardware::Return<void> gnssReleaseWakelockCb() override;
    android::hardware::Return<void> gnssRequestTimeCb() override;
    android::hardware::Return<void> gnssSetSystemInfoCb(const GnssSystemInfo& info) override;
    android::hardware::Return<void> gnssNameCb(const android::hardware::hidl_string& name) override;
    android::hardware::Return<void> gnssRequestLocationCb(bool independentFromGnss) override;
    android::hardware::Return<void> gnssSetCapabilitiesCb_2_0(
        android::hardware::hidl_bitfield<Capabilities> capabilities) override;
    android::hardware::Return<void> gnssLocationCb_2_0(const V2Location& location) override;
    android::hardware::Return<void> gnssRequestLocationCb_2_0(bool independentFromGnss,
                                                              bool isUserEmergency) override;
    android::hardware::Return<void> gnssSvStatusCb_2_0(const V2List& svInfoList) override;

  private:
    const android::sp<android::hardware::gnss::V2_0::IGnssCallback> mInner;
    std::atomic<int> mLocations{0};
    std::atomic<int> mLastListUsed{-1};
};

}  // namespace replay
