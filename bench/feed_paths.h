// The library's feed paths as the benchmarks and allocation checks drive them.
// Each path has the library's call and its floor: the same call into the null
// party plus the same log lines, written directly with nothing else, so the
// difference of the two is the library's own work on that path.
#pragma once

#include <string>
#include <vector>

#include "bench_rig.h"

namespace bench {

struct FeedPath {
    const char* name;
    const char* description;
    // Puts the library in the state the path needs (e.g. a stored satellite
    // report); run before a measurement, never inside it.
    void (*prepare)(const Rig& rig);
    void (*library)(const Rig& rig);
    void (*floor)(const Rig& rig);
};

const std::vector<FeedPath>& feedPaths();
// The path of that name; aborts for an unknown one.
const FeedPath& feedPath(const std::string& name);

}  // namespace bench
