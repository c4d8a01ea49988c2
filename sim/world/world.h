// The embedded world a scenario runs the library in: the host service manager and
// runtime, the fake fusion daemon, the fake vendor GNSS HAL and the fake framework.
#pragma once

#include <android/hardware/gnss/1.0/IGnssGeofenceCallback.h>
#include <android/hardware/gnss/2.0/IGnssCallback.h>
#include <utils/RefBase.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGeofenceCallback.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGnssCallback.h>
#include <zdgnssprovider.h>

#include <string>
#include <vector>

#include "feed_tap.h"
#include "party.h"
#include "values.h"

namespace sim {

class World {
  public:
    static World& get();
    void start();  // fresh world: framework objects, runtime observers, virtual usleep hook
    // `fusd ...`, `vhal ...`, `fw ...`: checks the command (false and *error when it is
    // malformed) and gives what runs it, in whatever world is running then.
    bool prepare(const std::string& head, const std::vector<Token>& args, WorldAction* action,
                 std::string* error);
    // Every verb each party takes, as "fusd kill", "vhal register", "fw hook" ...
    static std::vector<std::string> verbs();
    // How `fw nested-in OBJECT.OP call ...` prepares the library call it makes.
    void setLibraryCalls(LibraryCallPreparer preparer);
    // Prepares and runs the command at once.
    bool command(const std::string& head, const std::vector<Token>& args, std::string* error);
    android::sp<android::hardware::gnss::V2_0::IGnssCallback> gnssCb();
    android::sp<android::hardware::gnss::V1_0::IGnssGeofenceCallback> geofenceCb();
    android::sp<FdCorvaneCallback_> corvaneCb();
    FdCallback* fdCallback();

    // The callbacks the library registered with the running fusion daemon (null while it
    // is down or before the registration): calls on them are the daemon's reports.
    android::sp<vendor::zendra::hardware::fusd::V1_2::IFusdGnssCallback> fusdGnssCallback();
    android::sp<vendor::zendra::hardware::fusd::V1_2::IFusdGeofenceCallback> fusdGeofenceCallback();
    // Told of every feed call the running daemon takes in; null for none.
    void setFeedListener(FeedListener* listener);

    // Every operation of every fake the library can call ("fusd", "vhal", "fw" parties),
    // from the generated interface lists: the knobs `fail`/`answer` take these names.
    struct RemoteOperation {
        std::string party;  // fusd, vhal or fw
        std::string iface;  // as in knobs: IFusdLbs, IZDGnss2.0, gnssCb ...
        Operation operation;
        // For an object result: the feature whose `provide FEATURE no` empties it, once
        // the party has made an object that serves it (after its `register`); else "".
        std::string feature;
    };
    std::vector<RemoteOperation> remoteOperations() const;
    // The features each party can withhold (`provide FEATURE no`), as party -> features.
    std::vector<std::pair<std::string, std::string>> features() const;

  private:
    struct Parts;
    World();
    Parts* mParts;  // made once, never destroyed: runtime threads may still use it at exit
};

}  // namespace sim
