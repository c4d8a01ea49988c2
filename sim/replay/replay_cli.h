// `zdgnss-sim replay CAPTURE [options]`: the words after `replay`; returns the exit code
// (0 done, 2 bad command line or unreadable capture or picture file).
#pragma once

#include <string>
#include <vector>

namespace replay {

int replayMain(const std::vector<std::string>& words);

}  // namespace replay
