// Where each second's position came from, and the run's totals over all seconds.
#include "replay_report.h"

namespace replay {

Source CycleRecord::source() const {
    const bool fused = fusedForwarded > 0;
    if (providerReported && fused) return Source::kBoth;
    if (providerReported) return Source::kReceiver;
    if (fused) return Source::kFused;
    return Source::kNone;
}

namespace {

template <typename Predicate>
int countCycles(const std::vector<CycleRecord>& cycles, Predicate predicate) {
    int count = 0;
    for (const CycleRecord& cycle : cycles) count += predicate(cycle) ? 1 : 0;
    return count;
}

int countFlag(const std::vector<CycleRecord>& cycles, bool CycleRecord::*flag) {
    return countCycles(cycles, [flag](const CycleRecord& cycle) { return cycle.*flag; });
}

int sumField(const std::vector<CycleRecord>& cycles, int CycleRecord::*field) {
    int sum = 0;
    for (const CycleRecord& cycle : cycles) sum += cycle.*field;
    return sum;
}

}  // namespace

int ReplayReport::fixes() const {
    return countFlag(cycles, &CycleRecord::hasFix);
}
int ReplayReport::providerReported() const {
    return countFlag(cycles, &CycleRecord::providerReported);
}
int ReplayReport::fusedForwarded() const {
    return sumField(cycles, &CycleRecord::fusedForwarded);
}
int ReplayReport::fusedDropped() const {
    return sumField(cycles, &CycleRecord::fusedDropped);
}
int ReplayReport::deaths() const {
    return countFlag(cycles, &CycleRecord::daemonDied);
}
int ReplayReport::reconnections() const {
    return countFlag(cycles, &CycleRecord::reconnected);
}
int ReplayReport::nmeaChunks() const {
    return sumField(cycles, &CycleRecord::nmeaChunks);
}
int ReplayReport::rmcValidTrue() const {
    return sumField(cycles, &CycleRecord::rmcValidTrue);
}
int ReplayReport::rmcValidFalse() const {
    return sumField(cycles, &CycleRecord::rmcValidFalse);
}

std::map<std::string, int> ReplayReport::chunksRejected() const {
    std::map<std::string, int> byReason;
    for (const CycleRecord& cycle : cycles) {
        for (const auto& [reason, count] : cycle.chunksRejected) byReason[reason] += count;
    }
    return byReason;
}

int ReplayReport::chunksRejectedTotal() const {
    int total = 0;
    for (const auto& entry : chunksRejected()) total += entry.second;
    return total;
}

int ReplayReport::satelliteReports() const {
    return countFlag(cycles, &CycleRecord::satelliteReport);
}
int ReplayReport::paddedSeconds() const {
    return countFlag(cycles, &CycleRecord::padded);
}
int ReplayReport::batchingReplays() const {
    return countFlag(cycles, &CycleRecord::batchingReplayed);
}
int ReplayReport::daemonDownSeconds() const {
    return countCycles(cycles, [](const CycleRecord& cycle) { return !cycle.daemonUp; });
}
int ReplayReport::seconds(Source source) const {
    return countCycles(cycles,
                       [source](const CycleRecord& cycle) { return cycle.source() == source; });
}

SkipCounts ReplayReport::skipped() const {
    SkipCounts total;
    for (const CycleRecord& cycle : cycles) total += cycle.skipped;
    return total;
}

int ReplayReport::locationsSent() const {
    return sumField(cycles, &CycleRecord::locationsSent);
}

std::vector<CycleRecord::SatelliteReport> ReplayReport::satelliteReportsSent() const {
    std::vector<CycleRecord::SatelliteReport> all;
    for (const CycleRecord& cycle : cycles) {
        all.insert(all.end(), cycle.satelliteReportsSent.begin(), cycle.satelliteReportsSent.end());
    }
    return all;
}

}  // namespace replay
