// The host's stand-in for hwbinder and hwservicemanager: an in-process service
// registry, a runtime thread pool that delivers calls from services, death and
// registration notifications, and service processes that can die.
#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>
#include <utils/RefBase.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace zdhost {

using ::android::sp;
using ::android::wp;
using ::android::hardware::hidl_death_recipient;
using ::android::hidl::base::V1_0::IBase;
using ::android::hidl::manager::V1_0::IServiceNotification;

// Watches what crosses the runtime; every hook is optional. Hooks run on the
// thread where the event happens, before the event reaches its target.
struct RuntimeObserver {
    virtual ~RuntimeObserver() = default;
    virtual void beforeLookup(const std::string& /*fqName*/, const std::string& /*instance*/) {}
    virtual void afterLookup(const std::string& /*fqName*/, const std::string& /*instance*/,
                             bool /*tryOnly*/, const sp<IBase>& /*found*/) {}
    virtual void onRegisterForNotifications(const std::string& /*fqName*/,
                                            const std::string& /*instance*/,
                                            const sp<IServiceNotification>& /*watcher*/) {}
    virtual void onRegistrationDelivered(const sp<IServiceNotification>& /*watcher*/,
                                         const std::string& /*fqName*/,
                                         const std::string& /*instance*/, bool /*preexisting*/) {}
    virtual void onDeathDelivered(const sp<hidl_death_recipient>& /*recipient*/,
                                  uint64_t /*cookie*/) {}
};

// Runtime thread pool. Work posted here never runs on the poster's thread,
// except that deliverCall() made from a pool thread runs inline (a nested call).
namespace pool {
void post(std::function<void()> work);
void deliverCall(const std::function<void()>& call);  // runs on the pool, waits for it
void drain();                                         // waits until nothing is queued or running
// Drains, then ends the pool's threads and waits for them; the next post starts them again.
// A process with nothing else running is then single-threaded, as fork() wants it.
void stopThreads();
void setThreadCount(unsigned count);  // before first use; default 1 keeps delivery in order
// Runs `work` on the calling thread as if it were a pool thread: calls it delivers into
// the library run inline, as a hwbinder thread's would.
void runAsPoolThread(const std::function<void()>& work);
}  // namespace pool

class ServiceManager {
  public:
    static ServiceManager& get();

    // Registers `service` as `instance` under every descriptor of its interface chain.
    bool add(const std::string& instance, const sp<IBase>& service);
    // Removes every registration of `service`.
    void remove(const sp<IBase>& service);
    sp<IBase> lookup(const std::string& fqName, const std::string& instance, bool tryOnly);
    // An empty instance watches every instance of fqName.
    bool registerForNotifications(const std::string& fqName, const std::string& instance,
                                  const sp<IServiceNotification>& watcher);

    void setObserver(RuntimeObserver* observer);
    RuntimeObserver* observer() const { return mObserver.load(); }
    void reset();  // forgets services and watchers

  private:
    struct Entry {
        std::string fqName;
        std::string instance;
        sp<IBase> service;
    };
    struct Watch {
        std::string fqName;
        std::string instance;
        sp<IServiceNotification> watcher;
    };
    void notify(const Watch& watch, const std::string& instance, bool preexisting);

    std::mutex mLock;
    std::vector<Entry> mEntries;
    std::vector<Watch> mWatches;
    std::atomic<RuntimeObserver*> mObserver{nullptr};  // read on pool threads
};

// A service process: owns the death links made on its objects and can die.
// Its objects ask alive() before serving a call.
class ServiceProcess : public ::android::RefBase {
  public:
    bool alive() const;
    // Holds the recipient weakly, as a device's proxy does. False when dead.
    bool linkToDeath(const sp<hidl_death_recipient>& recipient, uint64_t cookie,
                     const wp<IBase>& who);
    bool unlinkToDeath(const sp<hidl_death_recipient>& recipient);
    // Unregisters `services`, then notifies every linked recipient on the pool.
    // With promotableWho false the recipients get a `who` that cannot be promoted.
    void kill(const std::vector<sp<IBase>>& services, bool promotableWho);

  private:
    struct Link {
        wp<hidl_death_recipient> recipient;
        uint64_t cookie;
        wp<IBase> who;
    };
    mutable std::mutex mLock;
    bool mAlive = true;
    std::vector<Link> mLinks;
};

// The status a call on a dead or failing remote object returns.
::android::hardware::Status transportError();

}  // namespace zdhost
