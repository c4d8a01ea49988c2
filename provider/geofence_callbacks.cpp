// The daemon's geofence reports, relayed to the framework's geofence callback
// and, for add results, to the provider's fence client. The daemon always gets
// a success status back; failed framework calls are consumed and ignored.
#include <log/log.h>

#include <vector>

#include "fusd_callbacks.h"

using android::sp;
using android::hardware::Return;
using android::hardware::Void;

namespace {

using GeofenceCallback = gnss_v1_0::IGnssGeofenceCallback;

// The framework's geofence callback, or null after logging that it is missing.
sp<GeofenceCallback> frameworkOrLog() {
    sp<GeofenceCallback> framework = g_gnssGeofenceCbIface.get();
    if (framework == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s:g_gnssGeofenceCbIface is null\n",
                            kLogPrefix);
    }
    return framework;
}

using StatusOperation = Return<void> (GeofenceCallback::*)(int32_t,
                                                           GeofenceCallback::GeofenceStatus);

// Pause and resume results: an error is logged, then the status is forwarded unchanged.
void relayStatus(StatusOperation operation, const char* errorFormat, const char* infoFormat,
                 int32_t geofenceId, GeofenceCallback::GeofenceStatus status) {
    int32_t code = static_cast<int32_t>(status);
    if (code != 0) __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, errorFormat, kLogPrefix, code);
    sp<GeofenceCallback> framework = frameworkOrLog();
    if (framework == nullptr) return;
    remoteCallWentThrough(((*framework).*operation)(geofenceId, status));
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, infoFormat, kLogPrefix, geofenceId, code);
}

void forwardAddResult(int32_t geofenceId, int32_t result) {
    if (result != 0) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: Error in adding a Geofence: %d\n",
                            kLogPrefix, result);
    }
    sp<GeofenceCallback> framework = frameworkOrLog();
    if (framework == nullptr) return;
    remoteCallWentThrough(framework->gnssGeofenceAddCb(
        geofenceId, static_cast<GeofenceCallback::GeofenceStatus>(result)));
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: geofenceAddResultCb: id=%d, result= %d\n",
                        kLogPrefix, geofenceId, result);
}

}  // namespace

Return<void> FusdGeofenceCallback::geofenceAddResultCb(const GeofenceResults& results) {
    if (results.size() == 0) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: geofenceAddResultCb  size is 0!",
                            kLogPrefix);
        return Void();
    }
    // The daemon sets no bound on the count, so the arrays are sized to it.
    std::vector<int32_t> ids(results.size(), 0);
    std::vector<int32_t> codes(results.size(), 0);
    for (size_t i = 0; i < results.size(); ++i) {
        forwardAddResult(results[i].geofenceId, results[i].result);
        ids[i] = results[i].geofenceId;
        codes[i] = results[i].result;
    }
    sp<FdCorvaneCallback_> client = fdCorvaneCb.get();
    if (client != nullptr && client->geofenceAddResult != nullptr) {
        client->geofenceAddResult(ids.data(), codes.data(), static_cast<uint32_t>(results.size()));
    } else {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: fdCorvaneCb is null", kLogPrefix);
    }
    return Void();
}

Return<void> FusdGeofenceCallback::geofenceRemoveResultCb(const GeofenceResults& results) {
    for (const auto& entry : results) {
        if (entry.result != 0) continue;  // failed removals are dropped without a trace
        sp<GeofenceCallback> framework = frameworkOrLog();
        if (framework == nullptr) continue;
        remoteCallWentThrough(
            framework->gnssGeofenceRemoveCb(entry.geofenceId, GeofenceStatus::OPERATION_SUCCESS));
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: geofenceRemoveResultCb: id=%d, result= %d", kLogPrefix,
                            entry.geofenceId, 0);
    }
    return Void();
}

Return<void> FusdGeofenceCallback::onGetCurrentLocationCb(int32_t locSource,
                                                          const gnss_v1_0::GnssLocation& location,
                                                          int64_t /*requestId*/,
                                                          int64_t /*elapsedTimeMs*/) {
    sp<GeofenceCallback> framework = frameworkOrLog();
    if (framework == nullptr) return Void();
    // The source code travels in the geofence-id place; transition 0 is none of
    // the published transitions, which marks the report as a location answer.
    remoteCallWentThrough(framework->gnssGeofenceTransitionCb(
        locSource, location, static_cast<GeofenceTransition>(0), 0));
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: onGetCurrentLocationCb in,locSource = %d",
                        kLogPrefix, locSource);
    return Void();
}

Return<void> FusdGeofenceCallback::gnssGeofenceTransitionCb(int32_t geofenceId,
                                                            const gnss_v1_0::GnssLocation& location,
                                                            GeofenceTransition transition,
                                                            int64_t timestamp) {
    sp<GeofenceCallback> framework = frameworkOrLog();
    if (framework == nullptr) return Void();
    remoteCallWentThrough(
        framework->gnssGeofenceTransitionCb(geofenceId, location, transition, timestamp));
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                        "%s: gnssGeofenceTransitionCb in,geofenceId=%d, transition=%d", kLogPrefix,
                        geofenceId, static_cast<int32_t>(transition));
    return Void();
}

Return<void> FusdGeofenceCallback::gnssGeofenceStatusCb(
    int32_t availability, const gnss_v1_0::GnssLocation& lastLocation) {
    sp<GeofenceCallback> framework = frameworkOrLog();
    if (framework == nullptr) return Void();
    remoteCallWentThrough(framework->gnssGeofenceStatusCb(
        static_cast<GeofenceCallback::GeofenceAvailability>(availability), lastLocation));
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: gnssGeofenceStatusCb:result= %d",
                        kLogPrefix, availability);
    return Void();
}

Return<void> FusdGeofenceCallback::gnssGeofencePauseCb(int32_t geofenceId, GeofenceStatus status) {
    relayStatus(&GeofenceCallback::gnssGeofencePauseCb, "%s: Error in pausing fusdGeofence: %d\n",
                "%s: gnssGeofencePauseCb:id=%d, result= %d", geofenceId, status);
    return Void();
}

Return<void> FusdGeofenceCallback::gnssGeofenceResumeCb(int32_t geofenceId, GeofenceStatus status) {
    relayStatus(&GeofenceCallback::gnssGeofenceResumeCb, "%s: Error in resuming fusdGeofence: %d\n",
                "%s: gnssGeofenceResumeCb:id=%d, result= %d", geofenceId, status);
    return Void();
}
