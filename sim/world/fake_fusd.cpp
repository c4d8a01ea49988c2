#include "fake_fusd.h"

#include <algorithm>
#include <utility>

namespace sim {

using android::sp;
using android::hidl::base::V1_0::IBase;
using zdhost::ServiceProcess;

namespace {

const char kInstance[] = "default";

bool isLbsLookup(const std::string& fqName) {
    static const std::string kPackage = "vendor.zendra.hardware.fusd@";
    static const std::string kName = "::IFusdLbs";
    return fqName.compare(0, kPackage.size(), kPackage) == 0 && fqName.size() > kName.size() &&
           fqName.compare(fqName.size() - kName.size(), kName.size(), kName) == 0;
}

// The callback last registered with the sub-interface made for `feature`, if any.
template <typename Keeper>
auto keptCallback(Extensions& extensions, const char* feature)
    -> decltype(std::declval<Keeper>().callback()) {
    sp<IBase> object = extensions.made(feature);
    auto* keeper = dynamic_cast<Keeper*>(object.get());
    return keeper == nullptr ? nullptr : keeper->callback();
}

}  // namespace

std::unique_lock<std::mutex> FakeFusd::hold() {
    zdhost::schedule::touch(&mLock, zdhost::schedule::Access::kWrite);
    return std::unique_lock<std::mutex>(mLock);
}

FakeFusd::FakeFusd() {
    mParty.declare("IFusdLbs", RecordingIFusdLbs_V1_3::operations());
    mParty.declare("IFusdGnssInterface", RecordingIFusdGnssInterface_V1_2::operations());
    mParty.declare("IFusdGeofenceInterface", RecordingIFusdGeofenceInterface_V1_2::operations());
    mParty.declare("IGnssBatchingInterface", RecordingIGnssBatchingInterface_V1_1::operations());
    for (const char* feature : {"gnss", "geofence", "batching"}) mParty.declareFeature(feature);
}

void FakeFusd::reset() {
    const auto lock = hold();
    mProcess = nullptr;
    mLbs = nullptr;
    mLookupsUntilRegister = 0;
    mNested.clear();
    mParty.reset();
}

const std::vector<std::string>& FakeFusd::verbs() {
    static const std::vector<std::string> kVerbs = [] {
        std::vector<std::string> all = Party::knobVerbs();
        for (const char* verb : {"register", "register-at-lookup", "kill", "nested", "nested-in"}) {
            all.push_back(verb);
        }
        for (const std::string& op : daemonCallNames()) all.push_back(op);
        return all;
    }();
    return kVerbs;
}

bool FakeFusd::prepare(const std::vector<Token>& args, WorldAction* action, std::string* error) {
    bool handled = false;
    bool ok = mParty.prepareKnob(args, &handled, action, error);
    if (handled) return ok;
    const std::string verb = args.empty() ? std::string() : args[0].text;
    if (std::find(verbs().begin(), verbs().end(), verb) == verbs().end()) {
        *error = "unknown command: fusd " + verb;
        return false;
    }
    if (verb == "register" && args.size() == 1) {
        *action = [this](std::string*) {
            registerDaemon();
            return true;
        };
        return true;
    }
    if (verb == "register-at-lookup") return registerAtLookup(args, action, error);
    const bool unpromotable = args.size() == 2 && args[1].text == "unpromotable";
    if (verb == "kill" && (args.size() == 1 || unpromotable)) {
        *action = [this, unpromotable](std::string* error) { return kill(!unpromotable, error); };
        return true;
    }
    if (verb == "nested") return call({args.begin() + 1, args.end()}, true, action, error);
    if (verb == "nested-in") return nestedIn(args, action, error);
    if (isDaemonCall(verb)) return call(args, false, action, error);
    *error = "unknown command: fusd " + verb;
    return false;
}

sp<FakeFusd::Lbs> FakeFusd::newDaemon(const sp<ServiceProcess>& process) {
    auto gnss = [this, process]() -> sp<IBase> {
        GnssInterface::Listener listener = [this](const sp<GnssCallback>& cb) {
            runNested(cb, nullptr);
        };
        return makeFake<GnssInterface>(mParty, process, "IFusdGnssInterface", mFeedListener,
                                       listener);
    };
    auto geofence = [this, process]() -> sp<IBase> {
        GeofenceInterface::Listener listener = [this](const sp<GeofenceCallback>& cb) {
            runNested(nullptr, cb);
        };
        return makeFake<GeofenceInterface>(mParty, process, "IFusdGeofenceInterface", listener);
    };
    auto batching = [this, process]() -> sp<IBase> {
        return makeFake<RecordingIGnssBatchingInterface_V1_1>(mParty, process,
                                                              "IGnssBatchingInterface");
    };
    std::vector<Extensions::Getter> getters = {
        {"getFusdGnssInterface", "gnss", gnss},
        {"getFusdGeofenceInterface", "geofence", geofence},
        {"getGnssBatchingInterface", "batching", batching},
    };
    return makeFake<Lbs>(mParty, process, "IFusdLbs", mParty, std::move(getters));
}

void FakeFusd::registerDaemon() {
    sp<Lbs> lbs;
    {
        const auto lock = hold();
        if (mLbs == nullptr) {
            mProcess = new ServiceProcess();
            mLbs = newDaemon(mProcess);
        }
        lbs = mLbs;
    }
    zdhost::ServiceManager::get().add(kInstance, lbs);
}

bool FakeFusd::kill(bool promotableWho, std::string* error) {
    sp<ServiceProcess> process;
    sp<Lbs> lbs;
    {
        const auto lock = hold();
        process = mProcess;
        lbs = mLbs;
        mProcess = nullptr;
        mLbs = nullptr;
    }
    if (lbs == nullptr) {
        *error = "the fusion daemon is not running";
        return false;
    }
    process->kill({lbs}, promotableWho);
    return true;
}

bool FakeFusd::registerAtLookup(const std::vector<Token>& args, WorldAction* action,
                                std::string* error) {
    int64_t count = 0;
    if (args.size() != 2) {
        *error = "usage: fusd register-at-lookup K";
        return false;
    }
    if (!parseInt64(args[1], &count, error)) return false;
    if (count < 1) {
        *error = "register-at-lookup counts look-ups from 1";
        return false;
    }
    *action = [this, count](std::string*) {
        const auto lock = hold();
        mLookupsUntilRegister = count;
        return true;
    };
    return true;
}

void FakeFusd::beforeLookup(const std::string& fqName) {
    if (!isLbsLookup(fqName)) return;
    {
        const auto lock = hold();
        if (mLookupsUntilRegister == 0 || --mLookupsUntilRegister > 0) return;
    }
    registerDaemon();
}

bool FakeFusd::call(const std::vector<Token>& words, bool nested, WorldAction* action,
                    std::string* error) {
    DaemonCall daemonCall;
    if (!parseDaemonCall(words, &daemonCall, error)) return false;
    if (!nested) {
        *action = [this, daemonCall](std::string* error) { return deliver(daemonCall, error); };
        return true;
    }
    *action = [this, daemonCall](std::string*) {
        const auto lock = hold();
        mNested.push_back(daemonCall);
        return true;
    };
    return true;
}

bool FakeFusd::nestedIn(const std::vector<Token>& args, WorldAction* action, std::string* error) {
    WorldAction event;
    if (args.size() < 3) {
        *error = "usage: fusd nested-in IFACE.OP OP ARGS...";
        return false;
    }
    if (!call({args.begin() + 2, args.end()}, false, &event, error)) return false;
    return mParty.prepareNested(args[1].text, event, action, error);
}

bool FakeFusd::deliver(const DaemonCall& call, std::string* error) {
    if (running() == nullptr) {
        *error = "the fusion daemon is not running";
        return false;
    }
    if (call.toGnss) {
        sp<GnssCallback> cb = gnssCallback();
        if (cb == nullptr) {
            *error = "no IFusdGnssCallback was registered with the fusion daemon";
            return false;
        }
        zdhost::pool::deliverCall([&] { (void)call.toGnss(*cb).isOk(); });
        return true;
    }
    sp<GeofenceCallback> cb = geofenceCallback();
    if (cb == nullptr) {
        *error = "no IFusdGeofenceCallback was registered with the fusion daemon";
        return false;
    }
    zdhost::pool::deliverCall([&] { (void)call.toGeofence(*cb).isOk(); });
    return true;
}

sp<FakeFusd::Lbs> FakeFusd::running() {
    const auto lock = hold();
    return mLbs;
}

sp<FakeFusd::GnssCallback> FakeFusd::gnssCallback() {
    sp<Lbs> lbs = running();
    return lbs == nullptr ? nullptr : keptCallback<GnssInterface>(lbs->extensions(), "gnss");
}

sp<FakeFusd::GeofenceCallback> FakeFusd::geofenceCallback() {
    sp<Lbs> lbs = running();
    return lbs == nullptr ? nullptr
                          : keptCallback<GeofenceInterface>(lbs->extensions(), "geofence");
}

void FakeFusd::setFeedListener(FeedListener* listener) {
    mFeedListener.store(listener);
}

void FakeFusd::runNested(const sp<GnssCallback>& gnss, const sp<GeofenceCallback>& geofence) {
    std::vector<DaemonCall> due;
    {
        const auto lock = hold();
        std::vector<DaemonCall> waiting;
        for (DaemonCall& call : mNested) {
            bool now = (gnss != nullptr && call.toGnss) || (geofence != nullptr && call.toGeofence);
            (now ? due : waiting).push_back(std::move(call));
        }
        mNested.swap(waiting);
    }
    for (const DaemonCall& call : due) {
        if (call.toGnss) {
            (void)call.toGnss(*gnss).isOk();
        } else {
            (void)call.toGeofence(*geofence).isOk();
        }
    }
}

}  // namespace sim
