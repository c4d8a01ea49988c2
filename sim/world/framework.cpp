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

// The plain C callbacks below are calls the framework receives, in order, as the recorded
// objects' are: each is a point that writes its operation.
void reachFramework(const char* operation) {
    zdhost::schedule::reach(zdhost::schedule::Point::kCall, zdhost::schedule::receiver(operation),
                            zdhost::schedule::Access::kWrite);
}

// The framework's party, for its plain functions, which have no object to keep it.
Party* gParty = nullptr;

// An int32_t array as the fence client received it: [a b c], or null.
std::string fmtArray(const int32_t* values, uint32_t count) {
    if (values == nullptr) return "null";
    std::string out = "[";
    for (uint32_t i = 0; i < count; ++i) out += (i ? " " : "") + fmt(values[i]);
    return out + "]";
}

// The fence client and the SUPL DNS hooks are plain functions of the framework: a call
// into them leaves the library as a remote call does, and is a scheduling point as one.
void corvaneGeofenceAddResult(int32_t* geofenceIds, int32_t* results, uint32_t count) {
    reachFramework("fw corvaneCb.geofenceAddResult");
    Transcript::get().emit("fw corvaneCb.geofenceAddResult(" + fmtArray(geofenceIds, count) + ", " +
                           fmtArray(results, count) + ", " + fmt(count) + ")");
    gParty->runNested("corvaneCb.geofenceAddResult");
}

void hookA(const hidl_string& fqdn) {
    reachFramework("fw fdCallback.hookA");
    Transcript::get().emit("fw fdCallback.hookA(" + fmt(fqdn) + ")");
    gParty->runNested("fdCallback.hookA");
}

void hookB(const hidl_string& fqdn) {
    reachFramework("fw fdCallback.hookB");
    Transcript::get().emit("fw fdCallback.hookB(" + fmt(fqdn) + ")");
    gParty->runNested("fdCallback.hookB");
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
    for (const char* plain :
         {"corvaneCb.geofenceAddResult", "fdCallback.hookA", "fdCallback.hookB"}) {
        mParty.declareNestable(plain);
    }
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

const std::vector<std::string>& Framework::verbs() {
    static const std::vector<std::string> kVerbs = [] {
        std::vector<std::string> all = Party::knobVerbs();
        all.push_back("hook");
        all.push_back("nested-in");
        return all;
    }();
    return kVerbs;
}

bool Framework::prepare(const std::vector<Token>& args, WorldAction* action, std::string* error) {
    bool handled = false;
    bool ok = mParty.prepareKnob(args, &handled, action, error);
    if (handled) return ok;
    const std::string verb = args.empty() ? std::string() : args[0].text;
    if (verb == "hook") return setHook(args, action, error);
    if (verb == "nested-in") return nestedIn(args, action, error);
    *error = "unknown command: fw " + verb;
    return false;
}

bool Framework::nestedIn(const std::vector<Token>& args, WorldAction* action, std::string* error) {
    WorldAction call;
    if (args.size() < 4 || args[2].text != "call" || !mLibraryCalls) {
        *error = "usage: fw nested-in OBJECT.OP call FUNCTION ARGS...";
        return false;
    }
    if (!mLibraryCalls({args.begin() + 3, args.end()}, &call, error)) return false;
    return mParty.prepareNested(args[1].text, call, action, error);
}

bool Framework::setHook(const std::vector<Token>& args, WorldAction* action, std::string* error) {
    const std::string which = args.size() == 2 ? args[1].text : std::string();
    void (*hook)(const hidl_string&) = nullptr;
    if (which == "A") {
        hook = hookA;
    } else if (which == "B") {
        hook = hookB;
    } else if (which != "null") {
        *error = "usage: fw hook A|B|null";
        return false;
    }
    *action = [this, hook](std::string*) {
        mFdCallback.sendAgpsRequestSuplDns = hook;
        return true;
    };
    return true;
}

}  // namespace sim
