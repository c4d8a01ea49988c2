// The library is linked with --wrap=usleep and --wrap=fopen, so its plain
// platform calls arrive here: pauses run on virtual time, and the device-tree
// file is served from a host file that the world controls.
#include <zdhost/platform_control.h>
#include <zdhost/schedule.h>

#include <cstdio>
#include <cstring>
#include <mutex>

extern "C" int __real_usleep(useconds_t micros);
extern "C" FILE* __real_fopen(const char* path, const char* mode);

namespace zdhost {
namespace platform {
namespace {
std::mutex gLock;
std::function<void(useconds_t)> gSleepHook;
std::string gChannelFile;
}  // namespace

void setSleepHook(std::function<void(useconds_t)> hook) {
    std::lock_guard<std::mutex> lock(gLock);
    gSleepHook = std::move(hook);
}

void realSleep(useconds_t micros) {
    __real_usleep(micros);
}

void setBatchingChannelFile(const std::string& hostPath) {
    zdhost::schedule::touch(&gChannelFile, zdhost::schedule::Access::kWrite);
    std::lock_guard<std::mutex> lock(gLock);
    gChannelFile = hostPath;
}

}  // namespace platform
}  // namespace zdhost

extern "C" int __wrap_usleep(useconds_t micros) {
    std::function<void(useconds_t)> hook;
    {
        std::lock_guard<std::mutex> lock(zdhost::platform::gLock);
        hook = zdhost::platform::gSleepHook;
    }
    if (hook) hook(micros);
    return 0;
}

extern "C" FILE* __wrap_fopen(const char* path, const char* mode) {
    if (path != nullptr && strcmp(path, zdhost::platform::kBatchingChannelPath) == 0) {
        std::string hostPath;
        zdhost::schedule::touch(&zdhost::platform::gChannelFile, zdhost::schedule::Access::kRead);
        {
            std::lock_guard<std::mutex> lock(zdhost::platform::gLock);
            hostPath = zdhost::platform::gChannelFile;
        }
        if (hostPath.empty()) return nullptr;
        return __real_fopen(hostPath.c_str(), mode);
    }
    return __real_fopen(path, mode);
}
