// `call` binders of the fusion-daemon link: connection, death and re-initialisation,
// platform probes and the framework callbacks.
#include <zdgnssprovider.h>

#include "call_args.h"
#include "world/world.h"

namespace sim {

namespace {

using android::hardware::hidl_string;

bool bindProcessFusdServiceDied(CallArgs& in, CallAction* run) {
    uint64_t cookie = 0;
    if (!in.integer(&cookie) || !in.emptyWeakReference() || !in.done()) return false;
    *run = [cookie] {
        callAndReport([cookie] {
            processFusdServiceDied(cookie, android::wp<android::hidl::base::V1_0::IBase>());
        });
    };
    return true;
}

bool bindReinitFusdBatching(CallArgs& in, CallAction* run) {
    hidl_string fqName;
    hidl_string name;
    bool preexisting = false;
    if (!in.string(&fqName) || !in.string(&name) || !in.boolean(&preexisting) || !in.done()) {
        return false;
    }
    *run = [=] { callAndReport([&] { reinitFusdBatching(fqName, name, preexisting); }); };
    return true;
}

bool bindSetBatchingStatus(CallArgs& in, CallAction* run) {
    int32_t status = 0;
    if (!in.integer(&status) || !in.done()) return false;
    *run = [status] { callAndReport([status] { set_batching_status(status); }); };
    return true;
}

// set_batchingOptions PERIOD_NANOS FLAGS
bool bindSetBatchingOptions(CallArgs& in, CallAction* run) {
    android::hardware::gnss::V1_0::IGnssBatching::Options options{};
    if (!in.integer(&options.periodNanos) || !in.integer(&options.flags) || !in.done()) {
        return false;
    }
    *run = [options] { callAndReport([options] { set_batchingOptions(options); }); };
    return true;
}

bool bindRegisterCallback(CallArgs& in, CallAction* run) {
    FrameworkObject gnss;
    FrameworkObject geofence;
    FrameworkObject corvane;
    if (!in.object(FrameworkObject::GnssCb, &gnss) ||
        !in.object(FrameworkObject::GeofenceCb, &geofence) ||
        !in.object(FrameworkObject::CorvaneCb, &corvane) || !in.done()) {
        return false;
    }
    *run = [=] {
        World& world = World::get();
        callAndReport([&] {
            registerCallback(unlessNull(gnss, world.gnssCb()),
                             unlessNull(geofence, world.geofenceCb()),
                             unlessNull(corvane, world.corvaneCb()));
        });
    };
    return true;
}

}  // namespace

void addLinkCalls(CallTable& t) {
    t["fusionD_init"] = noArgs(fusionD_init);
    t["fd_init"] = noArgs(fd_init);
    t["FdGetService"] = noArgs(FdGetService);
    t["isFDSupport"] = noArgs(isFDSupport);
    t["isFDGeofenceSupport"] = noArgs(isFDGeofenceSupport);
    t["getBatcgingIface"] = noArgs(getBatcgingIface);
    t["processFusdServiceDied"] = bindProcessFusdServiceDied;
    t["reinitFusdBatching"] = bindReinitFusdBatching;
    t["set_batching_status"] = bindSetBatchingStatus;
    t["set_batchingOptions"] = bindSetBatchingOptions;
    t["checkChipsetType"] = noArgs(checkChipsetType);
    t["getChipsetType"] = noArgs(getChipsetType);
    t["checkBatchingChannelType"] = noArgs(checkBatchingChannelType);
    t["getBatchingChannelType"] = noArgs(getBatchingChannelType);
    t["registerCallback"] = bindRegisterCallback;
}

}  // namespace sim
