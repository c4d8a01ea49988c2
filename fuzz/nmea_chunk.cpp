// NMEA chunks for the RMC-validity feed, with the daemon connected.
// Input: u32 length argument, i64 time stamp, then the chunk bytes; the chunk is
// passed NUL-terminated (it ends at its first NUL byte) and the length argument
// is independent of its real size.
// Checks: the daemon receives one update exactly when the guard admits the chunk,
// the RMC tail is shorter than 256 characters, and it carries the validity of that
// tail and the time stamp unchanged.
#include <zdgnssprovider.h>

#include <cstring>
#include <string>
#include <vector>

#include "harness.h"

namespace {

constexpr unsigned int kMaxLength = 10240;
constexpr size_t kMaxRmcTail = 255;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startWorld();
    fuzz::ByteReader in(data, size);
    const auto length = in.take<uint32_t>();
    const auto timestamp = in.take<int64_t>();
    std::vector<char> chunk(in.rest(), in.rest() + in.remaining());
    chunk.push_back('\0');

    fuzz::feedLog().clear();
    send_nmea_update_to_tarvi(timestamp, chunk.data(), length);
    std::vector<std::string> lines = fuzz::takeLines();

    const char* rmc = strstr(chunk.data(), "$GPRMC");
    const size_t tail = rmc == nullptr ? 0 : strlen(rmc);
    const bool admitted = length <= kMaxLength && rmc != nullptr && tail <= kMaxRmcTail;
    const auto& sent = fuzz::feedLog().nmea;
    FUZZ_CHECK(sent.size() == (admitted ? 1u : 0u),
               "length " + std::to_string(length) + ", RMC tail " + std::to_string(tail) +
                   ", updates sent " + std::to_string(sent.size()),
               lines);
    if (admitted) {
        FUZZ_CHECK(sent[0].timestamp == timestamp, "time stamp changed", lines);
        FUZZ_CHECK(sent[0].rmcValid == (strstr(rmc, ",A,") != nullptr),
                   "validity does not match the RMC tail", lines);
    }
    const bool rejectedLong = length <= kMaxLength && rmc != nullptr && tail > kMaxRmcTail;
    const std::string warning = "log W ZdGnssLocationProviderJNI: [LocMgr] invalid nmea data: ";
    std::vector<std::string> warned = fuzz::tailsAfter(lines, warning);
    FUZZ_CHECK(warned.size() == (rejectedLong ? 1u : 0u),
               "the long-tail warning must come exactly when the tail is too long", lines);
    if (rejectedLong) {
        FUZZ_CHECK(warned[0] == std::to_string(tail), "the warning names another length", lines);
    }
    return 0;
}
