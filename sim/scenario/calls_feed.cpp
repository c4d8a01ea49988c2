// `call` binders of the location-manager feed and the satellite-list augmentation.
#include <zdgnssprovider.h>

#include "call_args.h"

namespace sim {

namespace {

namespace gnss_v1 = android::hardware::gnss::V1_0;
namespace gnss_v2 = android::hardware::gnss::V2_0;
using SvList = android::hardware::hidl_vec<gnss_v2::IGnssCallback::GnssSvInfo>;

bool startsWith(const Token* t, const char* prefix) {
    return t && !t->quoted && t->text.rfind(prefix, 0) == 0;
}

// The functions overloaded on the 1.0 and 2.0 location take either form.
template <typename R>
CallBinder byLocation(R (*withV1)(const gnss_v1::GnssLocation&),
                      R (*withV2)(const gnss_v2::GnssLocation&)) {
    return [withV1, withV2](CallArgs& in, CallAction* run) {
        if (startsWith(in.peek(), "loc2{")) {
            gnss_v2::GnssLocation location;
            if (!in.location2(&location) || !in.done()) return false;
            *run = [withV2, location] { callAndReport([&] { return withV2(location); }); };
            return true;
        }
        gnss_v1::GnssLocation location;
        if (!in.location(&location) || !in.done()) return false;
        *run = [withV1, location] { callAndReport([&] { return withV1(location); }); };
        return true;
    };
}

bool bindSendSvInfo(CallArgs& in, CallAction* run) {
    if (startsWith(in.peek(), "sv2{")) {
        SvList list;
        if (!in.svList(&list) || !in.done()) return false;
        *run = [list] { callAndReport([&] { sendSvInfo(list); }); };
        return true;
    }
    gnss_v1::IGnssCallback::GnssSvStatus status;
    if (!in.svStatus(&status) || !in.done()) return false;
    *run = [status] { callAndReport([&] { sendSvInfo(status); }); };
    return true;
}

bool bindReportAddSvList1(CallArgs& in, CallAction* run) {
    gnss_v1::IGnssCallback::GnssSvStatus status;
    if (!in.svStatus(&status) || !in.done()) return false;
    *run = [status] { callAndReport([&] { reportAddSvList(status); }); };
    return true;
}

bool bindReportAddSvList2(CallArgs& in, CallAction* run) {
    SvList list;
    if (!in.svList(&list) || !in.done()) return false;
    *run = [list] {
        callAndReport([&] {
            ReportAddSvList(
                std::vector<gnss_v2::IGnssCallback::GnssSvInfo>(list.begin(), list.end()));
        });
    };
    return true;
}

bool bindSourceType(CallArgs& in, CallAction* run) {
    gnss_v1::GnssLocation location;
    if (!in.location(&location) || !in.done()) return false;
    *run = [location] { callAndReport([&] { return qttff_location_sourcetype(location); }); };
    return true;
}

// send_nmea_update_to_tarvi TIMESTAMP "TEXT" [LENGTH]: the text is passed NUL-terminated;
// LENGTH defaults to its byte count.
bool bindNmea(CallArgs& in, CallAction* run) {
    long long timestamp = 0;
    std::string text;
    bool isNull = false;
    if (!in.integer(&timestamp) || !in.cString(&text, &isNull)) return false;
    unsigned int length = static_cast<unsigned int>(text.size());
    if (in.hasMore() && !in.integer(&length)) return false;
    if (!in.done()) return false;
    *run = [=] {
        callAndReport(
            [&] { send_nmea_update_to_tarvi(timestamp, isNull ? nullptr : text.c_str(), length); });
    };
    return true;
}

template <typename T>
CallBinder byValue(void (*function)(T)) {
    return [function](CallArgs& in, CallAction* run) {
        std::remove_cv_t<T> value{};
        if constexpr (std::is_same<T, bool>::value) {
            if (!in.boolean(&value)) return false;
        } else if (!in.integer(&value)) {
            return false;
        }
        if (!in.done()) return false;
        *run = [function, value] { callAndReport([=] { function(value); }); };
        return true;
    };
}

}  // namespace

void addFeedCalls(CallTable& t) {
    t["sendLocationDataToTarvi"] =
        byLocation<bool>(sendLocationDataToTarvi, sendLocationDataToTarvi);
    t["send_gnss_start_cmd_to_tarvi"] = byValue(send_gnss_start_cmd_to_tarvi);
    t["send_quick_ttff_start_cmd_to_tarvi"] = byValue(send_quick_ttff_start_cmd_to_tarvi);
    t["reset_tarvi_param"] = noArgs(reset_tarvi_param);
    t["setFusdGnssMinReportingInterval"] = byValue(setFusdGnssMinReportingInterval);
    t["send_nmea_update_to_tarvi"] = bindNmea;
    t["send_sv_status_to_tarvi"] = byValue(send_sv_status_to_tarvi);
    t["sendSvInfo"] = bindSendSvInfo;
    t["qttff_location_sourcetype"] = bindSourceType;
    t["isFdLocationReport"] = noArgs(isFdLocationReport);
    t["resetFdLocationFlag"] = noArgs(resetFdLocationFlag);
    t["addSvList"] = byLocation<void>(addSvList, addSvList);
    t["reportAddSvList"] = bindReportAddSvList1;
    t["ReportAddSvList"] = bindReportAddSvList2;
    t["isNeedSvIncrease"] = noArgs(isNeedSvIncrease);
    t["isReportZdSv"] = noArgs(isReportZdSv);
    t["resetLocationFlag"] = noArgs(resetLocationFlag);
}

}  // namespace sim
