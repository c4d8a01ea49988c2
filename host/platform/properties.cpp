// property_get over libbase's host property store, with Android's semantics:
// the value's length is returned, and the default is copied when the property
// is unset or empty.
#include <android-base/properties.h>
#include <cutils/properties.h>
#include <zdhost/platform_control.h>

#include <cstring>

extern "C" int property_get(const char* key, char* value, const char* default_value) {
    std::string stored = android::base::GetProperty(key, "");
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
    android::base::SetProperty(name, value);
}
}  // namespace platform
}  // namespace zdhost
