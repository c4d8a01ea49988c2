#include "workout.h"

#include <gtest/gtest.h>
#include <lexer.h>
#include <log_capture.h>
#include <transcript.h>
#include <world/world.h>
#include <zdgnssprovider.h>
#include <zdhost/platform_control.h>
#include <zdhost/runtime.h>

#include <cstring>

namespace faults {

using android::sp;
namespace gnss_v1_0 = android::hardware::gnss::V1_0;
namespace gnss_v1_1 = android::hardware::gnss::V1_1;
namespace gnss_v2_0 = android::hardware::gnss::V2_0;

namespace {

using SvStatus = gnss_v1_0::IGnssCallback::GnssSvStatus;
using SvInfo2 = gnss_v2_0::IGnssCallback::GnssSvInfo;

// One burst of a real receiver (examples/captures/gpsd-haicom-305N.log): a valid fix,
// then a void one.
const char* const kNmeaChunks[] = {
    "$GPGGA,095311.801,2712.6419,S,15303.1214,E,1,05,07.5,4.1,M,42.2,M,,*7F\r\n"
    "$GPRMC,095311.801,A,2712.6419,S,15303.1214,E,2.16,307.41,080407,,,A*74\r\n",
    "$GPRMC,095255.810,V,2712.6404,S,15303.1201,E,0.00,0.00,080407,,,A*6E\r\n",
};

gnss_v1_0::GnssLocation fixAt(int64_t timestamp) {
    gnss_v1_0::GnssLocation fix{};
    fix.timestamp = timestamp;
    fix.latitudeDegrees = -27.2107;
    fix.longitudeDegrees = 153.052;
    return fix;
}

std::string locAt(int64_t timestamp) {
    return "loc{timestamp=" + std::to_string(timestamp) +
           " latitudeDegrees=-27.2107 longitudeDegrees=153.052}";
}

// Three GPS satellites used in the fix: few enough for the list to be padded.
SvStatus thinStatus() {
    SvStatus status{};
    status.numSvs = 3;
    for (uint32_t i = 0; i < status.numSvs; ++i) {
        status.gnssSvList[i].svid = static_cast<int16_t>(5 + i);
        status.gnssSvList[i].constellation = gnss_v1_0::GnssConstellationType::GPS;
        status.gnssSvList[i].cN0Dbhz = 30.0f;
        status.gnssSvList[i].svFlag =
            static_cast<uint8_t>(gnss_v1_0::IGnssCallback::GnssSvFlags::USED_IN_FIX);
    }
    return status;
}

std::vector<SvInfo2> thinList() {
    SvStatus status = thinStatus();
    std::vector<SvInfo2> list(status.numSvs);
    for (size_t i = 0; i < list.size(); ++i) {
        list[i].v1_0 = status.gnssSvList[i];
        list[i].constellation = gnss_v2_0::GnssConstellationType::GPS;
    }
    return list;
}

void connection() {
    fusionD_init();
    FdGetService();
    getFusionDaemonInterface();
    isFDSupport();
    isFDGeofenceSupport();
    getBatcgingIface();
    checkChipsetType();
    getChipsetType();
    checkBatchingChannelType();
    getBatchingChannelType();
    processFusdServiceDied(0, android::wp<android::hidl::base::V1_0::IBase>());
    reinitFusdBatching("vendor.zendra.hardware.fusd@1.3::IFusdLbs", "default", true);
    zdhost::pool::drain();
}

void frameworkHandOver() {
    sim::World& w = sim::World::get();
    registerCallback(w.gnssCb(), w.geofenceCb(), w.corvaneCb());
    registerFusdIfCb(w.fdCallback());
    set_fusd_callback();
}

void acquireVendorHal() {
    sp<gnss_v1_0::IGnss> gnss;
    sp<gnss_v1_1::IGnss> gnss11;
    sp<gnss_v2_0::IGnss> gnss20;
    getZdGnssService(&gnss, &gnss11, &gnss20);
    getHidlVersion();
    checkHalVersion();
}

void extensionsV2_0() {
    sp<gnss_v1_0::IAGnssRil> ril;
    sp<gnss_v2_0::IAGnssRil> ril20;
    sp<gnss_v1_0::IGnssNi> ni;
    getZdFeatureExtensionV2_0(&ril, &ril20, &ni);
}

void extensionsV1_0() {
    sp<gnss_v1_0::IAGnssRil> ril;
    sp<gnss_v1_0::IGnssConfiguration> configuration;
    sp<gnss_v1_1::IGnssConfiguration> configuration11;
    getZdFeatureExtension(&ril, &configuration, &configuration11);
}

void suplAndNi() {
    set_supl_host_ip("192.0.2.7");
    const uint8_t message[] = {0x0a, 0x0b, 0x0c};
    send_ni_message(message, sizeof(message));
    peerCall("vhal AgpsRequestSuplDns \"supl.example.net\"");
    send_Agps_Supl_Request("supl.example.net");
}

// Vendor HAL 2.0 with its extensions; then 1.0 alone, whose configuration depends on the
// version code and whose RIL takes NI messages once the 2.0 RIL handle is empty.
void vendorHal(const std::string& withheld) {
    acquireVendorHal();
    extensionsV2_0();
    suplAndNi();
    must("vhal provide ril2 no");
    extensionsV2_0();
    must(std::string("vhal provide ril2 ") + (withheld == "vhal ril2" ? "no" : "yes"));
    must("vhal unregister 2.0");
    acquireVendorHal();
    for (const char* code : {"1", "2"}) {
        must(std::string("vhal hidlVersion ") + code);
        extensionsV1_0();
    }
    must("vhal hidlVersion 1");
    suplAndNi();
    must("vhal register 2.0");
    acquireVendorHal();
    extensionsV2_0();
}

void runCommands(bool start) {
    send_gnss_start_cmd_to_tarvi(start);
    send_quick_ttff_start_cmd_to_tarvi(start);
}

void locationFeed(Clock& clock) {
    runCommands(true);
    setFusdGnssMinReportingInterval(1000);
    reset_tarvi_param();
    gnss_v1_0::GnssLocation fix = fixAt(clock.next());
    gnss_v2_0::GnssLocation fix2{};
    fix2.v1_0 = fixAt(clock.next());
    sendLocationDataToTarvi(fix);
    sendLocationDataToTarvi(fix2);
    for (const char* chunk : kNmeaChunks) {
        send_nmea_update_to_tarvi(fix.timestamp, chunk, static_cast<unsigned>(strlen(chunk)));
    }
    send_sv_status_to_tarvi(3);
    sendSvInfo(thinStatus());
    addSvList(fix);
    reportAddSvList(thinStatus());
    sendSvInfo(android::hardware::hidl_vec<SvInfo2>(thinList()));
    addSvList(fix2);
    ReportAddSvList(thinList());
    qttff_location_sourcetype(fix);
    isFdLocationReport();
    resetFdLocationFlag();
    isNeedSvIncrease();
    isReportZdSv();
    resetLocationFlag();
    runCommands(false);
}

void geofences() {
    isFDGeofenceSupport();
    fd_add_geofence(7, -27.2107, 153.052, 100, 1, 7, 5000, 0);
    fd_pause_genfence(7);
    fd_resume_geofence(7, 7);
    fd_remove_geofence(7);
}

void daemonReports(Clock& clock) {
    const int64_t at = clock.next();
    const std::string loc = locAt(at);
    peerCall("fusd reportFusdLocation " + loc);
    peerCall("fusd geofenceAddResultCb [7:0 8:-103]");
    peerCall("fusd geofenceRemoveResultCb [7:0 8:-102]");
    peerCall("fusd onGetCurrentLocationCb 3 " + loc + " 1 20");
    peerCall("fusd gnssGeofenceTransitionCb 7 " + loc + " 2 " + std::to_string(at));
    peerCall("fusd gnssGeofenceStatusCb 1 " + loc);
    peerCall("fusd gnssGeofencePauseCb 7 0");
    peerCall("fusd gnssGeofenceResumeCb 7 -149");
}

// A batching run is on when the daemon restarts: the reconnection replays its start.
void batchingAcrossRestart() {
    gnss_v1_0::IGnssBatching::Options options{};
    options.periodNanos = 1000000000;
    set_batchingOptions(options);
    set_batching_status(1);
    getBatcgingIface();
    must("fusd kill");
    must("fusd register");
}

}  // namespace

std::string world(const std::string& line) {
    std::vector<sim::Token> tokens;
    std::string error;
    if (!sim::lexTokens(line, &tokens, &error) || tokens.empty()) return "does not lex: " + error;
    std::vector<sim::Token> args(tokens.begin() + 1, tokens.end());
    bool taken = sim::World::get().command(tokens[0].text, args, &error);
    zdhost::pool::drain();
    return taken ? std::string() : "refused: " + error;
}

void must(const std::string& line) {
    EXPECT_EQ(world(line), "") << line;
}

void peerCall(const std::string& line) {
    std::string refusal = world(line);
    EXPECT_TRUE(refusal.empty() || refusal.find("was registered") != std::string::npos)
        << line << ": " << refusal;
}

void startWorld() {
    sim::Transcript::get().setEcho(false);
    sim::startLogCapture();
    sim::World::get().start();
    zdhost::platform::setProperty("ro.connectivity.sub_chiptype", "vk7705");
    for (const char* line : {"fusd register", "vhal register 1.0", "vhal register 2.0"}) {
        must(line);
    }
    fusionD_init();
    frameworkHandOver();
    zdhost::pool::drain();
}

void workout(Clock& clock, const std::string& withheld) {
    connection();
    frameworkHandOver();
    vendorHal(withheld);
    locationFeed(clock);
    geofences();
    daemonReports(clock);
    batchingAcrossRestart();
    locationFeed(clock);
    geofences();
    daemonReports(clock);
}

bool wentThrough(const std::vector<std::string>& lines, const std::string& call) {
    static const std::string kFailed = " -> transport-error";
    for (const std::string& line : lines) {
        bool failed = line.size() >= kFailed.size() &&
                      line.compare(line.size() - kFailed.size(), kFailed.size(), kFailed) == 0;
        if (line.compare(0, call.size(), call) == 0 && !failed) return true;
    }
    return false;
}

}  // namespace faults
