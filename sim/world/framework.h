// The fake framework: the GNSS and geofence callbacks, the fence-client callback and the
// SUPL DNS hook record that the provider hands to the library. Made once, never destroyed.
#pragma once

#include <android/hardware/gnss/1.0/IGnssGeofenceCallback.h>
#include <android/hardware/gnss/2.0/IGnssCallback.h>
#include <utils/RefBase.h>
#include <zdgnssprovider.h>

#include <string>
#include <vector>

#include "party.h"
#include "values.h"

namespace sim {

class Framework {
  public:
    Framework();

    // The command after `fw`: hook A|B|null, fail/heal OBJECT.OP, and
    // nested-in OBJECT.OP call FUNCTION ARGS... (the framework calls the library from inside
    // the library's next call of OBJECT.OP). False and *error when it is malformed; else
    // *action runs it.
    bool prepare(const std::vector<Token>& args, WorldAction* action, std::string* error);
    // Every verb `fw` takes.
    static const std::vector<std::string>& verbs();
    void setLibraryCalls(LibraryCallPreparer preparer) { mLibraryCalls = std::move(preparer); }
    // A fresh world: no knobs, hook A in the record.
    void reset();

    const Party& party() const { return mParty; }

    android::sp<android::hardware::gnss::V2_0::IGnssCallback> gnssCb() const { return mGnssCb; }
    android::sp<android::hardware::gnss::V1_0::IGnssGeofenceCallback> geofenceCb() const {
        return mGeofenceCb;
    }
    android::sp<FdCorvaneCallback_> corvaneCb() const { return mCorvaneCb; }
    FdCallback* fdCallback() { return &mFdCallback; }

  private:
    bool setHook(const std::vector<Token>& args, WorldAction* action, std::string* error);
    bool nestedIn(const std::vector<Token>& args, WorldAction* action, std::string* error);

    Party mParty{"fw"};
    android::sp<android::hardware::gnss::V2_0::IGnssCallback> mGnssCb;
    android::sp<android::hardware::gnss::V1_0::IGnssGeofenceCallback> mGeofenceCb;
    android::sp<FdCorvaneCallback_> mCorvaneCb;
    FdCallback mFdCallback{};
    LibraryCallPreparer mLibraryCalls;
};

}  // namespace sim
