// Private declarations of the vendor GNSS HAL extension side of the library.
#pragma once

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <vendor/zendra/hardware/gnss/1.0/IZDAGpsSuplFqdnCallback.h>

// Receives the vendor HAL's SUPL DNS requests and hands them to the framework's hook
// while a vendor GNSS HAL is connected. One instance per process is registered with
// every SUPL FQDN interface obtained.
class AGpsSuplFqdnCallback : public vendor::zendra::hardware::gnss::V1_0::IZDAGpsSuplFqdnCallback {
  public:
    android::hardware::Return<void> AgpsRequestSuplDns(
        const android::hardware::hidl_string& fqdn) override;
};
