// Exported API of libzdgnssprovider, as the GNSS location provider's native
// layer links against it. Names and signatures are fixed by that caller,
// spelling included (fd_pause_genfence, getBatcgingIface).
#pragma once

#include <android/hardware/gnss/1.0/IAGnssRil.h>
#include <android/hardware/gnss/1.0/IGnss.h>
#include <android/hardware/gnss/1.0/IGnssBatching.h>
#include <android/hardware/gnss/1.0/IGnssConfiguration.h>
#include <android/hardware/gnss/1.0/IGnssGeofenceCallback.h>
#include <android/hardware/gnss/1.0/IGnssNi.h>
#include <android/hardware/gnss/1.0/types.h>
#include <android/hardware/gnss/1.1/IGnss.h>
#include <android/hardware/gnss/1.1/IGnssConfiguration.h>
#include <android/hardware/gnss/2.0/IAGnssRil.h>
#include <android/hardware/gnss/2.0/IGnss.h>
#include <android/hardware/gnss/2.0/IGnssCallback.h>
#include <android/hardware/gnss/2.0/types.h>
#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <utils/RefBase.h>

#include <pthread.h>

#include <cstdint>
#include <vector>

// The provider's fence client: receives every geofence add result list.
// Reference-counted on the object itself; the library calls only its first member.
struct FdCorvaneCallback_ : public android::RefBase {
    void (*geofenceAddResult)(int32_t* geofenceIds, int32_t* results, uint32_t count);
};

// The framework's hook record for SUPL DNS requests; the library reads only its
// first member.
struct FdCallback {
    void (*sendAgpsRequestSuplDns)(const android::hardware::hidl_string& fqdn);
};

// Fusion-daemon link.
extern pthread_mutex_t fusdMutex;
void fusionD_init();
void fd_init();
void FdGetService();
void getFusionDaemonInterface();
bool isFDSupport();
bool isFDGeofenceSupport();
android::sp<android::hardware::gnss::V1_0::IGnssBatching> getBatcgingIface();

// Service death and re-initialisation.
void processFusdServiceDied(uint64_t cookie, const android::wp<android::hidl::base::V1_0::IBase>& who);
void reinitFusdBatching(const android::hardware::hidl_string& fqName,
                        const android::hardware::hidl_string& name, bool preexisting);
void set_batching_status(int32_t status);
void set_batchingOptions(android::hardware::gnss::V1_0::IGnssBatching::Options options);

// Platform probes.
void checkChipsetType();
int32_t getChipsetType();
void checkBatchingChannelType();
uint8_t getBatchingChannelType();

// Framework callbacks.
void registerCallback(const android::sp<android::hardware::gnss::V2_0::IGnssCallback>& gnssCb,
                      const android::sp<android::hardware::gnss::V1_0::IGnssGeofenceCallback>& geofenceCb,
                      const android::sp<FdCorvaneCallback_>& corvaneCb);

// Geofence requests.
bool fd_add_geofence(int32_t geofenceId, double latitudeDegrees, double longitudeDegrees,
                     double radiusMeters, int32_t lastTransition, int32_t monitorTransitions,
                     int32_t notificationResponsivenessMs, int32_t unknownTimerMs);
bool fd_remove_geofence(int32_t geofenceId);
bool fd_pause_genfence(int32_t geofenceId);
bool fd_resume_geofence(int32_t geofenceId, int32_t monitorTransitions);

// Location-manager feed.
bool sendLocationDataToTarvi(const android::hardware::gnss::V1_0::GnssLocation& location);
bool sendLocationDataToTarvi(const android::hardware::gnss::V2_0::GnssLocation& location);
void send_gnss_start_cmd_to_tarvi(bool start);
void send_quick_ttff_start_cmd_to_tarvi(bool start);
void reset_tarvi_param();
void setFusdGnssMinReportingInterval(int intervalMs);
void send_nmea_update_to_tarvi(long long timestamp, const char* nmea, unsigned int length);
void send_sv_status_to_tarvi(unsigned int count);
void sendSvInfo(const android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus& status);
void sendSvInfo(const android::hardware::hidl_vec<android::hardware::gnss::V2_0::IGnssCallback::GnssSvInfo>& svInfoList);
char* qttff_location_sourcetype(const android::hardware::gnss::V1_0::GnssLocation& location);
bool isFdLocationReport();
void resetFdLocationFlag();

// Satellite-list augmentation.
void addSvList(const android::hardware::gnss::V1_0::GnssLocation& location);
void addSvList(const android::hardware::gnss::V2_0::GnssLocation& location);
void reportAddSvList(const android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus& status);
void ReportAddSvList(std::vector<android::hardware::gnss::V2_0::IGnssCallback::GnssSvInfo> svInfoList);
bool isNeedSvIncrease();
bool isReportZdSv();
void resetLocationFlag();

// Vendor GNSS HAL extension.
void getZdGnssService(android::sp<android::hardware::gnss::V1_0::IGnss>* gnssHal,
                      android::sp<android::hardware::gnss::V1_1::IGnss>* gnssHal_V1_1,
                      android::sp<android::hardware::gnss::V2_0::IGnss>* gnssHal_V2_0);
int16_t getHidlVersion();
int checkHalVersion();
void getZdFeatureExtension(android::sp<android::hardware::gnss::V1_0::IAGnssRil>* agnssRilIface,
                           android::sp<android::hardware::gnss::V1_0::IGnssConfiguration>* gnssConfigurationIface_V1_0,
                           android::sp<android::hardware::gnss::V1_1::IGnssConfiguration>* gnssConfigurationIface_V1_1);
void getZdFeatureExtensionV2_0(android::sp<android::hardware::gnss::V1_0::IAGnssRil>* agnssRilIface,
                               android::sp<android::hardware::gnss::V2_0::IAGnssRil>* agnssRilIface_V2_0,
                               android::sp<android::hardware::gnss::V1_0::IGnssNi>* gnssNiIface);
void registerFusdIfCb(FdCallback* cb);
void set_fusd_callback();
void send_Agps_Supl_Request(const android::hardware::hidl_string& fqdn);
void set_supl_host_ip(const char* addr);
void send_ni_message(const uint8_t* msg, int32_t len);
