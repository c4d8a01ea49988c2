// Network-initiated messages of any bytes and any length argument, with the vendor
// HAL's AGNSS RIL 2.0 fetched.
// Input: u8 mode, u8 scale, i32 length argument, then the message bytes. A negative
// length is passed as it is; a positive one is taken modulo 65,537 with the bulk
// scale, else modulo 1,025, and the message bytes are repeated in turn to fill a buffer of that
// many bytes (zeros when there are none), so the buffer always holds `len` bytes as the caller must
// provide. Mode bit 0: a null pointer for length 0; bit 1: the RIL call fails once in transport.
// Checks: a negative length leaves no trace; otherwise the RIL receives exactly the
// first `len` bytes with `len`, and a transport failure is logged.
#include <zdgnssprovider.h>

#include <string>
#include <vector>

#include "format.h"
#include "harness.h"

namespace {

constexpr uint32_t kMaxBytes = 65536;
constexpr uint32_t kSmallBytes = 1024;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startWorld();
    fuzz::connectVendorHal();
    fuzz::ByteReader in(data, size);
    const auto mode = in.take<uint8_t>();
    const bool failOnce = mode & 2;
    const auto scale = in.take<uint8_t>();
    int32_t len = in.take<int32_t>();
    if (len > 0) {
        len = static_cast<int32_t>(
            fuzz::scaledCount(scale, static_cast<uint32_t>(len), kMaxBytes, kSmallBytes));
    }
    std::vector<uint8_t> message(len > 0 ? static_cast<size_t>(len) : 0);
    for (size_t i = 0; i < message.size() && in.remaining() > 0; ++i) {
        message[i] = in.rest()[i % in.remaining()];
    }
    const uint8_t* msg = len == 0 && (mode & 1) ? nullptr : message.data();

    if (failOnce) fuzz::worldCommand("vhal", {"fail", "IZDAGnssRil2.0.sendNiMessage", "once"});
    fuzz::takeLines();
    send_ni_message(msg, len);
    std::vector<std::string> lines = fuzz::takeLines();
    if (failOnce) fuzz::worldCommand("vhal", {"heal", "IZDAGnssRil2.0.sendNiMessage"});

    if (len < 0) {
        FUZZ_CHECK(lines.empty(), "a negative length left a trace", lines);
        return 0;
    }
    const std::string sent = "vhal IZDAGnssRil2.0.sendNiMessage(" +
                             sim::fmtBytes(message.data(), message.size()) + ", " +
                             std::to_string(len) + ")" + (failOnce ? " -> transport-error" : "");
    FUZZ_CHECK(
        fuzz::countStartingWith(lines, sent) == 1 && fuzz::countStartingWith(lines, "vhal ") == 1,
        "the RIL did not get the message once as given", lines);
    FUZZ_CHECK(fuzz::contains(lines, "Gnss NI Failed to send ni_message") == failOnce,
               "transport failure logged wrongly", lines);
    return 0;
}
