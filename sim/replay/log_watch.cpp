#include "log_watch.h"

#include <android/log.h>

#include <cstring>

#include "log_capture.h"
#include "transcript.h"

namespace replay {

namespace {

struct Pattern {
    Seen what;
    const char* text;
};

constexpr Pattern kPatterns[] = {
    {Seen::kFusedForwarded, "get location from Tarvi1.5"},
    {Seen::kFusedDropped, "[LocMgr] no need to send_location_callback"},
    {Seen::kFusedNoCallback, "FD location report, g_gnssCbIface is null"},
    {Seen::kNmeaTooLong, "[LocMgr] invalid nmea data"},
    {Seen::kNmeaCopyFailed, "[LocMgr] memcpy_s nmea error"},
    {Seen::kNmeaSendFailed, "send NMEA update to TARVI fail"},
    {Seen::kPaddingStarted, "start increase sv"},
    {Seen::kDaemonDied, "fusd hidl service was dead, start clear"},
    {Seen::kConnected, "get fusd service successful"},
    {Seen::kBatchingReplayed, "run fusd batching start"},
};

void watchLine(const struct __android_logger_data* data, const char* message) {
    LogWatch::get().onLine(data->priority, message);
}

}  // namespace

LogWatch& LogWatch::get() {
    static LogWatch* watch = new LogWatch();  // lives until exit: runtime threads log late
    return *watch;
}

void LogWatch::install(bool toTranscript) {
    mToTranscript = toTranscript;
    __android_log_set_logger(watchLine);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

void LogWatch::onLine(int priority, const char* message) {
    if (message == nullptr) return;
    for (const Pattern& pattern : kPatterns) {
        if (strstr(message, pattern.text) != nullptr) {
            mCounts[static_cast<int>(pattern.what)]++;
            break;
        }
    }
    if (mToTranscript) sim::Transcript::get().emit(sim::logLine(priority, message));
}

LogMark::LogMark() {
    for (int i = 0; i < static_cast<int>(Seen::kCount); ++i) {
        mAt[i] = LogWatch::get().count(static_cast<Seen>(i));
    }
}

uint64_t LogMark::since(Seen what) const {
    return LogWatch::get().count(what) - mAt[static_cast<int>(what)];
}

}  // namespace replay
