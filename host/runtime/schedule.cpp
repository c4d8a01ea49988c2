#include <zdhost/schedule.h>

#include <atomic>

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

int threadTag() {
    return tTag;
}

void setThreadTag(int tag) {
    tTag = tag;
}

}  // namespace schedule
}  // namespace zdhost
