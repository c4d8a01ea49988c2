// Prints what crosses the host runtime as `sm ...` transcript lines (look-ups,
// notification registrations, registration and death notifications delivered), and
// passes each look-up on to whoever waits for it before it is made.
#pragma once

#include <zdhost/runtime.h>

#include <functional>
#include <string>

namespace sim {

class RuntimeWatch : public zdhost::RuntimeObserver {
  public:
    using LookupListener = std::function<void(const std::string& fqName)>;
    explicit RuntimeWatch(LookupListener beforeLookup) : mBeforeLookup(std::move(beforeLookup)) {}

    void beforeLookup(const std::string& fqName, const std::string& instance) override;
    void afterLookup(const std::string& fqName, const std::string& instance, bool tryOnly,
                     const android::sp<zdhost::IBase>& found) override;
    void onRegisterForNotifications(
        const std::string& fqName, const std::string& instance,
        const android::sp<zdhost::IServiceNotification>& watcher) override;
    void onRegistrationDelivered(const android::sp<zdhost::IServiceNotification>& watcher,
                                 const std::string& fqName, const std::string& instance,
                                 bool preexisting) override;
    void onDeathDelivered(const android::sp<zdhost::hidl_death_recipient>& recipient,
                          uint64_t cookie) override;

  private:
    const LookupListener mBeforeLookup;
};

// Makes every usleep of the library print `sleep MICROSECONDS` and return at once.
void installVirtualSleep();

}  // namespace sim
