// Drives the library through a capture the way a GNSS provider on a device would while its
// HAL delivers that capture, against the embedded world's fusion daemon with a stand-in
// location engine, and records what each second led to.
#pragma once

#include "capture/replay_input.h"
#include "replay_options.h"
#include "report/replay_report.h"

namespace replay {

// Runs the whole capture once. The world is started afresh; the library's module state is
// the process's own, so one process runs one replay.
ReplayReport runReplay(const ReplayInput& input, const ReplayOptions& options);

}  // namespace replay
