#include <HidlUtil.h>

HidlUtil::HidlUtil(DeathFunction onDeath, RegistrationFunction onRegistered)
    : mOnDeath(onDeath), mOnRegistered(onRegistered) {}

::android::hardware::Return<void> HidlUtil::onRegistration(
        const ::android::hardware::hidl_string& fqName,
        const ::android::hardware::hidl_string& name, bool preexisting) {
    if (mOnRegistered != nullptr) mOnRegistered(fqName, name, preexisting);
    return ::android::hardware::Void();
}

void HidlUtil::serviceDied(uint64_t cookie,
                           const ::android::wp<::android::hidl::base::V1_0::IBase>& who) {
    if (mOnDeath != nullptr) mOnDeath(cookie, who);
}
