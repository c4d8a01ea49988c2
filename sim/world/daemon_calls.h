// The calls the fake fusion daemon makes into the library's callback objects, built from
// a `fusd OP ARGS...` command (`fusd reportFusdLocation loc{...}`, `fusd
// geofenceAddResultCb [5:0 6:-3]`, ...).
#pragma once

#include <hidl/Status.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGeofenceCallback.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGnssCallback.h>

#include <functional>
#include <string>
#include <vector>

#include "values.h"

namespace sim {

// Exactly one of the two is set: the call goes to the GNSS callback or to the geofence one.
struct DaemonCall {
    std::function<android::hardware::Return<void>(
        vendor::zendra::hardware::fusd::V1_2::IFusdGnssCallback&)>
        toGnss;
    std::function<android::hardware::Return<void>(
        vendor::zendra::hardware::fusd::V1_2::IFusdGeofenceCallback&)>
        toGeofence;
};

// Whether `op` names an operation of the library's callback objects.
bool isDaemonCall(const std::string& op);
// Every such operation, in the order the daemon's interfaces declare them.
std::vector<std::string> daemonCallNames();
// Parses `OP ARGS...` (words[0] is OP); false with *error when malformed.
bool parseDaemonCall(const std::vector<Token>& words, DaemonCall* call, std::string* error);

}  // namespace sim
