// The partial-order search on small programs run by an in-memory model of threads and
// objects: each thread is a list of operations, each operation one step. The model
// decides as the explorer's scheduler does (the default policy keeps the running thread,
// switching away from one that could go on costs a preemption, a thread waiting for a
// held mutex cannot run), and the runs' choices go through the explorer's own policy.
#include "dpor.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "bounded.h"
#include "causality.h"
#include "policy.h"

namespace explore {
namespace {

struct Op {
    enum Kind { kRead, kWrite, kLock, kUnlock } kind;
    int object;
};
using Thread = std::vector<Op>;
using Program = std::vector<Thread>;  // threads 1..n

Op read(int x) {
    return {Op::kRead, x};
}
Op write(int x) {
    return {Op::kWrite, x};
}
Op lock(int m) {
    return {Op::kLock, m};
}
Op unlock(int m) {
    return {Op::kUnlock, m};
}

// One run of a program: its steps and its outcome (each thread's reads with the values they
// read, the order each mutex was taken in, each object's final value; a value names the
// thread and place of the write that made it).
struct ModelRun {
    std::vector<TracedStep> steps;
    std::string outcome;
    bool redundant = false;
    bool deadlock = false;
};

class Model {
  public:
    explicit Model(const Program& program) : mProgram(program), mAt(program.size() + 1, 0) {}

    ModelRun run(Policy& policy) {
        ModelRun result;
        size_t decisions = 0;
        int current = 0;
        for (;;) {
            std::vector<Candidate> offered = candidates(current);
            if (offered.empty()) {
                result.deadlock = unfinished();
                break;
            }
            TracedStep traced;
            traced.candidates = offered;
            int chosen = offered.front().thread;
            if (offered.size() > 1) {
                Decision d;
                d.index = decisions++;
                d.current = current;
                d.candidates = offered;
                d.fallback = fallback(current, offered);
                chosen = policy.choose(d);
                traced.step.decision = static_cast<long>(d.index);
            } else if (policy.redundant(chosen)) {
                chosen = Policy::kRedundant;
            }
            if (chosen == Policy::kRedundant) {
                result.redundant = true;
                break;
            }
            EXPECT_GT(chosen, 0);
            traced.step.thread = chosen;
            traced.step.accesses = execute(chosen);
            policy.stepped(traced.step);
            result.steps.push_back(traced);
            current = chosen;
        }
        for (const auto& [thread, reads] : mReads) result.outcome += reads + "; ";
        for (const auto& [mutex, order] : mLockOrder) result.outcome += order + "; ";
        for (const auto& [object, value] : mValues) {
            result.outcome += std::to_string(object) + "=" + value + " ";
        }
        return result;
    }

  private:
    bool canRun(int thread) const {
        const Thread& ops = mProgram[thread - 1];
        if (mAt[thread] >= ops.size()) return false;
        const Op& op = ops[mAt[thread]];
        return op.kind != Op::kLock || mOwners.count(op.object) == 0;
    }

    bool unfinished() const {
        for (size_t t = 1; t <= mProgram.size(); ++t) {
            if (mAt[t] < mProgram[t - 1].size()) return true;
        }
        return false;
    }

    std::vector<Candidate> candidates(int current) const {
        const bool goesOn = current != 0 && canRun(current);
        std::vector<Candidate> offered;
        for (int t = 1; t <= static_cast<int>(mProgram.size()); ++t) {
            if (canRun(t))
                offered.push_back({t, t, goesOn && t != current ? 1 : 0, false, "", false});
        }
        return offered;
    }

    int fallback(int current, const std::vector<Candidate>& offered) const {
        return current != 0 && canRun(current) ? current : offered.front().thread;
    }

    // Runs the thread's operation and the unlocks right after it, as one step.
    std::vector<Access> execute(int thread) {
        const Thread& ops = mProgram[thread - 1];
        std::vector<Access> accesses;
        const Op& op = ops[mAt[thread]];
        const uint64_t id = static_cast<uint64_t>(op.object);
        const std::string value = std::to_string(thread) + "." + std::to_string(mAt[thread]);
        switch (op.kind) {
            case Op::kRead:
                accesses.push_back({Access::Kind::kObject, Access::Mode::kRead, id});
                mReads[thread] += value + ":" + mValues[op.object] + " ";
                break;
            case Op::kWrite:
                accesses.push_back({Access::Kind::kObject, Access::Mode::kWrite, id});
                mValues[op.object] = value;
                break;
            case Op::kLock:
                accesses.push_back({Access::Kind::kObject, Access::Mode::kWrite, id});
                mOwners[op.object] = thread;
                mLockOrder[op.object] += value + " ";
                break;
            case Op::kUnlock:
                break;
        }
        ++mAt[thread];
        while (mAt[thread] < ops.size() && ops[mAt[thread]].kind == Op::kUnlock) {
            const uint64_t mutex = static_cast<uint64_t>(ops[mAt[thread]].object);
            mOwners.erase(ops[mAt[thread]].object);
            accesses.push_back({Access::Kind::kObject, Access::Mode::kOrder, mutex});
            ++mAt[thread];
        }
        return accesses;
    }

    const Program& mProgram;
    std::vector<size_t> mAt;  // each thread's next operation
    std::map<int, int> mOwners;
    std::map<int, std::string> mValues;
    std::map<int, std::string> mReads;
    std::map<int, std::string> mLockOrder;
};

// What a search saw: its runs, the classes and outcomes of the runs that were not
// redundant, and whether two of those runs fell in one class.
struct Seen {
    size_t runs = 0;
    std::set<std::string> classes;
    std::set<std::string> outcomes;
    bool repeatedClass = false;
};

std::string classOf(const std::vector<TracedStep>& steps) {
    Causality causality;
    for (const TracedStep& s : steps) causality.append(s.step);
    return causality.className();
}

void note(const ModelRun& run, Seen* seen) {
    ++seen->runs;
    if (run.redundant) return;
    seen->repeatedClass |= !seen->classes.insert(classOf(run.steps)).second;
    seen->outcomes.insert(run.outcome + (run.deadlock ? " deadlock" : ""));
}

template <typename Search>
Seen search(const Program& program, Search search) {
    Seen seen;
    Plan plan;
    while (search.next(&plan) && seen.runs < 100000) {
        PlannedPolicy policy;
        policy.setSleepAt(plan.sleepAt);
        for (const auto& [decision, thread] : plan.choices) policy.addChoice(decision, thread);
        for (const Step& s : plan.sleeping) {
            policy.addSleeping(s.thread, s.accesses.data(), s.accesses.size());
        }
        const ModelRun run = Model(program).run(policy);
        std::string error;
        EXPECT_TRUE(search.record(run.steps, &error)) << error;
        note(run, &seen);
    }
    return seen;
}

Seen searchDpor(const Program& program) {
    return search(program, PartialOrderSearch());
}

Seen searchBounded(const Program& program, int bound) {
    return search(program, BoundedSearch(bound));
}

// Every schedule within the bound, one run each: the reference the search is held to.
Seen searchAll(const Program& program, int bound = 1000) {
    Seen seen;
    std::function<void(std::map<size_t, int>)> explore = [&](std::map<size_t, int> choices) {
        GuidedPolicy policy(choices);
        const ModelRun run = Model(program).run(policy);
        note(run, &seen);
        const long after = choices.empty() ? -1 : static_cast<long>(choices.rbegin()->first);
        int spent = 0;
        for (const TracedStep& s : run.steps) {
            for (const Candidate& c : s.candidates) {
                if (s.step.decision <= after || c.thread == s.step.thread) continue;
                if (spent + c.cost > bound) continue;
                std::map<size_t, int> deeper = choices;
                deeper[static_cast<size_t>(s.step.decision)] = c.thread;
                explore(deeper);
            }
            for (const Candidate& c : s.candidates) {
                if (c.thread == s.step.thread) spent += c.cost;
            }
        }
    };
    explore({});
    return seen;
}

TEST(PartialOrderSearch, RunsEachClassOfSmallProgramsOnce) {
    struct Case {
        const char* name;
        Program program;
        size_t classes;
    };
    const std::vector<Case> cases = {
        {"two threads of four steps on objects of their own",
         {{write(1), write(2), read(1), write(1)}, {write(3), read(4), write(3), write(4)}},
         1},
        {"two threads that each lock one mutex once",
         {{lock(9), unlock(9)}, {lock(9), unlock(9)}},
         2},
        {"two reads of one object", {{read(1)}, {read(1)}}, 1},
        {"a read and a write of one object", {{read(1)}, {write(1)}}, 2},
        {"two writes of one object", {{write(1)}, {write(1)}}, 2},
        {"a thread that waits for a mutex held across two steps",
         {{lock(9), write(1), read(2), unlock(9)}, {lock(9), unlock(9)}},
         2},
        {"three threads writing one object", {{write(1)}, {write(1)}, {write(1)}}, 6},
        {"two writers and a thread that reads both objects",
         {{write(1)}, {write(2)}, {read(1), read(2)}},
         4},
    };
    for (const Case& c : cases) {
        const Seen all = searchAll(c.program);
        const Seen dpor = searchDpor(c.program);
        EXPECT_EQ(all.classes.size(), c.classes) << c.name;
        EXPECT_EQ(dpor.classes, all.classes) << c.name;
        EXPECT_EQ(dpor.outcomes, all.outcomes) << c.name;
        EXPECT_FALSE(dpor.repeatedClass) << c.name;
    }
}

TEST(PartialOrderSearch, TwoLongThreadsOnTheirOwnObjectsTakeOneRun) {
    Thread a, b;
    for (int i = 0; i < 12; ++i) {
        a.push_back(i % 2 == 0 ? write(1) : read(2));
        b.push_back(i % 2 == 0 ? write(3) : read(2));
    }
    EXPECT_EQ(searchDpor({a, b}).runs, 1u);
}

// Random programs over few objects, so that their steps collide.
Program randomProgram(std::mt19937& random) {
    Program program(2 + random() % 2);
    for (Thread& ops : program) {
        for (size_t i = 0, length = 1 + random() % 2; i < length; ++i) {
            const int object = 1 + static_cast<int>(random() % 2);
            switch (random() % 3) {
                case 0:
                    ops.push_back(read(object));
                    break;
                case 1:
                    ops.push_back(write(object));
                    break;
                default:
                    ops.push_back(lock(9));
                    ops.push_back(write(object));
                    ops.push_back(unlock(9));
                    break;
            }
        }
    }
    return program;
}

// The search must give every outcome and every class that running every schedule gives,
// and no class twice.
TEST(PartialOrderSearch, RandomProgramsGiveEveryOutcomeOfEverySchedule) {
    std::mt19937 random(7);
    for (int i = 0; i < 120; ++i) {
        const Program program = randomProgram(random);
        const Seen all = searchAll(program);
        const Seen dpor = searchDpor(program);
        EXPECT_EQ(dpor.outcomes, all.outcomes) << "program " << i;
        EXPECT_EQ(dpor.classes, all.classes) << "program " << i;
        EXPECT_FALSE(dpor.repeatedClass) << "program " << i;
    }
}

TEST(BoundedSearch, RunsEveryScheduleWithinTheBoundOnce) {
    std::mt19937 random(13);
    for (int i = 0; i < 40; ++i) {
        const Program program = randomProgram(random);
        for (int bound : {0, 1, 2}) {
            const Seen bounded = searchBounded(program, bound);
            const Seen all = searchAll(program, bound);
            EXPECT_EQ(bounded.runs, all.runs) << "program " << i << ", bound " << bound;
            EXPECT_EQ(bounded.outcomes, all.outcomes) << "program " << i << ", bound " << bound;
        }
    }
}

}  // namespace
}  // namespace explore
