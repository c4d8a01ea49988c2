#include "replay_driver.h"

#include <zdgnssprovider.h>
#include <zdhost/platform_control.h>
#include <zdhost/runtime.h>

#include <algorithm>
#include <string>
#include <vector>

#include "daemon_plan.h"
#include "framework_tap.h"
#include "log_watch.h"
#include "objects.h"
#include "standin_engine.h"
#include "transcript.h"
#include "world/world.h"

namespace replay {

namespace {

using android::sp;
namespace V1_0 = android::hardware::gnss::V1_0;
namespace V2_0 = android::hardware::gnss::V2_0;

constexpr unsigned kNmeaSizeGuard = 10240;

class Replay {
  public:
    Replay(const ReplayInput& input, const ReplayOptions& options)
        : mInput(input),
          mOptions(options),
          mPlan(daemonPlan(options.killAt, options.restartAt)),
          mEngine(options.latencyMs, options.jitterMs, options.coastMs, options.seed) {}

    ReplayReport run();

  private:
    void startUp();
    void shutDown();
    void runEpoch(int index, const FeedEpoch& epoch, int64_t endMs, EpochRecord* record);
    void advance(int64_t untilMs, bool actionsAtUntil);
    void applyDaemonAction(const DaemonAction& action);
    void sendChunk(const std::string& chunk, int64_t timestamp, EpochRecord* record);
    void feedSatellites(const std::vector<SatelliteView>& satellites, EpochRecord* record);
    void feedFix(const V2_0::GnssLocation& location, EpochRecord* record);
    void deliverFused(int64_t untilMs);
    void note(const std::string& line);
    bool daemon(const std::string& verb);

    const ReplayInput& mInput;
    const ReplayOptions& mOptions;
    const std::vector<DaemonAction> mPlan;
    size_t mNextAction = 0;
    StandInEngine mEngine;
    sp<FrameworkTap> mTap;
    sp<V2_0::IGnssCallback> mFramework;  // the world's recording callback
    bool mDaemonUp = false;
    bool mConnected = false;
    std::vector<ReplayReport::Downtime> mDowntimes;
    int mLastHalUsed = -1;  // used GPS satellites of the last report the HAL sent
};

ReplayReport Replay::run() {
    ReplayReport report;
    report.capture = mOptions.capture;
    report.settings =
        RunSettings{mOptions.hal,     mOptions.burst,    mOptions.latencyMs,  mOptions.jitterMs,
                    mOptions.coastMs, mOptions.seed,     mOptions.intervalMs, mOptions.batching,
                    mOptions.killAt,  mOptions.restartAt};
    report.cut = mInput.cut;
    report.sentences = mInput.sentences;
    report.phoneLog = mInput.phoneLog;
    report.endMs = runEndMs(mInput);
    startUp();
    report.epochs.resize(mInput.epochs.size());
    for (size_t i = 0; i < mInput.epochs.size(); ++i) {
        const int64_t endMs =
            i + 1 < mInput.epochs.size() ? mInput.epochs[i + 1].atMs : report.endMs;
        runEpoch(static_cast<int>(i), mInput.epochs[i], endMs, &report.epochs[i]);
    }
    if (!mDaemonUp && !mDowntimes.empty()) mDowntimes.back().toMs = report.endMs;
    report.downtimes = mDowntimes;
    shutDown();
    return report;
}

void Replay::note(const std::string& line) {
    if (mOptions.transcript) sim::Transcript::get().emit("replay " + line);
}

bool Replay::daemon(const std::string& verb) {
    std::string error;
    const bool ok = sim::World::get().command("fusd", {sim::Token{verb, false}}, &error);
    zdhost::pool::drain();  // death notices and reconnection run on runtime threads
    if (!ok) note(verb + " refused: " + error);
    return ok;
}

// The provider's start: the daemon is up, the library connects, the framework's callbacks
// are registered, batching runs (so a restart has something to replay), GPS starts.
void Replay::startUp() {
    sim::Transcript::get().setEcho(mOptions.transcript);
    sim::Transcript::setKept(mOptions.transcript);
    LogWatch::get().install(mOptions.transcript);
    sim::World::get().start();
    sim::World::get().setFeedListener(&mEngine);
    zdhost::platform::setProperty("ro.connectivity.sub_chiptype", "vk7705");
    mFramework = sim::World::get().gnssCb();
    mTap = new FrameworkTap(mFramework);
    sim::ObjectNames::get().assign(mTap.get(), "gnssCb", false);
    mDaemonUp = daemon("register");
    LogMark mark;
    fusionD_init();
    zdhost::pool::drain();
    mConnected = mark.since(Seen::kConnected) > 0;
    registerCallback(mTap, sim::World::get().geofenceCb(), sim::World::get().corvaneCb());
    if (mOptions.batching) {
        V1_0::IGnssBatching::Options batching{};
        batching.periodNanos = 1000000000;
        set_batchingOptions(batching);
        set_batching_status(1);
    }
    send_gnss_start_cmd_to_tarvi(true);
    if (mOptions.intervalMs != -1) {
        setFusdGnssMinReportingInterval(static_cast<int>(mOptions.intervalMs));
    }
}

void Replay::shutDown() {
    send_gnss_start_cmd_to_tarvi(false);
    zdhost::pool::drain();
    sim::World::get().setFeedListener(nullptr);
    sim::Transcript::get().takeSegment();
}

// Each event goes in at its own virtual time, after the daemon's deaths and registrations
// and the fused locations due before it.
void Replay::runEpoch(int index, const FeedEpoch& epoch, int64_t endMs, EpochRecord* record) {
    const LogMark mark;
    record->index = index;
    record->atMs = epoch.atMs;
    record->rule = epoch.rule;
    record->utcLabel = epoch.utcLabel;
    record->skipped = epoch.skipped;
    note("epoch " + std::to_string(index) + " at " + std::to_string(epoch.atMs) + " ms " +
         epoch.utcLabel);
    advance(epoch.atMs, true);
    for (const FeedEvent& event : epoch.events) {
        advance(event.atMs, true);
        mEngine.setNow(event.atMs);
        switch (event.kind) {
            case FeedEvent::Kind::kNmea:
                sendChunk(event.nmea, event.nmeaTimestampMs, record);
                break;
            case FeedEvent::Kind::kSatellites:
                feedSatellites(event.satellites, record);
                break;
            case FeedEvent::Kind::kLocation:
                feedFix(event.location, record);
                break;
        }
    }
    advance(endMs, false);

    record->fusedForwarded =
        static_cast<int>(mark.since(Seen::kFusedForwarded) + mark.since(Seen::kFusedNoCallback));
    record->fusedDropped = static_cast<int>(mark.since(Seen::kFusedDropped));
    record->rmcValidTrue = mEngine.takeRmcValid(true);
    record->rmcValidFalse = mEngine.takeRmcValid(false);
    record->daemonDied = mark.since(Seen::kDaemonDied) > 0;
    record->reconnected = mark.since(Seen::kConnected) > 0;
    record->batchingReplayed = mark.since(Seen::kBatchingReplayed) > 0;
    record->daemonUp = mDaemonUp;
    if (!mOptions.transcript) sim::Transcript::get().takeSegment();  // keep no history
}

// Replays the time up to `untilMs`: fused locations due before it, and the daemon's deaths
// and registrations before it (or at it, with `actionsAtUntil`), each in its turn.
void Replay::advance(int64_t untilMs, bool actionsAtUntil) {
    while (mNextAction < mPlan.size()) {
        const DaemonAction& action = mPlan[mNextAction];
        if (action.atMs > untilMs || (action.atMs == untilMs && !actionsAtUntil)) break;
        deliverFused(action.atMs);
        applyDaemonAction(action);
        ++mNextAction;
    }
    deliverFused(untilMs);
}

void Replay::applyDaemonAction(const DaemonAction& action) {
    const LogMark mark;
    mEngine.setNow(action.atMs);
    note(std::string(action.kill ? "daemon dies" : "daemon registers again") + " at " +
         std::to_string(action.atMs) + " ms");
    if (action.kill && mDaemonUp && daemon("kill")) {
        mDaemonUp = false;
        mDowntimes.push_back({action.atMs, action.atMs});
        mEngine.forget();
    }
    if (!action.kill && !mDaemonUp) {
        mDaemonUp = daemon("register");
        if (mDaemonUp && !mDowntimes.empty()) mDowntimes.back().toMs = action.atMs;
    }
    if (mark.since(Seen::kDaemonDied) > 0) mConnected = false;
    if (mark.since(Seen::kConnected) > 0) mConnected = true;
}

// One chunk to the NMEA feed, and why it sent no update when it did not. The library says
// why only for some refusals; the silent ones are told apart by the chunk and the link.
void Replay::sendChunk(const std::string& chunk, int64_t timestamp, EpochRecord* record) {
    const LogMark mark;
    const uint64_t updatesBefore = mEngine.nmeaUpdates();
    send_nmea_update_to_tarvi(timestamp, chunk.c_str(), static_cast<unsigned>(chunk.size()));
    ++record->nmeaChunks;
    if (mEngine.nmeaUpdates() != updatesBefore) return;
    const char* reason = "no $GPRMC sentence";
    if (mark.since(Seen::kNmeaTooLong) > 0) {
        reason = "RMC tail of 256+ characters";
    } else if (mark.since(Seen::kNmeaCopyFailed) > 0) {
        reason = "bounded copy failed";
    } else if (mark.since(Seen::kNmeaSendFailed) > 0) {
        reason = "transport failure";
    } else if (chunk.size() > kNmeaSizeGuard) {
        reason = "over 10240 bytes";
    } else if (!mConnected) {
        reason = "daemon not connected";
    }
    ++record->chunksRejected[reason];
}

// An epoch the library padded keeps the padded report's counts; otherwise the last report's
// show.
void Replay::feedSatellites(const std::vector<SatelliteView>& satellites, EpochRecord* record) {
    record->satelliteReport = true;
    EpochRecord::SatelliteReport sent;
    if (mOptions.hal == "1.0") {
        const V1_0::IGnssCallback::GnssSvStatus status = toSvStatusV1(satellites);
        sendSvInfo(status);
        (void)mFramework->gnssSvStatusCb(status).isOk();  // the provider's own report
        sent = {static_cast<int>(status.numSvs), usedGps(status)};
    } else {
        const auto list = toSvInfoListV2(satellites);
        sendSvInfo(list);
        (void)mFramework->gnssSvStatusCb_2_0(list).isOk();
        sent = {static_cast<int>(list.size()), usedGps(list)};
    }
    record->satelliteReportsSent.push_back(sent);
    mLastHalUsed = sent.usedGps;
    if (!record->padded) record->usedBefore = record->usedAfter = sent.usedGps;
}

// The fix goes to the library; when it answers false the provider reports the fix itself.
// Then the provider asks for the satellite list to be padded.
void Replay::feedFix(const V2_0::GnssLocation& location, EpochRecord* record) {
    record->hasFix = true;
    ++record->locationsSent;
    const LogMark mark;
    mTap->takeLastListUsed();
    if (mOptions.hal == "1.0") {
        if (!sendLocationDataToTarvi(location.v1_0)) {
            note("provider reports the fix");
            (void)mFramework->gnssLocationCb(location.v1_0).isOk();
            record->providerReported = true;
        }
        addSvList(location.v1_0);
    } else {
        if (!sendLocationDataToTarvi(location)) {
            note("provider reports the fix");
            (void)mFramework->gnssLocationCb_2_0(location).isOk();
            record->providerReported = true;
        }
        addSvList(location);
    }
    const int reported = mTap->takeLastListUsed();
    if (record->padded) return;
    if (mark.since(Seen::kPaddingStarted) > 0) {
        record->padded = true;
        record->usedBefore = mLastHalUsed;
    }
    if (reported >= 0) record->usedAfter = reported;
}

void Replay::deliverFused(int64_t untilMs) {
    mEngine.coastUntil(untilMs);
    for (const FusedReport& report : mEngine.takeDue(untilMs)) {
        sp<vendor::zendra::hardware::fusd::V1_2::IFusdGnssCallback> callback =
            sim::World::get().fusdGnssCallback();
        if (callback == nullptr) continue;  // the daemon is down: its reports went with it
        note("daemon reports a fused location due at " + std::to_string(report.dueMs) + " ms");
        zdhost::pool::deliverCall(
            [&] { (void)callback->reportFusdLocation(report.location).isOk(); });
    }
}

}  // namespace

ReplayReport runReplay(const ReplayInput& input, const ReplayOptions& options) {
    Replay replay(input, options);
    return replay.run();
}

}  // namespace replay
