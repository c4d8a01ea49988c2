// The satellite reports a 1.0 and a 2.0 HAL would send for a cycle's satellites.
#include <algorithm>

#include "capture.h"
#include "satellites.h"

namespace replay {
namespace {

namespace gnss_v1 = android::hardware::gnss::V1_0;
namespace gnss_v2 = android::hardware::gnss::V2_0;

using SvFlags = gnss_v1::IGnssCallback::GnssSvFlags;

// NMEA tells only whether the fix used the satellite; the other flags stay clear for it.
uint8_t svFlags(const SatelliteView& view) {
    uint8_t flags = 0;
    const auto set = [&flags](bool condition, SvFlags flag) {
        if (condition) flags |= static_cast<uint8_t>(flag);
    };
    set(view.usedInFix, SvFlags::USED_IN_FIX);
    set(view.hasEphemeris, SvFlags::HAS_EPHEMERIS_DATA);
    set(view.hasAlmanac, SvFlags::HAS_ALMANAC_DATA);
    set(view.carrierFrequencyHz > 0, SvFlags::HAS_CARRIER_FREQUENCY);
    return flags;
}

gnss_v1::IGnssCallback::GnssSvInfo toSvInfoV1(const SatelliteView& view) {
    gnss_v1::IGnssCallback::GnssSvInfo info{};
    info.svid = view.svid;
    // 1.0 has no IRNSS; it reports such satellites as of an unknown constellation.
    uint8_t constellation = view.constellation;
    if (constellation == kIrnss) constellation = kUnknownConstellation;
    info.constellation = static_cast<gnss_v1::GnssConstellationType>(constellation);
    info.cN0Dbhz = view.cn0Dbhz;
    info.elevationDegrees = view.elevationDegrees;
    info.azimuthDegrees = view.azimuthDegrees;
    info.carrierFrequencyHz = view.carrierFrequencyHz;
    info.svFlag = svFlags(view);
    return info;
}

}  // namespace

gnss_v1::IGnssCallback::GnssSvStatus toSvStatusV1(const std::vector<SatelliteView>& satellites) {
    gnss_v1::IGnssCallback::GnssSvStatus status{};
    constexpr size_t kCapacity = static_cast<size_t>(gnss_v1::GnssMax::SVS_COUNT);
    size_t count = std::min(satellites.size(), kCapacity);
    status.numSvs = static_cast<uint32_t>(count);
    for (size_t i = 0; i < count; ++i) status.gnssSvList[i] = toSvInfoV1(satellites[i]);
    return status;
}

android::hardware::hidl_vec<gnss_v2::IGnssCallback::GnssSvInfo> toSvInfoListV2(
    const std::vector<SatelliteView>& satellites) {
    android::hardware::hidl_vec<gnss_v2::IGnssCallback::GnssSvInfo> list;
    list.resize(satellites.size());
    for (size_t i = 0; i < satellites.size(); ++i) {
        list[i].v1_0 = toSvInfoV1(satellites[i]);
        list[i].constellation =
            static_cast<gnss_v2::GnssConstellationType>(satellites[i].constellation);
    }
    return list;
}

}  // namespace replay
