#include "world_harness.h"

#include <zdhost/runtime.h>

#include "format.h"
#include "lexer.h"
#include "transcript.h"
#include "world.h"

namespace worldtest {

void WorldTest::SetUp() {
    sim::Transcript::get().setEcho(false);
    sim::World::get().start();
    zdhost::pool::drain();
    sim::Transcript::get().takeSegment();
}

std::string WorldTest::refusal(const std::string& line) {
    std::vector<sim::Token> tokens;
    std::string error;
    if (!sim::lexTokens(line, &tokens, &error)) return "does not lex: " + error;
    const std::vector<sim::Token> args(tokens.begin() + 1, tokens.end());
    if (sim::World::get().command(tokens[0].text, args, &error)) return "";
    return error.empty() ? "refused without a reason" : error;
}

void WorldTest::run(const std::string& line) {
    EXPECT_EQ(refusal(line), "") << line;
}

std::vector<std::string> WorldTest::lines() {
    zdhost::pool::drain();
    return sim::Transcript::get().takeSegment();
}

sp<IFusdLbs> WorldTest::lookUpDaemon() {
    return IFusdLbs::tryGetService("default");
}

void CallLog::record(const std::string& what) {
    std::lock_guard<std::mutex> guard(lock);
    ++count;
    thread = std::this_thread::get_id();
    onPool = zdhost::pool::onPoolThread();
    last = what;
}

int CallLog::calls() {
    std::lock_guard<std::mutex> guard(lock);
    return count;
}

Return<void> GnssCallback::reportFusdLocation(
    const android::hardware::gnss::V1_0::GnssLocation& location) {
    log.record("timestamp=" + std::to_string(location.timestamp));
    if (failInTransport) return zdhost::transportError();
    return android::hardware::Void();
}

Return<void> GeofenceCallback::geofenceAddResultCb(const GeofenceResults& results) {
    log.record("add " + sim::fmt(results));
    return android::hardware::Void();
}

Return<void> GeofenceCallback::geofenceRemoveResultCb(const GeofenceResults& results) {
    log.record("remove " + sim::fmt(results));
    return android::hardware::Void();
}

Return<void> GeofenceCallback::onGetCurrentLocationCb(int32_t, const GnssLocation&, int64_t,
                                                      int64_t) {
    log.record("currentLocation");
    return android::hardware::Void();
}

Return<void> GeofenceCallback::gnssGeofenceTransitionCb(int32_t, const GnssLocation&,
                                                        Callback::GeofenceTransition, int64_t) {
    log.record("transition");
    return android::hardware::Void();
}

Return<void> GeofenceCallback::gnssGeofenceStatusCb(int32_t, const GnssLocation&) {
    log.record("status");
    return android::hardware::Void();
}

Return<void> GeofenceCallback::gnssGeofencePauseCb(int32_t, Callback::GeofenceStatus) {
    log.record("pause");
    return android::hardware::Void();
}

Return<void> GeofenceCallback::gnssGeofenceResumeCb(int32_t, Callback::GeofenceStatus) {
    log.record("resume");
    return android::hardware::Void();
}

Return<void> SuplCallback::AgpsRequestSuplDns(const android::hardware::hidl_string& fqdn) {
    log.record(fqdn);
    return android::hardware::Void();
}

void DeathRecipient::serviceDied(uint64_t deadCookie,
                                 const android::wp<android::hidl::base::V1_0::IBase>& deadWho) {
    sp<android::hidl::base::V1_0::IBase> promoted = deadWho.promote();
    {
        std::lock_guard<std::mutex> guard(log.lock);
        cookie = deadCookie;
        whoPromoted = promoted != nullptr;
        who = promoted;
    }
    log.record("died");
}

}  // namespace worldtest
