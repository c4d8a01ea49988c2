// The library's whole surface driven against the embedded world, as a provider and its
// peers use it on a device: the daemon connection, the framework hand-over, the vendor
// HAL set-up with SUPL, DNS and NI traffic, the location feed, geofences, batching across
// a daemon restart, and the daemon's reports coming back into the library.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace faults {

// Runs one world line (`fusd kill`, `vhal provide ni no`, ...) and waits until the
// runtime has delivered everything it caused. Returns the world's refusal, "" when taken.
std::string world(const std::string& line);

// Runs a line that the world must take; a refusal fails the current test.
void must(const std::string& line);

// Runs a daemon or vendor-HAL call into the library. The world refuses it only when the
// library's callback never got registered with the peer (a fault can cause that); any
// other refusal fails the current test.
void peerCall(const std::string& line);

// Location times in milliseconds, each far from the one before, so that the reporting
// interval never holds a fused report back and a fix is never "fresh".
class Clock {
  public:
    int64_t next() { return mNow += 10000; }

  private:
    int64_t mNow = 1700000000000;
};

// A fresh world with a geofence-capable chip, the daemon and both vendor HALs registered,
// and the library connected and handed the framework's objects.
void startWorld();

// One full workout. `withheld` is the `PARTY FEATURE` pair the running case keeps
// withheld ("" for none): the workout's own use of that knob puts it back that way.
void workout(Clock& clock, const std::string& withheld);

// Whether a line of `lines` records the call `call` ("fusd IFusdGnssInterface.sendNmeaUpdate(")
// going through, i.e. without a transport error.
bool wentThrough(const std::vector<std::string>& lines, const std::string& call);

}  // namespace faults
