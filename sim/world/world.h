// The embedded world a scenario runs the library in: the host service manager and
// runtime, the fake fusion daemon, the fake vendor GNSS HAL and the fake framework.
#pragma once

#include <android/hardware/gnss/1.0/IGnssGeofenceCallback.h>
#include <android/hardware/gnss/2.0/IGnssCallback.h>
#include <utils/RefBase.h>
#include <zdgnssprovider.h>

#include <string>
#include <vector>

#include "values.h"

namespace sim {

class World {
  public:
    static World& get();
    void start();  // fresh world: framework objects, runtime observers, virtual usleep hook
    bool command(const std::string& head, const std::vector<Token>& args,
                 std::string* error);  // `fusd ...`, `vhal ...`, `fw ...`
    android::sp<android::hardware::gnss::V2_0::IGnssCallback> gnssCb();
    android::sp<android::hardware::gnss::V1_0::IGnssGeofenceCallback> geofenceCb();
    android::sp<FdCorvaneCallback_> corvaneCb();
    FdCallback* fdCallback();

  private:
    struct Parts;
    World();
    Parts* mParts;  // made once, never destroyed: runtime threads may still use it at exit
};

}  // namespace sim
