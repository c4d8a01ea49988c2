#include <zdhost/schedule.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

namespace zdhost {
namespace schedule {
namespace {
std::atomic<Controller*> gController{nullptr};
thread_local bool tControlled = false;
thread_local int tTag = 0;
}  // namespace

void install(Controller* controller) {
    gController.store(controller);
}

void setControlled(bool controlled) {
    tControlled = controlled;
}

Controller* current() {
    return tControlled ? gController.load() : nullptr;
}

const void* receiver(const std::string& operation) {
    // User-space addresses stay below 2^63 on the platforms the host builds for.
    const uint64_t name = std::hash<std::string>()(operation) | (uint64_t{1} << 63);
    return reinterpret_cast<const void*>(static_cast<uintptr_t>(name));
}

int threadTag() {
    return tTag;
}

void setThreadTag(int tag) {
    tTag = tag;
}

}  // namespace schedule
}  // namespace zdhost
