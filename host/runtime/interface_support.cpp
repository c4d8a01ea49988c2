#include <unistd.h>
#include <zdhost/interface_support.h>

namespace zdhost {

::android::hardware::hidl_vec<::android::hardware::hidl_string> toHidlStrings(
    const std::vector<std::string>& strings) {
    ::android::hardware::hidl_vec<::android::hardware::hidl_string> out(strings.size());
    for (size_t i = 0; i < strings.size(); ++i) out[i] = strings[i];
    return out;
}

::android::hardware::hidl_vec<::android::hardware::hidl_array<uint8_t, 32>> emptyHashChain(
    size_t length) {
    ::android::hardware::hidl_vec<::android::hardware::hidl_array<uint8_t, 32>> out(length);
    for (auto& hash : out) std::fill(hash.data(), hash.data() + hash.size(), 0);
    return out;
}

::android::hidl::base::V1_0::DebugInfo localDebugInfo() {
    ::android::hidl::base::V1_0::DebugInfo info{};
    info.pid = getpid();
    info.ptr = 0;
    info.arch = sizeof(void*) == 8 ? ::android::hidl::base::V1_0::DebugInfo::Architecture::IS_64BIT
                                   : ::android::hidl::base::V1_0::DebugInfo::Architecture::IS_32BIT;
    return info;
}

}  // namespace zdhost
