#include "world.h"

#include <zdhost/runtime.h>
#include <zdhost/schedule.h>

#include "fake_fusd.h"
#include "fake_vhal.h"
#include "framework.h"
#include "runtime_watch.h"

namespace sim {

struct World::Parts {
    FakeFusd fusd;
    FakeVhal vhal;
    Framework framework;
    RuntimeWatch watch{[this](const std::string& fqName) { fusd.beforeLookup(fqName); }};
};

World& World::get() {
    static World* world = new World();
    return *world;
}

World::World() : mParts(new Parts()) {}

void World::start() {
    zdhost::pool::drain();  // nothing of an earlier world may still be on its way
    zdhost::ServiceManager& manager = zdhost::ServiceManager::get();
    manager.reset();
    manager.setObserver(&mParts->watch);
    installVirtualSleep();
    mParts->fusd.reset();
    mParts->vhal.reset();
    mParts->framework.reset();
}

bool World::prepare(const std::string& head, const std::vector<Token>& args, WorldAction* action,
                    std::string* error) {
    WorldAction run;
    const Party* party = nullptr;
    if (head == "fusd") {
        party = &mParts->fusd.party();
        if (!mParts->fusd.prepare(args, &run, error)) return false;
    } else if (head == "vhal") {
        party = &mParts->vhal.party();
        if (!mParts->vhal.prepare(args, &run, error)) return false;
    } else if (head == "fw") {
        party = &mParts->framework.party();
        if (!mParts->framework.prepare(args, &run, error)) return false;
    }
    if (party != nullptr) {
        // A world command is a point of its own that changes its party: a death, a
        // registration, a knob or a report reaches what the library's calls to it read.
        *action = [party, run = std::move(run)](std::string* error) {
            zdhost::schedule::reach(zdhost::schedule::Point::kWorld, party,
                                    zdhost::schedule::Access::kWrite);
            return run(error);
        };
        return true;
    }
    *error = "unknown command: " + head;
    return false;
}

std::vector<std::string> World::verbs() {
    std::vector<std::string> all;
    for (const std::string& verb : FakeFusd::verbs()) all.push_back("fusd " + verb);
    for (const std::string& verb : FakeVhal::verbs()) all.push_back("vhal " + verb);
    for (const std::string& verb : Framework::verbs()) all.push_back("fw " + verb);
    return all;
}

void World::setLibraryCalls(LibraryCallPreparer preparer) {
    mParts->framework.setLibraryCalls(std::move(preparer));
}

bool World::command(const std::string& head, const std::vector<Token>& args, std::string* error) {
    WorldAction action;
    return prepare(head, args, &action, error) && action(error);
}

android::sp<android::hardware::gnss::V2_0::IGnssCallback> World::gnssCb() {
    return mParts->framework.gnssCb();
}

android::sp<android::hardware::gnss::V1_0::IGnssGeofenceCallback> World::geofenceCb() {
    return mParts->framework.geofenceCb();
}

android::sp<FdCorvaneCallback_> World::corvaneCb() {
    return mParts->framework.corvaneCb();
}

FdCallback* World::fdCallback() {
    return mParts->framework.fdCallback();
}

}  // namespace sim

namespace sim {

android::sp<vendor::zendra::hardware::fusd::V1_2::IFusdGnssCallback> World::fusdGnssCallback() {
    return mParts->fusd.gnssCallback();
}

android::sp<vendor::zendra::hardware::fusd::V1_2::IFusdGeofenceCallback>
World::fusdGeofenceCallback() {
    return mParts->fusd.geofenceCallback();
}

void World::setFeedListener(FeedListener* listener) {
    mParts->fusd.setFeedListener(listener);
}

std::vector<World::RemoteOperation> World::remoteOperations() const {
    std::vector<RemoteOperation> all;
    for (const Party* party :
         {&mParts->fusd.party(), &mParts->vhal.party(), &mParts->framework.party()}) {
        for (const auto& [iface, operations] : party->interfaces()) {
            for (const Operation& operation : operations) {
                std::string feature = party->featureOf(iface + "." + operation.name);
                all.push_back({party->prefix(), iface, operation, feature});
            }
        }
    }
    return all;
}

std::vector<std::pair<std::string, std::string>> World::features() const {
    std::vector<std::pair<std::string, std::string>> all;
    for (const Party* party :
         {&mParts->fusd.party(), &mParts->vhal.party(), &mParts->framework.party()}) {
        for (const std::string& feature : party->features()) {
            all.emplace_back(party->prefix(), feature);
        }
    }
    return all;
}

}  // namespace sim
