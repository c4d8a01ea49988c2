// Bounded thread chaos for the sanitizer builds: a provider thread feeds a real receiver's
// output at a 10 Hz pace, the daemon's fused reports and geofence callbacks arrive on
// runtime threads, another thread keeps replacing the framework's objects (with fresh
// ones or null, so a replaced object is really freed), and the daemon dies and registers
// again every few hundred provider calls. No sleeps: every loop is bounded by a count.
// Checked: no crash, race or use after free (the tsan and asan builds); every fused
// location and geofence callback the library received was forwarded or logged as dropped;
// and every death and registration was followed, during the chaos and after it.
#include <gtest/gtest.h>
#include <log_capture.h>
#include <party.h>
#include <recording_stubs.h>
#include <transcript.h>
#include <world/world.h>
#include <zdgnssprovider.h>
#include <zdhost/platform_control.h>
#include <zdhost/runtime.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using android::sp;
using android::hardware::hidl_vec;
namespace gnss_v1_0 = android::hardware::gnss::V1_0;
namespace gnss_v2_0 = android::hardware::gnss::V2_0;
namespace fusd_v1_2 = vendor::zendra::hardware::fusd::V1_2;
using GeofenceStatus = gnss_v1_0::IGnssGeofenceCallback::GeofenceStatus;
using GeofenceTransition = gnss_v1_0::IGnssGeofenceCallback::GeofenceTransition;

constexpr int kEpochs = 6000;       // provider epochs of 100 ms: 600 s of receiver output
constexpr int kCallsPerEpoch = 4;   // fix, satellites, padding, NMEA
constexpr int kRestartEvery = 300;  // provider calls between daemon restarts
constexpr int kRestartEpochs = kRestartEvery / kCallsPerEpoch;
constexpr int kGeofenceEvery = 2;  // epochs between geofence callbacks
constexpr int64_t kStartMs = 1700000000000;

// The receiver's one-second bursts (each from a GGA up to the next one), as the GNSS HAL
// hands NMEA text to the provider.
std::vector<std::string> receiverBursts() {
    std::ifstream capture(ZD_NMEA_CAPTURE);
    std::vector<std::string> bursts;
    std::string line;
    while (std::getline(capture, line)) {
        if (line.rfind("$GPGGA", 0) == 0 || bursts.empty()) bursts.emplace_back();
        bursts.back() += line + "\r\n";
    }
    return bursts;
}

// A receiver walking north-east at about 1 m/s from where the capture was taken.
gnss_v1_0::GnssLocation fixAt(int64_t timestamp) {
    const double seconds = static_cast<double>(timestamp - kStartMs) / 1000.0;
    gnss_v1_0::GnssLocation fix{};
    fix.gnssLocationFlags = 0x1f;
    fix.timestamp = timestamp;
    fix.latitudeDegrees = -27.2107 + seconds * 6e-6;
    fix.longitudeDegrees = 153.052 + seconds * 7e-6;
    fix.speedMetersPerSec = 1.0f;
    fix.bearingDegrees = 45.0f;
    fix.horizontalAccuracyMeters = 5.0f;
    return fix;
}

// `used` GPS satellites used in the fix out of `count` tracked ones.
gnss_v1_0::IGnssCallback::GnssSvStatus satellites(uint32_t count, uint32_t used) {
    gnss_v1_0::IGnssCallback::GnssSvStatus status{};
    status.numSvs = count;
    for (uint32_t i = 0; i < count; ++i) {
        auto& sv = status.gnssSvList[i];
        sv.svid = static_cast<int16_t>(i + 1);
        sv.constellation = gnss_v1_0::GnssConstellationType::GPS;
        sv.cN0Dbhz = 25.0f + static_cast<float>(i);
        sv.svFlag =
            i < used ? static_cast<uint8_t>(gnss_v1_0::IGnssCallback::GnssSvFlags::USED_IN_FIX) : 0;
    }
    return status;
}

hidl_vec<gnss_v2_0::IGnssCallback::GnssSvInfo> satelliteList(uint32_t count, uint32_t used) {
    auto status = satellites(count, used);
    hidl_vec<gnss_v2_0::IGnssCallback::GnssSvInfo> list(count);
    for (uint32_t i = 0; i < count; ++i) {
        list[i].v1_0 = status.gnssSvList[i];
        list[i].constellation = gnss_v2_0::GnssConstellationType::GPS;
    }
    return list;
}

size_t linesWith(const std::vector<std::string>& lines, const std::string& text) {
    return static_cast<size_t>(std::count_if(lines.begin(), lines.end(), [&](const std::string& l) {
        return l.find(text) != std::string::npos;
    }));
}

void worldCommand(const std::string& verb) {
    std::string error;
    EXPECT_TRUE(sim::World::get().command("fusd", {sim::Token{verb}}, &error)) << error;
}

// Keeps the threads together: each follower acts at epochs of its own once the provider
// has finished them, and the provider never runs more than kSlack epochs ahead of the
// slowest follower, so all of them overlap from the first epoch to the last.
class Pacer {
  public:
    enum Follower { kRestarts, kFusedReports, kGeofenceEvents, kFrameworkSwaps, kFollowers };

    void providerFinished(int epoch) {
        std::unique_lock<std::mutex> lock(mLock);
        mProviderDone = epoch + 1;
        mChanged.notify_all();
        mChanged.wait(lock, [this] { return slowest() >= mProviderDone - kSlack; });
    }
    void follow(Follower who, int epoch) {
        std::unique_lock<std::mutex> lock(mLock);
        mAt[who] = epoch;
        mChanged.notify_all();
        mChanged.wait(lock, [&] { return mProviderDone > epoch; });
    }
    void leave(Follower who) {
        std::lock_guard<std::mutex> lock(mLock);
        mAt[who] = std::numeric_limits<int>::max();
        mChanged.notify_all();
    }

  private:
    static constexpr int kSlack = 8;
    int slowest() const { return *std::min_element(std::begin(mAt), std::end(mAt)); }

    std::mutex mLock;
    std::condition_variable mChanged;
    int mProviderDone = 0;
    int mAt[kFollowers] = {};
};

class Chaos : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        zdhost::pool::setThreadCount(3);  // reports, deaths and registrations overlap
        sim::Transcript::get().setEcho(false);
        sim::startLogCapture();
        sim::World::get().start();
        zdhost::platform::setProperty("ro.connectivity.sub_chiptype", "vk7705");
    }

    void SetUp() override {
        worldCommand("register");
        fusionD_init();
        zdhost::pool::drain();
        sim::Transcript::get().takeSegment();
    }

    // 10 Hz epochs of fixes, NMEA bursts, satellite reports and list padding.
    void feedReceiver(const std::vector<std::string>& bursts) {
        send_gnss_start_cmd_to_tarvi(true);
        for (int i = 0; i < kEpochs; ++i) {
            const int64_t t = kStartMs + 100 * i;
            const uint32_t used = static_cast<uint32_t>(i % 7);  // below and above four
            if (i % 2 == 0) {
                sendLocationDataToTarvi(fixAt(t));
                sendSvInfo(satellites(8, used));
                addSvList(fixAt(t));
            } else {
                gnss_v2_0::GnssLocation fix{};
                fix.v1_0 = fixAt(t);
                sendLocationDataToTarvi(fix);
                sendSvInfo(satelliteList(8, used));
                addSvList(fix);
            }
            const std::string& burst = bursts[static_cast<size_t>(i / 10) % bursts.size()];
            send_nmea_update_to_tarvi(t, burst.c_str(), static_cast<unsigned>(burst.size()));
            if (i % 50 == 0) fd_add_geofence(i, -27.2107, 153.052, 100, 1, 7, 5000, 0);
            mPacer.providerFinished(i);
        }
        send_gnss_start_cmd_to_tarvi(false);
    }

    // Each death is delivered before the next registration, as the two would be apart in
    // time on a device; the provider, the reports and the framework swaps go on meanwhile.
    void restartDaemon() {
        for (int epoch = kRestartEpochs; epoch < kEpochs; epoch += kRestartEpochs) {
            mPacer.follow(Pacer::kRestarts, epoch);
            worldCommand("kill");
            zdhost::pool::drain();
            EXPECT_FALSE(isFDSupport()) << "the death must empty the handles";
            worldCommand("register");
            zdhost::pool::drain();
            EXPECT_TRUE(isFDSupport()) << "the registration must reconnect";
            ++mRestarts;
        }
        mPacer.leave(Pacer::kRestarts);
    }

    // Fused reports from the daemon, every other one delivered without waiting for it.
    void reportFusedLocations() {
        for (int i = 0; i < kEpochs; ++i) {
            mPacer.follow(Pacer::kFusedReports, i);
            sp<fusd_v1_2::IFusdGnssCallback> library = sim::World::get().fusdGnssCallback();
            if (library == nullptr) continue;  // the daemon is down or not yet reconnected
            const gnss_v1_0::GnssLocation fix = fixAt(kStartMs + 100 * i + 50);
            auto report = [this, library, fix] {
                EXPECT_TRUE(library->reportFusdLocation(fix).isOk());
                ++mFusedDelivered;
            };
            if (i % 2 == 0) {
                zdhost::pool::post(report);
            } else {
                zdhost::pool::deliverCall(report);
            }
        }
        mPacer.leave(Pacer::kFusedReports);
    }

    // Each geofence callback makes the library forward one call or log one drop.
    void reportGeofenceEvents() {
        for (int i = 0; i < kEpochs / kGeofenceEvery; ++i) {
            mPacer.follow(Pacer::kGeofenceEvents, i * kGeofenceEvery);
            sp<fusd_v1_2::IFusdGeofenceCallback> library = sim::World::get().fusdGeofenceCallback();
            if (library == nullptr) continue;
            zdhost::pool::deliverCall([this, library, i] {
                EXPECT_TRUE(geofenceEvent(*library, i).isOk());
                ++mGeofenceDelivered;
                if (i % 6 == 0) ++mAddResultsDelivered;
            });
        }
        mPacer.leave(Pacer::kGeofenceEvents);
    }

    static android::hardware::Return<void> geofenceEvent(fusd_v1_2::IFusdGeofenceCallback& library,
                                                         int i) {
        const gnss_v1_0::GnssLocation fix = fixAt(kStartMs + 1000 * i);
        switch (i % 6) {
            case 0:
                return library.geofenceAddResultCb({{i, 0}});
            case 1:
                return library.geofenceRemoveResultCb({{i, 0}});
            case 2:
                return library.gnssGeofenceTransitionCb(i, fix, GeofenceTransition::EXITED, 5);
            case 3:
                return library.gnssGeofenceStatusCb(2, fix);
            case 4:
                return library.gnssGeofencePauseCb(i, GeofenceStatus::OPERATION_SUCCESS);
            default:
                return library.gnssGeofenceResumeCb(i, GeofenceStatus::ERROR_GENERIC);
        }
    }

    // Fresh framework objects, or none, in a rotating pattern; the replaced ones are freed
    // as soon as the library lets them go.
    void swapFramework() {
        for (int i = 0; i < kEpochs; ++i) {
            mPacer.follow(Pacer::kFrameworkSwaps, i);
            sp<gnss_v2_0::IGnssCallback> gnss;
            sp<gnss_v1_0::IGnssGeofenceCallback> geofence;
            sp<FdCorvaneCallback_> fenceClient;
            if (i % 3 != 0) gnss = new sim::RecordingIGnssCallback_V2_0(recorder("gnssCb"));
            if (i % 4 != 0) {
                geofence = new sim::RecordingIGnssGeofenceCallback_V1_0(recorder("geofenceCb"));
            }
            if (i % 5 != 0) {
                fenceClient = new FdCorvaneCallback_();
                fenceClient->geofenceAddResult = countFenceClientCall;
            }
            registerCallback(gnss, geofence, fenceClient);
        }
        mPacer.leave(Pacer::kFrameworkSwaps);
    }

    // The library may keep the last framework objects until the process ends: their party
    // lives as long.
    static sim::Recorder recorder(const char* name) {
        static sim::Party* framework = [] {
            auto* party = new sim::Party("fw");
            party->declare("gnssCb", sim::RecordingIGnssCallback_V2_0::operations());
            party->declare("geofenceCb", sim::RecordingIGnssGeofenceCallback_V1_0::operations());
            return party;
        }();
        return sim::Recorder(*framework, nullptr, name);
    }

    static void countFenceClientCall(int32_t*, int32_t*, uint32_t) { ++sFenceClientCalls; }

    Pacer mPacer;
    std::atomic<int> mRestarts{0};
    std::atomic<size_t> mFusedDelivered{0};
    std::atomic<size_t> mGeofenceDelivered{0};
    std::atomic<size_t> mAddResultsDelivered{0};  // each calls the fence client or logs
    static std::atomic<size_t> sFenceClientCalls;
};

std::atomic<size_t> Chaos::sFenceClientCalls{0};

TEST_F(Chaos, EveryReportIsForwardedOrLoggedAndTheLinkSurvives) {
    const std::vector<std::string> bursts = receiverBursts();
    ASSERT_GT(bursts.size(), 10u);
    std::vector<std::thread> threads;
    threads.emplace_back([this, &bursts] { feedReceiver(bursts); });
    threads.emplace_back([this] { restartDaemon(); });
    threads.emplace_back([this] { reportFusedLocations(); });
    threads.emplace_back([this] { reportGeofenceEvents(); });
    threads.emplace_back([this] { swapFramework(); });
    for (std::thread& thread : threads) thread.join();
    zdhost::pool::drain();
    const std::vector<std::string> lines = sim::Transcript::get().takeSegment();

    EXPECT_EQ(mRestarts.load(), (kEpochs - 1) / kRestartEpochs);
    ASSERT_GT(mFusedDelivered.load(), 0u);
    ASSERT_GT(mGeofenceDelivered.load(), 0u);

    const size_t forwarded = linesWith(lines, "get location from Tarvi1.5");
    const size_t noFramework = linesWith(lines, "FD location report, g_gnssCbIface is null");
    const size_t tooSoon = linesWith(lines, "no need to send_location_callback");
    EXPECT_EQ(forwarded + noFramework + tooSoon, mFusedDelivered.load());
    EXPECT_EQ(linesWith(lines, "fw gnssCb.gnssLocationCb("), forwarded);
    EXPECT_EQ(linesWith(lines, "Updating lastSentLocUpdateTime"), forwarded + noFramework);
    EXPECT_GT(forwarded, 0u);
    EXPECT_GT(tooSoon, 0u);

    const size_t geofenceForwarded = linesWith(lines, "geofenceAddResultCb: id=") +
                                     linesWith(lines, "geofenceRemoveResultCb: id=") +
                                     linesWith(lines, "gnssGeofenceTransitionCb in,") +
                                     linesWith(lines, "gnssGeofenceStatusCb:result=") +
                                     linesWith(lines, "gnssGeofencePauseCb:id=") +
                                     linesWith(lines, "gnssGeofenceResumeCb:id=");
    const size_t geofenceNoFramework = linesWith(lines, ":g_gnssGeofenceCbIface is null");
    std::cout << mRestarts << " daemon restarts; fused reports: " << mFusedDelivered
              << " delivered, " << forwarded << " forwarded, " << tooSoon << " too soon, "
              << noFramework << " without framework; geofence events: " << mGeofenceDelivered
              << " delivered, " << geofenceNoFramework << " without framework\n";
    EXPECT_EQ(geofenceForwarded + geofenceNoFramework, mGeofenceDelivered.load());
    EXPECT_EQ(linesWith(lines, "fw geofenceCb."), geofenceForwarded);
    EXPECT_EQ(sFenceClientCalls + linesWith(lines, "fdCorvaneCb is null"),
              mAddResultsDelivered.load());

    // Afterwards the library still follows a death and a registration on its own.
    worldCommand("kill");
    zdhost::pool::drain();
    EXPECT_FALSE(isFDSupport());
    worldCommand("register");
    zdhost::pool::drain();
    EXPECT_TRUE(isFDSupport());
    sim::Transcript::get().takeSegment();
    sendLocationDataToTarvi(fixAt(kStartMs + 100 * kEpochs));
    EXPECT_EQ(linesWith(sim::Transcript::get().takeSegment(),
                        "fusd IFusdGnssInterface.sendLocationData("),
              1u);
}

}  // namespace
