// A stand-in for the daemon's location engine: it answers each fix the daemon takes in with
// one fused location after a latency (plus jitter), and keeps reporting once a second for a
// coast time after fixes stop. Time is the replay's virtual time, in ms from the first epoch.
#pragma once

#include <android/hardware/gnss/1.0/types.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <random>
#include <vector>

#include "world/feed_tap.h"

namespace replay {

struct FusedReport {
    int64_t dueMs = 0;  // virtual time of delivery
    android::hardware::gnss::V1_0::GnssLocation location{};
};

class StandInEngine : public sim::FeedListener {
  public:
    StandInEngine(int64_t latencyMs, int64_t jitterMs, int64_t coastMs, uint32_t seed);

    // Virtual time of what the daemon takes in from now on.
    void setNow(int64_t nowMs);
    // Schedules the coast reports before `untilMs`: one a second after the last fix, as long
    // as no fix follows and the coast time since the fix has not run out.
    void coastUntil(int64_t untilMs);
    // Reports due before `untilMs`, in order of delivery; they leave the schedule.
    std::vector<FusedReport> takeDue(int64_t untilMs);
    // The daemon's process died: its schedule and its fix history go with it.
    void forget();

    // Counted feed calls, for the cycle records.
    int takeRmcValid(bool valid);  // sendNmeaUpdate calls with that flag since the last take
    uint64_t nmeaUpdates() const { return mNmeaUpdates.load(); }  // all taken in, ever

    void onLocationData(const android::hardware::gnss::V1_0::GnssLocation& location) override;
    void onNmeaUpdate(bool rmcValid, int64_t timestamp) override;
    void onSvStatus(uint32_t count) override;

  private:
    int64_t drawDelayLocked();
    void scheduleLocked(int64_t atMs, int64_t delayMs,
                        const android::hardware::gnss::V1_0::GnssLocation& base,
                        int64_t sinceFixMs);

    const int64_t mLatencyMs;
    const int64_t mJitterMs;
    const int64_t mCoastMs;
    std::mutex mLock;
    std::mt19937 mRandom;
    int64_t mNowMs = 0;
    bool mHasFix = false;
    int64_t mLastFixMs = 0;    // virtual time the last fix came in
    int64_t mNextCoastMs = 0;  // virtual time of the next coast report
    android::hardware::gnss::V1_0::GnssLocation mLastFix{};
    std::vector<FusedReport> mSchedule;
    int mRmcValid[2] = {0, 0};
    std::atomic<uint64_t> mNmeaUpdates{0};
};

}  // namespace replay
