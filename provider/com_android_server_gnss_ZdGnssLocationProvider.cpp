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
// empty, and unload releases them in reverse order. The static ones are used
// by this file only.
GuardedHandle<fusd_v1_3::IFusdLbs> g_fusdLbsIface;
GuardedHandle<fusd_v1_2::IFusdGnssInterface> g_fusdGnssIface;
GuardedHandle<fusd_v1_2::IFusdGeofenceInterface> g_fusdGeofenceIface;
static GuardedHandle<fusd_v1_1::IGnssBatchingInterface> g_fusdBatchingIface;
static GuardedHandle<fusd_v1_2::IFusdGnssCallback> g_fusdGnssCb;
static GuardedHandle<fusd_v1_2::IFusdGeofenceCallback> g_fusdGeofenceCb;
static GuardedHandle<HidlUtil> g_hidlUtil;
static GuardedHandle<gnss_v1_0::IGnssBatching> g_gnssBatchingIface;
GuardedHandle<gnss_v2_0::IGnssCallback> g_gnssCbIface;
GuardedHandle<gnss_v1_0::IGnssGeofenceCallback> g_gnssGeofenceCbIface;
GuardedHandle<FdCorvaneCallback_> fdCorvaneCb;
std::mutex g_svStoreLock;
gnss_v1_0::IGnssCallback::GnssSvStatus g_svStatus{};
std::vector<gnss_v2_0::IGnssCallback::GnssSvInfo> g_svInfoList;
static GuardedHandle<FusdDeathRecipient> g_fusdDeathRecipient;

pthread_mutex_t fusdMutex = PTHREAD_MUTEX_INITIALIZER;
std::atomic<int32_t> g_batchingStatus{0};
static std::mutex g_batchingOptionsLock;
static gnss_v1_0::IGnssBatching::Options g_batchingOptions GUARDED_BY(g_batchingOptionsLock){};
std::atomic<int32_t> g_chipsetType{0};
std::atomic<bool> g_chipSupportsGeofence{false};
std::atomic<bool> g_flagsFromChipset{false};
std::atomic<uint8_t> g_batchingChannelType{0};

std::mutex g_feedTimingLock;
int64_t lastSentLocUpdateTime = 0;
int64_t lastFusdLocUpdateTime = 0;
int32_t fusdGnssMinReportingInterval = 1000;
bool tarviParamReset = false;

std::atomic<bool> fdLocationFlag{false};
std::atomic<bool> qttffFlag{false};
char sourceTypeBuf[10] = "gps";
std::atomic<bool> locationFlag{false};
std::atomic<bool> svIncreaseFlag{false};
std::atomic<bool> reportZdSvFlag{false};

std::atomic<FdCallback*> g_fdCallback{nullptr};
std::atomic<SuplDnsHook> g_sendAgpsRequestSuplDns{nullptr};

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

// Looks the daemon up, pausing between attempts.
sp<fusd_v1_3::IFusdLbs> lookUpDaemon(int budget) REQUIRES(g_fusdConnection) {
    for (;;) {
        sp<fusd_v1_3::IFusdLbs> daemon = fusd_v1_3::IFusdLbs::tryGetService("default", false);
        g_fusdLbsIface.set(daemon);
        if (daemon != nullptr || budget < 2) return daemon;
        usleep(kLookupPauseMicros);
        --budget;
    }
}

void linkDaemonDeath(const sp<fusd_v1_3::IFusdLbs>& daemon) REQUIRES(g_fusdConnection) {
    sp<FusdDeathRecipient> recipient = new FusdDeathRecipient();
    g_fusdDeathRecipient.set(recipient);
    Return<bool> linked = daemon->linkToDeath(recipient, 0);
    if (!checkRemoteCall(linked, ANDROID_LOG_ERROR,
                         "%s: Transaction error in linking to g_fusdLbsIface death: %s", kLogPrefix,
                         linked.description().c_str())) {
        return;
    }
    if (linked) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: Link to g_fusdLbsIface death notification successful", kLogPrefix);
    } else {
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG,
                            "%s: Unable to link to g_fusdLbsIface death notifications", kLogPrefix);
    }
}

void fetchBatching(const sp<fusd_v1_3::IFusdLbs>& daemon) {
    auto batching = daemon->getGnssBatchingInterface();
    if (!checkRemoteCall(batching, ANDROID_LOG_INFO, "%s: Unable to get a handle to fusdBatching",
                         kLogPrefix)) {
        return;
    }
    sp<fusd_v1_1::IGnssBatchingInterface> object = batching;
    g_fusdBatchingIface.set(object);
    g_gnssBatchingIface.set(object);
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
    if (!checkRemoteCall(gnss, ANDROID_LOG_ERROR, "%s: Unable to get a handle to FusdGnssInterface",
                         kLogPrefix)) {
        return;
    }
    sp<fusd_v1_2::IFusdGnssInterface> object = gnss;
    if (object == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: FusdGnssInterface is null",
                            kLogPrefix);
        return;
    }
    g_fusdGnssIface.set(object);
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get FusdGnssInterface successful",
                        kLogPrefix);
    sp<fusd_v1_2::IFusdGnssCallback> callback =
        g_fusdGnssCb.getOrMake([] { return new FusdGnssCallback(); });
    checkRemoteCall(object->setCallback(callback), ANDROID_LOG_ERROR,
                    "%s: register FusdGnssCallback fail", kLogPrefix);
}

void fetchGeofence(const sp<fusd_v1_3::IFusdLbs>& daemon) {
    auto geofence = daemon->getFusdGeofenceInterface();
    if (!checkRemoteCall(geofence, ANDROID_LOG_ERROR,
                         "%s: Unable to get a handle to FusdGeofenceInterface", kLogPrefix)) {
        return;
    }
    sp<fusd_v1_2::IFusdGeofenceInterface> object = geofence;
    g_fusdGeofenceIface.set(object);
    if (object == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: FusdGeofenceIface is null",
                            kLogPrefix);
        return;
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get FusdGeofenceIface successful",
                        kLogPrefix);
    sp<fusd_v1_2::IFusdGeofenceCallback> callback =
        g_fusdGeofenceCb.getOrMake([] { return new FusdGeofenceCallback(); });
    if (checkRemoteCall(object->setCallback(callback), ANDROID_LOG_ERROR,
                        "%s: register FusdGeofenceCallback fail", kLogPrefix)) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s:register FusdGeofenceCallback successful", kLogPrefix);
    }
}

}  // namespace

void fd_init() {
    if (g_fusdLbsIface.isSet()) return;
    g_hidlUtil.set(sp<HidlUtil>(new HidlUtil(processFusdServiceDied, reinitFusdBatching)));
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s:processFusdServiceDied register()",
                        kLogPrefix);
    FdGetService();
    sp<HidlUtil> watcher = g_hidlUtil.get();
    if (watcher != nullptr) {
        fusd_v1_3::IFusdLbs::registerForNotifications("", watcher);
    }
}

void FdGetService() {
    checkChipsetType();
    int budget = lookupAttemptBudget();
    std::lock_guard<FusdConnectionLock> connecting(g_fusdConnection);
    sp<fusd_v1_3::IFusdLbs> daemon = lookUpDaemon(budget);
    if (daemon == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: FD getService failed, g_fusdLbsIface is null", kLogPrefix);
        return;
    }
    linkDaemonDeath(daemon);
    getFusionDaemonInterface();
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get fusd service successful", kLogPrefix);
}

void getFusionDaemonInterface() {
    sp<fusd_v1_3::IFusdLbs> daemon = g_fusdLbsIface.get();
    if (daemon == nullptr) return;
    fetchBatching(daemon);
    fetchGnss(daemon);
    fetchGeofence(daemon);
}

bool isFDSupport() {
    return g_fusdGnssIface.isSet();
}

bool isFDGeofenceSupport() {
    return g_fusdGeofenceIface.isSet() && g_chipSupportsGeofence;
}

sp<gnss_v1_0::IGnssBatching> getBatcgingIface() {
    return g_gnssBatchingIface.get();
}

// ---- Death and re-initialisation.

namespace {
// Under the connection lock, so that a connection in progress either finishes
// before the handles are emptied or starts after.
void clearDaemonHandles() REQUIRES(g_fusdConnection) {
    g_fusdLbsIface.clear();
    g_fusdBatchingIface.clear();
    g_gnssBatchingIface.clear();
    g_fusdGnssIface.clear();
    g_fusdGeofenceIface.clear();
}
}  // namespace

void FusdDeathRecipient::serviceDied(uint64_t /*cookie*/,
                                     const wp<android::hidl::base::V1_0::IBase>& who) {
    sp<android::hidl::base::V1_0::IBase> dead = who.promote();
    // The link goes with the daemon; nothing is left to undo if this fails.
    if (dead != nullptr) remoteCallWentThrough(dead->unlinkToDeath(this));
    std::lock_guard<FusdConnectionLock> dying(g_fusdConnection);
    __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: fusd hidl service was dead, start clear",
                        kLogPrefix);
    clearDaemonHandles();
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
    sp<gnss_v1_0::IGnssBatching> batching = g_gnssBatchingIface.get();
    if (batching == nullptr) return;
    gnss_v1_0::IGnssBatching::Options options;
    {
        std::lock_guard<std::mutex> lock(g_batchingOptionsLock);
        options = g_batchingOptions;
    }
    Return<bool> started = batching->start(options);
    if (!checkRemoteCall(started, ANDROID_LOG_ERROR, "%s: send fusd batching start not ok",
                         kLogPrefix)) {
        return;
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: run fusd batching start [%d]", kLogPrefix,
                        static_cast<bool>(started) ? 1 : 0);
}
}  // namespace

void reinitFusdBatching(const hidl_string& fqName, const hidl_string& name, bool preexisting) {
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: fqName[%s] name[%s] succ[%d]", kLogPrefix,
                        fqName.c_str(), name.c_str(), preexisting ? 1 : 0);
    if (g_fusdLbsIface.isSet()) {
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
    std::lock_guard<std::mutex> lock(g_batchingOptionsLock);
    g_batchingOptions = options;
}

// ---- Framework callbacks.

// The three objects of one registration are stored in one hold of this lock, so that two
// registrations racing leave one of them whole, never the framework's objects of one mixed
// with the client of the other. The objects replaced are declared before the lock, so they
// are let go after it.
static std::mutex g_registrationLock;

void registerCallback(const sp<gnss_v2_0::IGnssCallback>& gnssCb,
                      const sp<gnss_v1_0::IGnssGeofenceCallback>& geofenceCb,
                      const sp<FdCorvaneCallback_>& corvaneCb) {
    sp<gnss_v2_0::IGnssCallback> oldGnssCb;
    sp<gnss_v1_0::IGnssGeofenceCallback> oldGeofenceCb;
    sp<FdCorvaneCallback_> oldCorvaneCb;
    std::lock_guard<std::mutex> registering(g_registrationLock);
    oldGnssCb = g_gnssCbIface.exchange(gnssCb);
    if (gnssCb == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: register gnss callback failed.",
                            kLogPrefix);
    }
    oldGeofenceCb = g_gnssGeofenceCbIface.exchange(geofenceCb);
    if (geofenceCb == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: register geofence callback failed.",
                            kLogPrefix);
    }
    oldCorvaneCb = fdCorvaneCb.exchange(corvaneCb);
}
