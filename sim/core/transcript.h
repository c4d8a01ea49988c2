// The run's transcript: every observable event, one line each, in order.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace sim {

class Transcript {
  public:
    static Transcript& get();
    // Thread-safe. Lines from hwbinder threads and the provider thread interleave
    // in the order they happen.
    void emit(const std::string& line);
    // Starts a new segment (the lines of one command) and returns the previous one.
    std::vector<std::string> takeSegment();
    void setEcho(bool echo);  // print each line to stdout as it is emitted
    // Also hands every line to `listener` with the emitting thread's tag (the concurrent
    // branch it belongs to; 0 outside branches), in the order the lines are emitted.
    using Listener = std::function<void(int tag, const std::string& line)>;
    void setListener(Listener listener);
    // Whether lines are kept at all (true unless told otherwise). A run that wants only its
    // outcome turns this off: emit() then drops every line, and the fakes format nothing.
    static void setKept(bool kept);
    static bool kept() { return sKept.load(std::memory_order_relaxed); }

  private:
    std::mutex mLock;
    std::vector<std::string> mSegment;
    bool mEcho = true;
    Listener mListener;
    static std::atomic<bool> sKept;
};

}  // namespace sim
