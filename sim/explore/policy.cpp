#include "policy.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string>

namespace explore {

namespace {

bool offers(const Decision& decision, int thread) {
    return std::any_of(decision.candidates.begin(), decision.candidates.end(),
                       [thread](const Candidate& c) { return c.thread == thread; });
}

}  // namespace

int GuidedPolicy::choose(const Decision& decision) {
    mReached = std::max(mReached, decision.index + 1);
    auto it = mDeviations.find(decision.index);
    if (it == mDeviations.end()) return decision.fallback;
    return offers(decision, it->second) ? it->second : 0;
}

bool GuidedPolicy::fitted(std::string* why) const {
    if (mDeviations.empty() || mDeviations.rbegin()->first < mReached) return true;
    *why = "the schedule names decision " + std::to_string(mDeviations.rbegin()->first) +
           ", but the run made " + std::to_string(mReached) + " decisions";
    return false;
}

PlannedPolicy::PlannedPolicy() {
    mChoices.reserve(kMostChoices);
    mSleeping.reserve(kMostSleeping);
}

void PlannedPolicy::addChoice(size_t decision, int thread) {
    mChoices.emplace_back(decision, thread);
}

void PlannedPolicy::addSleeping(int thread, const Access* accesses, size_t count) {
    Sleeper sleeper;
    sleeper.thread = thread;
    if (count > kMostAccesses) {
        sleeper.count = 1;
        sleeper.accesses[0] = Access{};  // unnamed: depends on every step
    } else {
        sleeper.count = count;
        std::copy(accesses, accesses + count, sleeper.accesses.begin());
    }
    mSleeping.push_back(sleeper);
}

int PlannedPolicy::choose(const Decision& decision) {
    auto it = std::lower_bound(mChoices.begin(), mChoices.end(), std::make_pair(decision.index, 0));
    if (it != mChoices.end() && it->first == decision.index) {
        mAsleepNow = mAsleepNow || decision.index == mSleepAt;
        return offers(decision, it->second) ? it->second : 0;
    }
    if (!mAsleepNow || !asleep(decision.fallback)) return decision.fallback;
    const Candidate* awake = nullptr;
    for (const Candidate& c : decision.candidates) {
        if (asleep(c.thread)) continue;
        if (awake == nullptr || (awake->early && !c.early)) awake = &c;
    }
    return awake != nullptr ? awake->thread : kRedundant;
}

void PlannedPolicy::stepped(const Step& step) {
    if (!mAsleepNow) return;
    auto wakes = [&](const Sleeper& sleeper) {
        for (size_t i = 0; i < sleeper.count; ++i) {
            for (const Access& a : step.accesses) {
                if (dependent(sleeper.accesses[i], a)) return true;
            }
        }
        return false;
    };
    mSleeping.erase(std::remove_if(mSleeping.begin(), mSleeping.end(), wakes), mSleeping.end());
}

bool PlannedPolicy::asleep(int thread) const {
    return std::any_of(mSleeping.begin(), mSleeping.end(),
                       [thread](const Sleeper& sleeper) { return sleeper.thread == thread; });
}

int SerialPolicy::choose(const Decision& decision) {
    // An operation under way runs on to its end: the thread that reached this point, or
    // failing that any thread in the middle of one.
    const Candidate* chosen = nullptr;
    for (const Candidate& c : decision.candidates) {
        if (c.atOperationStart) continue;
        if (chosen == nullptr || c.thread == decision.current) chosen = &c;
    }
    if (chosen == nullptr) chosen = chooseOperation(decision);
    mLastBranch = chosen->branch;
    return chosen->thread;
}

const Candidate* SerialPolicy::chooseOperation(const Decision& decision) {
    std::vector<const Candidate*> starts;
    for (const Candidate& c : decision.candidates) starts.push_back(&c);
    std::sort(starts.begin(), starts.end(), [this](const Candidate* a, const Candidate* b) {
        const bool aOther = a->branch != mLastBranch;
        const bool bOther = b->branch != mLastBranch;
        return aOther != bOther ? bOther : a->thread < b->thread;
    });
    const Candidate* chosen = starts.front();
    if (starts.size() < 2) return chosen;
    Choice choice;
    for (const Candidate* c : starts) choice.possible.push_back(c->operation);
    std::sort(choice.possible.begin(), choice.possible.end());
    if (mChoices < mOrder.size()) {
        for (const Candidate* c : starts) {
            if (c->operation == mOrder[mChoices]) chosen = c;
        }
    }
    ++mChoices;
    choice.chosen = chosen->operation;
    if (mListener) mListener(choice);
    return chosen;
}

PctPolicy::PctPolicy(uint64_t seed, int depth, size_t expectedDecisions)
    : mRandom(seed), mDepth(depth) {
    const size_t span = std::max<size_t>(expectedDecisions, 1);
    for (int i = 1; i < depth; ++i) mChangePoints.push_back(mRandom() % span);
    std::sort(mChangePoints.begin(), mChangePoints.end());
}

int64_t PctPolicy::priority(int thread) {
    auto it = mPriorities.find(thread);
    if (it != mPriorities.end()) return it->second;
    const int64_t drawn = mDepth + static_cast<int64_t>(mRandom() % 1000000);
    mPriorities[thread] = drawn;
    return drawn;
}

int PctPolicy::choose(const Decision& decision) {
    for (size_t i = 0; i < mChangePoints.size(); ++i) {
        if (mChangePoints[i] == decision.index && decision.current != 0) {
            mPriorities[decision.current] = static_cast<int64_t>(i);
        }
    }
    // Pauses fire early only when nothing else can run, as without the explorer.
    const Candidate* best = nullptr;
    for (const Candidate& c : decision.candidates) {
        if (c.early) continue;
        if (best == nullptr || priority(c.thread) > priority(best->thread)) best = &c;
    }
    return best != nullptr ? best->thread : decision.fallback;
}

std::string formatSchedule(const std::map<size_t, int>& deviations) {
    if (deviations.empty()) return "-";
    std::string text;
    for (const auto& [index, thread] : deviations) {
        if (!text.empty()) text += ',';
        text += std::to_string(index) + ':' + std::to_string(thread);
    }
    return text;
}

bool parseSchedule(const std::string& text, std::map<size_t, int>* deviations, std::string* error) {
    deviations->clear();
    if (text == "-") return true;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find(',', start);
        if (end == std::string::npos) end = text.size();
        const std::string item = text.substr(start, end - start);
        size_t colon = item.find(':');
        char* rest = nullptr;
        unsigned long long index = 0;
        long thread = 0;
        bool ok = colon != std::string::npos && colon > 0 &&
                  isdigit(static_cast<unsigned char>(item[0])) && colon + 1 < item.size() &&
                  isdigit(static_cast<unsigned char>(item[colon + 1]));
        if (ok) {
            index = strtoull(item.c_str(), &rest, 10);
            ok = rest == item.c_str() + colon;
        }
        if (ok) {
            thread = strtol(item.c_str() + colon + 1, &rest, 10);
            ok = *rest == '\0' && thread > 0 && colon + 1 < item.size();
        }
        if (!ok) {
            *error =
                "a schedule is \"-\" or INDEX:THREAD pairs joined by commas, not '" + item + "'";
            return false;
        }
        (*deviations)[index] = static_cast<int>(thread);
        start = end + 1;
    }
    return true;
}

}  // namespace explore
