// A floor is only a floor if it does what the library does on that path, minus
// the library's own work: the same calls into the null parties and the same log
// lines. Each path runs once through the library and once through its floor
// under a capturing logger, and the two must match line for line (priority and
// text, with numbers masked: timestamps advance from call to call).
#include <android/log.h>
#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

#include "feed_paths.h"

namespace {

using bench::Rig;

std::vector<std::string>* gLines = nullptr;

void captureLine(const struct __android_logger_data* data, const char* message) {
    std::string line = std::to_string(data->priority) + " ";
    for (const char* p = message; *p != '\0'; ++p) {
        if (!isdigit(static_cast<unsigned char>(*p))) {
            line += *p;
        } else if (line.back() != '#') {
            line += '#';
        }
    }
    gLines->push_back(line);
}

struct Trace {
    std::vector<std::string> lines;
    uint64_t engineCalls;
    uint64_t svReports;
    uint64_t locations;
};

Trace trace(void (*call)(const Rig&), const Rig& rig) {
    Trace t{{},
            rig.engine->feedCalls.value(),
            rig.framework->svReports.value(),
            rig.framework->locations.value()};
    gLines = &t.lines;
    __android_log_set_logger(captureLine);
    call(rig);
    bench::dropLogLines();
    gLines = nullptr;
    t.engineCalls = rig.engine->feedCalls.value() - t.engineCalls;
    t.svReports = rig.framework->svReports.value() - t.svReports;
    t.locations = rig.framework->locations.value() - t.locations;
    return t;
}

TEST(Floors, MakeTheLibrarysCallsAndLogLines) {
    const Rig& rig = bench::connectedRig();
    for (const bench::FeedPath& path : bench::feedPaths()) {
        SCOPED_TRACE(path.name);
        path.prepare(rig);
        Trace library = trace(path.library, rig);
        Trace floor = trace(path.floor, rig);
        EXPECT_FALSE(library.lines.empty());
        EXPECT_EQ(library.lines, floor.lines);
        EXPECT_EQ(library.engineCalls, floor.engineCalls);
        EXPECT_EQ(library.svReports, floor.svReports);
        EXPECT_EQ(library.locations, floor.locations);
        EXPECT_GT(library.engineCalls + library.svReports + library.locations +
                      (std::string(path.name).rfind("qttff", 0) == 0 ? 1 : 0),
                  0u)
            << "every path but the source-type decoding calls a party";
    }
}

}  // namespace
