// `call` binders of the vendor HAL extension: HAL and extension acquisition (with
// out-parameters), SUPL and NI traffic.
#include <zdgnssprovider.h>

#include "call_args.h"
#include "sim_placeholders.h"
#include "world/world.h"

namespace sim {

namespace {

namespace gnss_v1 = android::hardware::gnss::V1_0;
namespace gnss_v1_1 = android::hardware::gnss::V1_1;
namespace gnss_v2 = android::hardware::gnss::V2_0;
using android::sp;

bool readOutParams(CallArgs& in, bool (&wanted)[3]) {
    return in.outParam(&wanted[0]) && in.outParam(&wanted[1]) && in.outParam(&wanted[2]) &&
           in.done();
}

bool bindGetZdGnssService(CallArgs& in, CallAction* run) {
    bool wanted[3];
    if (!readOutParams(in, wanted)) return false;
    *run = [=] {
        OutParam<gnss_v1::IGnss> gnssHal(wanted[0], new placeholder::Gnss);
        OutParam<gnss_v1_1::IGnss> gnssHal_V1_1(wanted[1], new placeholder::Gnss);
        OutParam<gnss_v2::IGnss> gnssHal_V2_0(wanted[2], new placeholder::Gnss);
        callAndReport([&] {
            getZdGnssService(gnssHal.pointer(), gnssHal_V1_1.pointer(), gnssHal_V2_0.pointer());
        });
        emitOut("gnssHal", gnssHal.describe());
        emitOut("gnssHal_V1_1", gnssHal_V1_1.describe());
        emitOut("gnssHal_V2_0", gnssHal_V2_0.describe());
    };
    return true;
}

bool bindGetZdFeatureExtension(CallArgs& in, CallAction* run) {
    bool wanted[3];
    if (!readOutParams(in, wanted)) return false;
    *run = [=] {
        OutParam<gnss_v1::IAGnssRil> agnssRilIface(wanted[0], new placeholder::AGnssRil);
        OutParam<gnss_v1::IGnssConfiguration> gnssConfigurationIface_V1_0(
            wanted[1], new placeholder::GnssConfiguration);
        OutParam<gnss_v1_1::IGnssConfiguration> gnssConfigurationIface_V1_1(
            wanted[2], new placeholder::GnssConfiguration);
        callAndReport([&] {
            getZdFeatureExtension(agnssRilIface.pointer(), gnssConfigurationIface_V1_0.pointer(),
                                  gnssConfigurationIface_V1_1.pointer());
        });
        emitOut("agnssRilIface", agnssRilIface.describe());
        emitOut("gnssConfigurationIface_V1_0", gnssConfigurationIface_V1_0.describe());
        emitOut("gnssConfigurationIface_V1_1", gnssConfigurationIface_V1_1.describe());
    };
    return true;
}

bool bindGetZdFeatureExtensionV2_0(CallArgs& in, CallAction* run) {
    bool wanted[3];
    if (!readOutParams(in, wanted)) return false;
    *run = [=] {
        OutParam<gnss_v1::IAGnssRil> agnssRilIface(wanted[0], new placeholder::AGnssRil);
        OutParam<gnss_v2::IAGnssRil> agnssRilIface_V2_0(wanted[1], new placeholder::AGnssRil);
        OutParam<gnss_v1::IGnssNi> gnssNiIface(wanted[2], new placeholder::GnssNi);
        callAndReport([&] {
            getZdFeatureExtensionV2_0(agnssRilIface.pointer(), agnssRilIface_V2_0.pointer(),
                                      gnssNiIface.pointer());
        });
        emitOut("agnssRilIface", agnssRilIface.describe());
        emitOut("agnssRilIface_V2_0", agnssRilIface_V2_0.describe());
        emitOut("gnssNiIface", gnssNiIface.describe());
    };
    return true;
}

bool bindRegisterFusdIfCb(CallArgs& in, CallAction* run) {
    FrameworkObject hooks;
    if (!in.object(FrameworkObject::FdCallback, &hooks) || !in.done()) return false;
    *run = [hooks] {
        FdCallback* record = hooks == FrameworkObject::Null ? nullptr : World::get().fdCallback();
        callAndReport([record] { registerFusdIfCb(record); });
    };
    return true;
}

bool bindSendSuplRequest(CallArgs& in, CallAction* run) {
    android::hardware::hidl_string fqdn;
    if (!in.string(&fqdn) || !in.done()) return false;
    *run = [fqdn] { callAndReport([&] { send_Agps_Supl_Request(fqdn); }); };
    return true;
}

bool bindSetSuplHostIp(CallArgs& in, CallAction* run) {
    std::string address;
    bool isNull = false;
    if (!in.cString(&address, &isNull) || !in.done()) return false;
    *run = [=] { callAndReport([&] { set_supl_host_ip(isNull ? nullptr : address.c_str()); }); };
    return true;
}

// send_ni_message BYTES [LENGTH]: LENGTH defaults to the byte count.
bool bindSendNiMessage(CallArgs& in, CallAction* run) {
    std::vector<uint8_t> message;
    bool isNull = false;
    if (!in.bytes(&message, &isNull)) return false;
    int32_t length = static_cast<int32_t>(message.size());
    if (in.hasMore() && !in.integer(&length)) return false;
    if (!in.done()) return false;
    *run = [=] {
        // An empty message still comes as a valid pointer, as from a real buffer.
        static const uint8_t kEmpty = 0;
        const uint8_t* bytes = message.empty() ? &kEmpty : message.data();
        callAndReport([&] { send_ni_message(isNull ? nullptr : bytes, length); });
    };
    return true;
}

}  // namespace

void addHalCalls(CallTable& t) {
    t["getZdGnssService"] = bindGetZdGnssService;
    t["getHidlVersion"] = noArgs(getHidlVersion);
    t["checkHalVersion"] = noArgs(checkHalVersion);
    t["getZdFeatureExtension"] = bindGetZdFeatureExtension;
    t["getZdFeatureExtensionV2_0"] = bindGetZdFeatureExtensionV2_0;
    t["registerFusdIfCb"] = bindRegisterFusdIfCb;
    t["set_fusd_callback"] = noArgs(set_fusd_callback);
    t["send_Agps_Supl_Request"] = bindSendSuplRequest;
    t["set_supl_host_ip"] = bindSetSuplHostIp;
    t["send_ni_message"] = bindSendNiMessage;
}

}  // namespace sim
