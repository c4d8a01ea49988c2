// Geofence requests routed to the fusion daemon. Each returns whether the call
// reached the daemon, unlogged: the caller gets that answer and the daemon's
// verdict arrives later through its callback.
#include <log/log.h>

#include <cstring>

#include "module_state.h"

using android::sp;
using android::hardware::hidl_vec;

namespace {

constexpr int32_t kPresetA = 1;
constexpr int32_t kPresetB = 16;

// Geofencing through the daemon needs a capable chip and a connected daemon.
sp<fusd_v1_2::IFusdGeofenceInterface> geofenceChannel() {
    if (!g_chipSupportsGeofence) return nullptr;
    return g_fusdGeofenceIface.get();
}

}  // namespace

bool fd_add_geofence(int32_t geofenceId, double latitudeDegrees, double longitudeDegrees,
                     double radiusMeters, int32_t lastTransition, int32_t monitorTransitions,
                     int32_t notificationResponsivenessMs, int32_t unknownTimerMs) {
    sp<fusd_v1_2::IFusdGeofenceInterface> channel = geofenceChannel();
    if (channel == nullptr) return false;
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: addGeofence fusd channel", kLogPrefix);
    // Built in place so that padding and reserved bytes go out as zero.
    hidl_vec<fusd_v1_2::GeofenceRequest> requests(1);
    fusd_v1_2::GeofenceRequest& request = requests[0];
    memset(&request, 0, sizeof(request));
    request.geofenceId = geofenceId;
    request.latitudeDegrees = latitudeDegrees;
    request.longitudeDegrees = longitudeDegrees;
    request.radiusMeters = radiusMeters;
    request.presetA = kPresetA;
    request.notificationResponsivenessMs = notificationResponsivenessMs;
    request.unknownTimerMs = unknownTimerMs;
    request.monitorTransitions = monitorTransitions;
    request.lastTransition = lastTransition;
    request.presetB = kPresetB;
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: FusdAddGeofence: geofenceId=%d", kLogPrefix,
                        geofenceId);
    return remoteCallWentThrough(channel->addGeofence(requests));
}

bool fd_remove_geofence(int32_t geofenceId) {
    sp<fusd_v1_2::IFusdGeofenceInterface> channel = geofenceChannel();
    if (channel == nullptr) return false;
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: removeGeofence fusd channel", kLogPrefix);
    hidl_vec<int32_t> ids{geofenceId};
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: Fusd removeGeofence  id =%d ", kLogPrefix,
                        geofenceId);
    return remoteCallWentThrough(channel->removeGeofence(ids));
}

bool fd_pause_genfence(int32_t geofenceId) {
    sp<fusd_v1_2::IFusdGeofenceInterface> channel = geofenceChannel();
    if (channel == nullptr) return false;
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: pauseGeofence fusd channel", kLogPrefix);
    return remoteCallWentThrough(channel->pauseGeofence(geofenceId));
}

bool fd_resume_geofence(int32_t geofenceId, int32_t monitorTransitions) {
    sp<fusd_v1_2::IFusdGeofenceInterface> channel = geofenceChannel();
    if (channel == nullptr) return false;
    return remoteCallWentThrough(channel->resumeGeofence(geofenceId, monitorTransitions));
}
