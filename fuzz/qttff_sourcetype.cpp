// Decoding of the vendor source-type bits of gnssLocationFlags under every chip of
// the probe's table, so under both flag layouts.
// Input: u8 chip selector, u16 location flags, u8 another low byte.
// Checks: the result is the one static buffer, holding a decimal number of at most
// three digits that matches the layout the log line names; the published low byte
// changes nothing; the quick-GPS mark is the number's 128 bit, and a quick-GPS
// location is not padded by the augmentation.
#include <zdgnssprovider.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "harness.h"

namespace {

const char* decode(uint16_t flags) {
    android::hardware::gnss::V1_0::GnssLocation location{};
    location.gnssLocationFlags = flags;
    return qttff_location_sourcetype(location);
}

// The number a layout yields: chipset layout, bits 8-15; daemon layout, bits 9-15
// with bit 8 as the 128 mark.
unsigned expectedFor(bool chipsetLayout, uint16_t flags) {
    if (chipsetLayout) return flags >> 8;
    return (flags >> 9) + ((flags & 0x100) ? 128 : 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startWorld();
    fuzz::ByteReader in(data, size);
    fuzz::selectChip(in.take<uint8_t>());
    const auto flags = in.take<uint16_t>();
    const auto otherLow = in.take<uint8_t>();
    fuzz::takeLines();

    const char* first = decode(flags);
    std::vector<std::string> lines = fuzz::takeLines();
    FUZZ_CHECK(memchr(first, '\0', 10) != nullptr, "result not terminated in its 10 bytes", lines);
    const std::string text = first;
    const std::string logged = "log E ZdGnssLocationProviderJNI: [LocMgr] flags from ";
    const bool chipset = fuzz::hasLine(lines, logged + "Chipset: " + std::to_string(flags));
    const bool daemon = fuzz::hasLine(lines, logged + "FusionDaemon: " + std::to_string(flags));
    FUZZ_CHECK(chipset != daemon, "exactly one layout must be named", lines);
    FUZZ_CHECK(!text.empty() && text.size() <= 3 &&
                   text.find_first_not_of("0123456789") == std::string::npos,
               "source type text \"" + text + "\"", lines);
    const unsigned value = static_cast<unsigned>(strtoul(text.c_str(), nullptr, 10));
    FUZZ_CHECK(value == expectedFor(chipset, flags),
               "flags " + std::to_string(flags) + " decoded as " + text, lines);
    const bool quick = fuzz::contains(lines, "quickgpsLocationCb in");
    FUZZ_CHECK(quick == (value >= 128), "the quick-GPS mark is not the 128 bit", lines);

    const uint16_t sameHigh = static_cast<uint16_t>((flags & 0xff00) | otherLow);
    const char* second = decode(sameHigh);
    std::vector<std::string> again = fuzz::takeLines();
    FUZZ_CHECK(second == first, "the result moved to another buffer", again);
    FUZZ_CHECK(text == second, "the low byte changed the source type", again);

    // Padding reads the quick-GPS state the decoding left behind.
    android::hardware::gnss::V1_0::GnssLocation plain{};
    addSvList(plain);
    std::vector<std::string> padding = fuzz::takeLines();
    FUZZ_CHECK(fuzz::contains(padding, "location from qttff, so don't do sv_add.") == quick,
               "the augmentation ignored the quick-GPS state", padding);
    decode(0);
    resetLocationFlag();
    fuzz::takeLines();
    return 0;
}
