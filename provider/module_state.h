// Module state of the provider side of the library, shared by the files of
// this folder. It is defined, in one place and one order, in
// com_android_server_gnss_ZdGnssLocationProvider.cpp.
//
// Handles are strong references that hwbinder threads read while the provider
// thread or the death handler replaces them. Every write goes through
// storeHandle(), which holds handleLock() only for the swap. Paths that call
// through a handle read it with PinnedHandle, which takes no lock; paths that
// keep the reference copy it with loadHandle(). No reader ever waits for
// fusdMutex or for a call in flight.
#pragma once

#include <HidlUtil.h>
#include <android/hardware/gnss/1.0/IGnssBatching.h>
#include <android/hardware/gnss/1.0/IGnssCallback.h>
#include <android/hardware/gnss/1.0/IGnssGeofenceCallback.h>
#include <android/hardware/gnss/2.0/IGnssCallback.h>
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

#include "pinned_handle.h"
#include "store_lock.h"

class FusdDeathRecipient;

namespace fusd_v1_1 = ::vendor::zendra::hardware::fusd::V1_1;
namespace fusd_v1_2 = ::vendor::zendra::hardware::fusd::V1_2;
namespace fusd_v1_3 = ::vendor::zendra::hardware::fusd::V1_3;
namespace gnss_v1_0 = ::android::hardware::gnss::V1_0;
namespace gnss_v2_0 = ::android::hardware::gnss::V2_0;

// The fixed text that the first "%s" of nearly every log line receives.
constexpr const char* kLogPrefix = "ZdGnssLocationProviderJNI";

// Handles.
extern android::sp<fusd_v1_3::IFusdLbs> g_fusdLbsIface;
extern android::sp<fusd_v1_2::IFusdGnssInterface> g_fusdGnssIface;
extern android::sp<fusd_v1_2::IFusdGeofenceInterface> g_fusdGeofenceIface;
extern android::sp<fusd_v1_1::IGnssBatchingInterface> g_fusdBatchingIface;
extern android::sp<fusd_v1_2::IFusdGnssCallback> g_fusdGnssCb;
extern android::sp<fusd_v1_2::IFusdGeofenceCallback> g_fusdGeofenceCb;
extern android::sp<HidlUtil> g_hidlUtil;
extern android::sp<gnss_v1_0::IGnssBatching> g_gnssBatchingIface;
extern android::sp<gnss_v2_0::IGnssCallback> g_gnssCbIface;
extern android::sp<gnss_v1_0::IGnssGeofenceCallback> g_gnssGeofenceCbIface;
extern android::sp<FdCorvaneCallback_> fdCorvaneCb;
extern std::vector<gnss_v2_0::IGnssCallback::GnssSvInfo> g_svInfoList;
extern android::sp<FusdDeathRecipient> g_fusdDeathRecipient;

// Fusion-daemon link and platform probes.
extern std::atomic<int32_t> g_batchingStatus;
extern gnss_v1_0::IGnssBatching::Options g_batchingOptions;  // guarded by handleLock()
extern std::atomic<int32_t> g_chipsetType;
extern std::atomic<bool> g_chipSupportsGeofence;
extern std::atomic<bool> g_flagsFromChipset;
extern std::atomic<uint8_t> g_batchingChannelType;

// Flags and times that the feed paths write are published with release stores:
// no reader needs them ordered against one another, and a sequentially
// consistent store costs a full barrier on some CPUs.

// Feed timing state, shared between the provider thread and fused reports.
extern std::atomic<int64_t> lastSentLocUpdateTime;
extern std::atomic<int64_t> lastFusdLocUpdateTime;
extern std::atomic<int32_t> fusdGnssMinReportingInterval;
extern std::atomic<bool> tarviParamReset;

// Satellite store; guarded by svStoreLock.
extern gnss_v1_0::IGnssCallback::GnssSvStatus g_svStatus;

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

std::mutex& handleLock();
extern StoreLock svStoreLock;

// A strong reference to what the handle holds, for paths that keep or pass it on.
template <auto& Handle>
android::sp<HandleObject<Handle>> loadHandle() {
    return copyPublishedHandle<Handle>(handleLock());
}

template <auto& Handle, typename U>
void storeHandle(const android::sp<U>& value) {
    publishHandle<Handle>(handleLock(), value);
}

template <auto& Handle>
void clearHandle() {
    storeHandle<Handle>(android::sp<HandleObject<Handle>>());
}

// Absolute difference of two millisecond times, wrapping like 64-bit two's
// complement instead of overflowing.
int64_t absDiffMs(int64_t a, int64_t b);
