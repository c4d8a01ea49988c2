// While a connection attempt sits in one of its one-second look-up pauses with
// fusdMutex held, the provider's queries and feed calls must not wait for it.
// The pause is held on a latch (virtual time), so the test is deterministic:
// every call below must return while the latch is still closed.
#include <gtest/gtest.h>
#include <zdgnssprovider.h>
#include <zdhost/platform_control.h>

#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

class Latch {
  public:
    void waitUntilEntered() {
        std::unique_lock<std::mutex> lock(mLock);
        mChanged.wait(lock, [this] { return mEntered; });
    }
    void enterAndHold() {
        std::unique_lock<std::mutex> lock(mLock);
        mEntered = true;
        mChanged.notify_all();
        mChanged.wait(lock, [this] { return mReleased; });
    }
    void release() {
        std::lock_guard<std::mutex> lock(mLock);
        mReleased = true;
        mChanged.notify_all();
    }

  private:
    std::mutex mLock;
    std::condition_variable mChanged;
    bool mEntered = false;
    bool mReleased = false;
};

android::hardware::gnss::V1_0::GnssLocation fixAt(int64_t timestamp) {
    android::hardware::gnss::V1_0::GnssLocation location{};
    location.timestamp = timestamp;
    return location;
}

TEST(LookupPause, QueriesAndFeedCallsDoNotWaitForTheConnectionAttempt) {
    zdhost::platform::setProperty("ro.config.zd_support_geofence", "true");
    zdhost::platform::setProperty("ro.connectivity.sub_chiptype", "vk7705");
    Latch firstPause;
    int pauses = 0;
    zdhost::platform::setSleepHook([&](useconds_t micros) {
        EXPECT_EQ(micros, 1000000u);
        if (++pauses == 1) firstPause.enterAndHold();
    });

    std::thread provider([] { fusionD_init(); });
    firstPause.waitUntilEntered();
    ASSERT_EQ(pthread_mutex_trylock(&fusdMutex), EBUSY) << "the attempt must hold fusdMutex";

    EXPECT_FALSE(isFDSupport());
    EXPECT_FALSE(isFDGeofenceSupport());
    EXPECT_EQ(getBatcgingIface(), nullptr);
    EXPECT_FALSE(sendLocationDataToTarvi(fixAt(1000)));
    send_nmea_update_to_tarvi(1000, "$GPRMC,,A,", 10);
    android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus status{};
    sendSvInfo(status);
    EXPECT_FALSE(fd_add_geofence(7, 1.5, 2.5, 30, 1, 7, 5000, 0));
    send_gnss_start_cmd_to_tarvi(true);
    registerCallback(nullptr, nullptr, nullptr);
    EXPECT_EQ(getChipsetType(), 1);

    firstPause.release();
    provider.join();
    EXPECT_EQ(pauses, 9) << "ten look-ups with nine pauses when no daemon is registered";
    EXPECT_EQ(pthread_mutex_trylock(&fusdMutex), 0);
    pthread_mutex_unlock(&fusdMutex);
}

}  // namespace
