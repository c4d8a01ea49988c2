// Fault sweep over every operation of every fake, taken from the world's interface list:
// a new operation in a .hal is swept without a test of its own. Each case fails one
// operation in transport (or withholds one feature, so that object answers come back
// empty), puts the library through a full workout, heals, and then lets the daemon die
// and register again: the library must reconnect and work. One process, as on a device:
// the library's state carries over from case to case. A failed status that the library
// leaves unchecked aborts the process (the host runtime's rule); an unchecked good one
// is logged and fails the case.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/Status.h>
#include <transcript.h>
#include <world/world.h>
#include <zdgnssprovider.h>
#include <zdhost/runtime.h>

#include <cctype>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "ledger.h"
#include "workout.h"

namespace faults {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;

struct Case {
    std::string name;      // for the test name
    std::string on;        // the knob line that starts the fault, "" for the baseline
    std::string off;       // the knob line that ends it
    std::string failing;   // "PARTY IFACE.OP" for a transport failure
    std::string withheld;  // "PARTY FEATURE" for empty object answers
};

void PrintTo(const Case& c, std::ostream* out) {
    *out << (c.on.empty() ? "no fault" : c.on);
}

std::string identifier(std::string text) {
    for (char& c : text) {
        if (!isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return text;
}

// The baseline, one transport failure per operation, one withheld feature per feature.
std::vector<Case> allCases() {
    std::vector<Case> cases = {{"baseline", "", "", "", ""}};
    for (const auto& op : sim::World::get().remoteOperations()) {
        std::string key = op.iface + "." + op.operation.name;
        cases.push_back({identifier("fail_" + op.party + "_" + key), op.party + " fail " + key,
                         op.party + " heal " + key, op.party + " " + key, ""});
    }
    for (const auto& [party, feature] : sim::World::get().features()) {
        cases.push_back({identifier("withhold_" + party + "_" + feature),
                         party + " provide " + feature + " no",
                         party + " provide " + feature + " yes", "", party + " " + feature});
    }
    return cases;
}

// The world, the virtual clock and the ledger live for the whole sweep.
class Sweep : public ::testing::Environment {
  public:
    void SetUp() override {
        android::hardware::setProcessHidlReturnRestriction(
            android::hardware::HidlReturnRestriction::ERROR_IF_UNCHECKED);
        startWorld();
        sim::Transcript::get().takeSegment();
        // Every party has registered now, so object answers know their features.
        ledger = std::make_unique<Ledger>(sim::World::get().remoteOperations());
    }
    void TearDown() override;

    static Sweep* instance;
    Clock clock;
    std::unique_ptr<Ledger> ledger;
    size_t casesRun = 0;
};
Sweep* Sweep::instance = nullptr;

void Sweep::TearDown() {
    std::cout << ledger->table() << ledger->operations() << " operations swept in " << casesRun
              << " cases; " << ledger->called() << " called by the library, " << ledger->failed()
              << " failed in their own case, " << ledger->emptied() << " object answers emptied\n";
    if (casesRun != allCases().size()) return;  // a filtered run proves no coverage
    EXPECT_THAT(ledger->calledNeverFailed(), ::testing::IsEmpty())
        << "called by the library but never failed by their own case";
    EXPECT_THAT(ledger->calledNeverEmptied(), ::testing::IsEmpty())
        << "object answers the library fetches but no case emptied";
    EXPECT_THAT(ledger->featuresServingNothing(sim::World::get().features()), ::testing::IsEmpty())
        << "features that empty no operation's answer";
}

// Every transcript line of the running case.
std::vector<std::string>& caseLines() {
    static std::vector<std::string> all;
    return all;
}

// The transcript lines since the previous call, once the runtime has delivered everything.
std::vector<std::string> lines() {
    zdhost::pool::drain();
    std::vector<std::string> taken = sim::Transcript::get().takeSegment();
    caseLines().insert(caseLines().end(), taken.begin(), taken.end());
    return taken;
}

// The lines that tell of a call's status dropped unchecked.
std::vector<std::string> uncheckedStatuses(const std::vector<std::string>& lines) {
    std::vector<std::string> found;
    for (const std::string& line : lines) {
        if (line.find("Unchecked HIDL return status") != std::string::npos) found.push_back(line);
    }
    return found;
}

// Whether the library's last connection left it without a death link: it then never
// hears of the daemon's death.
bool deathLinkMissing(const std::vector<std::string>& lines) {
    for (auto it = lines.rbegin(); it != lines.rend(); ++it) {
        if (it->find("Link to g_fusdLbsIface death notification successful") != std::string::npos)
            return false;
        if (it->find("Transaction error in linking to g_fusdLbsIface death") != std::string::npos ||
            it->find("Unable to link to g_fusdLbsIface death notifications") != std::string::npos)
            return true;
    }
    return false;
}

void restartDaemon() {
    must("fusd kill");
    must("fusd register");
}

// Without a death link the library keeps the dead daemon's handles and takes the new
// registration for its own; the provider's explicit reconnection links it again.
void reconnectUnlinked() {
    restartDaemon();
    EXPECT_THAT(lines(), Contains(HasSubstr("g_fusdLbsIface is not null, not need reinitHal")));
    FdGetService();
    restartDaemon();
}

// The daemon dies and registers again: the library reconnects on its own and works.
void expectRecovery(Clock& clock, bool unlinked) {
    if (unlinked) {
        reconnectUnlinked();
    } else {
        restartDaemon();
    }
    EXPECT_THAT(lines(), Contains(HasSubstr("get fusd service successful")));
    EXPECT_TRUE(isFDSupport());

    android::hardware::gnss::V1_0::GnssLocation fix{};
    fix.timestamp = clock.next();
    sendLocationDataToTarvi(fix);
    EXPECT_TRUE(wentThrough(lines(), "fusd IFusdGnssInterface.sendLocationData("));

    must("fusd reportFusdLocation loc{timestamp=" + std::to_string(clock.next()) + "}");
    EXPECT_TRUE(wentThrough(lines(), "fw gnssCb.gnssLocationCb("));

    EXPECT_TRUE(fd_add_geofence(11, -27.2107, 153.052, 100, 1, 7, 5000, 0));
    EXPECT_TRUE(wentThrough(lines(), "fusd IFusdGeofenceInterface.addGeofence("));
}

class FaultSweep : public ::testing::TestWithParam<Case> {};

TEST_P(FaultSweep, LibraryRecoversAndWorks) {
    Sweep& sweep = *Sweep::instance;
    const Case& c = GetParam();
    ++sweep.casesRun;
    lines();
    caseLines().clear();
    if (!c.on.empty()) must(c.on);
    workout(sweep.clock, c.withheld);
    if (!c.off.empty()) must(c.off);
    std::vector<std::string> underFault = lines();
    sweep.ledger->record(underFault, c.failing, c.withheld);
    expectRecovery(sweep.clock, deathLinkMissing(underFault));
    EXPECT_THAT(uncheckedStatuses(caseLines()), ::testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(EveryOperation, FaultSweep, ::testing::ValuesIn(allCases()),
                         [](const ::testing::TestParamInfo<Case>& info) {
                             return info.param.name;
                         });

}  // namespace
}  // namespace faults

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    faults::Sweep::instance = new faults::Sweep();
    ::testing::AddGlobalTestEnvironment(faults::Sweep::instance);
    return RUN_ALL_TESTS();
}
