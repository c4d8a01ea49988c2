#include "fake_vhal.h"

#include <hidl/HidlSupport.h>

#include <algorithm>
#include <utility>

namespace sim {

using android::sp;
using android::hardware::hidl_string;
using android::hidl::base::V1_0::IBase;
using zdhost::ServiceProcess;

namespace {
const char kInstance[] = "default";
const char* const kGnssNames[] = {"IZDGnss1.0", "IZDGnss2.0"};
}  // namespace

std::unique_lock<std::mutex> FakeVhal::hold() {
    zdhost::schedule::touch(&mLock, zdhost::schedule::Access::kWrite);
    return std::unique_lock<std::mutex>(mLock);
}

FakeVhal::FakeVhal() {
    mParty.declare("IZDGnss1.0", RecordingIZDGnss_V1_0::operations());
    mParty.declare("IZDGnss2.0", RecordingIZDGnss_V2_0::operations());
    mParty.declare("IZDAGpsSuplFqdn", RecordingIZDAGpsSuplFqdn_V1_0::operations());
    mParty.declare("IZDAGnssRil1.0", RecordingIZDAGnssRil_V1_0::operations());
    mParty.declare("IZDAGnssRil2.0", RecordingIZDAGnssRil_V2_0::operations());
    mParty.declare("IGnssNi", RecordingIGnssNi_V1_0::operations());
    mParty.declare("IGnssConfiguration1.0", RecordingIGnssConfiguration_V1_0::operations());
    mParty.declare("IGnssConfiguration1.1", RecordingIGnssConfiguration_V1_1::operations());
    for (const char* feature : {"suplFqdn", "ril", "ril2", "ni", "config", "config11"}) {
        mParty.declareFeature(feature);
    }
    reset();
}

void FakeVhal::reset() {
    {
        const auto lock = hold();
        mProcess = new ServiceProcess();
        mGnss10 = nullptr;
        mGnss20 = nullptr;
        mSuplCallback = nullptr;
    }
    mParty.reset();
    for (const char* name : kGnssNames)
        mParty.setAnswer(std::string(name) + ".getHalHidlVersion", "1");
}

const std::vector<std::string>& FakeVhal::verbs() {
    static const std::vector<std::string> kVerbs = [] {
        std::vector<std::string> all = Party::knobVerbs();
        for (const char* verb :
             {"register", "unregister", "hidlVersion", "AgpsRequestSuplDns", "nested-in"}) {
            all.push_back(verb);
        }
        return all;
    }();
    return kVerbs;
}

bool FakeVhal::prepare(const std::vector<Token>& args, WorldAction* action, std::string* error) {
    bool handled = false;
    bool ok = mParty.prepareKnob(args, &handled, action, error);
    if (handled) return ok;
    const std::string verb = args.empty() ? std::string() : args[0].text;
    if (std::find(verbs().begin(), verbs().end(), verb) == verbs().end()) {
        *error = "unknown command: vhal " + verb;
        return false;
    }
    const std::string version = args.size() == 2 ? args[1].text : std::string();
    const bool knownVersion = version == "1.0" || version == "2.0";
    if (verb == "register" || verb == "unregister") {
        if (!knownVersion) {
            *error = "usage: vhal " + verb + " 1.0|2.0";
            return false;
        }
        if (verb == "register") {
            *action = [this, version](std::string*) {
                registerHal(version);
                return true;
            };
        } else {
            *action = [this, version](std::string* error) { return unregisterHal(version, error); };
        }
        return true;
    }
    if (verb == "hidlVersion") return hidlVersion(args, action, error);
    if (verb == "AgpsRequestSuplDns") return prepareSuplDns(args, action, error);
    // nested-in IFACE.OP AgpsRequestSuplDns "FQDN"
    WorldAction request;
    if (args.size() < 3 || args[2].text != "AgpsRequestSuplDns") {
        *error = "usage: vhal nested-in IFACE.OP AgpsRequestSuplDns \"FQDN\"";
        return false;
    }
    if (!prepareSuplDns({args.begin() + 2, args.end()}, &request, error)) return false;
    return mParty.prepareNested(args[1].text, request, action, error);
}

bool FakeVhal::prepareSuplDns(const std::vector<Token>& args, WorldAction* action,
                              std::string* error) {
    if (args.size() != 2) {
        *error = "usage: vhal AgpsRequestSuplDns \"FQDN\"";
        return false;
    }
    *action = [this, fqdn = args[1].text](std::string* error) {
        return requestSuplDns(fqdn, error);
    };
    return true;
}

sp<IBase>* FakeVhal::slotOf(const std::string& version) {
    if (version == "1.0") return &mGnss10;
    if (version == "2.0") return &mGnss20;
    return nullptr;
}

template <typename Stub>
Extensions::Getter FakeVhal::getter(const char* op, const char* feature, const char* name) {
    sp<ServiceProcess> process = mProcess;
    return {op, feature,
            [this, process, name]() -> sp<IBase> { return makeFake<Stub>(mParty, process, name); }};
}

Extensions::Getter FakeVhal::suplFqdnGetter() {
    sp<ServiceProcess> process = mProcess;
    return {"getExtensionZdSuplFqdn", "suplFqdn", [this, process]() -> sp<IBase> {
                SuplFqdn::Listener listener = [this](const sp<SuplCallback>& callback) {
                    const auto lock = hold();
                    mSuplCallback = callback;
                };
                return makeFake<SuplFqdn>(mParty, process, "IZDAGpsSuplFqdn", listener);
            }};
}

sp<IBase> FakeVhal::newHal(const std::string& version) {
    if (version == "1.0") {
        std::vector<Extensions::Getter> getters = {
            getter<RecordingIZDAGnssRil_V1_0>("getExtensionZdAGnssRil", "ril", "IZDAGnssRil1.0"),
            suplFqdnGetter(),
            getter<RecordingIGnssConfiguration_V1_0>("getExtensionGnssConfiguration", "config",
                                                     "IGnssConfiguration1.0"),
            getter<RecordingIGnssConfiguration_V1_1>("getExtensionGnssConfiguration_1_1",
                                                     "config11", "IGnssConfiguration1.1"),
        };
        return makeFake<Gnss10>(mParty, mProcess, "IZDGnss1.0", mParty, std::move(getters));
    }
    std::vector<Extensions::Getter> getters = {
        getter<RecordingIZDAGnssRil_V2_0>("getExtensionZdAGnssRil_2_0", "ril2", "IZDAGnssRil2.0"),
        suplFqdnGetter(),
        getter<RecordingIGnssNi_V1_0>("getExtensionZdGnssNi", "ni", "IGnssNi"),
    };
    return makeFake<Gnss20>(mParty, mProcess, "IZDGnss2.0", mParty, std::move(getters));
}

void FakeVhal::registerHal(const std::string& version) {
    sp<IBase> service;
    {
        const auto lock = hold();
        sp<IBase>* slot = slotOf(version);
        if (*slot == nullptr) *slot = newHal(version);
        service = *slot;
    }
    zdhost::ServiceManager::get().add(kInstance, service);
}

bool FakeVhal::unregisterHal(const std::string& version, std::string* error) {
    sp<IBase> service;
    {
        const auto lock = hold();
        sp<IBase>* slot = slotOf(version);
        service = *slot;
        *slot = nullptr;
    }
    if (service == nullptr) {
        *error = "the vendor HAL " + version + " is not registered";
        return false;
    }
    zdhost::ServiceManager::get().remove(service);
    return true;
}

bool FakeVhal::hidlVersion(const std::vector<Token>& args, WorldAction* action,
                           std::string* error) {
    int64_t version = 0;
    if (args.size() != 2) {
        *error = "usage: vhal hidlVersion N";
        return false;
    }
    if (!parseInt64(args[1], &version, error)) return false;
    if (version < -0x8000 || version > 0xFFFF) {
        *error = "a HIDL version code has 16 bits";
        return false;
    }
    *action = [this, code = args[1].text](std::string*) {
        for (const char* name : kGnssNames) {
            mParty.setAnswer(std::string(name) + ".getHalHidlVersion", code);
        }
        return true;
    };
    return true;
}

bool FakeVhal::requestSuplDns(const std::string& name, std::string* error) {
    sp<SuplCallback> callback = SuplFqdn::arriving();
    if (callback == nullptr) {
        const auto lock = hold();
        callback = mSuplCallback;
    }
    if (callback == nullptr) {
        *error = "no IZDAGpsSuplFqdnCallback was registered with the vendor HAL";
        return false;
    }
    hidl_string fqdn(name);
    zdhost::pool::deliverCall([&] { (void)callback->AgpsRequestSuplDns(fqdn).isOk(); });
    return true;
}

}  // namespace sim
