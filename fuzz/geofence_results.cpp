// Geofence add and remove result lists of any count from 0 to 100,000, delivered
// by the fake daemon's runtime thread through the geofence callback the library
// registered, with the framework's geofence callback registered (for some inputs,
// not) and the fence client registered (for some inputs, not).
// Input: u8 mode, u8 scale, u32 count (modulo 100,001 with the bulk scale, else
// modulo 41), then (i32 id, i32 result) entries repeated in turn to fill the list
// (all zero when there are none).
// Mode bit 0: remove results instead of add results; bit 1: no fence client;
// bit 2: no framework geofence callback.
// Checks: every add result reaches the framework once, in order, and the fence
// client gets one call with all of them; exactly the successful removals reach
// the framework.
#include <world/world.h>
#include <zdhost/runtime.h>

#include <string>
#include <vector>

#include "harness.h"

namespace {

using Results = android::hardware::hidl_vec<vendor::zendra::hardware::fusd::V1_2::GeofenceResult>;

constexpr uint32_t kMaxCount = 100000;
constexpr uint32_t kSmallCount = 40;

Results readResults(fuzz::ByteReader& in, uint32_t count) {
    std::vector<vendor::zendra::hardware::fusd::V1_2::GeofenceResult> distinct;
    while (in.remaining() >= 8) {
        vendor::zendra::hardware::fusd::V1_2::GeofenceResult entry{};
        entry.geofenceId = in.take<int32_t>();
        entry.result = in.take<int32_t>();
        distinct.push_back(entry);
    }
    Results results(count);
    for (uint32_t i = 0; i < count; ++i) {
        results[i] = distinct.empty() ? results[i] : distinct[i % distinct.size()];
    }
    return results;
}

void checkAdds(const Results& results, bool framework, bool fenceClient,
               const std::vector<std::string>& lines) {
    const size_t count = results.size();
    std::vector<std::string> forwarded =
        fuzz::tailsAfter(lines, "fw geofenceCb.gnssGeofenceAddCb(");
    FUZZ_CHECK(forwarded.size() == (framework ? count : 0),
               std::to_string(forwarded.size()) + " of " + std::to_string(count) + " forwarded",
               lines);
    for (size_t i = 0; i < forwarded.size(); ++i) {
        const std::string expected =
            std::to_string(results[i].geofenceId) + ", " + std::to_string(results[i].result) + ")";
        FUZZ_CHECK(forwarded[i] == expected,
                   "entry " + std::to_string(i) + " forwarded as " + forwarded[i], lines);
    }
    std::vector<std::string> told = fuzz::tailsAfter(lines, "fw corvaneCb.geofenceAddResult(");
    FUZZ_CHECK(told.size() == (fenceClient && count > 0 ? 1u : 0u),
               "the fence client is told once per non-empty list", lines);
    if (!told.empty()) {
        const std::string countText = ", " + std::to_string(count) + ")";
        FUZZ_CHECK(
            told[0].size() >= countText.size() && told[0].compare(told[0].size() - countText.size(),
                                                                  countText.size(), countText) == 0,
            "the fence client got another count", lines);
    }
}

void checkRemoves(const Results& results, bool framework, const std::vector<std::string>& lines) {
    std::vector<std::string> expected;
    for (const auto& entry : results) {
        if (entry.result == 0) expected.push_back(std::to_string(entry.geofenceId) + ", 0)");
    }
    std::vector<std::string> forwarded =
        fuzz::tailsAfter(lines, "fw geofenceCb.gnssGeofenceRemoveCb(");
    if (!framework) expected.clear();
    FUZZ_CHECK(forwarded == expected,
               std::to_string(forwarded.size()) + " removals forwarded, " +
                   std::to_string(expected.size()) + " succeeded",
               lines);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startWorld();
    fuzz::ByteReader in(data, size);
    const auto mode = in.take<uint8_t>();
    const bool removals = mode & 1;
    const bool fenceClient = !(mode & 2);
    const bool framework = !(mode & 4);
    const auto scale = in.take<uint8_t>();
    const uint32_t count = fuzz::scaledCount(scale, in.take<uint32_t>(), kMaxCount, kSmallCount);
    const Results results = readResults(in, count);

    auto daemonSide = sim::World::get().fusdGeofenceCallback();
    if (daemonSide == nullptr) abort();  // startWorld() connected the daemon
    fuzz::registerFramework(true, framework, fenceClient);
    zdhost::pool::deliverCall([&] {
        if (removals) {
            (void)daemonSide->geofenceRemoveResultCb(results).isOk();
        } else {
            (void)daemonSide->geofenceAddResultCb(results).isOk();
        }
    });
    fuzz::registerFramework(true, true, true);
    std::vector<std::string> lines = fuzz::takeLines();

    if (removals) {
        checkRemoves(results, framework, lines);
    } else {
        checkAdds(results, framework, fenceClient, lines);
    }
    return 0;
}
