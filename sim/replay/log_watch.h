// Counts the library's log lines that tell what became of a call, as they pass through
// liblog's logger hook, and copies every line to the transcript when one is kept.
#pragma once

#include <atomic>
#include <cstdint>

namespace replay {

enum class Seen : int {
    kFusedForwarded,    // "get location from Tarvi1.5"
    kFusedDropped,      // "no need to send_location_callback"
    kFusedNoCallback,   // "FD location report, g_gnssCbIface is null"
    kNmeaTooLong,       // "invalid nmea data"
    kNmeaCopyFailed,    // "memcpy_s nmea error"
    kNmeaSendFailed,    // "send NMEA update to TARVI fail"
    kPaddingStarted,    // "start increase sv"
    kDaemonDied,        // "fusd hidl service was dead, start clear"
    kConnected,         // "get fusd service successful"
    kBatchingReplayed,  // "run fusd batching start"
    kCount
};

class LogWatch {
  public:
    static LogWatch& get();
    // Routes liblog's lines here; `toTranscript` also copies each to the transcript.
    void install(bool toTranscript);
    uint64_t count(Seen what) const { return mCounts[static_cast<int>(what)].load(); }
    void onLine(int priority, const char* message);

  private:
    std::atomic<uint64_t> mCounts[static_cast<int>(Seen::kCount)] = {};
    std::atomic<bool> mToTranscript{false};
};

// The counts at one moment, to tell what a call caused.
class LogMark {
  public:
    LogMark();
    uint64_t since(Seen what) const;

  private:
    uint64_t mAt[static_cast<int>(Seen::kCount)];
};

}  // namespace replay
