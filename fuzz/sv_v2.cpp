// A gnss@2.0 satellite list of any size, then a 2.0 location for the augmentation,
// with the framework's callback registered.
// Input: u8 mode, u8 scale, u16 location flags, u16 list size (modulo 97 unless the
// scale is the bulk scale), then entries of 21 bytes (a 1.0
// entry as fuzz::readSvInfo reads it and the 2.0 constellation), repeated in turn
// to fill the list (all zero when there are none). Mode bit 0: decode the location's
// flags before padding (chip from bits 1-3); bit 4: a second location.
// Checks: the daemon's tracked count never exceeds the list size; a quick-TTFF
// location pads and reports nothing. What a padded list holds is pinned by the
// scenarios.
#include <zdgnssprovider.h>

#include <string>
#include <vector>

#include "harness.h"

namespace {

using SvInfo = android::hardware::gnss::V2_0::IGnssCallback::GnssSvInfo;

constexpr size_t kEntryBytes = 21;
constexpr uint32_t kSmallSize = 96;
const std::string kReport = "fw gnssCb.gnssSvStatusCb_2_0(sv2{";

android::hardware::hidl_vec<SvInfo> readList(fuzz::ByteReader& in, size_t size) {
    std::vector<SvInfo> distinct;
    while (in.remaining() >= kEntryBytes) {
        SvInfo sv{};
        sv.v1_0 = fuzz::readSvInfo(in);
        sv.constellation =
            static_cast<android::hardware::gnss::V2_0::GnssConstellationType>(in.take<uint8_t>());
        distinct.push_back(sv);
    }
    android::hardware::hidl_vec<SvInfo> list(size);
    for (size_t i = 0; i < size; ++i)
        list[i] = distinct.empty() ? SvInfo{} : distinct[i % distinct.size()];
    return list;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startSatelliteInput();
    fuzz::ByteReader in(data, size);
    const auto mode = in.take<uint8_t>();
    const auto scale = in.take<uint8_t>();
    android::hardware::gnss::V2_0::GnssLocation location{};
    location.v1_0.gnssLocationFlags = in.take<uint16_t>();
    const uint32_t listSize = fuzz::scaledCount(scale, in.take<uint16_t>(), 0xffff, kSmallSize);
    android::hardware::hidl_vec<SvInfo> list = readList(in, listSize);

    fuzz::feedLog().clear();
    sendSvInfo(list);
    if (mode & 1) {
        fuzz::selectChip((mode >> 1) & 7);
        qttff_location_sourcetype(location.v1_0);
    }
    addSvList(location);
    if (mode & 16) addSvList(location);
    std::vector<std::string> lines = fuzz::takeLines();

    const auto& counts = fuzz::feedLog().svCounts;
    FUZZ_CHECK(counts.size() == 1 && counts[0] <= listSize,
               "tracked count above the list size " + std::to_string(listSize), lines);
    const bool quick = fuzz::contains(lines, "quickgpsLocationCb in");
    if (quick) {
        FUZZ_CHECK(fuzz::countStartingWith(lines, kReport) == 0 &&
                       !fuzz::contains(lines, "start increase sv"),
                   "a quick-TTFF location padded or reported", lines);
    }
    return 0;
}
