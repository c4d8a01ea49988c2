// All nine receiver captures: read, split and decoded without a crash, with as many cycles as
// the receiver sent RMC sentences (one per second) and a fix in each second its RMC says 'A'.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "capture/capture.h"
#include "capture_nmea_lines.h"

namespace {

struct Expected {
    const char* name;
    size_t cycles;  // RMCs of the GPS or GN talker in the file
    int fixes;      // of those, 'A'
};

// Counted from the RMC status sequences listed for each file in SOURCES.md.
const Expected kCaptures[] = {
    {"gpsd-haicom-305N.log", 74, 68},
    {"gpsd-mtk-3301.log", 11, 4},
    {"gpsd-quectel.log", 42, 34},
    {"gpsd-quectelLC79D.log", 30, 30},
    {"gpsd-rx210.log", 62, 40},
    {"gpsd-telit-he910.log", 224, 187},
    {"gpsd-telit-pls83-w.log", 10, 10},
    {"gpsd-ublox-neo-m9n-nmea.log", 61, 61},
    {"gpsd-ublox-zed-f9p-nmea.log", 29, 29},
};

std::string labelOf(int64_t timestampMs) {
    int64_t seconds = timestampMs / 1000 % 86400;
    char label[16];
    std::snprintf(label, sizeof(label), "%02d:%02d:%02d", static_cast<int>(seconds / 3600),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
    return label;
}

TEST(CaptureCorpus, EveryCaptureDecodes) {
    for (const Expected& expected : kCaptures) {
        SCOPED_TRACE(expected.name);
        replay::Capture capture;
        std::string error;
        ASSERT_TRUE(
            replay::readCapture(capture_test::capturePath(expected.name), &capture, &error));
        EXPECT_EQ(capture.cycles.size(), expected.cycles);

        replay::CycleDecoder decoder;
        int fixes = 0;
        size_t lines = 0;
        for (const replay::Cycle& cycle : capture.cycles) {
            lines += cycle.lines.size();
            replay::CycleContent content = decoder.decode(cycle);
            if (!content.hasFix) continue;
            ++fixes;
            EXPECT_EQ(labelOf(content.fix.timestamp), content.utcLabel);
            EXPECT_LE(std::abs(content.fix.latitudeDegrees), 90);
            EXPECT_LE(std::abs(content.fix.longitudeDegrees), 180);
        }
        EXPECT_EQ(fixes, expected.fixes);
        EXPECT_EQ(lines, capture_test::nonBlankLines(expected.name).size());
    }
}

}  // namespace
