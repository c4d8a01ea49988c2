// What a replay saw, second by second, and the two ways of showing it: a summary table and
// a timeline picture.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "capture/capture.h"
#include "capture/feed_epochs.h"
#include "capture/phone_log.h"

namespace replay {

// Which source's position reached the framework in an epoch.
enum class Source { kNone, kReceiver, kFused, kBoth };

// One epoch (of a capture, or a second of a phone log) as the replay drove and observed it.
struct EpochRecord {
    int index = 0;     // from 0
    int64_t atMs = 0;  // replay time the epoch starts at
    EpochRule rule = EpochRule::kUtcTime;
    std::string utcLabel;           // "hh:mm:ss" from the capture, may be empty
    bool hasFix = false;            // the epoch carried a position
    bool providerReported = false;  // sendLocationDataToTarvi said false: the provider reported it
    int fusedForwarded = 0;         // fused locations the library passed to the framework
    int fusedDropped = 0;           // fused locations held back by the reporting-interval rule
    int nmeaChunks = 0;             // send_nmea_update_to_tarvi calls
    int rmcValidTrue = 0;           // sendNmeaUpdate(true, ...) calls the daemon took in
    int rmcValidFalse = 0;          // sendNmeaUpdate(false, ...) calls the daemon took in
    std::map<std::string, int> chunksRejected;  // reason -> chunks that sent no NMEA update
    bool satelliteReport = false;               // sendSvInfo was called
    // GPS satellites used in the fix: in the HAL's report (-1: none yet) and in the list the
    // framework got for it (-1: none). In an epoch the library padded, the padded report's.
    int usedBefore = -1;
    int usedAfter = -1;
    bool padded = false;            // the library added its entries in this epoch
    bool daemonUp = false;          // at the end of the epoch
    bool daemonDied = false;        // the daemon died during the epoch
    bool reconnected = false;       // the library reconnected during the epoch
    bool batchingReplayed = false;  // ... and started batching again on the new daemon
    SkipCounts skipped;
    int locationsSent = 0;  // locations handed to sendLocationDataToTarvi
    struct SatelliteReport {
        int entries = 0;  // entries of the report sent (the 1.0 record holds 64 at most)
        int usedGps = 0;  // of them, GPS entries used in the fix
    };
    std::vector<SatelliteReport> satelliteReportsSent;

    Source source() const;
};

// The options a run had, as the summary and the picture name them.
struct RunSettings {
    std::string hal = "2.0";  // "1.0" or "2.0"
    bool burst = false;       // whole epoch as one NMEA chunk
    int64_t latencyMs = 0, jitterMs = 0, coastMs = 0;
    uint32_t seed = 1;
    int64_t intervalMs = -1;  // reporting interval set after the start; -1: the library's own
    bool batching = true;
    std::vector<int> killAt, restartAt;  // seconds
};

struct ReplayReport {
    std::string capture;  // file name as given
    RunSettings settings;
    EpochCut cut;
    int sentences = 0;
    std::vector<EpochRecord> epochs;
    int64_t endMs = 0;  // replay time the run ends at
    struct Downtime {
        int64_t fromMs = 0, toMs = 0;  // the daemon died, and registered again (or the run ended)
    };
    std::vector<Downtime> downtimes;
    std::optional<PhoneLogCounts> phoneLog;  // what the log held, when it is a phone log

    // Totals over all epochs.
    int fixes() const;
    int providerReported() const;
    int fusedForwarded() const;
    int fusedDropped() const;
    int deaths() const;
    int reconnections() const;
    int nmeaChunks() const;
    int rmcValidTrue() const;
    int rmcValidFalse() const;
    std::map<std::string, int> chunksRejected() const;  // reason -> chunks
    int chunksRejectedTotal() const;
    int epochsCutBy(EpochRule rule) const;
    int satelliteReports() const;  // reports sent, several in an epoch counted apart
    int paddedEpochs() const;
    int batchingReplays() const;
    int daemonDownEpochs() const;  // epochs that ended with the daemon down
    int64_t daemonDownMs() const;  // replay time with the daemon down
    int epochsWithSource(Source source) const;
    SkipCounts skipped() const;
    int locationsSent() const;
    std::vector<EpochRecord::SatelliteReport> satelliteReportsSent() const;
};

// The default output: a plain-text table of the run's figures.
void writeSummary(const ReplayReport& report, std::ostream& out);
// The timeline: an SVG document with one row per epoch.
void writeTimelineSvg(const ReplayReport& report, std::ostream& out);

}  // namespace replay
