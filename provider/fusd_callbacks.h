// The library's objects that the fusion daemon and the runtime call.
#pragma once

#include "module_state.h"

// Fused locations from the location engine.
class FusdGnssCallback : public fusd_v1_2::IFusdGnssCallback {
  public:
    android::hardware::Return<void> reportFusdLocation(
        const gnss_v1_0::GnssLocation& location) override;
};

// Geofence results, transitions, availability and current-location answers.
class FusdGeofenceCallback : public fusd_v1_2::IFusdGeofenceCallback {
  public:
    using GeofenceResults = android::hardware::hidl_vec<fusd_v1_2::GeofenceResult>;
    using GeofenceTransition = gnss_v1_0::IGnssGeofenceCallback::GeofenceTransition;
    using GeofenceStatus = gnss_v1_0::IGnssGeofenceCallback::GeofenceStatus;

    android::hardware::Return<void> geofenceAddResultCb(const GeofenceResults& results) override;
    android::hardware::Return<void> geofenceRemoveResultCb(const GeofenceResults& results) override;
    android::hardware::Return<void> onGetCurrentLocationCb(int32_t locSource,
                                                           const gnss_v1_0::GnssLocation& location,
                                                           int64_t requestId,
                                                           int64_t elapsedTimeMs) override;
    android::hardware::Return<void> gnssGeofenceTransitionCb(
        int32_t geofenceId, const gnss_v1_0::GnssLocation& location, GeofenceTransition transition,
        int64_t timestamp) override;
    android::hardware::Return<void> gnssGeofenceStatusCb(
        int32_t availability, const gnss_v1_0::GnssLocation& lastLocation) override;
    android::hardware::Return<void> gnssGeofencePauseCb(int32_t geofenceId,
                                                        GeofenceStatus status) override;
    android::hardware::Return<void> gnssGeofenceResumeCb(int32_t geofenceId,
                                                         GeofenceStatus status) override;
};

// Empties the daemon handles when the daemon dies.
class FusdDeathRecipient : public android::hardware::hidl_death_recipient {
  public:
    void serviceDied(uint64_t cookie,
                     const android::wp<android::hidl::base::V1_0::IBase>& who) override;
};
