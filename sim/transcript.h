// The run's transcript: every observable event, one line each, in order.
#pragma once

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

  private:
    std::mutex mLock;
    std::vector<std::string> mSegment;
    bool mEcho = true;
};

}  // namespace sim
