// The fake fusion daemon: IFusdLbs@1.3 "default" with its GNSS, geofence and batching
// sub-interfaces, in a process that can die and be started again with new objects.
#pragma once

#include <utils/RefBase.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGeofenceCallback.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGnssCallback.h>
#include <zdhost/runtime.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "daemon_calls.h"
#include "fake_objects.h"
#include "feed_tap.h"
#include "party.h"
#include "recording_stubs.h"
#include "values.h"

namespace sim {

class FakeFusd {
  public:
    FakeFusd();

    // The command after `fusd`: register, register-at-lookup K, kill [unpromotable],
    // fail/heal/answer/provide, nested OP ARGS, nested-in IFACE.OP OP ARGS, or a callback
    // operation OP ARGS; false and *error when it is malformed, else *action runs it.
    bool prepare(const std::vector<Token>& args, WorldAction* action, std::string* error);
    // Every verb `fusd` takes, its daemon calls included.
    static const std::vector<std::string>& verbs();
    // Runtime hook: an IFusdLbs look-up is about to be made.
    void beforeLookup(const std::string& fqName);
    // A fresh world: no daemon, no knobs, nothing pending.
    void reset();

    const Party& party() const { return mParty; }
    // The callbacks the library registered with the running daemon's sub-interfaces;
    // null while the daemon is down or before the registration.
    android::sp<vendor::zendra::hardware::fusd::V1_2::IFusdGnssCallback> gnssCallback();
    android::sp<vendor::zendra::hardware::fusd::V1_2::IFusdGeofenceCallback> geofenceCallback();
    // Told of every feed call the daemon's GNSS interface takes in (after its transcript
    // line, and only when it goes through); null for none.
    void setFeedListener(FeedListener* listener);

  private:
    using GnssCallback = vendor::zendra::hardware::fusd::V1_2::IFusdGnssCallback;
    using GeofenceCallback = vendor::zendra::hardware::fusd::V1_2::IFusdGeofenceCallback;
    using Lbs = WithExtensions<RecordingIFusdLbs_V1_3>;
    using GnssInterface = FeedTap<CallbackKeeper<RecordingIFusdGnssInterface_V1_2, GnssCallback>>;
    using GeofenceInterface =
        CallbackKeeper<RecordingIFusdGeofenceInterface_V1_2, GeofenceCallback>;

    android::sp<Lbs> newDaemon(const android::sp<zdhost::ServiceProcess>& process);
    void registerDaemon();
    bool kill(bool promotableWho, std::string* error);
    bool registerAtLookup(const std::vector<Token>& args, WorldAction* action, std::string* error);
    bool call(const std::vector<Token>& words, bool nested, WorldAction* action,
              std::string* error);
    // `nested-in IFACE.OP OP ARGS...`: the daemon makes the call OP from inside the library's
    // next call of IFACE.OP.
    bool nestedIn(const std::vector<Token>& args, WorldAction* action, std::string* error);
    bool deliver(const DaemonCall& call, std::string* error);
    android::sp<Lbs> running();  // the daemon's IFusdLbs, null while it is down
    // Runs, on the calling thread, the nested calls waiting for this callback's registration.
    void runNested(const android::sp<GnssCallback>& gnss,
                   const android::sp<GeofenceCallback>& geofence);

    // Holds the fake's lock over its own state (slots, process, kept callbacks), which the
    // explorer tells apart from its party's knobs: a callback kept by one call does not
    // depend on a knob another call reads. The lock's address names that state: the
    // fake's own address may be its party's.
    std::unique_lock<std::mutex> hold();

    Party mParty{"fusd"};
    std::mutex mLock;
    android::sp<zdhost::ServiceProcess> mProcess;  // the running daemon, if any
    android::sp<Lbs> mLbs;
    int64_t mLookupsUntilRegister = 0;  // 0: no registration waits for a look-up
    std::vector<DaemonCall> mNested;
    std::atomic<FeedListener*> mFeedListener{nullptr};
};

}  // namespace sim
