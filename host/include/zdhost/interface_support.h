// Helpers behind the generated per-interface definitions on the host.
#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <zdhost/runtime.h>

#include <string>
#include <vector>

namespace zdhost {

::android::hardware::hidl_vec<::android::hardware::hidl_string> toHidlStrings(
        const std::vector<std::string>& strings);
::android::hardware::hidl_vec<::android::hardware::hidl_array<uint8_t, 32>> emptyHashChain(
        size_t length);
::android::hidl::base::V1_0::DebugInfo localDebugInfo();

// In one process every object is local, so a cast is a checked C++ cast.
template <typename I, typename P>
::android::hardware::Return<::android::sp<I>> castInterface(const ::android::sp<P>& parent) {
    return ::android::sp<I>(dynamic_cast<I*>(parent.get()));
}

template <typename I>
::android::sp<I> lookupService(const char* descriptor, const std::string& instance, bool tryOnly) {
    ::android::sp<IBase> found = ServiceManager::get().lookup(descriptor, instance, tryOnly);
    return ::android::sp<I>(dynamic_cast<I*>(found.get()));
}

}  // namespace zdhost
