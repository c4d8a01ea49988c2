#include "runtime_watch.h"

#include <zdhost/platform_control.h>
#include <zdhost/schedule.h>

#include "format.h"
#include "transcript.h"

namespace sim {

void RuntimeWatch::beforeLookup(const std::string& fqName, const std::string& /*instance*/) {
    if (mBeforeLookup) mBeforeLookup(fqName);
}

void RuntimeWatch::afterLookup(const std::string& fqName, const std::string& instance, bool tryOnly,
                               const android::sp<zdhost::IBase>& found) {
    Transcript::get().emit(std::string("sm ") + (tryOnly ? "tryGetService " : "getService ") +
                           fqName + "/" + instance + " -> " + fmt(found));
}

void RuntimeWatch::onRegisterForNotifications(
    const std::string& fqName, const std::string& instance,
    const android::sp<zdhost::IServiceNotification>& watcher) {
    Transcript::get().emit("sm registerForNotifications " + fqName + "/" + instance + " " +
                           fmt(watcher));
}

void RuntimeWatch::onRegistrationDelivered(const android::sp<zdhost::IServiceNotification>& watcher,
                                           const std::string& fqName, const std::string& instance,
                                           bool preexisting) {
    Transcript::get().emit("sm onRegistration " + fmt(watcher) + " " + fqName + "/" + instance +
                           " preexisting=" + fmt(preexisting));
}

void RuntimeWatch::onDeathDelivered(const android::sp<zdhost::hidl_death_recipient>& recipient,
                                    uint64_t cookie) {
    Transcript::get().emit("sm serviceDied " + fmt(recipient) + " cookie=" + fmt(cookie));
}

void installVirtualSleep() {
    zdhost::platform::setSleepHook([](useconds_t micros) {
        Transcript::get().emit("sleep " + std::to_string(micros));
        if (zdhost::schedule::Controller* controller = zdhost::schedule::current()) {
            controller->pause(micros);
        }
    });
}

}  // namespace sim
