// `zdgnss-sim generate`: the generated blocks listed, written out as scenario files, or
// each played on real threads, in a fresh process per run, as `zdgnss-sim FILE.scn` plays
// a concurrent block. Works in every build; the ThreadSanitizer build runs it to see each
// pair of operations race on real threads.
#pragma once

#include <string>
#include <vector>

namespace gen {

int generateMain(const std::vector<std::string>& args);

}  // namespace gen
