#include "fake_vhal.h"

#include <hidl/HidlSupport.h>

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
    zdhost::schedule::touch(&mParty, zdhost::schedule::Access::kWrite);
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

bool FakeVhal::command(const std::vector<Token>& args, std::string* error) {
    bool handled = false;
    bool ok = mParty.knobCommand(args, &handled, error);
    if (handled) return ok;
    const std::string verb = args.empty() ? std::string() : args[0].text;
    if (verb == "register") return registerHal(args, error);
    if (verb == "unregister") return unregisterHal(args, error);
    if (verb == "hidlVersion") return hidlVersion(args, error);
    if (verb == "AgpsRequestSuplDns") return requestSuplDns(args, error);
    *error = "unknown command: vhal " + verb;
    return false;
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

bool FakeVhal::registerHal(const std::vector<Token>& args, std::string* error) {
    sp<IBase> service;
    {
        const auto lock = hold();
        sp<IBase>* slot = args.size() == 2 ? slotOf(args[1].text) : nullptr;
        if (slot == nullptr) {
            *error = "usage: vhal register 1.0|2.0";
            return false;
        }
        if (*slot == nullptr) *slot = newHal(args[1].text);
        service = *slot;
    }
    zdhost::ServiceManager::get().add(kInstance, service);
    return true;
}

bool FakeVhal::unregisterHal(const std::vector<Token>& args, std::string* error) {
    sp<IBase> service;
    {
        const auto lock = hold();
        sp<IBase>* slot = args.size() == 2 ? slotOf(args[1].text) : nullptr;
        if (slot == nullptr) {
            *error = "usage: vhal unregister 1.0|2.0";
            return false;
        }
        service = *slot;
        *slot = nullptr;
    }
    if (service == nullptr) {
        *error = "the vendor HAL " + args[1].text + " is not registered";
        return false;
    }
    zdhost::ServiceManager::get().remove(service);
    return true;
}

bool FakeVhal::hidlVersion(const std::vector<Token>& args, std::string* error) {
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
    for (const char* name : kGnssNames) {
        mParty.setAnswer(std::string(name) + ".getHalHidlVersion", args[1].text);
    }
    return true;
}

bool FakeVhal::requestSuplDns(const std::vector<Token>& args, std::string* error) {
    if (args.size() != 2) {
        *error = "usage: vhal AgpsRequestSuplDns \"FQDN\"";
        return false;
    }
    sp<SuplCallback> callback;
    {
        const auto lock = hold();
        callback = mSuplCallback;
    }
    if (callback == nullptr) {
        *error = "no IZDAGpsSuplFqdnCallback was registered with the vendor HAL";
        return false;
    }
    hidl_string fqdn(args[1].text);
    zdhost::pool::deliverCall([&] { (void)callback->AgpsRequestSuplDns(fqdn).isOk(); });
    return true;
}

}  // namespace sim
