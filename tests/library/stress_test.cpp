// Threaded runs for ThreadSanitizer: the provider thread keeps calling the
// library while the fake daemon dies, comes back and reports fused locations on
// runtime threads. A race, a call on a freed object or a lost report fails.
#include <gtest/gtest.h>
#include <log_capture.h>
#include <transcript.h>
#include <world/world.h>
#include <zdgnssprovider.h>
#include <zdhost/runtime.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

using sim::Token;
using sim::Transcript;
using sim::World;

void daemon(const std::vector<std::string>& words) {
    std::vector<Token> args;
    for (const auto& w : words) args.push_back(Token{w, false});
    std::string error;
    ASSERT_TRUE(World::get().command("fusd", args, &error)) << error;
    zdhost::pool::drain();
}

android::hardware::gnss::V1_0::GnssLocation fixAt(int64_t timestamp) {
    android::hardware::gnss::V1_0::GnssLocation location{};
    location.timestamp = timestamp;
    location.latitudeDegrees = 48.1;
    return location;
}

size_t countContaining(const std::vector<std::string>& lines, const std::string& text) {
    size_t n = 0;
    for (const auto& line : lines) n += line.find(text) != std::string::npos;
    return n;
}

class Stress : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        Transcript::get().setEcho(false);
        sim::startLogCapture();
        World::get().start();
    }
};

// The provider thread calls queries, feed calls and registerCallback while the
// daemon dies and re-registers (death handling and reconnection on runtime threads).
TEST_F(Stress, DaemonRestartsWhileTheProviderCalls) {
    daemon({"register"});
    fusionD_init();
    zdhost::pool::drain();
    std::atomic<bool> stop{false};
    std::thread provider([&] {
        android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus status{};
        for (int64_t i = 0; !stop; ++i) {
            isFDSupport();
            isFDGeofenceSupport();
            getBatcgingIface();
            sendLocationDataToTarvi(fixAt(1000 * i));
            send_nmea_update_to_tarvi(1000 * i, "$GPRMC,1,A,", 11);
            sendSvInfo(status);
            fd_add_geofence(static_cast<int32_t>(i), 1.5, 2.5, 30, 1, 7, 5000, 0);
            if (i % 2 == 0) {
                registerCallback(World::get().gnssCb(), World::get().geofenceCb(),
                                 World::get().corvaneCb());
            } else {
                registerCallback(nullptr, nullptr, nullptr);
            }
        }
    });
    for (int round = 0; round < 30; ++round) {
        daemon({"kill"});
        daemon({"register"});
    }
    stop = true;
    provider.join();
    zdhost::pool::drain();
    EXPECT_TRUE(isFDSupport()) << "the last registration must have reconnected";
    Transcript::get().takeSegment();
}

// Fused reports arrive on runtime threads while the provider thread feeds
// locations and swaps the framework callback: each report is either forwarded
// or logged as dropped, never lost.
TEST_F(Stress, FusedReportsWhileTheProviderFeeds) {
    daemon({"register"});
    fusionD_init();
    zdhost::pool::drain();
    Transcript::get().takeSegment();
    std::atomic<bool> stop{false};
    std::thread provider([&] {
        send_gnss_start_cmd_to_tarvi(true);
        for (int64_t i = 0; !stop; ++i) {
            sendLocationDataToTarvi(fixAt(1000 * i));
            addSvList(fixAt(1000 * i));
            registerCallback(i % 3 ? World::get().gnssCb() : nullptr, World::get().geofenceCb(),
                             World::get().corvaneCb());
        }
    });
    constexpr int kReports = 400;
    for (int i = 0; i < kReports; ++i) {
        daemon({"reportFusdLocation", "loc{timestamp=" + std::to_string(500 * i) + "}"});
    }
    stop = true;
    provider.join();
    std::vector<std::string> lines = Transcript::get().takeSegment();
    size_t forwarded = countContaining(lines, "get location from Tarvi1.5") +
                       countContaining(lines, "FD location report, g_gnssCbIface is null");
    size_t dropped = countContaining(lines, "no need to send_location_callback");
    EXPECT_EQ(forwarded + dropped, static_cast<size_t>(kReports));
    EXPECT_EQ(countContaining(lines, "[LocMgr] Updating lastSentLocUpdateTime"), forwarded);
}

}  // namespace
