// Capture of the library's log lines through liblog's logger hook.
#pragma once

#include <string>

namespace sim {

// Routes every line logged in this process, DEBUG and VERBOSE included, to the
// transcript as "log P MESSAGE".
void startLogCapture();

// "log P MESSAGE" for one logged line: P is V D I W E F for priorities 2 to 7 (the
// number otherwise); '\' doubles, a line feed prints as \n, other control bytes as \xHH.
std::string logLine(int priority, const char* message);

}  // namespace sim
