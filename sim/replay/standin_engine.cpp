#include "standin_engine.h"

#include <algorithm>

namespace replay {

using android::hardware::gnss::V1_0::GnssLocation;

namespace {

constexpr int64_t kCoastPeriodMs = 1000;

}  // namespace

StandInEngine::StandInEngine(int64_t latencyMs, int64_t jitterMs, int64_t coastMs, uint32_t seed)
    : mLatencyMs(latencyMs), mJitterMs(jitterMs), mCoastMs(coastMs), mRandom(seed) {}

void StandInEngine::setNow(int64_t nowMs) {
    std::lock_guard<std::mutex> lock(mLock);
    mNowMs = nowMs;
}

int64_t StandInEngine::drawDelayLocked() {
    int64_t jitter = 0;
    if (mJitterMs > 0) {
        std::uniform_int_distribution<int64_t> draw(-mJitterMs, mJitterMs);
        jitter = draw(mRandom);
    }
    return std::max<int64_t>(0, mLatencyMs + jitter);
}

// The fused location is the engine's estimate at delivery time, `delayMs` after `atMs`: the
// fix's position, time stamped on the fix's clock `sinceFixMs` after it plus the delay.
void StandInEngine::scheduleLocked(int64_t atMs, int64_t delayMs, const GnssLocation& base,
                                   int64_t sinceFixMs) {
    FusedReport report;
    report.dueMs = atMs + delayMs;
    report.location = base;
    report.location.timestamp = base.timestamp + sinceFixMs + delayMs;
    auto at =
        std::upper_bound(mSchedule.begin(), mSchedule.end(), report.dueMs,
                         [](int64_t due, const FusedReport& other) { return due < other.dueMs; });
    mSchedule.insert(at, report);
}

void StandInEngine::onLocationData(const GnssLocation& location) {
    std::lock_guard<std::mutex> lock(mLock);
    mHasFix = true;
    mLastFixMs = mNowMs;
    mNextCoastMs = mNowMs + kCoastPeriodMs;
    mLastFix = location;
    scheduleLocked(mNowMs, drawDelayLocked(), location, 0);
}

void StandInEngine::coastUntil(int64_t untilMs) {
    std::lock_guard<std::mutex> lock(mLock);
    while (mHasFix && mNextCoastMs < untilMs && mNextCoastMs - mLastFixMs <= mCoastMs) {
        scheduleLocked(mNextCoastMs, drawDelayLocked(), mLastFix, mNextCoastMs - mLastFixMs);
        mNextCoastMs += kCoastPeriodMs;
    }
}

std::vector<FusedReport> StandInEngine::takeDue(int64_t untilMs) {
    std::lock_guard<std::mutex> lock(mLock);
    auto end = std::find_if(mSchedule.begin(), mSchedule.end(),
                            [untilMs](const FusedReport& r) { return r.dueMs >= untilMs; });
    std::vector<FusedReport> due(mSchedule.begin(), end);
    mSchedule.erase(mSchedule.begin(), end);
    return due;
}

void StandInEngine::forget() {
    std::lock_guard<std::mutex> lock(mLock);
    mSchedule.clear();
    mHasFix = false;
}

int StandInEngine::takeRmcValid(bool valid) {
    std::lock_guard<std::mutex> lock(mLock);
    int count = mRmcValid[valid];
    mRmcValid[valid] = 0;
    return count;
}

void StandInEngine::onNmeaUpdate(bool rmcValid, int64_t /*timestamp*/) {
    std::lock_guard<std::mutex> lock(mLock);
    ++mRmcValid[rmcValid];
    ++mNmeaUpdates;
}

void StandInEngine::onSvStatus(uint32_t /*count*/) {}

}  // namespace replay
