// The run's figures as an aligned plain-text table.
//
// Three header lines name the input, every option in effect, and how the input was cut into
// epochs; then groups of figures follow, each group under a title line that ends in ':'.
// Every figure is one line: the label, at least two spaces, then the number as the last
// thing on the line. The labels never change:
//
//   epochs                                   epochs replayed, by every rule
//   epochs by UTC time                       ... cut where the UTC time changes (when any)
//   epochs by repeated sentence              ... cut where a sentence without a time repeats
//   epochs by the log's seconds              ... one per second of a phone log (when any)
//   epoch interval ms                        the usual step from one epoch to the next
//   seconds replayed                         replay time of the whole run, in whole seconds
//   time breaks                              time stamps that went back or leapt ahead
//   sentences                                NMEA sentences (or a phone log's NMEA rows)
//   lines not NMEA                           other non-blank lines of a capture, left out
//   fixes                                    epochs that carried a position
//   locations reported by the provider       fixes the provider reported itself
//   fused locations forwarded                daemon locations passed to the framework
//   fused locations dropped (interval rule)  daemon locations held back as too close in time
//   epochs source receiver                   epochs whose position came from the receiver only
//   epochs source fused                      ... from fused locations only
//   epochs source both                       ... from both
//   epochs source none                       epochs in which no position reached the framework
//   NMEA chunks sent                         NMEA chunks handed to the library
//   RMC valid sent true                      sendNmeaUpdate(true, ...) calls the daemon took in
//   RMC valid sent false                     sendNmeaUpdate(false, ...) calls
//   NMEA chunks rejected                     chunks that sent no NMEA update, all reasons
//   rejected: <reason>                       the same for one reason, one line per reason seen
//   satellite reports                        satellite reports sent
//   satellite lists padded                   epochs whose satellite list the library padded
//   daemon deaths                            epochs in which the daemon died
//   reconnections                            epochs in which the library reconnected
//   batching replays                         reconnections that started batching again
//   seconds daemon down                      replay time with the daemon down, rounded
//   epochs daemon down                       epochs that ended with the daemon down
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
    table->figure("epochs source receiver", report.epochsWithSource(Source::kReceiver));
    table->figure("epochs source fused", report.epochsWithSource(Source::kFused));
    table->figure("epochs source both", report.epochsWithSource(Source::kBoth));
    table->figure("epochs source none", report.epochsWithSource(Source::kNone));
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
    table->figure("seconds daemon down", static_cast<int>((report.daemonDownMs() + 500) / 1000));
    table->figure("epochs daemon down", report.daemonDownEpochs());
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

void addCapture(const ReplayReport& report, SummaryTable* table) {
    table->title("Capture");
    table->figure("epochs", static_cast<int>(report.epochs.size()));
    for (EpochRule rule :
         {EpochRule::kUtcTime, EpochRule::kRepeatedSentence, EpochRule::kLogSecond}) {
        const int count = report.epochsCutBy(rule);
        if (count > 0) table->figure(std::string("epochs by ") + ruleName(rule), count);
    }
    table->figure("epoch interval ms", static_cast<int>(report.cut.intervalMs));
    table->figure("seconds replayed", static_cast<int>((report.endMs + 999) / 1000));
    table->figure("time breaks", report.cut.timeBreaks);
    table->figure("sentences", report.sentences);
    table->figure("lines not NMEA", report.cut.linesNotNmea);
    table->figure("fixes", report.fixes());
}

}  // namespace

void writeSummary(const ReplayReport& report, std::ostream& out) {
    // The header goes through oneLine() whole, so that no file name can open a new line or
    // the two-space gap that marks a figure.
    out << oneLine("Replay of " + report.capture) << '\n'
        << describeOptions(report) << '\n'
        << describeEpochs(report) << '\n';

    SummaryTable table;
    addCapture(report, &table);
    addPhoneLog(report, &table);
    addLocations(report, &table);
    addNmea(report, &table);
    table.title("Satellites");
    table.figure("satellite reports", report.satelliteReports());
    table.figure("satellite lists padded", report.paddedEpochs());
    addDaemon(report, &table);
    addSkipped(report, &table);
    table.write(out);
}

}  // namespace replay
