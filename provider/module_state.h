// Module state of the provider side of the library, shared by the files of
// this folder. It is defined, in one place and one order, in
// com_android_server_gnss_ZdGnssLocationProvider.cpp.
//
// Handles are strong references that hwbinder threads read while the provider
// thread or the death handler replaces them; each one is a GuardedHandle, so a
// read copies the reference and calls out through the copy. No reader waits
// for fusdMutex or for a call in flight.
#pragma once

#include <HidlUtil.h>
#include <android-base/thread_annotations.h>
#include <android/hardware/gnss/1.0/IGnssBatching.h>
#include <android/hardware/gnss/1.0/IGnssCallback.h>
#include <android/hardware/gnss/1.0/IGnssGeofenceCallback.h>
#include <android/hardware/gnss/2.0/IGnssCallback.h>
#include <pthread.h>
#include <vendor/zendra/hardware/fusd/1.1/IGnssBatchingInterface.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGeofenceCallback.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGeofenceInterface.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGnssCallback.h>
#include <vendor/zendra/hardware/fusd/1.2/IFusdGnssInterface.h>
#include <vendor/zendra/hardware/fusd/1.3/IFusdLbs.h>
#include <zdgnssprovider.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "guarded_handle.h"
#include "remote_status.h"

class FusdDeathRecipient;

namespace fusd_v1_1 = ::vendor::zendra::hardware::fusd::V1_1;
namespace fusd_v1_2 = ::vendor::zendra::hardware::fusd::V1_2;
namespace fusd_v1_3 = ::vendor::zendra::hardware::fusd::V1_3;
namespace gnss_v1_0 = ::android::hardware::gnss::V1_0;
namespace gnss_v2_0 = ::android::hardware::gnss::V2_0;

// The fixed text that the first "%s" of nearly every log line receives.
constexpr const char* kLogPrefix = "ZdGnssLocationProviderJNI";

// fusdMutex as the thread-safety analysis sees it: it orders a connection to
// the daemon against the handling of the daemon's death.
class CAPABILITY("mutex") FusdConnectionLock {
  public:
    void lock() ACQUIRE() { pthread_mutex_lock(&fusdMutex); }
    void unlock() RELEASE() { pthread_mutex_unlock(&fusdMutex); }
};
inline FusdConnectionLock g_fusdConnection;

// Handles.
extern GuardedHandle<fusd_v1_3::IFusdLbs> g_fusdLbsIface;
extern GuardedHandle<fusd_v1_2::IFusdGnssInterface> g_fusdGnssIface;
extern GuardedHandle<fusd_v1_2::IFusdGeofenceInterface> g_fusdGeofenceIface;
extern GuardedHandle<gnss_v2_0::IGnssCallback> g_gnssCbIface;
extern GuardedHandle<gnss_v1_0::IGnssGeofenceCallback> g_gnssGeofenceCbIface;
extern GuardedHandle<FdCorvaneCallback_> fdCorvaneCb;

// Fusion-daemon link and platform probes.
extern std::atomic<int32_t> g_batchingStatus;
extern std::atomic<int32_t> g_chipsetType;
extern std::atomic<bool> g_chipSupportsGeofence;
extern std::atomic<bool> g_flagsFromChipset;
extern std::atomic<uint8_t> g_batchingChannelType;

// Feed timing state, shared between the provider thread and fused reports. A location
// feed and a fused report each read it, decide and write it back under g_feedTimingLock,
// so that one decision sees the whole effect of the other: a fix and a fused location
// that arrive together never both reach the framework. No remote call is made under it.
extern std::mutex g_feedTimingLock;
extern int64_t lastSentLocUpdateTime GUARDED_BY(g_feedTimingLock);
extern int64_t lastFusdLocUpdateTime GUARDED_BY(g_feedTimingLock);
extern int32_t fusdGnssMinReportingInterval GUARDED_BY(g_feedTimingLock);
extern bool tarviParamReset GUARDED_BY(g_feedTimingLock);

// The satellite store: the last satellite report of each HAL version, as the
// feed stored it and the list augmentation extends it. One lock guards both.
extern std::mutex g_svStoreLock;
extern gnss_v1_0::IGnssCallback::GnssSvStatus g_svStatus GUARDED_BY(g_svStoreLock);
extern std::vector<gnss_v2_0::IGnssCallback::GnssSvInfo> g_svInfoList GUARDED_BY(g_svStoreLock);

// Location-source and augmentation flags.
extern std::atomic<bool> fdLocationFlag;
extern std::atomic<bool> qttffFlag;
extern char sourceTypeBuf[10];
extern std::atomic<bool> locationFlag;
extern std::atomic<bool> svIncreaseFlag;
extern std::atomic<bool> reportZdSvFlag;

// SUPL DNS hook of the framework's FdCallback record.
using SuplDnsHook = void (*)(const android::hardware::hidl_string& fqdn);
extern std::atomic<FdCallback*> g_fdCallback;
extern std::atomic<SuplDnsHook> g_sendAgpsRequestSuplDns;

// Absolute difference of two millisecond times, wrapping like 64-bit two's
// complement instead of overflowing.
int64_t absDiffMs(int64_t a, int64_t b);
