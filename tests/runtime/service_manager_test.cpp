// The host service manager: registration under an interface's whole chain, look-ups, casts,
// and registration notifications (who hears what, with which `preexisting`, on which thread).
#include <android/hardware/gnss/1.0/IAGnssRil.h>
#include <android/hardware/gnss/2.0/IAGnssRil.h>
#include <android/hidl/base/1.0/IBase.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <vendor/zendra/hardware/gnss/1.0/IZDAGnssRil.h>
#include <vendor/zendra/hardware/gnss/1.0/IZDAGpsSuplFqdnCallback.h>
#include <vendor/zendra/hardware/gnss/2.0/IZDAGnssRil.h>
#include <zdhost/runtime.h>

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using ::android::OK;
using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hidl::base::V1_0::IBase;
using ::android::hidl::manager::V1_0::IServiceNotification;
using ::zdhost::ServiceManager;
using ::zdhost::ServiceProcess;

namespace gnss_V1_0 = ::android::hardware::gnss::V1_0;
namespace gnss_V2_0 = ::android::hardware::gnss::V2_0;
namespace zd_V1_0 = ::vendor::zendra::hardware::gnss::V1_0;
namespace zd_V2_0 = ::vendor::zendra::hardware::gnss::V2_0;

// Local implementations of a few generated interfaces; their bodies never run.
struct FqdnCallback : public zd_V1_0::IZDAGpsSuplFqdnCallback {
    Return<void> AgpsRequestSuplDns(const hidl_string&) override { return Void(); }
};

template <typename Interface>
struct RilStub : public Interface {
    Return<void> setCallback(const sp<gnss_V1_0::IAGnssRilCallback>&) override { return Void(); }
    Return<void> setRefLocation(const gnss_V1_0::IAGnssRil::AGnssRefLocation&) override {
        return Void();
    }
    Return<bool> setSetId(gnss_V1_0::IAGnssRil::SetIDType, const hidl_string&) override {
        return true;
    }
    Return<bool> updateNetworkState(bool, gnss_V1_0::IAGnssRil::NetworkType, bool) override {
        return true;
    }
    Return<bool> updateNetworkAvailability(bool, const hidl_string&) override { return true; }
    Return<void> sendNiMessage(const hidl_vec<uint8_t>&, int32_t) override { return Void(); }
};

using ZdRil = RilStub<zd_V1_0::IZDAGnssRil>;

struct ZdRil2 : public RilStub<zd_V2_0::IZDAGnssRil> {
    Return<bool> updateNetworkState_2_0(const gnss_V2_0::IAGnssRil::NetworkAttributes&) override {
        return true;
    }
};

std::vector<std::string> chainOf(const sp<IBase>& object) {
    std::vector<std::string> chain;
    Return<void> ret = object->interfaceChain([&](const hidl_vec<hidl_string>& descriptors) {
        for (const auto& d : descriptors) chain.emplace_back(d);
    });
    EXPECT_TRUE(ret.isOk());
    return chain;
}

std::string descriptorOf(const sp<IBase>& object) {
    std::string descriptor;
    Return<void> ret =
        object->interfaceDescriptor([&](const hidl_string& d) { descriptor = std::string(d); });
    EXPECT_TRUE(ret.isOk());
    return descriptor;
}

// Compares objects through their IBase identity, whatever interface pointers they come as.
template <typename A, typename B>
bool sameObject(const sp<A>& a, const sp<B>& b) {
    return static_cast<IBase*>(a.get()) == static_cast<IBase*>(b.get());
}

// Records every registration notification and where it ran.
struct Watcher : public IServiceNotification {
    struct Event {
        std::string fqName;
        std::string instance;
        bool preexisting;
        std::thread::id thread;
        bool onPool;
    };

    Return<void> onRegistration(const hidl_string& fqName, const hidl_string& name,
                                bool preexisting) override {
        Event event{fqName, name, preexisting, std::this_thread::get_id(),
                    zdhost::pool::onPoolThread()};
        if (onEvent) onEvent(event);
        std::lock_guard<std::mutex> lock(mLock);
        mEvents.push_back(event);
        return Void();
    }

    std::vector<Event> events() {
        std::lock_guard<std::mutex> lock(mLock);
        return mEvents;
    }
    // "instance:preexisting" per event, for compact comparisons.
    std::vector<std::string> summary() {
        std::vector<std::string> out;
        for (const auto& e : events())
            out.push_back(e.instance + (e.preexisting ? ":pre" : ":new"));
        return out;
    }

    std::function<void(const Event&)> onEvent;  // set before registering the watcher

  private:
    std::mutex mLock;
    std::vector<Event> mEvents;
};

// Records look-ups as the runtime reports them.
struct LookupRecorder : public zdhost::RuntimeObserver {
    struct Lookup {
        std::string fqName;
        std::string instance;
        bool tryOnly;
        bool found;
    };
    void beforeLookup(const std::string&, const std::string&) override { ++started; }
    void afterLookup(const std::string& fqName, const std::string& instance, bool tryOnly,
                     const sp<IBase>& found) override {
        lookups.push_back({fqName, instance, tryOnly, found != nullptr});
    }
    int started = 0;
    std::vector<Lookup> lookups;
};

class ServiceManagerTest : public ::testing::Test {
  protected:
    void SetUp() override { ServiceManager::get().reset(); }
    void TearDown() override {
        zdhost::pool::drain();
        ServiceManager::get().setObserver(nullptr);
        ServiceManager::get().reset();
    }
};

TEST_F(ServiceManagerTest, GeneratedInterfacesReportTheirChain) {
    sp<ZdRil> ril = new ZdRil();
    EXPECT_EQ(chainOf(ril), (std::vector<std::string>{
                                "vendor.zendra.hardware.gnss@1.0::IZDAGnssRil",
                                "android.hardware.gnss@1.0::IAGnssRil",
                                "android.hidl.base@1.0::IBase",
                            }));
    EXPECT_EQ(descriptorOf(ril), "vendor.zendra.hardware.gnss@1.0::IZDAGnssRil");
    EXPECT_STREQ(zd_V1_0::IZDAGnssRil::descriptor, "vendor.zendra.hardware.gnss@1.0::IZDAGnssRil");

    // Parents in another package and version, named with and without a package.
    sp<ZdRil2> ril2 = new ZdRil2();
    EXPECT_EQ(chainOf(ril2), (std::vector<std::string>{
                                 "vendor.zendra.hardware.gnss@2.0::IZDAGnssRil",
                                 "android.hardware.gnss@2.0::IAGnssRil",
                                 "android.hardware.gnss@1.0::IAGnssRil",
                                 "android.hidl.base@1.0::IBase",
                             }));

    sp<FqdnCallback> callback = new FqdnCallback();
    EXPECT_EQ(chainOf(callback), (std::vector<std::string>{
                                     "vendor.zendra.hardware.gnss@1.0::IZDAGpsSuplFqdnCallback",
                                     "android.hidl.base@1.0::IBase",
                                 }));
}

TEST_F(ServiceManagerTest, RegistersUnderEveryDescriptorOfTheChain) {
    sp<ZdRil> ril = new ZdRil();
    ASSERT_EQ(ril->registerAsService("ril"), OK);

    sp<zd_V1_0::IZDAGnssRil> asItself = zd_V1_0::IZDAGnssRil::tryGetService("ril");
    sp<gnss_V1_0::IAGnssRil> asParent = gnss_V1_0::IAGnssRil::getService("ril");
    sp<IBase> asBase = ServiceManager::get().lookup(IBase::descriptor, "ril", true);
    EXPECT_TRUE(sameObject(asItself, ril));
    EXPECT_TRUE(sameObject(asParent, ril));
    EXPECT_TRUE(sameObject(asBase, ril));

    // Only under its own chain and its own instance name.
    EXPECT_EQ(gnss_V1_0::IAGnssRil::tryGetService("default"), nullptr);
    EXPECT_EQ(zd_V1_0::IZDAGpsSuplFqdnCallback::tryGetService("ril"), nullptr);
    EXPECT_EQ(zd_V2_0::IZDAGnssRil::tryGetService("ril"), nullptr);
}

TEST_F(ServiceManagerTest, DerivedVersionIsFoundThroughEveryAncestor) {
    sp<ZdRil2> ril = new ZdRil2();
    ASSERT_EQ(ril->registerAsService(), OK);  // "default"
    EXPECT_TRUE(sameObject(gnss_V2_0::IAGnssRil::getService(), ril));
    EXPECT_TRUE(sameObject(gnss_V1_0::IAGnssRil::getService(), ril));
    // Not a 1.0 vendor extension: that interface is no ancestor.
    EXPECT_EQ(zd_V1_0::IZDAGnssRil::tryGetService(), nullptr);
}

TEST_F(ServiceManagerTest, ReRegisteringAnInstanceReplacesIt) {
    sp<ZdRil> first = new ZdRil();
    sp<ZdRil> second = new ZdRil();
    ASSERT_EQ(first->registerAsService("ril"), OK);
    ASSERT_EQ(second->registerAsService("ril"), OK);
    EXPECT_TRUE(sameObject(zd_V1_0::IZDAGnssRil::tryGetService("ril"), second));
    EXPECT_TRUE(sameObject(gnss_V1_0::IAGnssRil::tryGetService("ril"), second));
}

TEST_F(ServiceManagerTest, CastFromFollowsTheObjectsType) {
    sp<ZdRil> ril = new ZdRil();
    sp<gnss_V1_0::IAGnssRil> asParent = ril;
    Return<sp<zd_V1_0::IZDAGnssRil>> down = zd_V1_0::IZDAGnssRil::castFrom(asParent);
    ASSERT_TRUE(down.isOk());
    EXPECT_TRUE(sameObject(static_cast<sp<zd_V1_0::IZDAGnssRil>>(down), ril));

    sp<IBase> callback = new FqdnCallback();
    Return<sp<zd_V1_0::IZDAGnssRil>> wrong = zd_V1_0::IZDAGnssRil::castFrom(callback);
    ASSERT_TRUE(wrong.isOk());
    EXPECT_EQ(static_cast<sp<zd_V1_0::IZDAGnssRil>>(wrong), nullptr);

    // A 1.0 extension is not a 2.0 one.
    Return<sp<zd_V2_0::IZDAGnssRil>> newer = zd_V2_0::IZDAGnssRil::castFrom(sp<IBase>(ril));
    ASSERT_TRUE(newer.isOk());
    EXPECT_EQ(static_cast<sp<zd_V2_0::IZDAGnssRil>>(newer), nullptr);

    Return<sp<zd_V1_0::IZDAGnssRil>> none =
        zd_V1_0::IZDAGnssRil::castFrom(sp<gnss_V1_0::IAGnssRil>());
    ASSERT_TRUE(none.isOk());
    EXPECT_EQ(static_cast<sp<zd_V1_0::IZDAGnssRil>>(none), nullptr);
}

TEST_F(ServiceManagerTest, AbsentServiceIsNullAfterOneLookup) {
    LookupRecorder recorder;
    ServiceManager::get().setObserver(&recorder);
    EXPECT_EQ(zd_V1_0::IZDAGpsSuplFqdnCallback::tryGetService("missing"), nullptr);
    EXPECT_EQ(zd_V1_0::IZDAGpsSuplFqdnCallback::getService("missing"), nullptr);
    ServiceManager::get().setObserver(nullptr);

    EXPECT_EQ(recorder.started, 2);
    ASSERT_EQ(recorder.lookups.size(), 2u);
    EXPECT_EQ(recorder.lookups[0].fqName, zd_V1_0::IZDAGpsSuplFqdnCallback::descriptor);
    EXPECT_EQ(recorder.lookups[0].instance, "missing");
    EXPECT_TRUE(recorder.lookups[0].tryOnly);
    EXPECT_FALSE(recorder.lookups[0].found);
    EXPECT_FALSE(recorder.lookups[1].tryOnly);
    EXPECT_FALSE(recorder.lookups[1].found);
}

TEST_F(ServiceManagerTest, EmptyInstanceNameHearsEveryInstance) {
    sp<Watcher> watcher = new Watcher();
    ASSERT_TRUE(zd_V1_0::IZDAGpsSuplFqdnCallback::registerForNotifications("", watcher));
    sp<FqdnCallback> a = new FqdnCallback();
    sp<FqdnCallback> b = new FqdnCallback();
    ASSERT_EQ(a->registerAsService("a"), OK);
    ASSERT_EQ(b->registerAsService("b"), OK);
    zdhost::pool::drain();

    std::vector<Watcher::Event> events = watcher->events();
    ASSERT_EQ(watcher->summary(), (std::vector<std::string>{"a:new", "b:new"}));
    for (const auto& e : events) {
        EXPECT_EQ(e.fqName, zd_V1_0::IZDAGpsSuplFqdnCallback::descriptor);
    }
}

TEST_F(ServiceManagerTest, NamedInstanceHearsOnlyItself) {
    sp<Watcher> watcher = new Watcher();
    ASSERT_TRUE(zd_V1_0::IZDAGpsSuplFqdnCallback::registerForNotifications("b", watcher));
    sp<FqdnCallback> a = new FqdnCallback();
    sp<FqdnCallback> b = new FqdnCallback();
    ASSERT_EQ(a->registerAsService("a"), OK);
    ASSERT_EQ(b->registerAsService("b"), OK);
    zdhost::pool::drain();
    EXPECT_EQ(watcher->summary(), (std::vector<std::string>{"b:new"}));
}

TEST_F(ServiceManagerTest, RegisteredInstancesAreNotifiedAsPreexisting) {
    sp<FqdnCallback> a = new FqdnCallback();
    sp<FqdnCallback> b = new FqdnCallback();
    ASSERT_EQ(a->registerAsService("a"), OK);
    ASSERT_EQ(b->registerAsService("b"), OK);

    sp<Watcher> watcher = new Watcher();
    ASSERT_TRUE(zd_V1_0::IZDAGpsSuplFqdnCallback::registerForNotifications("", watcher));
    zdhost::pool::drain();
    EXPECT_EQ(watcher->summary(), (std::vector<std::string>{"a:pre", "b:pre"}));

    sp<FqdnCallback> c = new FqdnCallback();
    ASSERT_EQ(c->registerAsService("c"), OK);
    zdhost::pool::drain();
    EXPECT_EQ(watcher->summary(), (std::vector<std::string>{"a:pre", "b:pre", "c:new"}));
}

TEST_F(ServiceManagerTest, WatchingAParentHearsRegistrationsOfDerivedInterfaces) {
    sp<Watcher> watcher = new Watcher();
    ASSERT_TRUE(gnss_V1_0::IAGnssRil::registerForNotifications("", watcher));
    sp<ZdRil2> ril = new ZdRil2();
    ASSERT_EQ(ril->registerAsService("ril"), OK);
    zdhost::pool::drain();
    std::vector<Watcher::Event> events = watcher->events();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].fqName, gnss_V1_0::IAGnssRil::descriptor);
    EXPECT_EQ(events[0].instance, "ril");
    EXPECT_FALSE(events[0].preexisting);
}

TEST_F(ServiceManagerTest, NotificationsRunOnAPoolThreadNeverTheCallers) {
    sp<FqdnCallback> a = new FqdnCallback();
    ASSERT_EQ(a->registerAsService("a"), OK);
    sp<Watcher> watcher = new Watcher();
    ASSERT_TRUE(zd_V1_0::IZDAGpsSuplFqdnCallback::registerForNotifications("", watcher));
    sp<FqdnCallback> b = new FqdnCallback();
    ASSERT_EQ(b->registerAsService("b"), OK);
    zdhost::pool::drain();

    std::vector<Watcher::Event> events = watcher->events();
    ASSERT_EQ(events.size(), 2u);
    for (const auto& e : events) {
        EXPECT_NE(e.thread, std::this_thread::get_id()) << e.instance;
        EXPECT_TRUE(e.onPool) << e.instance;
    }
}

TEST_F(ServiceManagerTest, WatcherMayUseTheRuntimeFromItsNotification) {
    sp<Watcher> watcher = new Watcher();
    std::vector<bool> found;  // written on the pool thread, read after drain()
    sp<Watcher> second = new Watcher();
    watcher->onEvent = [&](const Watcher::Event& e) {
        found.push_back(zd_V1_0::IZDAGpsSuplFqdnCallback::tryGetService(e.instance) != nullptr);
        // Registering more watchers from inside a notification must not deadlock either.
        EXPECT_TRUE(zd_V1_0::IZDAGpsSuplFqdnCallback::registerForNotifications(e.instance, second));
    };
    ASSERT_TRUE(zd_V1_0::IZDAGpsSuplFqdnCallback::registerForNotifications("", watcher));
    sp<FqdnCallback> a = new FqdnCallback();
    ASSERT_EQ(a->registerAsService("a"), OK);
    zdhost::pool::drain();
    EXPECT_EQ(found, (std::vector<bool>{true}));
    EXPECT_EQ(second->summary(), (std::vector<std::string>{"a:pre"}));
}

TEST_F(ServiceManagerTest, DeathSendsNoNotificationButReRegistrationDoes) {
    sp<ServiceProcess> process = new ServiceProcess();
    sp<FqdnCallback> first = new FqdnCallback();
    ASSERT_EQ(first->registerAsService("d"), OK);
    sp<Watcher> watcher = new Watcher();
    ASSERT_TRUE(zd_V1_0::IZDAGpsSuplFqdnCallback::registerForNotifications("d", watcher));
    zdhost::pool::drain();
    ASSERT_EQ(watcher->summary(), (std::vector<std::string>{"d:pre"}));

    process->kill({first}, true);
    zdhost::pool::drain();
    EXPECT_EQ(watcher->summary(), (std::vector<std::string>{"d:pre"}));
    EXPECT_EQ(zd_V1_0::IZDAGpsSuplFqdnCallback::tryGetService("d"), nullptr);

    sp<FqdnCallback> replacement = new FqdnCallback();
    ASSERT_EQ(replacement->registerAsService("d"), OK);
    zdhost::pool::drain();
    EXPECT_EQ(watcher->summary(), (std::vector<std::string>{"d:pre", "d:new"}));
    EXPECT_TRUE(sameObject(zd_V1_0::IZDAGpsSuplFqdnCallback::tryGetService("d"), replacement));
}

TEST_F(ServiceManagerTest, ObserverSeesADeliveryBeforeTheWatcher) {
    struct DeliveryRecorder : public zdhost::RuntimeObserver {
        void onRegistrationDelivered(const sp<IServiceNotification>& w, const std::string& fqName,
                                     const std::string& instance, bool preexisting) override {
            watcherEventsAtDelivery = static_cast<Watcher*>(w.get())->events().size();
            delivered = fqName + "/" + instance + (preexisting ? ":pre" : ":new");
            onPool = zdhost::pool::onPoolThread();
        }
        size_t watcherEventsAtDelivery = 99;
        std::string delivered;
        bool onPool = false;
    } recorder;
    ServiceManager::get().setObserver(&recorder);
    sp<Watcher> watcher = new Watcher();
    ASSERT_TRUE(zd_V1_0::IZDAGpsSuplFqdnCallback::registerForNotifications("x", watcher));
    sp<FqdnCallback> x = new FqdnCallback();
    ASSERT_EQ(x->registerAsService("x"), OK);
    zdhost::pool::drain();
    ServiceManager::get().setObserver(nullptr);

    EXPECT_EQ(recorder.delivered,
              std::string(zd_V1_0::IZDAGpsSuplFqdnCallback::descriptor) + "/x:new");
    EXPECT_EQ(recorder.watcherEventsAtDelivery, 0u);
    EXPECT_TRUE(recorder.onPool);
    EXPECT_EQ(watcher->summary(), (std::vector<std::string>{"x:new"}));
}

}  // namespace
