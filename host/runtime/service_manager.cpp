#include <zdhost/runtime.h>
#include <zdhost/schedule.h>

#include <algorithm>

namespace zdhost {

using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;

namespace {
std::vector<std::string> chainOf(const sp<IBase>& service) {
    std::vector<std::string> chain;
    auto ret = service->interfaceChain([&](const hidl_vec<hidl_string>& descriptors) {
        for (const auto& d : descriptors) chain.emplace_back(d);
    });
    if (!ret.isOk()) chain.clear();
    return chain;
}
}  // namespace

ServiceManager& ServiceManager::get() {
    static ServiceManager* manager = new ServiceManager();
    return *manager;
}

bool ServiceManager::add(const std::string& instance, const sp<IBase>& service) {
    if (service == nullptr) return false;
    std::vector<std::string> chain = chainOf(service);
    std::vector<Watch> toNotify;
    std::vector<std::string> notifiedNames;
    schedule::touch(this, schedule::Access::kWrite);
    {
        std::lock_guard<std::mutex> lock(mLock);
        for (const auto& fqName : chain) {
            mEntries.erase(std::remove_if(mEntries.begin(), mEntries.end(),
                                          [&](const Entry& e) {
                                              return e.fqName == fqName && e.instance == instance;
                                          }),
                           mEntries.end());
            mEntries.push_back({fqName, instance, service});
            for (const auto& w : mWatches) {
                if (w.fqName == fqName && (w.instance.empty() || w.instance == instance)) {
                    toNotify.push_back(w);
                }
            }
        }
    }
    for (const auto& w : toNotify) notify(w, instance, false);
    return true;
}

void ServiceManager::remove(const sp<IBase>& service) {
    schedule::touch(this, schedule::Access::kWrite);
    std::lock_guard<std::mutex> lock(mLock);
    mEntries.erase(std::remove_if(mEntries.begin(), mEntries.end(),
                                  [&](const Entry& e) { return e.service == service; }),
                   mEntries.end());
}

sp<IBase> ServiceManager::lookup(const std::string& fqName, const std::string& instance,
                                 bool tryOnly) {
    schedule::reach(schedule::Point::kCall, this, schedule::Access::kWrite);
    RuntimeObserver* observer = mObserver.load();
    if (observer != nullptr) observer->beforeLookup(fqName, instance);
    sp<IBase> found;
    {
        std::lock_guard<std::mutex> lock(mLock);
        for (const auto& e : mEntries) {
            if (e.fqName == fqName && e.instance == instance) found = e.service;
        }
    }
    if (observer != nullptr) observer->afterLookup(fqName, instance, tryOnly, found);
    return found;
}

bool ServiceManager::registerForNotifications(const std::string& fqName,
                                              const std::string& instance,
                                              const sp<IServiceNotification>& watcher) {
    schedule::reach(schedule::Point::kCall, this, schedule::Access::kWrite);
    if (watcher == nullptr) return false;
    RuntimeObserver* observer = mObserver.load();
    if (observer != nullptr) observer->onRegisterForNotifications(fqName, instance, watcher);
    Watch watch{fqName, instance, watcher};
    std::vector<std::string> preexisting;
    {
        std::lock_guard<std::mutex> lock(mLock);
        mWatches.push_back(watch);
        for (const auto& e : mEntries) {
            if (e.fqName == fqName && (instance.empty() || e.instance == instance)) {
                preexisting.push_back(e.instance);
            }
        }
    }
    for (const auto& name : preexisting) notify(watch, name, true);
    return true;
}

void ServiceManager::notify(const Watch& watch, const std::string& instance, bool preexisting) {
    RuntimeObserver* observer = mObserver.load();
    pool::post([watch, instance, preexisting, observer] {
        if (observer != nullptr) {
            observer->onRegistrationDelivered(watch.watcher, watch.fqName, instance, preexisting);
        }
        auto ret = watch.watcher->onRegistration(watch.fqName, instance, preexisting);
        (void)ret.isOk();
    });
}

void ServiceManager::setObserver(RuntimeObserver* observer) {
    mObserver = observer;
}

void ServiceManager::reset() {
    std::lock_guard<std::mutex> lock(mLock);
    mEntries.clear();
    mWatches.clear();
}

}  // namespace zdhost
