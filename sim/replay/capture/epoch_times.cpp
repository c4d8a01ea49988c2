#include "epoch_times.h"

#include <map>
#include <optional>

#include "nmea_fields.h"

namespace replay {
namespace {

// How far `later` lies after `earlier` on the clock, across midnight: 0 to a day less 1 ms.
int64_t stepForward(int64_t earlierMs, int64_t laterMs) {
    return ((laterMs - earlierMs) % kMsPerDay + kMsPerDay) % kMsPerDay;
}

bool isBreak(int64_t stepMs) {
    return stepMs == 0 || stepMs > kLongestStepMs;
}

int64_t usualInterval(const std::vector<Epoch>& epochs) {
    std::map<int64_t, int> steps;
    for (size_t i = 1; i < epochs.size(); ++i) {
        const auto& earlier = epochs[i - 1].timeOfDayMs;
        const auto& later = epochs[i].timeOfDayMs;
        if (!earlier || !later) continue;
        const int64_t step = stepForward(*earlier, *later);
        if (!isBreak(step)) ++steps[step];
    }
    int64_t interval = 1000;
    int most = 0;
    for (const auto& [step, count] : steps) {
        if (count > most) most = count, interval = step;
    }
    return interval;
}

}  // namespace

void placeEpochs(Capture* capture) {
    std::vector<Epoch>& epochs = capture->epochs;
    capture->intervalMs = usualInterval(epochs);
    capture->timeBreaks = 0;
    const Epoch* lastTimed = nullptr;
    for (size_t i = 0; i < epochs.size(); ++i) {
        Epoch& epoch = epochs[i];
        if (i == 0) {
            epoch.atMs = 0;
        } else {
            const int64_t afterPrevious = epochs[i - 1].atMs + capture->intervalMs;
            epoch.atMs = afterPrevious;
            if (epoch.timeOfDayMs && lastTimed != nullptr) {
                const int64_t step = stepForward(*lastTimed->timeOfDayMs, *epoch.timeOfDayMs);
                const int64_t onTime = lastTimed->atMs + step;
                if (isBreak(step)) {
                    ++capture->timeBreaks;
                } else if (onTime > epochs[i - 1].atMs) {
                    epoch.atMs = onTime;
                }
            }
        }
        if (epoch.timeOfDayMs) lastTimed = &epoch;
    }
}

}  // namespace replay
