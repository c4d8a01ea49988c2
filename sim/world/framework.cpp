#include "framework.h"

#include <zdhost/schedule.h>

#include "format.h"
#include "objects.h"
#include "recorder.h"
#include "recording_stubs.h"
#include "transcript.h"

namespace sim {

using android::sp;
using android::hardware::hidl_string;

namespace {

// The framework's party: the plain C callbacks below are calls the framework receives, in
// order, as the recorded objects' are.
const Party* gParty = nullptr;

void reachFramework() {
    zdhost::schedule::reach(zdhost::schedule::Point::kCall, gParty,
                            zdhost::schedule::Access::kWrite);
}

// An int32_t array as the fence client received it: [a b c], or null.
std::string fmtArray(const int32_t* values, uint32_t count) {
    if (values == nullptr) return "null";
    std::string out = "[";
    for (uint32_t i = 0; i < count; ++i) out += (i ? " " : "") + fmt(values[i]);
    return out + "]";
}

void corvaneGeofenceAddResult(int32_t* geofenceIds, int32_t* results, uint32_t count) {
    reachFramework();
    Transcript::get().emit("fw corvaneCb.geofenceAddResult(" + fmtArray(geofenceIds, count) + ", " +
                           fmtArray(results, count) + ", " + fmt(count) + ")");
}

void hookA(const hidl_string& fqdn) {
    reachFramework();
    Transcript::get().emit("fw fdCallback.hookA(" + fmt(fqdn) + ")");
}

void hookB(const hidl_string& fqdn) {
    reachFramework();
    Transcript::get().emit("fw fdCallback.hookB(" + fmt(fqdn) + ")");
}

// A framework object: recorded under its own name, printed as "@NAME".
template <typename T>
sp<T> makeFrameworkObject(Party& party, const std::string& name) {
    sp<T> object = new T(Recorder(party, nullptr, name));
    ObjectNames::get().assign(object.get(), name, false);
    return object;
}

}  // namespace

Framework::Framework() {
    gParty = &mParty;
    mParty.declare("gnssCb", RecordingIGnssCallback_V2_0::operations());
    mParty.declare("geofenceCb", RecordingIGnssGeofenceCallback_V1_0::operations());
    mGnssCb = makeFrameworkObject<RecordingIGnssCallback_V2_0>(mParty, "gnssCb");
    mGeofenceCb = makeFrameworkObject<RecordingIGnssGeofenceCallback_V1_0>(mParty, "geofenceCb");
    mCorvaneCb = new FdCorvaneCallback_();
    mCorvaneCb->geofenceAddResult = corvaneGeofenceAddResult;
    ObjectNames::get().assign(mCorvaneCb.get(), "corvaneCb", false);
    reset();
}

void Framework::reset() {
    mParty.reset();
    mFdCallback.sendAgpsRequestSuplDns = hookA;
}

bool Framework::command(const std::vector<Token>& args, std::string* error) {
    bool handled = false;
    bool ok = mParty.knobCommand(args, &handled, error);
    if (handled) return ok;
    if (!args.empty() && args[0].text == "hook") return setHook(args, error);
    *error = "unknown command: fw " + (args.empty() ? std::string() : args[0].text);
    return false;
}

bool Framework::setHook(const std::vector<Token>& args, std::string* error) {
    const std::string which = args.size() == 2 ? args[1].text : std::string();
    if (which == "A") {
        mFdCallback.sendAgpsRequestSuplDns = hookA;
    } else if (which == "B") {
        mFdCallback.sendAgpsRequestSuplDns = hookB;
    } else if (which == "null") {
        mFdCallback.sendAgpsRequestSuplDns = nullptr;
    } else {
        *error = "usage: fw hook A|B|null";
        return false;
    }
    return true;
}

}  // namespace sim
