// The fake vendor GNSS HAL: IZDGnss@1.0 and @2.0 "default" with their extension objects
// (SUPL FQDN, AGNSS RIL, NI, configuration), and the SUPL DNS requests it sends.
#pragma once

#include <utils/RefBase.h>
#include <vendor/zendra/hardware/gnss/1.0/IZDAGpsSuplFqdnCallback.h>
#include <zdhost/runtime.h>

#include <mutex>
#include <string>
#include <vector>

#include "fake_objects.h"
#include "party.h"
#include "recording_stubs.h"
#include "values.h"

namespace sim {

class FakeVhal {
  public:
    FakeVhal();

    // The command after `vhal`: register/unregister 1.0|2.0, hidlVersion N,
    // fail/heal/answer/provide, AgpsRequestSuplDns "FQDN", and
    // nested-in IFACE.OP AgpsRequestSuplDns "FQDN" (the request made from inside the
    // library's next call of IFACE.OP). False and *error when it is malformed; else *action
    // runs it.
    bool prepare(const std::vector<Token>& args, WorldAction* action, std::string* error);
    // Every verb `vhal` takes.
    static const std::vector<std::string>& verbs();
    // A fresh world: nothing registered, no knobs, HIDL version 1.
    void reset();

    const Party& party() const { return mParty; }

  private:
    using SuplCallback = vendor::zendra::hardware::gnss::V1_0::IZDAGpsSuplFqdnCallback;
    using SuplFqdn = CallbackKeeper<RecordingIZDAGpsSuplFqdn_V1_0, SuplCallback>;
    using Gnss10 = WithExtensions<RecordingIZDGnss_V1_0>;
    using Gnss20 = WithExtensions<RecordingIZDGnss_V2_0>;

    // The registered service of `version` ("1.0" or "2.0"), or null.
    android::sp<android::hidl::base::V1_0::IBase>* slotOf(const std::string& version);
    android::sp<android::hidl::base::V1_0::IBase> newHal(const std::string& version);
    void registerHal(const std::string& version);
    bool unregisterHal(const std::string& version, std::string* error);
    bool hidlVersion(const std::vector<Token>& args, WorldAction* action, std::string* error);
    bool requestSuplDns(const std::string& fqdn, std::string* error);
    bool prepareSuplDns(const std::vector<Token>& args, WorldAction* action, std::string* error);
    Extensions::Getter suplFqdnGetter();
    template <typename Stub>
    Extensions::Getter getter(const char* op, const char* feature, const char* name);

    // Holds the fake's lock over its own state (slots, process, kept callbacks), which the
    // explorer tells apart from its party's knobs: a callback kept by one call does not
    // depend on a knob another call reads. The lock's address names that state: the
    // fake's own address may be its party's.
    std::unique_lock<std::mutex> hold();

    Party mParty{"vhal"};
    std::mutex mLock;
    android::sp<zdhost::ServiceProcess> mProcess;  // the HAL's process; it does not die
    android::sp<android::hidl::base::V1_0::IBase> mGnss10;
    android::sp<android::hidl::base::V1_0::IBase> mGnss20;
    android::sp<SuplCallback> mSuplCallback;  // registered last with any SUPL FQDN object
};

}  // namespace sim
