// Vendor GNSS HAL extension: finds the vendor IZDGnss service, hands it to the provider
// as its standard IGnss handles, fetches the extension interfaces, and carries the SUPL
// address, SUPL DNS and network-initiated message traffic. Also the start-up entry of
// the fusion-daemon link.

#include <log/log.h>
#include <vendor/zendra/hardware/gnss/1.0/IZDAGnssRil.h>
#include <vendor/zendra/hardware/gnss/1.0/IZDAGpsSuplFqdn.h>
#include <vendor/zendra/hardware/gnss/1.0/IZDGnss.h>
#include <vendor/zendra/hardware/gnss/2.0/IZDAGnssRil.h>
#include <vendor/zendra/hardware/gnss/2.0/IZDGnss.h>

#include <algorithm>
#include <atomic>
#include <cstdint>

#include "ZdGnssHalInface.h"
#include "guarded_handle.h"
#include "remote_status.h"
#include "zdgnssprovider.h"

using android::sp;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;

using IGnssConfiguration_V1_0 = android::hardware::gnss::V1_0::IGnssConfiguration;
using IGnssConfiguration_V1_1 = android::hardware::gnss::V1_1::IGnssConfiguration;
using IAGnssRil_V1_0 = android::hardware::gnss::V1_0::IAGnssRil;
using IAGnssRil_V2_0 = android::hardware::gnss::V2_0::IAGnssRil;
using android::hardware::gnss::V1_0::IGnssNi;
using IZDGnss_V1_0 = vendor::zendra::hardware::gnss::V1_0::IZDGnss;
using IZDGnss_V2_0 = vendor::zendra::hardware::gnss::V2_0::IZDGnss;
using IZDAGnssRil_V1_0 = vendor::zendra::hardware::gnss::V1_0::IZDAGnssRil;
using IZDAGnssRil_V2_0 = vendor::zendra::hardware::gnss::V2_0::IZDAGnssRil;
using vendor::zendra::hardware::gnss::V1_0::IZDAGpsSuplFqdn;
using vendor::zendra::hardware::gnss::V1_0::IZDAGpsSuplFqdnCallback;

namespace {

constexpr const char* kTag = "ZdGnssLocationProviderJNI";

constexpr int32_t kHalVersionNone = 0;
constexpr int32_t kHalVersion1_0 = 1;
constexpr int32_t kHalVersion2_0 = 4;

// The HAL's HIDL version code that offers the 1.1 configuration interface.
constexpr uint16_t kHidlVersionWithConfiguration1_1 = 2;

// Read on hwbinder threads while the provider thread replaces them.
GuardedHandle<IZDGnss_V1_0> g_gnssHalZd;
GuardedHandle<IZDGnss_V2_0> g_gnssHalZdV2_0;
GuardedHandle<IZDAGpsSuplFqdn> g_suplFqdnIface;
GuardedHandle<IZDAGpsSuplFqdnCallback> g_suplFqdnCallback;
GuardedHandle<IZDAGnssRil_V1_0> g_agnssRilZdIface;
GuardedHandle<IZDAGnssRil_V2_0> g_agnssRilZdIface_V2_0;
std::atomic<int32_t> g_halVersion{kHalVersionNone};

// Takes the Return itself: before Android 13, withDefault() is not a const member.
int16_t hidlVersionOf(Return<uint16_t>&& version) {
    return static_cast<int16_t>(version.withDefault(0));
}

// ---- Vendor HAL acquisition ----

void handOutV2_0(const sp<IZDGnss_V2_0>& hal, sp<android::hardware::gnss::V1_0::IGnss>* gnssHal,
                 sp<android::hardware::gnss::V1_1::IGnss>* gnssHal_V1_1,
                 sp<android::hardware::gnss::V2_0::IGnss>* gnssHal_V2_0) {
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: Get IZDGnss V2_0 successful!", kTag);
    if (gnssHal == nullptr || gnssHal_V1_1 == nullptr || gnssHal_V2_0 == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: gnssHal or gnssHal_V1_1 or gnssHal_V2_0 is null", kTag);
        return;
    }
    *gnssHal_V2_0 = hal;
    *gnssHal_V1_1 = hal;
    *gnssHal = hal;
    g_halVersion = kHalVersion2_0;
}

void handOutV1_0(const sp<IZDGnss_V1_0>& hal, sp<android::hardware::gnss::V1_0::IGnss>* gnssHal,
                 sp<android::hardware::gnss::V1_1::IGnss>* gnssHal_V1_1) {
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                        "%s: IZDGNSS V2_0 is null , Get IZDGnss V1_0 successful!", kTag);
    if (gnssHal == nullptr || gnssHal_V1_1 == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: gnssHal or gnssHal_V1_1 is null", kTag);
        return;
    }
    *gnssHal_V1_1 = hal;
    *gnssHal = hal;
    g_halVersion = kHalVersion1_0;
}

// ---- Feature extensions ----

// The callback object is made once per process and registered at every set-up.
void registerSuplFqdnCallback(const sp<IZDAGpsSuplFqdn>& suplFqdn) {
    sp<IZDAGpsSuplFqdnCallback> callback =
        g_suplFqdnCallback.getOrMake([] { return new AGpsSuplFqdnCallback(); });
    checkRemoteCall(suplFqdn->setCallback(callback), ANDROID_LOG_ERROR,
                    "%s: register AGpsSuplFqdnCallback fail", kTag);
}

// A transport failure counts as an absent interface.
template <class ZdGnss>
void setUpSuplFqdn(const sp<ZdGnss>& hal) {
    g_suplFqdnIface.set(hal->getExtensionZdSuplFqdn().withDefault(nullptr));
    sp<IZDAGpsSuplFqdn> suplFqdn = g_suplFqdnIface.get();
    if (suplFqdn == nullptr) {
        __android_log_print(ANDROID_LOG_DEBUG, LOG_TAG, "%s: Unable to get a handle to SPUL FQDN",
                            kTag);
        return;
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get g_suplFqdnIface successful.", kTag);
    registerSuplFqdnCallback(suplFqdn);
}

void fetchAGnssRilV1_0(const sp<IZDGnss_V1_0>& hal, sp<IAGnssRil_V1_0>* agnssRilIface) {
    Return<sp<IZDAGnssRil_V1_0>> result = hal->getExtensionZdAGnssRil();
    if (!checkRemoteCall(result, ANDROID_LOG_DEBUG, "%s: Unable to get a handle to IZDAGnssRil",
                         kTag)) {
        return;
    }
    sp<IZDAGnssRil_V1_0> ril = result;
    g_agnssRilZdIface.set(ril);
    if (agnssRilIface == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: get IZDAGnssRil fail and agnssRilIface is null", kTag);
        return;
    }
    *agnssRilIface = ril;
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get IZDAGnssRil successful", kTag);
}

void fetchConfigurationV1_1(const sp<IZDGnss_V1_0>& hal,
                            sp<IGnssConfiguration_V1_0>* gnssConfigurationIface_V1_0,
                            sp<IGnssConfiguration_V1_1>* gnssConfigurationIface_V1_1) {
    Return<sp<IGnssConfiguration_V1_1>> result = hal->getExtensionGnssConfiguration_1_1();
    if (!checkRemoteCall(result, ANDROID_LOG_DEBUG,
                         "Unable to get a handle to GnssConfigurationV1_1")) {
        return;
    }
    if (gnssConfigurationIface_V1_0 == nullptr || gnssConfigurationIface_V1_1 == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: gnssConfigurationIface V1_0 or V1_1 is null", kTag);
        return;
    }
    sp<IGnssConfiguration_V1_1> configuration = result;
    *gnssConfigurationIface_V1_1 = configuration;
    *gnssConfigurationIface_V1_0 = configuration;
}

void fetchConfigurationV1_0(const sp<IZDGnss_V1_0>& hal,
                            sp<IGnssConfiguration_V1_0>* gnssConfigurationIface_V1_0) {
    Return<sp<IGnssConfiguration_V1_0>> result = hal->getExtensionGnssConfiguration();
    if (!checkRemoteCall(result, ANDROID_LOG_DEBUG,
                         "Unable to get a handle to GnssConfiguration")) {
        return;
    }
    if (gnssConfigurationIface_V1_0 == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: gnssConfigurationIface_V1_0 is null",
                            kTag);
        return;
    }
    sp<IGnssConfiguration_V1_0> configuration = result;
    *gnssConfigurationIface_V1_0 = configuration;
}

void fetchAGnssRilV2_0(const sp<IZDGnss_V2_0>& hal, sp<IAGnssRil_V1_0>* agnssRilIface,
                       sp<IAGnssRil_V2_0>* agnssRilIface_V2_0) {
    Return<sp<IZDAGnssRil_V2_0>> result = hal->getExtensionZdAGnssRil_2_0();
    // Without a 2.0 RIL extension the caller's RIL handles stay as they are.
    if (!remoteCallWentThrough(result)) {
        return;
    }
    sp<IZDAGnssRil_V2_0> ril = result;
    g_agnssRilZdIface_V2_0.set(ril);
    if (agnssRilIface == nullptr || agnssRilIface_V2_0 == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: agnssRilIface or agnssRilIface_V2_0 is null", kTag);
        return;
    }
    *agnssRilIface_V2_0 = ril;
    *agnssRilIface = ril;
}

void fetchGnssNi(const sp<IZDGnss_V2_0>& hal, sp<IGnssNi>* gnssNiIface) {
    Return<sp<IGnssNi>> result = hal->getExtensionZdGnssNi();
    if (!checkRemoteCall(result, ANDROID_LOG_WARN, "%s: Unable to get a handle to ZdGnssNi.",
                         kTag)) {
        return;
    }
    __android_log_print(ANDROID_LOG_DEBUG, LOG_TAG, "%s: get ZdGnssNi success.", kTag);
    if (gnssNiIface == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: gnssNiIface is null.", kTag);
        return;
    }
    sp<IGnssNi> gnssNi = result;
    *gnssNiIface = gnssNi;
}

// ---- Network-initiated messages ----

// Returns false only when the chosen RIL extension failed in transport; having no RIL
// extension at all is not a failure.
bool deliverNiMessage(const hidl_vec<uint8_t>& message, int32_t len) {
    if (sp<IZDAGnssRil_V2_0> ril = g_agnssRilZdIface_V2_0.get(); ril != nullptr) {
        return remoteCallWentThrough(ril->sendNiMessage(message, len));
    }
    if (sp<IZDAGnssRil_V1_0> ril = g_agnssRilZdIface.get(); ril != nullptr) {
        return remoteCallWentThrough(ril->sendNiMessage(message, len));
    }
    return true;
}

}  // namespace

void fusionD_init() {
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: fusionD init", kTag);
    fd_init();
}

// Version 2.0 is looked up first on every call; the version code changes only when the
// handles were actually handed out.
void getZdGnssService(sp<android::hardware::gnss::V1_0::IGnss>* gnssHal,
                      sp<android::hardware::gnss::V1_1::IGnss>* gnssHal_V1_1,
                      sp<android::hardware::gnss::V2_0::IGnss>* gnssHal_V2_0) {
    g_gnssHalZdV2_0.set(IZDGnss_V2_0::getService("default", false));
    if (sp<IZDGnss_V2_0> hal = g_gnssHalZdV2_0.get(); hal != nullptr) {
        handOutV2_0(hal, gnssHal, gnssHal_V1_1, gnssHal_V2_0);
        return;
    }
    g_gnssHalZd.set(IZDGnss_V1_0::getService("default", false));
    if (sp<IZDGnss_V1_0> hal = g_gnssHalZd.get(); hal != nullptr) {
        handOutV1_0(hal, gnssHal, gnssHal_V1_1);
    }
}

// A transport failure reads as 0, the same as having no vendor HAL.
int16_t getHidlVersion() {
    if (sp<IZDGnss_V2_0> hal = g_gnssHalZdV2_0.get(); hal != nullptr) {
        return hidlVersionOf(hal->getHalHidlVersion());
    }
    if (sp<IZDGnss_V1_0> hal = g_gnssHalZd.get(); hal != nullptr) {
        return hidlVersionOf(hal->getHalHidlVersion());
    }
    return 0;
}

int checkHalVersion() {
    return g_halVersion;
}

void getZdFeatureExtension(sp<IAGnssRil_V1_0>* agnssRilIface,
                           sp<IGnssConfiguration_V1_0>* gnssConfigurationIface_V1_0,
                           sp<IGnssConfiguration_V1_1>* gnssConfigurationIface_V1_1) {
    if (g_gnssHalZdV2_0.isSet()) {
        return;
    }
    sp<IZDGnss_V1_0> hal = g_gnssHalZd.get();
    if (hal == nullptr) {
        return;
    }
    setUpSuplFqdn(hal);
    fetchAGnssRilV1_0(hal, agnssRilIface);
    if (static_cast<uint16_t>(getHidlVersion()) == kHidlVersionWithConfiguration1_1) {
        fetchConfigurationV1_1(hal, gnssConfigurationIface_V1_0, gnssConfigurationIface_V1_1);
    } else {
        fetchConfigurationV1_0(hal, gnssConfigurationIface_V1_0);
    }
}

void getZdFeatureExtensionV2_0(sp<IAGnssRil_V1_0>* agnssRilIface,
                               sp<IAGnssRil_V2_0>* agnssRilIface_V2_0, sp<IGnssNi>* gnssNiIface) {
    sp<IZDGnss_V2_0> hal = g_gnssHalZdV2_0.get();
    if (hal == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: g_gnssHalZdV2_0 is null.", kTag);
        return;
    }
    setUpSuplFqdn(hal);
    fetchAGnssRilV2_0(hal, agnssRilIface, agnssRilIface_V2_0);
    fetchGnssNi(hal, gnssNiIface);
}

// Runs on a hwbinder thread. Requests are served only while a vendor HAL is connected.
Return<void> AGpsSuplFqdnCallback::AgpsRequestSuplDns(const hidl_string& fqdn) {
    if (g_gnssHalZd.isSet() || g_gnssHalZdV2_0.isSet()) {
        send_Agps_Supl_Request(fqdn);
    }
    return Void();
}

void set_supl_host_ip(const char* addr) {
    // Without any vendor HAL the platform's GNSS HAL has no SUPL FQDN extension at all.
    if (!g_gnssHalZd.isSet() && !g_gnssHalZdV2_0.isSet()) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                            "%s: qcom platform: invalid flow --set_supl_host_ip", kTag);
        return;
    }
    sp<IZDAGpsSuplFqdn> suplFqdn = g_suplFqdnIface.get();
    if (suplFqdn == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                            "%s: no suplFqdn interface in set_supl_host_ip", kTag);
        return;
    }
    __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: set_supl_host_ip addr: %s", kTag, addr);
    checkRemoteCall(suplFqdn->setSuplHostIp(hidl_string(addr)), ANDROID_LOG_ERROR,
                    "%s: Failed to set_supl_host_ip", kTag);
}

void send_ni_message(const uint8_t* msg, int32_t len) {
    if (len < 0) {
        return;
    }
    hidl_vec<uint8_t> message(static_cast<size_t>(len));
    if (len > 0) {
        std::copy_n(msg, len, message.data());
    } else {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: ni_message is null", kTag);
    }
    __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: send_ni_message begin", kTag);
    if (!deliverNiMessage(message, len)) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: Gnss NI Failed to send ni_message",
                            kTag);
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: send_ni_message finished", kTag);
}
