// The daemon's death empties the daemon handles while the handler holds
// fusdMutex. The test holds fusdMutex as a connection would while the death
// arrives on a runtime thread: the handles must stay set until the test lets
// go, and each daemon object must be let go by the handler with fusdMutex held.
//
// Nothing waits on time. The test waits until the handler either waits for
// fusdMutex or drops a daemon object, whichever it does first. The daemon's
// objects are the test's own, so their destructors mark the moment each handle
// is emptied.
#include <gtest/gtest.h>
#include <recording_stubs.h>
#include <transcript.h>
#include <world/fake_objects.h>
#include <zdgnssprovider.h>
#include <zdhost/platform_control.h>
#include <zdhost/runtime.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using android::sp;

// What the test learns from the handler's thread.
struct HandlerWatch {
    std::mutex lock;
    std::atomic<bool> testHoldsLock{false};
    std::atomic<int> released{0};
    std::vector<std::string> violations;

    void note(const std::string& violation) {
        std::lock_guard<std::mutex> guard(lock);
        violations.push_back(violation);
    }
};

HandlerWatch& watch() {
    static HandlerWatch* w = new HandlerWatch();
    return *w;
}

// Called as each daemon object dies: the handle that held it was just emptied.
void noteRelease(const char* name) {
    HandlerWatch& w = watch();
    if (w.testHoldsLock) {
        w.note(std::string(name) + " let go while the test held fusdMutex");
    } else if (pthread_mutex_trylock(&fusdMutex) == 0) {
        pthread_mutex_unlock(&fusdMutex);
        w.note(std::string(name) + " let go with fusdMutex free");
    }
    ++w.released;
}

template <typename Stub>
class Probed : public Stub {
  public:
    template <typename... Args>
    Probed(const char* name, Args&&... args) : Stub(std::forward<Args>(args)...), mName(name) {}
    ~Probed() override { noteRelease(mName); }

  private:
    const char* mName;
};

using Lbs = Probed<sim::WithExtensions<sim::RecordingIFusdLbs_V1_3>>;
using Gnss = Probed<sim::RecordingIFusdGnssInterface_V1_2>;
using Geofence = Probed<sim::RecordingIFusdGeofenceInterface_V1_2>;
using Batching = Probed<sim::RecordingIGnssBatchingInterface_V1_1>;
constexpr int kDaemonObjects = 4;

// Whether another thread waits for `mutex`: glibc marks a held mutex as
// contended before the waiter sleeps on it. Only the death handler contends
// for fusdMutex here, and it reads the same in a native or an emulated run.
bool contended(const pthread_mutex_t& mutex) {
    return __atomic_load_n(&mutex.__data.__lock, __ATOMIC_ACQUIRE) > 1;
}

sp<Lbs> startDaemon(sim::Party& party, const sp<zdhost::ServiceProcess>& process) {
    auto recorder = [&](const char* name) { return sim::Recorder(party, process, name); };
    std::vector<sim::Extensions::Getter> getters = {
        {"getFusdGnssInterface", "gnss",
         [=] { return sp<zdhost::IBase>(new Gnss("gnss", recorder("IFusdGnssInterface"))); }},
        {"getFusdGeofenceInterface", "geofence",
         [=] {
             return sp<zdhost::IBase>(new Geofence("geofence", recorder("IFusdGeofenceInterface")));
         }},
        {"getGnssBatchingInterface", "batching",
         [=] {
             return sp<zdhost::IBase>(new Batching("batching", recorder("IGnssBatchingInterface")));
         }},
    };
    sp<Lbs> lbs = new Lbs("IFusdLbs", recorder("IFusdLbs"), party, std::move(getters));
    zdhost::ServiceManager::get().add("default", lbs);
    return lbs;
}

bool daemonHandlesSet() {
    return isFDSupport() && isFDGeofenceSupport() && getBatcgingIface() != nullptr;
}

bool daemonHandlesEmpty() {
    return !isFDSupport() && !isFDGeofenceSupport() && getBatcgingIface() == nullptr;
}

TEST(DeathUnderLock, HandlesEmptyOnlyAfterTheConnectionLockIsReleased) {
    sim::Transcript::get().setEcho(false);
    zdhost::platform::setProperty("ro.connectivity.sub_chiptype", "vk7705");
    HandlerWatch& w = watch();

    sim::Party party("fusd");
    sp<zdhost::ServiceProcess> process = new zdhost::ServiceProcess();
    {
        sp<Lbs> lbs = startDaemon(party, process);
        fd_init();
        zdhost::pool::drain();
        ASSERT_TRUE(daemonHandlesSet());

        ASSERT_EQ(pthread_mutex_lock(&fusdMutex), 0);
        w.testHoldsLock = true;
        process->kill({lbs},
                      false);  // `who` cannot be promoted: the handles hold the last references
    }

    // Wait for the handler to wait for fusdMutex or to drop an object.
    while (w.released == 0 && !contended(fusdMutex)) std::this_thread::yield();

    EXPECT_TRUE(daemonHandlesSet()) << "the handles must stay set while fusdMutex is held";
    w.testHoldsLock = false;
    pthread_mutex_unlock(&fusdMutex);
    zdhost::pool::drain();

    EXPECT_TRUE(daemonHandlesEmpty());
    EXPECT_EQ(w.released, kDaemonObjects);
    std::lock_guard<std::mutex> guard(w.lock);
    for (const std::string& violation : w.violations) ADD_FAILURE() << violation;
}

}  // namespace
