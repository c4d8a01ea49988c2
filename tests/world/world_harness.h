// Drives the embedded world as the scenario runner does (a fresh world per test, commands,
// transcript lines) and supplies the library-side objects the fakes call back into.
#pragma once

#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGeofenceCallback.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGnssCallback.h>
#include <vendor/zendra/hardware/fusd/1.3/IFusdLbs.h>
#include <vendor/zendra/hardware/gnss/1.0/IZDAGpsSuplFqdnCallback.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace worldtest {

using android::sp;
using android::hardware::Return;
using vendor::zendra::hardware::fusd::V1_3::IFusdLbs;

class WorldTest : public ::testing::Test {
  protected:
    void SetUp() override;
    // Runs a `fusd`, `vhal` or `fw` line; the test fails if the world refuses it.
    void run(const std::string& line);
    // Runs the line and returns why the world refused it ("" when it was accepted).
    std::string refusal(const std::string& line);
    // The transcript lines since the previous call, once runtime deliveries are done.
    std::vector<std::string> lines();
    // The fusion daemon as the library looks it up.
    sp<IFusdLbs> lookUpDaemon();
};

// Where and how often a callback ran.
struct CallLog {
    std::mutex lock;
    int count = 0;
    std::thread::id thread;
    bool onPool = false;
    std::string last;  // what the call carried

    void record(const std::string& what);
    int calls();
};

class GnssCallback : public vendor::zendra::hardware::fusd::V1_2::IFusdGnssCallback {
  public:
    Return<void> reportFusdLocation(
        const android::hardware::gnss::V1_0::GnssLocation& location) override;
    CallLog log;
    bool failInTransport = false;  // answers as a dead library process would
};

class GeofenceCallback : public vendor::zendra::hardware::fusd::V1_2::IFusdGeofenceCallback {
  public:
    using GeofenceResults =
        android::hardware::hidl_vec<vendor::zendra::hardware::fusd::V1_2::GeofenceResult>;
    using GnssLocation = android::hardware::gnss::V1_0::GnssLocation;
    using Callback = android::hardware::gnss::V1_0::IGnssGeofenceCallback;

    Return<void> geofenceAddResultCb(const GeofenceResults& results) override;
    Return<void> geofenceRemoveResultCb(const GeofenceResults& results) override;
    Return<void> onGetCurrentLocationCb(int32_t, const GnssLocation&, int64_t, int64_t) override;
    Return<void> gnssGeofenceTransitionCb(int32_t, const GnssLocation&,
                                          Callback::GeofenceTransition, int64_t) override;
    Return<void> gnssGeofenceStatusCb(int32_t, const GnssLocation&) override;
    Return<void> gnssGeofencePauseCb(int32_t, Callback::GeofenceStatus) override;
    Return<void> gnssGeofenceResumeCb(int32_t, Callback::GeofenceStatus) override;
    CallLog log;
};

class SuplCallback : public vendor::zendra::hardware::gnss::V1_0::IZDAGpsSuplFqdnCallback {
  public:
    Return<void> AgpsRequestSuplDns(const android::hardware::hidl_string& fqdn) override;
    CallLog log;
};

class DeathRecipient : public android::hardware::hidl_death_recipient {
  public:
    void serviceDied(uint64_t cookie,
                     const android::wp<android::hidl::base::V1_0::IBase>& who) override;
    CallLog log;
    uint64_t cookie = ~0ull;
    bool whoPromoted = false;
    sp<android::hidl::base::V1_0::IBase> who;  // the promoted `who`, kept for comparison
};

}  // namespace worldtest
