// A gnss@1.0 satellite report with any numSvs and entries, then one or two 1.0
// locations for the augmentation, with the framework's callback registered (or,
// for some inputs, not) and the quick-TTFF state set by decoding the location's
// flags under one of the chips.
// Input: u8 mode, u16 location flags, u32 numSvs, then up to 64 entries of 20 bytes
// (fuzz::readSvInfo). Mode bit 0: decode the location's flags before padding (chip
// from bits 1-3); bit 4: no framework callback; bit 5: a second location.
// Checks: the daemon's tracked count never exceeds the entries the record holds;
// every status the framework receives has numSvs <= 64; a quick-TTFF location pads
// and reports nothing. Where the padding lands is pinned by the scenarios.
#include <zdgnssprovider.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "harness.h"

namespace {

using SvStatus = android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus;

constexpr size_t kCapacity = 64;
const std::string kReport = "fw gnssCb.gnssSvStatusCb(sv1{numSvs=";

struct Mode {
    explicit Mode(uint8_t bits)
        : decodeFlags(bits & 1),
          chip((bits >> 1) & 7),
          noFramework(bits & 16),
          secondLocation(bits & 32) {}
    bool decodeFlags;
    uint8_t chip;
    bool noFramework;
    bool secondLocation;
};

void checkReports(const std::vector<std::string>& lines) {
    for (const std::string& report : fuzz::tailsAfter(lines, kReport)) {
        unsigned long reported = strtoul(report.c_str(), nullptr, 10);
        FUZZ_CHECK(reported <= kCapacity, "framework got numSvs " + std::to_string(reported),
                   lines);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startSatelliteInput();
    fuzz::ByteReader in(data, size);
    const Mode mode(in.take<uint8_t>());
    android::hardware::gnss::V1_0::GnssLocation location{};
    location.gnssLocationFlags = in.take<uint16_t>();
    SvStatus status{};
    status.numSvs = in.take<uint32_t>();
    for (size_t i = 0; i < kCapacity && in.remaining() > 0; ++i) {
        status.gnssSvList[i] = fuzz::readSvInfo(in);
    }

    fuzz::feedLog().clear();
    if (mode.noFramework) fuzz::registerFramework(false, true, true);
    sendSvInfo(status);
    if (mode.decodeFlags) {
        fuzz::selectChip(mode.chip);
        qttff_location_sourcetype(location);
    }
    addSvList(location);
    if (mode.secondLocation) addSvList(location);
    if (mode.noFramework) fuzz::registerFramework(true, true, true);
    std::vector<std::string> lines = fuzz::takeLines();

    const auto& counts = fuzz::feedLog().svCounts;
    FUZZ_CHECK(counts.size() == 1, "one tracked count per report", lines);
    FUZZ_CHECK(counts[0] <= std::min<uint32_t>(status.numSvs, kCapacity),
               "tracked count " + std::to_string(counts[0]) + " for numSvs " +
                   std::to_string(status.numSvs),
               lines);
    const bool quick = fuzz::contains(lines, "quickgpsLocationCb in");
    const size_t reports = fuzz::countStartingWith(lines, kReport);
    if (quick || mode.noFramework) {
        FUZZ_CHECK(reports == 0, "a quick-TTFF location or no callback still reported", lines);
    }
    if (quick) {
        FUZZ_CHECK(!fuzz::contains(lines, "start increase sv"), "a quick-TTFF location padded",
                   lines);
    }
    checkReports(lines);
    return 0;
}
