// Watches one service: forwards its registration notifications and the deaths
// it is linked to into two plain functions.
#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

#include <cstdint>

class HidlUtil : public ::android::hidl::manager::V1_0::IServiceNotification,
                 public ::android::hardware::hidl_death_recipient {
  public:
    using DeathFunction = void (*)(uint64_t cookie,
                                   const ::android::wp<::android::hidl::base::V1_0::IBase>& who);
    using RegistrationFunction = void (*)(const ::android::hardware::hidl_string& fqName,
                                          const ::android::hardware::hidl_string& name,
                                          bool preexisting);

    HidlUtil(DeathFunction onDeath, RegistrationFunction onRegistered);

    ::android::hardware::Return<void> onRegistration(const ::android::hardware::hidl_string& fqName,
                                                     const ::android::hardware::hidl_string& name,
                                                     bool preexisting) override;
    void serviceDied(uint64_t cookie,
                     const ::android::wp<::android::hidl::base::V1_0::IBase>& who) override;

  private:
    DeathFunction mOnDeath;
    RegistrationFunction mOnRegistered;
};
