// Service processes: death links, how and where their death is delivered, and what a
// process's death does to the services it registered.
#include <android/hidl/base/1.0/IBase.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <vendor/zendra/hardware/gnss/1.0/IZDAGpsSuplFqdnCallback.h>
#include <zdhost/runtime.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using ::android::OK;
using ::android::sp;
using ::android::wp;
using ::android::hardware::hidl_death_recipient;
using ::android::hardware::hidl_string;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hidl::base::V1_0::IBase;
using ::vendor::zendra::hardware::gnss::V1_0::IZDAGpsSuplFqdnCallback;
using ::zdhost::ServiceManager;
using ::zdhost::ServiceProcess;

struct Service : public IZDAGpsSuplFqdnCallback {
    Return<void> AgpsRequestSuplDns(const hidl_string&) override { return Void(); }
};

struct Death {
    uint64_t cookie;
    sp<IBase> promotedWho;  // what `who` promoted to on delivery
    std::thread::id thread;
    bool onPool;
};

// Shared with the test so that deliveries stay observable after the recipient is gone.
struct DeathLog {
    std::mutex lock;
    std::vector<Death> deaths;
    std::atomic<bool> recipientDestroyed{false};

    std::vector<Death> taken() {
        std::lock_guard<std::mutex> guard(lock);
        return deaths;
    }
};

struct Recipient : public hidl_death_recipient {
    explicit Recipient(std::shared_ptr<DeathLog> log) : mLog(std::move(log)) {}
    ~Recipient() override { mLog->recipientDestroyed = true; }

    void serviceDied(uint64_t cookie, const wp<IBase>& who) override {
        Death death{cookie, who.promote(), std::this_thread::get_id(),
                    zdhost::pool::onPoolThread()};
        if (onDeath) onDeath();
        std::lock_guard<std::mutex> guard(mLog->lock);
        mLog->deaths.push_back(death);
    }

    std::function<void()> onDeath;

  private:
    std::shared_ptr<DeathLog> mLog;
};

class ServiceProcessTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ServiceManager::get().reset();
        mProcess = new ServiceProcess();
        mService = new Service();
        mLog = std::make_shared<DeathLog>();
        mRecipient = new Recipient(mLog);
    }
    void TearDown() override {
        zdhost::pool::drain();
        ServiceManager::get().setObserver(nullptr);
        ServiceManager::get().reset();
    }
    void killAndDrain(bool promotableWho = true) {
        mProcess->kill({mService}, promotableWho);
        zdhost::pool::drain();
    }

    sp<ServiceProcess> mProcess;
    sp<Service> mService;
    std::shared_ptr<DeathLog> mLog;
    sp<Recipient> mRecipient;
};

TEST_F(ServiceProcessTest, DeathIsDeliveredOnceOnAPoolThread) {
    EXPECT_TRUE(mProcess->alive());
    ASSERT_TRUE(mProcess->linkToDeath(mRecipient, 0x1234, mService));
    killAndDrain();
    EXPECT_FALSE(mProcess->alive());
    mProcess->kill({mService}, true);  // a second kill of a dead process changes nothing
    zdhost::pool::drain();

    std::vector<Death> deaths = mLog->taken();
    ASSERT_EQ(deaths.size(), 1u);
    EXPECT_EQ(deaths[0].cookie, 0x1234u);
    EXPECT_EQ(deaths[0].promotedWho.get(), static_cast<IBase*>(mService.get()));
    EXPECT_NE(deaths[0].thread, std::this_thread::get_id());
    EXPECT_TRUE(deaths[0].onPool);
}

TEST_F(ServiceProcessTest, EachLinkIsNotifiedWithItsOwnCookie) {
    std::shared_ptr<DeathLog> otherLog = std::make_shared<DeathLog>();
    sp<Recipient> other = new Recipient(otherLog);
    ASSERT_TRUE(mProcess->linkToDeath(mRecipient, 1, mService));
    ASSERT_TRUE(mProcess->linkToDeath(mRecipient, 2, mService));
    ASSERT_TRUE(mProcess->linkToDeath(other, 3, mService));
    killAndDrain();

    std::vector<Death> deaths = mLog->taken();
    ASSERT_EQ(deaths.size(), 2u);
    EXPECT_EQ(deaths[0].cookie + deaths[1].cookie, 3u);
    EXPECT_NE(deaths[0].cookie, deaths[1].cookie);
    std::vector<Death> otherDeaths = otherLog->taken();
    ASSERT_EQ(otherDeaths.size(), 1u);
    EXPECT_EQ(otherDeaths[0].cookie, 3u);
}

TEST_F(ServiceProcessTest, UnpromotableWhoCannotBePromoted) {
    ASSERT_TRUE(mProcess->linkToDeath(mRecipient, 7, mService));
    killAndDrain(/*promotableWho=*/false);
    std::vector<Death> deaths = mLog->taken();
    ASSERT_EQ(deaths.size(), 1u);
    EXPECT_EQ(deaths[0].cookie, 7u);
    // Even though the test still holds the service strongly.
    EXPECT_EQ(deaths[0].promotedWho, nullptr);
}

TEST_F(ServiceProcessTest, LinkingToADeadProcessAnswersFalse) {
    killAndDrain();
    EXPECT_FALSE(mProcess->linkToDeath(mRecipient, 1, mService));
    EXPECT_FALSE(mProcess->unlinkToDeath(mRecipient));
    zdhost::pool::drain();
    EXPECT_TRUE(mLog->taken().empty());
}

TEST_F(ServiceProcessTest, UnlinkStopsDelivery) {
    EXPECT_FALSE(mProcess->unlinkToDeath(mRecipient));  // never linked
    ASSERT_TRUE(mProcess->linkToDeath(mRecipient, 1, mService));
    EXPECT_TRUE(mProcess->unlinkToDeath(mRecipient));
    EXPECT_FALSE(mProcess->unlinkToDeath(mRecipient));  // already unlinked
    killAndDrain();
    EXPECT_TRUE(mLog->taken().empty());
}

TEST_F(ServiceProcessTest, UnlinkLeavesOtherRecipientsLinked) {
    std::shared_ptr<DeathLog> otherLog = std::make_shared<DeathLog>();
    sp<Recipient> other = new Recipient(otherLog);
    ASSERT_TRUE(mProcess->linkToDeath(mRecipient, 1, mService));
    ASSERT_TRUE(mProcess->linkToDeath(other, 2, mService));
    EXPECT_TRUE(mProcess->unlinkToDeath(mRecipient));
    killAndDrain();
    EXPECT_TRUE(mLog->taken().empty());
    ASSERT_EQ(otherLog->taken().size(), 1u);
    EXPECT_EQ(otherLog->taken()[0].cookie, 2u);
}

TEST_F(ServiceProcessTest, RecipientIsHeldWeakly) {
    ASSERT_TRUE(mProcess->linkToDeath(mRecipient, 1, mService));
    mRecipient.clear();
    EXPECT_TRUE(mLog->recipientDestroyed) << "the process keeps the recipient alive";
    killAndDrain();
    EXPECT_TRUE(mLog->taken().empty());
}

TEST_F(ServiceProcessTest, KillUnregistersTheServicesGiven) {
    sp<Service> survivor = new Service();
    ASSERT_EQ(mService->registerAsService("victim"), OK);
    ASSERT_EQ(survivor->registerAsService("survivor"), OK);
    killAndDrain();
    EXPECT_EQ(IZDAGpsSuplFqdnCallback::tryGetService("victim"), nullptr);
    EXPECT_EQ(ServiceManager::get().lookup(IBase::descriptor, "victim", true), nullptr);
    EXPECT_EQ(IZDAGpsSuplFqdnCallback::tryGetService("survivor").get(), survivor.get());
}

TEST_F(ServiceProcessTest, RecipientMayUseTheRuntimeFromServiceDied) {
    sp<Service> replacement = new Service();
    bool sawAlive = true;
    bool relinked = true;
    bool found = false;
    mRecipient->onDeath = [&] {
        sawAlive = mProcess->alive();
        relinked = mProcess->linkToDeath(mRecipient, 9, mService);
        EXPECT_EQ(replacement->registerAsService("again"), OK);
        found = IZDAGpsSuplFqdnCallback::tryGetService("again") != nullptr;
    };
    ASSERT_TRUE(mProcess->linkToDeath(mRecipient, 1, mService));
    killAndDrain();
    EXPECT_EQ(mLog->taken().size(), 1u);
    EXPECT_FALSE(sawAlive);
    EXPECT_FALSE(relinked);
    EXPECT_TRUE(found);
}

TEST_F(ServiceProcessTest, ObserverSeesTheDeathBeforeTheRecipient) {
    struct DeathRecorder : public zdhost::RuntimeObserver {
        explicit DeathRecorder(DeathLog& log) : log(log) {}
        void onDeathDelivered(const sp<hidl_death_recipient>&, uint64_t cookie) override {
            seenCookie = cookie;
            recipientCallsBefore = log.taken().size();
        }
        DeathLog& log;
        uint64_t seenCookie = 0;
        size_t recipientCallsBefore = 99;
    } recorder(*mLog);
    ServiceManager::get().setObserver(&recorder);
    ASSERT_TRUE(mProcess->linkToDeath(mRecipient, 5, mService));
    killAndDrain();
    ServiceManager::get().setObserver(nullptr);
    EXPECT_EQ(recorder.seenCookie, 5u);
    EXPECT_EQ(recorder.recipientCallsBefore, 0u);
    EXPECT_EQ(mLog->taken().size(), 1u);
}

}  // namespace
