#include <zdhost/runtime.h>
#include <zdhost/schedule.h>

#include <algorithm>

namespace zdhost {

namespace {
// A weak reference whose object is already gone, for deaths reported with an
// unpromotable `who`.
wp<IBase> expiredReference() {
    sp<IBase> gone = new IBase();
    wp<IBase> weak = gone;
    return weak;
}
}  // namespace

::android::hardware::Status transportError() {
    return ::android::hardware::Status::fromStatusT(::android::DEAD_OBJECT);
}

bool ServiceProcess::alive() const {
    schedule::touch(this, schedule::Access::kRead);
    std::lock_guard<std::mutex> lock(mLock);
    return mAlive;
}

bool ServiceProcess::linkToDeath(const sp<hidl_death_recipient>& recipient, uint64_t cookie,
                                 const wp<IBase>& who) {
    schedule::touch(this, schedule::Access::kWrite);
    std::lock_guard<std::mutex> lock(mLock);
    if (!mAlive || recipient == nullptr) return false;
    mLinks.push_back({recipient, cookie, who});
    return true;
}

bool ServiceProcess::unlinkToDeath(const sp<hidl_death_recipient>& recipient) {
    schedule::touch(this, schedule::Access::kWrite);
    std::lock_guard<std::mutex> lock(mLock);
    if (!mAlive) return false;
    auto it = std::find_if(mLinks.begin(), mLinks.end(),
                           [&](const Link& l) { return l.recipient == recipient; });
    if (it == mLinks.end()) return false;
    mLinks.erase(it);
    return true;
}

void ServiceProcess::kill(const std::vector<sp<IBase>>& services, bool promotableWho) {
    std::vector<Link> links;
    schedule::touch(this, schedule::Access::kWrite);
    {
        std::lock_guard<std::mutex> lock(mLock);
        if (!mAlive) return;
        mAlive = false;
        links.swap(mLinks);
    }
    for (const auto& s : services) ServiceManager::get().remove(s);
    RuntimeObserver* observer = ServiceManager::get().observer();
    for (auto& link : links) {
        if (!promotableWho) link.who = expiredReference();
        pool::post([link, observer] {
            // Whether the recipient still lives depends on when its owner let it go.
            schedule::touch(link.recipient.get_refs()->refBase(), schedule::Access::kWrite);
            sp<hidl_death_recipient> recipient = link.recipient.promote();
            if (recipient == nullptr) return;
            if (observer != nullptr) observer->onDeathDelivered(recipient, link.cookie);
            recipient->serviceDied(link.cookie, link.who);
        });
    }
}

}  // namespace zdhost
