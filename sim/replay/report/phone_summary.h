// The summary's group of figures that only a phone log has.
#pragma once

#include "replay_report.h"
#include "summary_table.h"

namespace replay {

// The group of figures only a phone log has; nothing for a receiver capture.
void addPhoneLog(const ReplayReport& report, SummaryTable* table);

}  // namespace replay
