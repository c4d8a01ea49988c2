// The run's figures as an aligned plain-text table.
//
// Two header lines name the capture and the options, then groups of figures follow, each
// group under a title line that ends in ':'. Every figure is one line: the label, at least
// two spaces, then the number as the last thing on the line. The labels never change:
//
//   cycles                                   one-second output cycles replayed
//   sentences                                non-blank lines of the capture
//   fixes                                    cycles that carried a position
//   locations reported by the provider       fixes the provider reported itself
//   fused locations forwarded                daemon locations passed to the framework
//   fused locations dropped (interval rule)  daemon locations held back as too close in time
//   seconds source receiver                  cycles whose position came from the receiver only
//   seconds source fused                     ... from fused locations only
//   seconds source both                      ... from both
//   seconds source none                      cycles in which no position reached the framework
//   NMEA chunks sent                         NMEA chunks handed to the library
//   RMC valid sent true                      sendNmeaUpdate(true, ...) calls the daemon took in
//   RMC valid sent false                     sendNmeaUpdate(false, ...) calls
//   NMEA chunks rejected                     chunks that sent no NMEA update, all reasons
//   rejected: <reason>                       the same for one reason, one line per reason seen
//   satellite reports                        cycles with a satellite report
//   satellite lists padded                   cycles whose satellite list the library padded
//   daemon deaths                            cycles in which the daemon died
//   reconnections                            cycles in which the library reconnected
//   batching replays                         reconnections that started batching again
//   seconds daemon down                      cycles that ended with the daemon down
//   skipped bad checksum                     sentences the decoder skipped, by reason
//   skipped no checksum
//   skipped empty fields
//   skipped proprietary
//   skipped unreadable
//
// A reason is printed on one line with runs of spaces folded into one (see oneLine()).
//
// A phone log adds a group after the capture's (phone_summary.cpp).
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "phone_summary.h"
#include "replay_report.h"
#include "run_options.h"
#include "text_escape.h"

namespace replay {
namespace {

void addLocations(const ReplayReport& report, SummaryTable* table) {
    table->title("Locations");
    table->figure("locations reported by the provider", report.providerReported());
    table->figure("fused locations forwarded", report.fusedForwarded());
    table->figure("fused locations dropped (interval rule)", report.fusedDropped());
    table->figure("seconds source receiver", report.seconds(Source::kReceiver));
    table->figure("seconds source fused", report.seconds(Source::kFused));
    table->figure("seconds source both", report.seconds(Source::kBoth));
    table->figure("seconds source none", report.seconds(Source::kNone));
}

void addNmea(const ReplayReport& report, SummaryTable* table) {
    table->title("NMEA to the daemon");
    table->figure("NMEA chunks sent", report.nmeaChunks());
    table->figure("RMC valid sent true", report.rmcValidTrue());
    table->figure("RMC valid sent false", report.rmcValidFalse());
    table->figure("NMEA chunks rejected", report.chunksRejectedTotal());
    for (const auto& [reason, count] : report.chunksRejected()) {
        const std::string shown = oneLine(reason);
        table->figure("rejected: " + (shown.empty() ? std::string("(no reason)") : shown), count);
    }
}

void addDaemon(const ReplayReport& report, SummaryTable* table) {
    table->title("Fusion daemon");
    table->figure("daemon deaths", report.deaths());
    table->figure("reconnections", report.reconnections());
    table->figure("batching replays", report.batchingReplays());
    table->figure("seconds daemon down", report.daemonDownSeconds());
}

void addSkipped(const ReplayReport& report, SummaryTable* table) {
    const SkipCounts skipped = report.skipped();
    table->title("Sentences the decoder skipped");
    table->figure("skipped bad checksum", skipped.badChecksum);
    table->figure("skipped no checksum", skipped.noChecksum);
    table->figure("skipped empty fields", skipped.emptyFields);
    table->figure("skipped proprietary", skipped.proprietary);
    table->figure("skipped unreadable", skipped.unreadable);
}

}  // namespace

void writeSummary(const ReplayReport& report, std::ostream& out) {
    // The header goes through oneLine() whole, so that no file name can open a new line or
    // the two-space gap that marks a figure.
    out << oneLine("Replay of " + report.capture) << '\n' << describeOptions(report) << '\n';

    SummaryTable table;
    table.title("Capture");
    table.figure("cycles", static_cast<int>(report.cycles.size()));
    table.figure("sentences", report.sentences);
    table.figure("fixes", report.fixes());
    addPhoneLog(report, &table);
    addLocations(report, &table);
    addNmea(report, &table);
    table.title("Satellites");
    table.figure("satellite reports", report.satelliteReports());
    table.figure("satellite lists padded", report.paddedSeconds());
    addDaemon(report, &table);
    addSkipped(report, &table);
    table.write(out);
}

}  // namespace replay
