// Provider side of the library: the fusion-daemon link and the module state
// that the geofence bridge, the location-manager feed and the satellite-list
// augmentation (the other files of this folder) share.
#include <cutils/properties.h>
#include <log/log.h>
#include <unistd.h>

#include <cstring>

#include "fusd_callbacks.h"

using android::sp;
using android::wp;
using android::hardware::hidl_string;
using android::hardware::Return;

// ---- Module state, in this order: static initialisation sets each handle
// empty, and unload releases them in reverse order.
sp<fusd_v1_3::IFusdLbs> g_fusdLbsIface;
sp<fusd_v1_2::IFusdGnssInterface> g_fusdGnssIface;
sp<fusd_v1_2::IFusdGeofenceInterface> g_fusdGeofenceIface;
sp<fusd_v1_1::IGnssBatchingInterface> g_fusdBatchingIface;
sp<fusd_v1_2::IFusdGnssCallback> g_fusdGnssCb;
sp<fusd_v1_2::IFusdGeofenceCallback> g_fusdGeofenceCb;
sp<HidlUtil> g_hidlUtil;
sp<gnss_v1_0::IGnssBatching> g_gnssBatchingIface;
sp<gnss_v2_0::IGnssCallback> g_gnssCbIface;
sp<gnss_v1_0::IGnssGeofenceCallback> g_gnssGeofenceCbIface;
sp<FdCorvaneCallback_> fdCorvaneCb;
std::vector<gnss_v2_0::IGnssCallback::GnssSvInfo> g_svInfoList;
sp<FusdDeathRecipient> g_fusdDeathRecipient;

pthread_mutex_t fusdMutex = PTHREAD_MUTEX_INITIALIZER;
std::atomic<int32_t> g_batchingStatus{0};
gnss_v1_0::IGnssBatching::Options g_batchingOptions{};
std::atomic<int32_t> g_chipsetType{0};
std::atomic<bool> g_chipSupportsGeofence{false};
std::atomic<bool> g_flagsFromChipset{false};
std::atomic<uint8_t> g_batchingChannelType{0};

std::atomic<int64_t> lastSentLocUpdateTime{0};
std::atomic<int64_t> lastFusdLocUpdateTime{0};
std::atomic<int32_t> fusdGnssMinReportingInterval{1000};
std::atomic<bool> tarviParamReset{false};

gnss_v1_0::IGnssCallback::GnssSvStatus g_svStatus{};

std::atomic<bool> fdLocationFlag{false};
std::atomic<bool> qttffFlag{false};
char sourceTypeBuf[10] = "gps";
std::atomic<bool> locationFlag{false};
std::atomic<bool> svIncreaseFlag{false};
std::atomic<bool> reportZdSvFlag{false};

std::atomic<FdCallback*> g_fdCallback{nullptr};
std::atomic<SuplDnsHook> g_sendAgpsRequestSuplDns{nullptr};

std::mutex& handleLock() {
    static std::mutex lock;
    return lock;
}

StoreLock svStoreLock;  // constant-initialised: usable before any dynamic initialisation

int64_t absDiffMs(int64_t a, int64_t b) {
    uint64_t diff = static_cast<uint64_t>(a) - static_cast<uint64_t>(b);
    if (static_cast<int64_t>(diff) < 0) diff = 0 - diff;
    return static_cast<int64_t>(diff);
}

// ---- Connection.

namespace {

constexpr const char* kSupportProperty = "ro.config.zd_support_geofence";
constexpr int kLookupAttemptsWithFusion = 10;
constexpr useconds_t kLookupPauseMicros = 1000000;

int lookupAttemptBudget() {
    char value[PROPERTY_VALUE_MAX];
    memset(value, 0, sizeof(value));
    if (property_get(kSupportProperty, value, "false") < 1) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "not support fusd service");
        return 1;
    }
    if (memcmp(value, "true", 4) == 0) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "support fusd service");
        return kLookupAttemptsWithFusion;
    }
    return 1;
}

// Looks the daemon up, pausing between attempts; runs with fusdMutex held.
sp<fusd_v1_3::IFusdLbs> lookUpDaemon(int budget) {
    for (;;) {
        sp<fusd_v1_3::IFusdLbs> daemon = fusd_v1_3::IFusdLbs::tryGetService("default", false);
        storeHandle<g_fusdLbsIface>(daemon);
        if (daemon != nullptr || budget < 2) return daemon;
        usleep(kLookupPauseMicros);
        --budget;
    }
}

void linkDaemonDeath(const sp<fusd_v1_3::IFusdLbs>& daemon) {
    sp<FusdDeathRecipient> recipient = new FusdDeathRecipient();
    storeHandle<g_fusdDeathRecipient>(recipient);
    Return<bool> linked = daemon->linkToDeath(recipient, 0);
    if (!linked.isOk()) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                            "%s: Transaction error in linking to g_fusdLbsIface death: %s",
                            kLogPrefix, linked.description().c_str());
    } else if (linked) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: Link to g_fusdLbsIface death notification successful", kLogPrefix);
    } else {
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG,
                            "%s: Unable to link to g_fusdLbsIface death notifications", kLogPrefix);
    }
}

void fetchBatching(const sp<fusd_v1_3::IFusdLbs>& daemon) {
    auto batching = daemon->getGnssBatchingInterface();
    if (!batching.isOk()) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: Unable to get a handle to fusdBatching",
                            kLogPrefix);
        return;
    }
    sp<fusd_v1_1::IGnssBatchingInterface> object = batching;
    storeHandle<g_fusdBatchingIface>(object);
    storeHandle<g_gnssBatchingIface>(object);
    if (object != nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get to FusdLbsBatchingIface successful",
                            kLogPrefix);
    } else {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: g_gnssBatchingIface is null",
                            kLogPrefix);
    }
}

void fetchGnss(const sp<fusd_v1_3::IFusdLbs>& daemon) {
    auto gnss = daemon->getFusdGnssInterface();
    if (!gnss.isOk()) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                            "%s: Unable to get a handle to FusdGnssInterface", kLogPrefix);
        return;
    }
    sp<fusd_v1_2::IFusdGnssInterface> object = gnss;
    if (object == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: FusdGnssInterface is null",
                            kLogPrefix);
        return;
    }
    storeHandle<g_fusdGnssIface>(object);
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get FusdGnssInterface successful",
                        kLogPrefix);
    if (loadHandle<g_fusdGnssCb>() == nullptr) {
        storeHandle<g_fusdGnssCb>(sp<fusd_v1_2::IFusdGnssCallback>(new FusdGnssCallback()));
    }
    if (!object->setCallback(loadHandle<g_fusdGnssCb>()).isOk()) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: register FusdGnssCallback fail",
                            kLogPrefix);
    }
}

void fetchGeofence(const sp<fusd_v1_3::IFusdLbs>& daemon) {
    auto geofence = daemon->getFusdGeofenceInterface();
    if (!geofence.isOk()) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG,
                            "%s: Unable to get a handle to FusdGeofenceInterface", kLogPrefix);
        return;
    }
    sp<fusd_v1_2::IFusdGeofenceInterface> object = geofence;
    storeHandle<g_fusdGeofenceIface>(object);
    if (object == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: FusdGeofenceIface is null",
                            kLogPrefix);
        return;
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get FusdGeofenceIface successful",
                        kLogPrefix);
    if (loadHandle<g_fusdGeofenceCb>() == nullptr) {
        storeHandle<g_fusdGeofenceCb>(
            sp<fusd_v1_2::IFusdGeofenceCallback>(new FusdGeofenceCallback()));
    }
    if (object->setCallback(loadHandle<g_fusdGeofenceCb>()).isOk()) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s:register FusdGeofenceCallback successful", kLogPrefix);
    } else {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: register FusdGeofenceCallback fail",
                            kLogPrefix);
    }
}

}  // namespace

void fd_init() {
    if (loadHandle<g_fusdLbsIface>() != nullptr) return;
    storeHandle<g_hidlUtil>(sp<HidlUtil>(new HidlUtil(processFusdServiceDied, reinitFusdBatching)));
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s:processFusdServiceDied register()",
                        kLogPrefix);
    FdGetService();
    sp<HidlUtil> watcher = loadHandle<g_hidlUtil>();
    if (watcher != nullptr) {
        fusd_v1_3::IFusdLbs::registerForNotifications("", watcher);
    }
}

void FdGetService() {
    checkChipsetType();
    int budget = lookupAttemptBudget();
    pthread_mutex_lock(&fusdMutex);
    sp<fusd_v1_3::IFusdLbs> daemon = lookUpDaemon(budget);
    if (daemon == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: FD getService failed, g_fusdLbsIface is null", kLogPrefix);
        pthread_mutex_unlock(&fusdMutex);
        return;
    }
    linkDaemonDeath(daemon);
    getFusionDaemonInterface();
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get fusd service successful", kLogPrefix);
    pthread_mutex_unlock(&fusdMutex);
}

void getFusionDaemonInterface() {
    sp<fusd_v1_3::IFusdLbs> daemon = loadHandle<g_fusdLbsIface>();
    if (daemon == nullptr) return;
    fetchBatching(daemon);
    fetchGnss(daemon);
    fetchGeofence(daemon);
}

bool isFDSupport() {
    PinnedHandle<g_fusdGnssIface> engine;
    return engine != nullptr;
}

bool isFDGeofenceSupport() {
    return loadHandle<g_fusdGeofenceIface>() != nullptr && g_chipSupportsGeofence;
}

sp<gnss_v1_0::IGnssBatching> getBatcgingIface() {
    return loadHandle<g_gnssBatchingIface>();
}

// ---- Death and re-initialisation.

void FusdDeathRecipient::serviceDied(uint64_t /*cookie*/,
                                     const wp<android::hidl::base::V1_0::IBase>& who) {
    sp<android::hidl::base::V1_0::IBase> dead = who.promote();
    if (dead != nullptr) {
        Return<bool> unlinked = dead->unlinkToDeath(this);
        (void)unlinked.isOk();
    }
    pthread_mutex_lock(&fusdMutex);
    __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: fusd hidl service was dead, start clear",
                        kLogPrefix);
    clearHandle<g_fusdLbsIface>();
    clearHandle<g_fusdBatchingIface>();
    clearHandle<g_gnssBatchingIface>();
    clearHandle<g_fusdGnssIface>();
    clearHandle<g_fusdGeofenceIface>();
    pthread_mutex_unlock(&fusdMutex);
}

void processFusdServiceDied(uint64_t /*cookie*/,
                            const wp<android::hidl::base::V1_0::IBase>& /*who*/) {
    __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: enter '%s'.", kLogPrefix,
                        "processFusdServiceDied");
}

namespace {
void replayBatchingStart() {
    if (g_batchingStatus != 1) return;
    __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: in,store the batching start status",
                        kLogPrefix);
    sp<gnss_v1_0::IGnssBatching> batching = loadHandle<g_gnssBatchingIface>();
    if (batching == nullptr) return;
    gnss_v1_0::IGnssBatching::Options options;
    {
        std::lock_guard<std::mutex> lock(handleLock());
        options = g_batchingOptions;
    }
    Return<bool> started = batching->start(options);
    if (!started.isOk()) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: send fusd batching start not ok",
                            kLogPrefix);
        return;
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: run fusd batching start [%d]", kLogPrefix,
                        static_cast<bool>(started) ? 1 : 0);
}
}  // namespace

void reinitFusdBatching(const hidl_string& fqName, const hidl_string& name, bool preexisting) {
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: fqName[%s] name[%s] succ[%d]", kLogPrefix,
                        fqName.c_str(), name.c_str(), preexisting ? 1 : 0);
    if (loadHandle<g_fusdLbsIface>() != nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: g_fusdLbsIface is not null, not need reinitHal", kLogPrefix);
        return;
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s:g_fusdLbsIface is null, reinitHal",
                        kLogPrefix);
    FdGetService();
    replayBatchingStart();
}

void set_batching_status(int32_t status) {
    g_batchingStatus = status;
}

void set_batchingOptions(gnss_v1_0::IGnssBatching::Options options) {
    std::lock_guard<std::mutex> lock(handleLock());
    g_batchingOptions = options;
}

// ---- Framework callbacks.

void registerCallback(const sp<gnss_v2_0::IGnssCallback>& gnssCb,
                      const sp<gnss_v1_0::IGnssGeofenceCallback>& geofenceCb,
                      const sp<FdCorvaneCallback_>& corvaneCb) {
    storeHandle<g_gnssCbIface>(gnssCb);
    if (gnssCb == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: register gnss callback failed.",
                            kLogPrefix);
    }
    storeHandle<g_gnssGeofenceCbIface>(geofenceCb);
    if (geofenceCb == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: register geofence callback failed.",
                            kLogPrefix);
    }
    storeHandle<fdCorvaneCb>(corvaneCb);
}
