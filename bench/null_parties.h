// Do-nothing remote parties for measurements: a fusion daemon whose methods
// return at once, its location-engine interface, and a framework GNSS callback.
// Unlike the scenario world's fakes they format nothing, so a measurement sees
// the library's own cost. Each object counts the calls it takes with a plain
// (unlocked) increment, so tests can tell that a path really reached it.
#pragma once

#include <android/hardware/gnss/2.0/IGnssCallback.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGnssCallback.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGnssInterface.h>
#include <vendor/zendra/hardware/fusd/1.3/IFusdLbs.h>

#include <atomic>
#include <cstdint>
#include <mutex>

namespace bench {

namespace fusd_v1_0 = ::vendor::zendra::hardware::fusd::V1_0;
namespace fusd_v1_1 = ::vendor::zendra::hardware::fusd::V1_1;
namespace fusd_v1_2 = ::vendor::zendra::hardware::fusd::V1_2;
namespace fusd_v1_3 = ::vendor::zendra::hardware::fusd::V1_3;
namespace gnss_v1_0 = ::android::hardware::gnss::V1_0;
namespace gnss_v2_0 = ::android::hardware::gnss::V2_0;

using ::android::sp;
using ::android::hardware::hidl_bitfield;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;

// Counts calls from one thread at a time without a locked instruction.
class CallCount {
  public:
    void add() {
        mCount.store(mCount.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
    uint64_t value() const { return mCount.load(std::memory_order_relaxed); }

  private:
    std::atomic<uint64_t> mCount{0};
};

// The daemon's location engine: keeps the callback the library registers.
class NullEngine : public fusd_v1_2::IFusdGnssInterface {
  public:
    Return<void> setCallback(const sp<fusd_v1_2::IFusdGnssCallback>& callback) override;
    Return<void> sendSvStatus(uint32_t trackedSvCount) override;
    Return<void> sendNmeaUpdate(bool rmcValid, int64_t timestamp) override;
    Return<void> sendLocationData(const gnss_v1_0::GnssLocation& location) override;
    Return<bool> setMinReportingInterval(uint32_t intervalMs) override;
    Return<void> flushLocations() override;

    sp<fusd_v1_2::IFusdGnssCallback> callback();
    CallCount feedCalls;  // sendSvStatus, sendNmeaUpdate and sendLocationData

  private:
    std::mutex mLock;
    sp<fusd_v1_2::IFusdGnssCallback> mCallback;
};

// The daemon's root interface. It offers the location engine only: geofence and
// batching interfaces are absent, which the library accepts.
class NullDaemon : public fusd_v1_3::IFusdLbs {
  public:
    explicit NullDaemon(const sp<NullEngine>& engine) : mEngine(engine) {}

    Return<void> getVersion(getVersion_cb) override;
    Return<bool> setLogLevel(int32_t) override;
    Return<hidl_bitfield<fusd_v1_0::FusionSource>> getSupportedSources() override;
    Return<bool> enableSources(hidl_bitfield<fusd_v1_0::FusionSource>) override;
    Return<bool> setFusionMode(fusd_v1_0::FusionMode) override;
    Return<fusd_v1_0::FusionMode> getFusionMode() override;
    Return<bool> injectTime(int64_t, int64_t, int32_t) override;
    Return<bool> injectLocation(double, double, float) override;
    Return<void> deleteAidingData(uint32_t) override;
    Return<bool> setEngineConfig(const hidl_string&, const hidl_string&) override;
    Return<bool> setSensorHubEnabled(bool) override;
    Return<uint32_t> getCapabilities() override;
    Return<bool> setPowerMode(int32_t) override;
    Return<sp<fusd_v1_1::IGnssBatchingInterface>> getGnssBatchingInterface() override;
    Return<bool> injectWifiScanResult(const hidl_vec<uint8_t>&) override;
    Return<bool> setUserActivityHint(int32_t) override;
    Return<bool> setIndoorMode(bool) override;
    Return<int32_t> getEngineState() override;
    Return<void> sendGnssStartCmd(fusd_v1_2::GnssCommandType, bool) override;
    Return<bool> setGnssMeasurementEnabled(bool) override;
    Return<bool> injectGnssMeasurement(const hidl_vec<uint8_t>&) override;
    Return<bool> setMapMatchingEnabled(bool) override;
    Return<sp<fusd_v1_2::IFusdGeofenceInterface>> getFusdGeofenceInterface() override;
    Return<sp<fusd_v1_2::IFusdGnssInterface>> getFusdGnssInterface() override;
    Return<bool> setVehicleMode(bool) override;
    Return<void> getFusionStatistics(getFusionStatistics_cb) override;

  private:
    sp<NullEngine> mEngine;
};

// The framework's GNSS callback.
class NullFramework : public gnss_v2_0::IGnssCallback {
  public:
    using SvStatus = gnss_v1_0::IGnssCallback::GnssSvStatus;
    using SvInfoList = hidl_vec<gnss_v2_0::IGnssCallback::GnssSvInfo>;

    Return<void> gnssLocationCb(const gnss_v1_0::GnssLocation& location) override;
    Return<void> gnssStatusCb(gnss_v1_0::IGnssCallback::GnssStatusValue) override;
    Return<void> gnssSvStatusCb(const SvStatus& svInfo) override;
    Return<void> gnssNmeaCb(int64_t, const hidl_string&) override;
    Return<void> gnssSetCapabilitesCb(
        hidl_bitfield<gnss_v1_0::IGnssCallback::Capabilities>) override;
    Return<void> gnssAcquireWakelockCb() override;
    Return<void> gnssReleaseWakelockCb() override;
    Return<void> gnssRequestTimeCb() override;
    Return<void> gnssSetSystemInfoCb(const gnss_v1_0::IGnssCallback::GnssSystemInfo&) override;
    Return<void> gnssNameCb(const hidl_string&) override;
    Return<void> gnssRequestLocationCb(bool) override;
    Return<void> gnssSetCapabilitiesCb_2_0(
        hidl_bitfield<gnss_v2_0::IGnssCallback::Capabilities>) override;
    Return<void> gnssLocationCb_2_0(const gnss_v2_0::GnssLocation&) override;
    Return<void> gnssRequestLocationCb_2_0(bool, bool) override;
    Return<void> gnssSvStatusCb_2_0(const SvInfoList& svInfoList) override;

    CallCount locations;  // gnssLocationCb
    CallCount svReports;  // gnssSvStatusCb and gnssSvStatusCb_2_0
    uint64_t lastSvCount() const { return mLastSvCount.load(std::memory_order_relaxed); }

  private:
    std::atomic<uint64_t> mLastSvCount{0};
};

}  // namespace bench
