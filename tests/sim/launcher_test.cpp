// How the explorer starts a run's process and reads it back. The scenarios of tests/explore
// show that findings and run counts stay the same; they cannot see where a run was forked,
// nor that two runs of one schedule see their objects at the same addresses however the
// explorer's own memory changed in between. These scenarios are built here to see that.
#include "launcher.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <zdhost/runtime.h>
#include <zdhost/schedule.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <memory>
#include <string>

#include "transcript.h"

namespace explore {
namespace {

// A server forks at the block only when it is single-threaded there. ThreadSanitizer's
// runtime starts a thread of its own, and so does an emulator running another
// architecture's binary: there every run plays the whole scenario (the explorer is built
// for neither).
bool singleThreadedNow() {
    DIR* tasks = opendir("/proc/self/task");
    if (tasks == nullptr) return false;
    int count = 0;
    while (const dirent* entry = readdir(tasks)) count += entry->d_name[0] != '.';
    closedir(tasks);
    return count == 1;
}

#if defined(__SANITIZE_THREAD__)
constexpr bool kServersForkAtTheBlock = false;
#elif defined(__has_feature)
constexpr bool kServersForkAtTheBlock = !__has_feature(thread_sanitizer);
#else
constexpr bool kServersForkAtTheBlock = true;
#endif

// Counts, in memory shared with the runs' processes, how often the steps before the block
// were played.
std::atomic<int>* prefixPlays() {
    static auto* plays = new (mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE,
                                   MAP_SHARED | MAP_ANONYMOUS, -1, 0)) std::atomic<int>(0);
    return plays;
}

constexpr size_t kOneLongs = 700;
constexpr size_t kTwoLongs = 1100;

sim::Step step(std::function<bool(std::string*)> run) {
    sim::Step s;
    s.source.file = "t.scn";
    s.run = std::move(run);
    return s;
}

// A branch that makes an object of its own and writes it at a scheduling point, so that its
// step names the object's address. Each branch's object has a size of its own, which no
// other thread of the run allocates: when a thread ends, the allocator takes back what it
// held of each size at a moment the scheduler does not control.
sim::Step makesAndWrites(const std::string& line, size_t longs) {
    return step([line, longs](std::string*) {
        auto object = std::make_unique<long[]>(longs);
        zdhost::schedule::reach(zdhost::schedule::Point::kAtomic, object.get(),
                                zdhost::schedule::Access::kWrite);
        sim::Transcript::get().emit(line);
        return true;
    });
}

// A prefix that starts a runtime thread (or fails), a block of two branches, and a step
// after it whose line an expectation holds.
sim::Scenario probeScenario(bool prefixFails) {
    sim::Scenario scenario;
    scenario.steps.push_back(step([prefixFails](std::string* error) {
        ++*prefixPlays();
        zdhost::pool::post([] { sim::Transcript::get().emit("from the pool"); });
        *error = "the prefix failed";
        return !prefixFails;
    }));
    auto block = std::make_shared<sim::Block>();
    block->branches = {{makesAndWrites("one", kOneLongs)}, {makesAndWrites("two", kTwoLongs)}};
    sim::Step blockStep = step(nullptr);
    blockStep.block = block;
    scenario.steps.push_back(blockStep);
    scenario.steps.push_back(step([](std::string*) {  // on the thread the server forked
        auto object = std::make_unique<long[]>(kTwoLongs);
        sim::Transcript::get().emit("after, made at " +
                                    std::to_string(reinterpret_cast<uintptr_t>(object.get())));
        return true;
    }));
    sim::Expectation never;
    never.text = "a line no run writes";
    scenario.steps.back().expectations.push_back(never);
    return scenario;
}

RunRequest planned(std::map<size_t, int> choices) {
    RunRequest request;
    request.mode = RunRequest::Mode::kPlanned;
    request.deviations = std::move(choices);
    return request;
}

std::vector<std::string> stepsOf(const RunResult& result) {
    std::vector<std::string> steps;
    for (const Step& s : result.steps) steps.push_back(formatStep(s));
    return steps;
}

class LauncherTest : public ::testing::Test {
  protected:
    void SetUp() override { *prefixPlays() = 0; }
};

TEST_F(LauncherTest, RunsOfOneScheduleSeeTheSameAddressesWhateverRanBetween) {
    if (!kServersForkAtTheBlock || !singleThreadedNow()) {
        GTEST_SKIP() << "no server can fork at the block here";
    }
    const sim::Scenario scenario = probeScenario(false);
    Launcher launcher(scenario);
    const RunResult first = launcher.run(planned({}));
    // The explorer's own memory changes between runs, in the sizes the branches allocate,
    // and a serial run that holds expectations needs a server of its own in between.
    std::vector<std::unique_ptr<long[]>> explorerMemory;
    for (int i = 0; i < 16; ++i) {
        explorerMemory.push_back(std::make_unique<long[]>(kOneLongs));
        explorerMemory.push_back(std::make_unique<long[]>(kTwoLongs));
    }
    const RunResult other = launcher.run(planned({{0, 2}}));
    RunRequest serial;
    serial.mode = RunRequest::Mode::kSerial;
    serial.order = {"2.1", "1.1"};
    serial.checkExpectations = true;
    launcher.run(serial);
    std::vector<RunResult> again;
    for (int i = 0; i < 3; ++i) again.push_back(launcher.run(planned({})));

    EXPECT_EQ(*prefixPlays(), 3) << "once by each server: unchecked, checked, unchecked";
    ASSERT_TRUE(first.clean) << first.stopKind << " " << first.stopDetail;
    EXPECT_TRUE(other.clean);
    EXPECT_EQ(other.schedule(), "0:2");
    const auto writesAnObject = [](const Step& s) {
        return std::any_of(s.accesses.begin(), s.accesses.end(), [](const Access& a) {
            return a.kind == Access::Kind::kObject && a.mode == Access::Mode::kWrite && a.id != 0;
        });
    };
    EXPECT_EQ(std::count_if(first.steps.begin(), first.steps.end(), writesAnObject), 2);
    for (const RunResult& r : again) {
        EXPECT_EQ(stepsOf(r), stepsOf(first));
        EXPECT_EQ(r.afterLines, first.afterLines);
    }
    ASSERT_EQ(first.afterLines.size(), 1u);
    EXPECT_EQ(first.afterLines[0].rfind("after, made at ", 0), 0u);
}

TEST_F(LauncherTest, ARunThatHoldsExpectationsGetsAServerThatHoldsThem) {
    const sim::Scenario scenario = probeScenario(false);
    Launcher launcher(scenario);
    RunRequest checked;
    checked.checkExpectations = true;
    const RunResult unchecked = launcher.run({});
    const RunResult failing = launcher.run(checked);
    const RunResult uncheckedAgain = launcher.run({});
    EXPECT_TRUE(unchecked.clean);
    EXPECT_EQ(failing.stopKind, "expectation");
    EXPECT_NE(failing.stopDetail.find("a line no run writes"), std::string::npos);
    EXPECT_TRUE(uncheckedAgain.clean);
}

TEST_F(LauncherTest, WhereNoServerReachesTheBlockEveryRunPlaysTheWholeScenario) {
    const sim::Scenario scenario = probeScenario(true);
    Launcher launcher(scenario);
    for (int i = 0; i < 2; ++i) {
        const RunResult result = launcher.run({});
        EXPECT_FALSE(result.clean);
        EXPECT_EQ(result.stopKind, "error");
        EXPECT_EQ(result.stopDetail, "t.scn:0: the prefix failed");
    }
    EXPECT_EQ(*prefixPlays(), 3) << "the server's attempt, then each run";
}

// A run that dies in the block, as under a sanitizer's abort or the watchdog's kill, has
// told the explorer what it did up to its death: the finding's schedule and lines come
// from there.
TEST_F(LauncherTest, ARunKilledInTheBlockStillGivesWhatItDidBeforeItsDeath) {
    sim::Scenario scenario = probeScenario(false);
    scenario.steps[1].block->branches[1] = {step([](std::string*) {
        sim::Transcript::get().emit("two, about to die");
        raise(SIGKILL);
        return true;
    })};
    Launcher launcher(scenario);
    const RunResult result = launcher.run(planned({{0, 2}}));
    EXPECT_EQ(result.signal, SIGKILL);
    EXPECT_FALSE(result.clean);
    EXPECT_EQ(result.schedule(), "0:2");
    const auto said =
        std::any_of(result.trace.begin(), result.trace.end(),
                    [](const TraceLine& line) { return line.text == "two, about to die"; });
    EXPECT_TRUE(said);
}

}  // namespace
}  // namespace explore
