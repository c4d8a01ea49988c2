// property_get over an in-process property store, with Android's semantics:
// the value's length is returned, and the default is copied when the property
// is unset or empty. The store is the host's own because libbase's
// std::string interface is built for libstdc++ and the clang builds use libc++.
#include <cutils/properties.h>
#include <zdhost/platform_control.h>
#include <zdhost/schedule.h>

#include <cstring>
#include <map>
#include <mutex>
#include <string>

namespace {

std::mutex& storeMutex() {
    static std::mutex mutex;
    return mutex;
}

std::map<std::string, std::string>& store() {
    static std::map<std::string, std::string> properties;
    return properties;
}

std::string storedValue(const char* key) {
    zdhost::schedule::touch(&store(), zdhost::schedule::Access::kRead);
    std::lock_guard<std::mutex> lock(storeMutex());
    auto found = store().find(key);
    return found == store().end() ? std::string() : found->second;
}

}  // namespace

extern "C" int property_get(const char* key, char* value, const char* default_value) {
    std::string stored = storedValue(key);
    size_t len = stored.size();
    if (len > 0) {
        if (len > PROPERTY_VALUE_MAX - 1) len = PROPERTY_VALUE_MAX - 1;
        memcpy(value, stored.data(), len);
        value[len] = '\0';
        return static_cast<int>(len);
    }
    len = 0;
    if (default_value != nullptr) {
        len = strnlen(default_value, PROPERTY_VALUE_MAX - 1);
        memcpy(value, default_value, len);
    }
    value[len] = '\0';
    return static_cast<int>(len);
}

namespace zdhost {
namespace platform {
void setProperty(const std::string& name, const std::string& value) {
    zdhost::schedule::touch(&store(), zdhost::schedule::Access::kWrite);
    std::lock_guard<std::mutex> lock(storeMutex());
    store()[name] = value;
}
}  // namespace platform
}  // namespace zdhost
