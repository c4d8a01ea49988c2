// `call` binders of the geofence requests.
#include <zdgnssprovider.h>

#include "call_args.h"

namespace sim {

namespace {

// fd_add_geofence ID LAT LON RADIUS LAST_TRANSITION MONITOR_TRANSITIONS RESPONSIVENESS_MS
// UNKNOWN_TIMER_MS
bool bindAddGeofence(CallArgs& in, CallAction* run) {
    int32_t id = 0, lastTransition = 0, monitor = 0, responsiveness = 0, unknownTimer = 0;
    double latitude = 0, longitude = 0, radius = 0;
    if (!in.integer(&id) || !in.real(&latitude) || !in.real(&longitude) || !in.real(&radius) ||
        !in.integer(&lastTransition) || !in.integer(&monitor) || !in.integer(&responsiveness) ||
        !in.integer(&unknownTimer) || !in.done()) {
        return false;
    }
    *run = [=] {
        callAndReport([=] {
            return fd_add_geofence(id, latitude, longitude, radius, lastTransition, monitor,
                                   responsiveness, unknownTimer);
        });
    };
    return true;
}

// The requests that take just the geofence's id.
CallBinder byId(bool (*request)(int32_t)) {
    return [request](CallArgs& in, CallAction* run) {
        int32_t id = 0;
        if (!in.integer(&id) || !in.done()) return false;
        *run = [request, id] { callAndReport([=] { return request(id); }); };
        return true;
    };
}

bool bindResumeGeofence(CallArgs& in, CallAction* run) {
    int32_t id = 0;
    int32_t monitor = 0;
    if (!in.integer(&id) || !in.integer(&monitor) || !in.done()) return false;
    *run = [id, monitor] { callAndReport([=] { return fd_resume_geofence(id, monitor); }); };
    return true;
}

}  // namespace

void addGeofenceCalls(CallTable& t) {
    t["fd_add_geofence"] = bindAddGeofence;
    t["fd_remove_geofence"] = byId(fd_remove_geofence);
    t["fd_pause_genfence"] = byId(fd_pause_genfence);
    t["fd_resume_geofence"] = bindResumeGeofence;
}

}  // namespace sim
