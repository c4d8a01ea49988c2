// Where one epoch ends and the next begins, and when each is replayed. Every capture of the
// shared corpus is also counted against an independent script (epoch_count.py).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "capture/capture.h"
#include "capture_nmea_lines.h"

namespace {

using capture_test::nmea;
using replay::EpochRule;

std::string joined(const std::vector<std::string>& lines, const char* lineEnd) {
    std::string text;
    for (const std::string& line : lines) text += line + lineEnd;
    return text;
}

std::vector<size_t> epochSizes(const replay::Capture& capture) {
    std::vector<size_t> sizes;
    for (const replay::Epoch& epoch : capture.epochs) sizes.push_back(epoch.lines.size());
    return sizes;
}

std::vector<int64_t> epochTimes(const replay::Capture& capture) {
    std::vector<int64_t> times;
    for (const replay::Epoch& epoch : capture.epochs) times.push_back(epoch.atMs);
    return times;
}

TEST(CaptureSplit, SentencesKeptAsSentOtherLinesLeftOut) {
    std::string text =
        "$GPGSV,1,1,00*79\r\n\r\n  \n$GPGGA,,,,,,0,,,,M,,M,,*66\n\n$PX,a b \n# a note\n\x01\x02\n";
    replay::Capture capture = replay::splitCapture(text);
    ASSERT_EQ(capture.epochs.size(), 1u);
    EXPECT_EQ(capture.sentenceCount, 3);
    EXPECT_EQ(capture.linesNotNmea, 2);
    EXPECT_EQ(
        capture.epochs[0].lines,
        (std::vector<std::string>{"$GPGSV,1,1,00*79", "$GPGGA,,,,,,0,,,,M,,M,,*66", "$PX,a b "}));
    EXPECT_TRUE(replay::splitCapture("\r\n\n").epochs.empty());
}

TEST(CaptureSplit, EveryTimeCarryingSentenceCutsWhereItsTimeChanges) {
    std::vector<std::string> lines = {
        nmea("GPGSV,1,1,01,05,10,20,30"),  // before any time: first epoch
        nmea("GPRMC,120000.00,V,,,,,,,010120,,"),
        nmea("GPGGA,120000.00,,,,,0,,,,,,,,"),  // same epoch
        nmea("GNZDA,120000.000,01,01,2020,,"),  // same time, written differently
        "$PGLOR,1,FIX,1.0,1.0*20",
        nmea("GPGLL,,,,,120000.40,V"),  // GLL's time is its fifth field; the fraction counts
        nmea("GNGST,120000.4,,,,,,,"),
        nmea("GPGSA,A,1,,,,,,,,,,,,,,,"),
        "$GPGBS,120001.00,,,,,,,*00",  // a bad checksum never cuts
        nmea("GNGBS,120000.40,,,,,,,"),
        nmea("GNGRS,120001.00,0,,,,,,,,,,,,"),
        nmea("GNGNS,120001.00,,,,,NN,,,,,,"),
        nmea("GPRMC,120001.4,V,,,,,,,010120,,"),
    };
    replay::Capture lf = replay::splitCapture(joined(lines, "\n"));
    EXPECT_EQ(epochSizes(lf), (std::vector<size_t>{5, 5, 2, 1}));
    for (const replay::Epoch& epoch : lf.epochs) EXPECT_EQ(epoch.rule, EpochRule::kUtcTime);
    EXPECT_EQ(lf.epochs[1].timeOfDayMs, 12 * 3600000 + 400);
    EXPECT_EQ(epochTimes(lf), (std::vector<int64_t>{0, 400, 1000, 1400}));
    replay::Capture crlf = replay::splitCapture(joined(lines, "\r\n"));
    EXPECT_EQ(epochSizes(crlf), epochSizes(lf));
    EXPECT_EQ(crlf.epochs[2].lines, lf.epochs[2].lines);
}

std::vector<std::string> cycles(int seconds, bool zda, int satellitesEvery) {
    std::vector<std::string> lines;
    for (int second = 10; second < 10 + seconds; ++second) {
        const std::string t = "1200" + std::to_string(second);
        lines.push_back(nmea("GPGGA," + t + ",,,,,0,,,,,,,,"));
        lines.push_back(nmea("GPGSA,A,1,,,,,,,,,,,,,,,"));
        lines.push_back(nmea("GPRMC," + t + ",V,,,,,,,010120,,"));
        if (zda) lines.push_back(nmea("GPZDA," + t + ",01,01,2020,,"));
        if (second % satellitesEvery == 0) lines.push_back(nmea("GPGSV,1,1,00"));
    }
    return lines;
}

// A receiver whose cycle is GGA, GSA, RMC, ZDA, with satellites every third cycle after the
// ZDA: the ZDA ends most cycles, so what follows it opens the next epoch.
TEST(CaptureSplit, SentencesBetweenEpochsSplitAfterTheLearnedCycleEnder) {
    replay::Capture capture = replay::splitCapture(joined(cycles(7, true, 3), "\n"));
    EXPECT_EQ(capture.cycleEnder, "GPZDA");
    EXPECT_EQ(epochSizes(capture), (std::vector<size_t>{4, 4, 4, 5, 4, 4, 5}));
    EXPECT_EQ(capture.epochs[3].lines.front(), nmea("GPGSV,1,1,00"));

    // A receiver that ends every cycle with its satellites keeps them in the epoch.
    replay::Capture trailing = replay::splitCapture(joined(cycles(3, false, 1), "\n"));
    EXPECT_EQ(trailing.cycleEnder, "GPGSV");
    EXPECT_EQ(epochSizes(trailing), (std::vector<size_t>{4, 4, 4}));
    EXPECT_EQ(trailing.epochs[0].lines.back(), nmea("GPGSV,1,1,00"));
}

TEST(CaptureSplit, RepeatedSentenceCutsWhereTimesAreMissing) {
    std::vector<std::string> lines = {
        nmea("GPGGA,,,,,,0,,,,M,,M,,"),
        nmea("GPGSA,A,1,,,,,,,,,,,,,,,"),
        nmea("GPGSV,2,1,05,15,00,000,,17,00,000,,18,00,000,,19,00,000,"),
        nmea("GPGSV,2,2,05,20,00,000,"),  // only time-carrying sentences cut
        nmea("GPGSA,A,1,,,,,,,,,,,,,,,"),
        nmea("GPGST,,,,,,,,"),
        nmea("GPGST,,,,,,,,"),  // cuts
        nmea("GPRMC,,V,,,,,,,,,,N"),
        nmea("GLRMC,,V,,,,,,,,,,N"),  // another talker is another sentence
        "$PMTK010,001*2E",
        "$PMTK010,001*2E",  // proprietary repeats never cut
        nmea("GPGGA,,,,,,0,,,,M,,M,,"),
        nmea("GPRMC,,V,,,,,,,,,,N"),              // cuts
        "$GPGGA,,,,,,0,,,,M,,M,,*00",             // bad checksum: stays where it is
        nmea("GPGGA,083000.00,,,,,0,,,,M,,M,,"),  // a time after them: an epoch of its own
        nmea("GPGSA,A,1,,,,,,,,,,,,,,,"),
        nmea("GPGGA,,,,,,0,,,,M,,M,,"),  // repeats the timed epoch's GGA: cuts
        nmea("GPGGA,083002.00,,,,,0,,,,M,,M,,"),
    };
    replay::Capture capture = replay::splitCapture(joined(lines, "\n"));
    EXPECT_EQ(epochSizes(capture), (std::vector<size_t>{6, 6, 2, 2, 1, 1}));
    std::vector<EpochRule> rules;
    for (const replay::Epoch& epoch : capture.epochs) rules.push_back(epoch.rule);
    EXPECT_EQ(rules,
              (std::vector<EpochRule>{EpochRule::kRepeatedSentence, EpochRule::kRepeatedSentence,
                                      EpochRule::kRepeatedSentence, EpochRule::kUtcTime,
                                      EpochRule::kRepeatedSentence, EpochRule::kUtcTime}));
    // Epochs without a time follow one interval apart; a time is placed by its own clock.
    EXPECT_EQ(epochTimes(capture), (std::vector<int64_t>{0, 1000, 2000, 3000, 4000, 5000}));
    EXPECT_TRUE(replay::splitCapture(nmea("AIVDM,1,1,,A,H3KL,0") + "\n").epochs.size() == 1);
}

TEST(CaptureSplit, EpochsPlacedByTheirClockAcrossMidnightAndBreaks) {
    std::vector<std::string> lines;
    for (const char* t : {"235959.6", "235959.8", "000000.4", "000000.6", "000000.8", "000001.0",
                          "235000.0", "235000.2", "235200.2"}) {
        lines.push_back(nmea(std::string("GNGGA,") + t + ",,,,,0,,,,,,,,"));
    }
    replay::Capture capture = replay::splitCapture(joined(lines, "\r\n"));
    EXPECT_EQ(capture.intervalMs, 200);
    // 600 ms across midnight; then back ten minutes, then two minutes ahead: each a break,
    // placed one interval on.
    EXPECT_EQ(capture.timeBreaks, 2);
    EXPECT_EQ(epochTimes(capture),
              (std::vector<int64_t>{0, 200, 800, 1000, 1200, 1400, 1600, 1800, 2000}));
}

TEST(CaptureSplit, MissingFileIsReported) {
    replay::Capture capture;
    std::string error;
    EXPECT_FALSE(replay::readCapture(capture_test::capturePath("no-such.log"), &capture, &error));
    EXPECT_NE(error.find("no-such.log"), std::string::npos);
}

}  // namespace
