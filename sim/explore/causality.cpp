#include "causality.h"

#include <algorithm>

namespace explore {

namespace {

uint32_t at(const Clock& clock, int thread) {
    return static_cast<size_t>(thread) < clock.size() ? clock[thread] : 0;
}

void join(Clock& into, const Clock& other) {
    if (into.size() < other.size()) into.resize(other.size(), 0);
    for (size_t t = 0; t < other.size(); ++t) into[t] = std::max(into[t], other[t]);
}

bool unnamed(const Access& a) {
    return a.kind == Access::Kind::kObject && a.id == 0;
}

// How the step at a position relates to an earlier one, strongest first. kHandOver: the
// earlier step let go a mutex that the later one takes; the only edge of the two that
// goes the other way round with them when the later holder takes the mutex first.
enum class Tie { kNone, kHandOver, kKept, kReversible };

Tie tie(const Access& earlier, const Step& later) {
    Tie strongest = Tie::kNone;
    bool takes = false;
    for (const Access& a : later.accesses) {
        if (a.kind != earlier.kind || a.id != earlier.id) continue;
        takes = takes || a.mode == Access::Mode::kWrite;
        if (reversible(earlier, a)) return Tie::kReversible;
        if (dependent(earlier, a)) strongest = Tie::kKept;
    }
    const bool letGo =
        earlier.kind == Access::Kind::kObject && earlier.mode == Access::Mode::kOrder;
    return strongest == Tie::kKept && letGo && takes ? Tie::kHandOver : strongest;
}

}  // namespace

bool Causality::knows(const Clock& clock, size_t position) const {
    const Entry& e = mSteps[position];
    return at(clock, e.step.thread) > e.local;
}

bool Causality::before(size_t earlier, size_t later) const {
    return earlier < later && knows(mSteps[later].clock, earlier);
}

size_t Causality::append(const Step& step) {
    const size_t position = mSteps.size();
    Entry entry;
    entry.step = step;
    auto last = mLast.find(step.thread);
    if (last != mLast.end()) {
        entry.previous = static_cast<long>(last->second);
        entry.local = mSteps[last->second].local + 1;
    }
    mSteps.push_back(std::move(entry));
    link(position);
    mLast[step.thread] = position;
    for (const Access& a : step.accesses) {
        if (unnamed(a)) {
            mUnnamed.push_back(position);
        } else {
            mUses[{a.kind, a.id}].push_back({position, a.mode});
        }
    }
    return position;
}

void Causality::link(size_t position) {
    Entry& entry = mSteps[position];
    std::map<size_t, Tie> ties;
    auto tieWith = [&](size_t earlier, Tie t) {
        if (t == Tie::kNone) return;
        Tie& known = ties[earlier];
        known = std::max(known, t);
    };
    const bool touchesUnnamed =
        std::any_of(entry.step.accesses.begin(), entry.step.accesses.end(), unnamed);
    for (size_t earlier = 0; touchesUnnamed && earlier < position; ++earlier) {
        tieWith(earlier,
                reversible(mSteps[earlier].step, entry.step) ? Tie::kReversible : Tie::kKept);
    }
    for (size_t earlier : mUnnamed) {
        tieWith(earlier,
                reversible(mSteps[earlier].step, entry.step) ? Tie::kReversible : Tie::kKept);
    }
    std::set<Key> keys;
    for (const Access& a : entry.step.accesses) {
        if (unnamed(a) || !keys.insert({a.kind, a.id}).second) continue;
        auto uses = mUses.find({a.kind, a.id});
        if (uses == mUses.end()) continue;
        for (const auto& [earlier, mode] : uses->second) {
            tieWith(earlier, tie({a.kind, mode, a.id}, entry.step));
        }
    }
    if (entry.previous >= 0) entry.clock = mSteps[entry.previous].clock;
    for (const auto& [earlier, t] : ties) {
        if (mSteps[earlier].step.thread == entry.step.thread) continue;
        join(entry.clock, mSteps[earlier].clock);
        if (t == Tie::kReversible) entry.revs.push_back(earlier);
        if (t != Tie::kHandOver) entry.kept.push_back(earlier);
    }
    const int thread = entry.step.thread;
    if (entry.clock.size() <= static_cast<size_t>(thread)) entry.clock.resize(thread + 1, 0);
    entry.clock[thread] = entry.local + 1;
}

void Causality::truncate(size_t size) {
    if (size >= mSteps.size()) return;
    for (size_t p = mSteps.size(); p-- > size;) {
        const Entry& entry = mSteps[p];
        if (entry.previous >= 0) {
            mLast[entry.step.thread] = static_cast<size_t>(entry.previous);
        } else {
            mLast.erase(entry.step.thread);
        }
    }
    mSteps.resize(size);
    for (auto it = mUses.begin(); it != mUses.end();) {
        auto& uses = it->second;
        while (!uses.empty() && uses.back().first >= size) uses.pop_back();
        it = uses.empty() ? mUses.erase(it) : std::next(it);
    }
    while (!mUnnamed.empty() && mUnnamed.back() >= size) mUnnamed.pop_back();
}

std::vector<Causality::Race> Causality::races(size_t position) const {
    const Entry& later = mSteps[position];
    const Clock none;
    const Clock& own = later.previous >= 0 ? mSteps[later.previous].clock : none;
    std::vector<Race> found;
    for (size_t earlier : later.revs) {
        if (knows(own, earlier)) continue;
        const bool ordered = std::any_of(later.kept.begin(), later.kept.end(), [&](size_t other) {
            return other != earlier && before(earlier, other);
        });
        if (ordered) continue;
        Race race;
        race.earlier = earlier;
        race.before = own;
        for (size_t other : later.kept) {
            if (other != earlier) join(race.before, mSteps[other].clock);
        }
        found.push_back(std::move(race));
    }
    return found;
}

std::set<int> Causality::initials(const Race& race, size_t later) const {
    std::map<int, uint32_t> firstLocal;  // each thread's first step after the race's earlier one
    std::set<int> found;
    auto consider = [&](int thread, uint32_t local, const Clock& clock) {
        if (firstLocal.count(thread) != 0) return;
        const bool free = std::all_of(firstLocal.begin(), firstLocal.end(), [&](const auto& first) {
            return at(clock, first.first) <= first.second;
        });
        firstLocal[thread] = local;
        if (free) found.insert(thread);
    };
    for (size_t p = race.earlier + 1; p < later; ++p) {
        if (before(race.earlier, p)) continue;
        consider(mSteps[p].step.thread, mSteps[p].local, mSteps[p].clock);
    }
    consider(mSteps[later].step.thread, mSteps[later].local, race.before);
    return found;
}

std::string Causality::className() const {
    std::map<int, std::vector<size_t>> byThread;
    for (size_t p = 0; p < mSteps.size(); ++p) byThread[mSteps[p].step.thread].push_back(p);
    std::map<int, uint32_t> placed;
    std::string name;
    for (size_t n = 0; n < mSteps.size(); ++n) {
        for (const auto& [thread, positions] : byThread) {
            const uint32_t done = placed[thread];
            if (done == positions.size()) continue;
            const Clock& clock = mSteps[positions[done]].clock;
            bool ready = true;
            for (size_t other = 0; other < clock.size() && ready; ++other) {
                auto it = placed.find(static_cast<int>(other));
                const uint32_t count = it == placed.end() ? 0 : it->second;
                ready = static_cast<int>(other) == thread || clock[other] <= count;
            }
            if (!ready) continue;
            ++placed[thread];
            name += std::to_string(thread) + ",";
            break;
        }
    }
    return name;
}

}  // namespace explore
