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
#include "capture/phone_log.h"

namespace replay {

// Which source's position reached the framework in a second.
enum class Source { kNone, kReceiver, kFused, kBoth };

// One output cycle (one second of the capture) as the replay drove and observed it.
struct CycleRecord {
    int index = 0;                  // from 0
    std::string utcLabel;           // "hh:mm:ss" from the capture, may be empty
    bool hasFix = false;            // the cycle carried a position
    bool providerReported = false;  // sendLocationDataToTarvi said false: the provider reported it
    int fusedForwarded = 0;         // fused locations the library passed to the framework
    int fusedDropped = 0;           // fused locations held back by the reporting-interval rule
    int nmeaChunks = 0;             // send_nmea_update_to_tarvi calls
    int rmcValidTrue = 0;           // sendNmeaUpdate(true, ...) calls the daemon took in
    int rmcValidFalse = 0;          // sendNmeaUpdate(false, ...) calls the daemon took in
    std::map<std::string, int> chunksRejected;  // reason -> chunks that sent no NMEA update
    bool satelliteReport = false;               // sendSvInfo was called
    int usedBefore = -1;            // satellites used in fix in the HAL's report; -1: no report yet
    int usedAfter = -1;             // in the list the framework got last this second; -1: none
    bool padded = false;            // the library added its entries this second
    bool daemonUp = false;          // at the end of the second
    bool daemonDied = false;        // the daemon died during the second
    bool reconnected = false;       // the library reconnected during the second
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

struct ReplayReport {
    std::string capture;      // file name as given
    std::string hal = "2.0";  // "1.0" or "2.0"
    bool burst = false;       // whole cycle as one NMEA chunk
    int64_t latencyMs = 0, jitterMs = 0, coastMs = 0;
    int sentences = 0;
    std::vector<CycleRecord> cycles;
    std::optional<PhoneLogCounts> phoneLog;  // what the log held, when it is a phone log

    // Totals over all cycles.
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
    int satelliteReports() const;
    int paddedSeconds() const;
    int batchingReplays() const;
    int daemonDownSeconds() const;     // cycles that ended with the daemon down
    int seconds(Source source) const;  // cycles whose source() is this one
    SkipCounts skipped() const;
    int locationsSent() const;
    std::vector<CycleRecord::SatelliteReport> satelliteReportsSent() const;
};

// The default output: a plain-text table of the run's figures.
void writeSummary(const ReplayReport& report, std::ostream& out);
// The timeline: an SVG document with one row per cycle.
void writeTimelineSvg(const ReplayReport& report, std::ostream& out);

}  // namespace replay
