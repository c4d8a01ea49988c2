// Where each second's position came from, and the run's totals over all seconds.
#include "replay_report.h"

namespace replay {

Source EpochRecord::source() const {
    const bool fused = fusedForwarded > 0;
    if (providerReported && fused) return Source::kBoth;
    if (providerReported) return Source::kReceiver;
    if (fused) return Source::kFused;
    return Source::kNone;
}

namespace {

template <typename Predicate>
int countEpochs(const std::vector<EpochRecord>& epochs, Predicate predicate) {
    int count = 0;
    for (const EpochRecord& epoch : epochs) count += predicate(epoch) ? 1 : 0;
    return count;
}

int countFlag(const std::vector<EpochRecord>& epochs, bool EpochRecord::*flag) {
    return countEpochs(epochs, [flag](const EpochRecord& epoch) { return epoch.*flag; });
}

int sumField(const std::vector<EpochRecord>& epochs, int EpochRecord::*field) {
    int sum = 0;
    for (const EpochRecord& epoch : epochs) sum += epoch.*field;
    return sum;
}

}  // namespace

int ReplayReport::fixes() const {
    return countFlag(epochs, &EpochRecord::hasFix);
}
int ReplayReport::providerReported() const {
    return countFlag(epochs, &EpochRecord::providerReported);
}
int ReplayReport::fusedForwarded() const {
    return sumField(epochs, &EpochRecord::fusedForwarded);
}
int ReplayReport::fusedDropped() const {
    return sumField(epochs, &EpochRecord::fusedDropped);
}
int ReplayReport::deaths() const {
    return countFlag(epochs, &EpochRecord::daemonDied);
}
int ReplayReport::reconnections() const {
    return countFlag(epochs, &EpochRecord::reconnected);
}
int ReplayReport::nmeaChunks() const {
    return sumField(epochs, &EpochRecord::nmeaChunks);
}
int ReplayReport::rmcValidTrue() const {
    return sumField(epochs, &EpochRecord::rmcValidTrue);
}
int ReplayReport::rmcValidFalse() const {
    return sumField(epochs, &EpochRecord::rmcValidFalse);
}

std::map<std::string, int> ReplayReport::chunksRejected() const {
    std::map<std::string, int> byReason;
    for (const EpochRecord& epoch : epochs) {
        for (const auto& [reason, count] : epoch.chunksRejected) byReason[reason] += count;
    }
    return byReason;
}

int ReplayReport::chunksRejectedTotal() const {
    int total = 0;
    for (const auto& entry : chunksRejected()) total += entry.second;
    return total;
}

int ReplayReport::epochsCutBy(EpochRule rule) const {
    return countEpochs(epochs, [rule](const EpochRecord& epoch) { return epoch.rule == rule; });
}
int ReplayReport::satelliteReports() const {
    return static_cast<int>(satelliteReportsSent().size());
}
int ReplayReport::paddedEpochs() const {
    return countFlag(epochs, &EpochRecord::padded);
}
int ReplayReport::batchingReplays() const {
    return countFlag(epochs, &EpochRecord::batchingReplayed);
}
int ReplayReport::daemonDownEpochs() const {
    return countEpochs(epochs, [](const EpochRecord& epoch) { return !epoch.daemonUp; });
}
int64_t ReplayReport::daemonDownMs() const {
    int64_t total = 0;
    for (const Downtime& downtime : downtimes) total += downtime.toMs - downtime.fromMs;
    return total;
}
int ReplayReport::epochsWithSource(Source source) const {
    return countEpochs(epochs,
                       [source](const EpochRecord& epoch) { return epoch.source() == source; });
}

SkipCounts ReplayReport::skipped() const {
    SkipCounts total;
    for (const EpochRecord& epoch : epochs) total += epoch.skipped;
    return total;
}

int ReplayReport::locationsSent() const {
    return sumField(epochs, &EpochRecord::locationsSent);
}

std::vector<EpochRecord::SatelliteReport> ReplayReport::satelliteReportsSent() const {
    std::vector<EpochRecord::SatelliteReport> all;
    for (const EpochRecord& epoch : epochs) {
        all.insert(all.end(), epoch.satelliteReportsSent.begin(), epoch.satelliteReportsSent.end());
    }
    return all;
}

}  // namespace replay
