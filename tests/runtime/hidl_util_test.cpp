// HidlUtil: the watcher object that forwards registration notifications and death
// notifications into two plain functions.
#include <HidlUtil.h>
#include <android/hidl/base/1.0/IBase.h>
#include <gtest/gtest.h>
#include <vendor/zendra/hardware/gnss/1.0/IZDAGpsSuplFqdnCallback.h>
#include <zdhost/runtime.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using ::android::OK;
using ::android::sp;
using ::android::wp;
using ::android::hardware::hidl_string;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hidl::base::V1_0::IBase;
using ::vendor::zendra::hardware::gnss::V1_0::IZDAGpsSuplFqdnCallback;

struct Registration {
    std::string fqName;
    std::string name;
    bool preexisting;
};
struct Death {
    uint64_t cookie;
    sp<IBase> who;
    bool onPool;
};

// The two functions only record what reaches them.
std::mutex gLock;
std::vector<Registration> gRegistrations;
std::vector<Death> gDeaths;

void recordRegistration(const hidl_string& fqName, const hidl_string& name, bool preexisting) {
    std::lock_guard<std::mutex> lock(gLock);
    gRegistrations.push_back({fqName, name, preexisting});
}

void recordDeath(uint64_t cookie, const wp<IBase>& who) {
    Death death{cookie, who.promote(), zdhost::pool::onPoolThread()};
    std::lock_guard<std::mutex> lock(gLock);
    gDeaths.push_back(death);
}

struct Service : public IZDAGpsSuplFqdnCallback {
    Return<void> AgpsRequestSuplDns(const hidl_string&) override { return Void(); }
};

class HidlUtilTest : public ::testing::Test {
  protected:
    void SetUp() override {
        zdhost::ServiceManager::get().reset();
        gRegistrations.clear();
        gDeaths.clear();
        mUtil = new HidlUtil(recordDeath, recordRegistration);
    }
    void TearDown() override {
        zdhost::pool::drain();
        zdhost::ServiceManager::get().reset();
    }
    std::vector<Registration> registrations() {
        std::lock_guard<std::mutex> lock(gLock);
        return gRegistrations;
    }
    std::vector<Death> deaths() {
        std::lock_guard<std::mutex> lock(gLock);
        return gDeaths;
    }

    sp<HidlUtil> mUtil;
};

TEST_F(HidlUtilTest, ForwardsTheThreeRegistrationValues) {
    Return<void> ret = mUtil->onRegistration("pkg@1.0::IThing", "default", true);
    EXPECT_TRUE(ret.isOk());
    ret = mUtil->onRegistration("pkg@1.0::IOther", "second", false);
    EXPECT_TRUE(ret.isOk());
    std::vector<Registration> seen = registrations();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].fqName, "pkg@1.0::IThing");
    EXPECT_EQ(seen[0].name, "default");
    EXPECT_TRUE(seen[0].preexisting);
    EXPECT_EQ(seen[1].fqName, "pkg@1.0::IOther");
    EXPECT_EQ(seen[1].name, "second");
    EXPECT_FALSE(seen[1].preexisting);
    EXPECT_TRUE(deaths().empty());
}

TEST_F(HidlUtilTest, ForwardsTheDeathCookieAndWho) {
    sp<Service> service = new Service();
    mUtil->serviceDied(0xfeedbeef01ull, service);
    std::vector<Death> seen = deaths();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].cookie, 0xfeedbeef01ull);
    EXPECT_EQ(seen[0].who.get(), static_cast<IBase*>(service.get()));
    EXPECT_TRUE(registrations().empty());
}

TEST_F(HidlUtilTest, ReceivesThroughTheRuntime) {
    sp<Service> service = new Service();
    ASSERT_EQ(service->registerAsService("fqdn"), OK);
    ASSERT_TRUE(IZDAGpsSuplFqdnCallback::registerForNotifications("fqdn", mUtil));
    sp<zdhost::ServiceProcess> process = new zdhost::ServiceProcess();
    ASSERT_TRUE(process->linkToDeath(mUtil, 77, service));
    process->kill({service}, true);
    zdhost::pool::drain();

    std::vector<Registration> seen = registrations();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].fqName, IZDAGpsSuplFqdnCallback::descriptor);
    EXPECT_EQ(seen[0].name, "fqdn");
    EXPECT_TRUE(seen[0].preexisting);
    std::vector<Death> died = deaths();
    ASSERT_EQ(died.size(), 1u);
    EXPECT_EQ(died[0].cookie, 77u);
    EXPECT_EQ(died[0].who.get(), static_cast<IBase*>(service.get()));
    EXPECT_TRUE(died[0].onPool);
}

}  // namespace
