// The summary's group of what only a phone log shows: its rows, its fixes by provider, and
// how many used GPS satellites the satellite reports had (the reports themselves are counted
// in the Satellites group).
#include "phone_summary.h"

#include <algorithm>
#include <map>

#include "text_escape.h"

namespace replay {
namespace {

// Fewer used GPS satellites than this, and the library pads the list.
constexpr int kPaddingThreshold = 4;

void addFixes(const ReplayReport& report, const PhoneLogCounts& log, SummaryTable* table) {
    for (const auto& [provider, count] : log.fixesByProvider) {
        const std::string name = provider.empty() ? "(no provider)" : oneLine(provider);
        table->figure("Fix rows " + name + (provider == "GPS" ? "" : " (skipped)"), count);
    }
    table->figure("GPS fixes sent", report.locationsSent());
    table->figure("fix fields left out (empty or 0.000000)", log.fieldsLeftOut);
}

void addSatelliteReports(const ReplayReport& report, const PhoneLogCounts& log,
                         SummaryTable* table) {
    const std::vector<EpochRecord::SatelliteReport> reports = report.satelliteReportsSent();
    int fewest = 0;
    int most = 0;
    int fewUsed = 0;
    std::map<int, int> byUsed;
    for (const EpochRecord::SatelliteReport& sent : reports) {
        fewest = &sent == &reports.front() ? sent.entries : std::min(fewest, sent.entries);
        most = std::max(most, sent.entries);
        fewUsed += sent.usedGps < kPaddingThreshold;
        ++byUsed[sent.usedGps];
    }
    table->figure("incomplete satellite reports", log.incompleteReports);
    table->figure("signals per report, fewest", fewest);
    table->figure("signals per report, most", most);
    table->figure("reports with fewer than 4 GPS used", fewUsed);
    for (const auto& [used, count] : byUsed) {
        table->figure("reports with " + std::to_string(used) + " GPS used", count);
    }
}

}  // namespace

void addPhoneLog(const ReplayReport& report, SummaryTable* table) {
    if (!report.phoneLog) return;
    const PhoneLogCounts& log = *report.phoneLog;
    table->title("Phone log");
    table->figure("rows", log.rows);
    addFixes(report, log, table);
    addSatelliteReports(report, log, table);
    for (const auto& [reason, count] : log.skipped) {
        table->figure("rows skipped: " + reason, count);
    }
}

}  // namespace replay
