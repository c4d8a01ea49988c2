// Service registry and death links where the library's own use never shows a difference
// from a device: a service is found under every interface of its chain, and an unlinked
// recipient hears no death.
#include <gtest/gtest.h>
#include <vendor/zendra/hardware/gnss/1.0/IZDAGpsSuplFqdnCallback.h>
#include <zdhost/runtime.h>

#include <atomic>

namespace {

using ::android::sp;
using ::android::wp;
using ::android::hardware::hidl_death_recipient;
using ::android::hardware::hidl_string;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hidl::base::V1_0::IBase;
using ::vendor::zendra::hardware::gnss::V1_0::IZDAGpsSuplFqdnCallback;
using ::zdhost::ServiceManager;

struct Service : public IZDAGpsSuplFqdnCallback {
    Return<void> AgpsRequestSuplDns(const hidl_string&) override { return Void(); }
};

struct Recipient : public hidl_death_recipient {
    void serviceDied(uint64_t, const wp<IBase>&) override { ++deaths; }
    std::atomic<int> deaths{0};
};

class ServiceLinksTest : public ::testing::Test {
  protected:
    void TearDown() override {
        zdhost::pool::drain();
        ServiceManager::get().reset();
    }
};

TEST_F(ServiceLinksTest, RegisteredUnderEveryDescriptorOfTheChain) {
    sp<Service> service = new Service();
    ASSERT_TRUE(ServiceManager::get().add("fqdn", service));
    EXPECT_EQ(ServiceManager::get().lookup(IZDAGpsSuplFqdnCallback::descriptor, "fqdn", true),
              service);
    EXPECT_EQ(ServiceManager::get().lookup(IBase::descriptor, "fqdn", true), service);
    EXPECT_EQ(ServiceManager::get().lookup(IBase::descriptor, "other", true), nullptr);
}

TEST_F(ServiceLinksTest, UnlinkedRecipientHearsNoDeath) {
    sp<zdhost::ServiceProcess> process = new zdhost::ServiceProcess();
    sp<Service> service = new Service();
    sp<Recipient> kept = new Recipient();
    sp<Recipient> unlinked = new Recipient();
    ASSERT_TRUE(process->linkToDeath(kept, 1, service));
    ASSERT_TRUE(process->linkToDeath(unlinked, 2, service));
    EXPECT_TRUE(process->unlinkToDeath(unlinked));
    process->kill({service}, true);
    zdhost::pool::drain();
    EXPECT_EQ(kept->deaths, 1);
    EXPECT_EQ(unlinked->deaths, 0);
}

}  // namespace
