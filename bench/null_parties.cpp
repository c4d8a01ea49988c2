#include "null_parties.h"

namespace bench {

using ::android::hardware::Void;

// ---- NullEngine

Return<void> NullEngine::setCallback(const sp<fusd_v1_2::IFusdGnssCallback>& callback) {
    std::lock_guard<std::mutex> lock(mLock);
    mCallback = callback;
    return Void();
}

sp<fusd_v1_2::IFusdGnssCallback> NullEngine::callback() {
    std::lock_guard<std::mutex> lock(mLock);
    return mCallback;
}

Return<void> NullEngine::sendSvStatus(uint32_t) {
    feedCalls.add();
    return Void();
}

Return<void> NullEngine::sendNmeaUpdate(bool, int64_t) {
    feedCalls.add();
    return Void();
}

Return<void> NullEngine::sendLocationData(const gnss_v1_0::GnssLocation&) {
    feedCalls.add();
    return Void();
}

Return<bool> NullEngine::setMinReportingInterval(uint32_t) {
    return true;
}

Return<void> NullEngine::flushLocations() {
    return Void();
}

// ---- NullDaemon

Return<void> NullDaemon::getVersion(getVersion_cb) {
    return Void();
}
Return<bool> NullDaemon::setLogLevel(int32_t) {
    return true;
}
Return<hidl_bitfield<fusd_v1_0::FusionSource>> NullDaemon::getSupportedSources() {
    return 0;
}
Return<bool> NullDaemon::enableSources(hidl_bitfield<fusd_v1_0::FusionSource>) {
    return true;
}
Return<bool> NullDaemon::setFusionMode(fusd_v1_0::FusionMode) {
    return true;
}
Return<fusd_v1_0::FusionMode> NullDaemon::getFusionMode() {
    return fusd_v1_0::FusionMode{};
}
Return<bool> NullDaemon::injectTime(int64_t, int64_t, int32_t) {
    return true;
}
Return<bool> NullDaemon::injectLocation(double, double, float) {
    return true;
}
Return<void> NullDaemon::deleteAidingData(uint32_t) {
    return Void();
}
Return<bool> NullDaemon::setEngineConfig(const hidl_string&, const hidl_string&) {
    return true;
}
Return<bool> NullDaemon::setSensorHubEnabled(bool) {
    return true;
}
Return<uint32_t> NullDaemon::getCapabilities() {
    return 0u;
}
Return<bool> NullDaemon::setPowerMode(int32_t) {
    return true;
}
Return<sp<fusd_v1_1::IGnssBatchingInterface>> NullDaemon::getGnssBatchingInterface() {
    return sp<fusd_v1_1::IGnssBatchingInterface>();
}
Return<bool> NullDaemon::injectWifiScanResult(const hidl_vec<uint8_t>&) {
    return true;
}
Return<bool> NullDaemon::setUserActivityHint(int32_t) {
    return true;
}
Return<bool> NullDaemon::setIndoorMode(bool) {
    return true;
}
Return<int32_t> NullDaemon::getEngineState() {
    return 0;
}
Return<void> NullDaemon::sendGnssStartCmd(fusd_v1_2::GnssCommandType, bool) {
    return Void();
}
Return<bool> NullDaemon::setGnssMeasurementEnabled(bool) {
    return true;
}
Return<bool> NullDaemon::injectGnssMeasurement(const hidl_vec<uint8_t>&) {
    return true;
}
Return<bool> NullDaemon::setMapMatchingEnabled(bool) {
    return true;
}
Return<sp<fusd_v1_2::IFusdGeofenceInterface>> NullDaemon::getFusdGeofenceInterface() {
    return sp<fusd_v1_2::IFusdGeofenceInterface>();
}
Return<sp<fusd_v1_2::IFusdGnssInterface>> NullDaemon::getFusdGnssInterface() {
    return sp<fusd_v1_2::IFusdGnssInterface>(mEngine);
}
Return<bool> NullDaemon::setVehicleMode(bool) {
    return true;
}
Return<void> NullDaemon::getFusionStatistics(getFusionStatistics_cb) {
    return Void();
}

// ---- NullFramework

Return<void> NullFramework::gnssLocationCb(const gnss_v1_0::GnssLocation&) {
    locations.add();
    return Void();
}
Return<void> NullFramework::gnssStatusCb(gnss_v1_0::IGnssCallback::GnssStatusValue) {
    return Void();
}
Return<void> NullFramework::gnssSvStatusCb(const SvStatus& svInfo) {
    svReports.add();
    mLastSvCount.store(svInfo.numSvs, std::memory_order_relaxed);
    return Void();
}
Return<void> NullFramework::gnssNmeaCb(int64_t, const hidl_string&) {
    return Void();
}
Return<void> NullFramework::gnssSetCapabilitesCb(
    hidl_bitfield<gnss_v1_0::IGnssCallback::Capabilities>) {
    return Void();
}
Return<void> NullFramework::gnssAcquireWakelockCb() {
    return Void();
}
Return<void> NullFramework::gnssReleaseWakelockCb() {
    return Void();
}
Return<void> NullFramework::gnssRequestTimeCb() {
    return Void();
}
Return<void> NullFramework::gnssSetSystemInfoCb(const gnss_v1_0::IGnssCallback::GnssSystemInfo&) {
    return Void();
}
Return<void> NullFramework::gnssNameCb(const hidl_string&) {
    return Void();
}
Return<void> NullFramework::gnssRequestLocationCb(bool) {
    return Void();
}
Return<void> NullFramework::gnssSetCapabilitiesCb_2_0(
    hidl_bitfield<gnss_v2_0::IGnssCallback::Capabilities>) {
    return Void();
}
Return<void> NullFramework::gnssLocationCb_2_0(const gnss_v2_0::GnssLocation&) {
    return Void();
}
Return<void> NullFramework::gnssRequestLocationCb_2_0(bool, bool) {
    return Void();
}
Return<void> NullFramework::gnssSvStatusCb_2_0(const SvInfoList& svInfoList) {
    svReports.add();
    mLastSvCount.store(svInfoList.size(), std::memory_order_relaxed);
    return Void();
}

}  // namespace bench
